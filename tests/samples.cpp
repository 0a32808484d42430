#include "samples.h"

#include <algorithm>
#include <initializer_list>
#include <regex>
#include <utility>

#include "replaced.h"

namespace catalogue {

std::string replaced(const std::string& text, const std::string& pattern, const std::string& by) {
  return std::regex_replace(text, std::regex(pattern), by);
}

std::string fromHex(std::string hex) {
  hex.erase(std::remove(hex.begin(), hex.end(), ' '), hex.end());
  std::string bytes;
  for (std::size_t i = 0; i < hex.size(); i += 2) {
    bytes.push_back(static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

std::string toHex(const std::string& bytes) {
  std::string hex;
  for (char c : bytes) {
    for (int digit : {c >> 4 & 15, c & 15}) hex += "0123456789abcdef"[digit];
  }
  return hex;
}

std::string varint(std::uint32_t value) {
  std::string bytes;
  for (; value > 127; value >>= 7) bytes.push_back(static_cast<char>(value | 128));
  return toHex(bytes + static_cast<char>(value));
}

std::uint32_t interfaceIndex(limid_t limid) {
  std::uint32_t index = 0;
  EXPECT_EQ(limid_to_ifindex(limid, &index), 0);
  return index;
}

ActionRedirect redirectTo(const Ports& ports) {
  ActionRedirect action(0);
  std::string hex;
  for (limid_t port : ports) hex += "10" + varint(port);
  readInto(&action, hex);
  return action;
}

namespace {

// Each class needs a row of its own below. If a row is missing, this file does not compile.
template <class T>
Row<T> makeRow() = delete;

// The row of a class whose constructor has one parameter. Each argument is a value for the
// constructor or a finished object.
template <class T, class... Arguments>
Row<T> rowWith(const char* name, unsigned code, const char* text, const std::string& fields,
               const Lines& lines, const Arguments&... arguments) {
  return {name, code, text, fields, lines, {T(arguments)...}};
}

// The row of a class that holds one number. Its getter returns this number.
template <class T, class Getter>
Row<T> rowWith(const char* name, Getter getter, unsigned code, const char* text,
               const std::string& fields, const char* line,
               std::initializer_list<std::uint32_t> values) {
  Row<T> row{name, code, text, fields, {line}, {}};
  for (std::uint32_t value : values) {
    row.objects.emplace_back(static_cast<decltype((row.objects[0].*getter)())>(value));
    EXPECT_EQ((row.objects.back().*getter)(), value) << name;
  }
  return row;
}

// Begins a row. Inside the row, T is its class.
#define ROW(Class, ...)                         \
  template <>                                   \
  Row<Class> makeRow() {                        \
    using T [[maybe_unused]] = Class;           \
    return rowWith<Class>(#Class, __VA_ARGS__); \
  }

const Lines kNoParameters{"<no parameters>"};
const auto kPortFields = "10" + varint(kEth3) + "10" + varint(kLag1);
const Lines kPortLines{"Number of ports: 2", "LIMIDs: \"eth-3\" \"lag-1\" "};
const Lines kParamLines{"Param1: 80", "Param2: 65280"};
const Lines kMacLines{"MAC: 0:1b:21:a:ff:42", "Mask: ff:ff:ff:0:0:0"};
const Lines kIPv4Lines{"IP: 192.0.2.1", "Mask: 255.255.240.0"};

ROW(MatchAll, 0, "all", "", kNoParameters, T())
ROW(MatchIngressPorts, 1,
    "ingress_ports [0x01000003,0x02000001] [0x02000001,0x01000003] [0x01000003] []!cpu []!7 []",
    kPortFields, kPortLines, Ports{kEth3, kLag1}, Ports{kLag1, kEth3}, Ports{kEth3}, kCpuPort,
    PortTypes{port_type_t(7)}, Ports())
ROW(MatchExternalVlanId, 2, "external_vlan_id {10,4095} {10} {10,65535} {}", "180a 18ff1f",
    {"VLAN IDs: [ 10 4095 ]"}, VlanIds{4095, 10}, T(10), VlanIds{10, 65535}, VlanIds())
ROW(MatchTPID, &T::getTPID, 3, "tpid 0x8100 0x88a8 0x0000", "20808202", "TPID: 0x8100",
    {0x8100, 0x88a8, 0})
ROW(MatchDstMac, 4,
    "dst_mac 00:1b:21:0a:ff:42/ff:ff:ff:00:00:00 00:1b:21:0a:ff:43/ff:ff:ff:00:00:00 "
    "00:1b:21:0a:ff:42 00:00:00:00:00:00/00:00:00:00:00:00",
    "2a06001b210aff42 3a06ffffff000000", kMacLines, T(kMac, kMacMask), T(kNextMac, kMacMask), kMac,
    T({}, {}))
ROW(MatchDstL4Port, 5, "dst_l4_port 80/0xff00 80/0x0 0/0x0", "3050 900180fe03", kParamLines,
    T(80, 65280), T(80), T(0))
ROW(MatchSrcL4Port, 6, "src_l4_port 80/0xff00 80/0x0 0/0x0", "3050 900180fe03", kParamLines,
    T(80, 65280), T(80), T(0))
ROW(MatchSrcMac, 7,
    "src_mac 00:1b:21:0a:ff:42/ff:ff:ff:00:00:00 00:1b:21:0a:ff:43/ff:ff:ff:00:00:00 "
    "00:1b:21:0a:ff:42 00:00:00:00:00:00/00:00:00:00:00:00",
    "2a06001b210aff42 3a06ffffff000000", kMacLines, T(kMac, kMacMask), T(kNextMac, kMacMask), kMac,
    T({}, {}))
ROW(MatchL2SrcEntryType, &T::getL2SrcEntryType, 8, "l2_src_entry_type static 4294967295 none",
    "6802", "L2 Src Entry Type: 2", {2, kMax, 0})
ROW(MatchSrcIPv4, 9, "src_ipv4 192.0.2.1/20 192.0.2.2/20 192.0.2.1 0.0.0.0/0",
    "4204c0000201 5204fffff000", kIPv4Lines, T(kIPv4, kIPv4Mask), T(kNextIPv4, kIPv4Mask), kIPv4,
    T({}, {}))
ROW(MatchDstIPv4, 10, "dst_ipv4 192.0.2.1/20 192.0.2.2/20 192.0.2.1 0.0.0.0/0",
    "4204c0000201 5204fffff000", kIPv4Lines, T(kIPv4, kIPv4Mask), T(kNextIPv4, kIPv4Mask), kIPv4,
    T({}, {}))
ROW(MatchInternalVlanId, 11, "internal_vlan_id {10,4095} {10} {10,65535} {}", "180a 18ff1f",
    {"VLAN IDs: [ 10 4095 ]"}, VlanIds{4095, 10}, T(10), VlanIds{10, 65535}, VlanIds())
ROW(MatchPcp, 12, "pcp {3,7} {255} {}", "4803 4807", {"PCPs: [ \3 \7 ]"}, Pcps{7, 3}, T(255),
    Pcps())
ROW(MatchInternalPcp, 13, "internal_pcp {3,7} {255} {}", "4803 4807", {"PCPs: [ \3 \7 ]"},
    Pcps{7, 3}, T(255), Pcps())
ROW(MatchSrcIPv6, 14, "src_ipv6 2001:db8:1234::abcd ::",
    "5a1020010db812340000000000000000abcd 6210ffffffffffffffffffffffffffffffff",
    {"IPv6: 2001:db8:1234::abcd", "Mask: ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"}, kIPv6,
    in6_addr())
ROW(MatchDstIPv6, 15, "dst_ipv6 2001:db8:1234::abcd/48 2001:db8:1234::abcd :: ::/0",
    "5a1020010db812340000000000000000abcd 6210ffffffffffff00000000000000000000",
    {"IPv6: 2001:db8:1234::abcd", "Mask: ffff:ffff:ffff::"}, T(kIPv6, kIPv6Mask), kIPv6, in6_addr(),
    T({}, {}))
ROW(MatchVlanTagging, &T::getTagging, 16, "vlan_tagging tagged 4294967295 untagged", "d80101",
    "Tagging: tagged", {1, kMax, 0})
ROW(MatchIpProtocol, &T::getIpProtocol, 17, "ip_protocol 6 255 0", "7006", "Ip Protocol: 6",
    {6, 255, 0})
ROW(MatchPacketRes, &T::getPktRes, 18, "packet_res l3_multicast 4294967295 unknown", "7808",
    "Pkt Resolution: 8", {8, kMax, 0})
ROW(MatchMplsTerm, &T::getMplsTerm, 19, "mpls_term true false", "d00101",
    "Mpls Terminated status: 1", {1, 0})
ROW(MatchToS, &T::getToS, 20, "tos 185 184 0", "8001b901", "ToS: 185", {185, 184, 0})
ROW(MatchDSCP, &T::getDSCP, 20, "tos 184 252 0", "8001b801", "DSCP: 46", {46, 63, 0})
ROW(MatchVirtualPort, &T::getLimId, 21, "virtual_port 0x01000003 0xffffffff 0x00000000",
    "8801" + varint(kEth3), "LIMID: eth-3", {kEth3, kMax, 0})
ROW(MatchEgressPorts, 22,
    "egress_ports [0x01000003,0x02000001] [0x02000001,0x01000003] [0x01000003,0x01000003] []",
    kPortFields, kPortLines, Ports{kEth3, kLag1}, Ports{kLag1, kEth3}, Ports{kEth3, kEth3}, Ports())
ROW(MatchIngressStpState, &T::getIngressStpState, 23,
    "ingress_stp_state forwarding 4294967295 disabled", "980104", "IngressStpState: 4",
    {4, kMax, 0})
ROW(MatchVlanInfo, 24, "vlan_info 1/4294967295 1/0 0/0", "a80101 f001ffffffff0f",
    {"SVC VLAN Type: 1", "Protocol2CPU VLAN Type: 4294967295"}, vlan_info_t{1, kMax},
    vlan_info_t{1, 0}, vlan_info_t{0, 0})
ROW(MatchSrcPort, &T::getLimId, 25, "src_port 0x01000003 0xffffffff 0x00000000",
    "8801" + varint(kEth3), "LIMID: eth-3", {kEth3, kMax, 0})
ROW(MatchTTL, &T::getTTL, 26, "ttl 64 255 0", "b00140", "TTL: 64", {64, 255, 0})
ROW(MatchVrfId, &T::getVrfId, 27, "vrf_id 300 65535 0", "b801ac02", "Match VRF ID: 300",
    {300, 65535, 0})
ROW(MatchDrop, &T::getDropFlag, 28, "drop true false", "c00101", "Match Drop: 1", {1, 0})
ROW(MatchMyStationHit, &T::getHitFlag, 29, "my_station_hit true false", "e00101",
    "Match MyStationHit: 1", {1, 0})
ROW(MatchCpuPort, 30, "cpu_port", "", {}, T())
ROW(MatchForwardingType, &T::getForwardingType, 31, "forwarding_type mpls 4294967295 l2", "c80102",
    "Forwarding Type: 2", {2, kMax, 0})
ROW(MatchDestinationCpu, 32, "destination_cpu", "", {}, T())
ROW(MatchCPUInjectedPackets, &T::getInjected, 33, "cpu_injected_packets true false", "e80101",
    "Match Injected?: 1", {1, 0})
ROW(MatchDstL4PortRange, 34, "dst_l4_port_range 100-200 100-0 0-0", "3064 9001c801",
    {"Min Port: 100", "Max Port: 200"}, T(100, 200), T(100, 0), T(0, 0))

ROW(ActionPermit, 0, "permit", "", kNoParameters, T())
ROW(ActionDeny, 1, "deny", "", kNoParameters, T())
ROW(ActionCopyToCpu, 2, "copy_to_cpu", "", kNoParameters, T())
ROW(ActionBlockEgressPorts, 3,
    "block_egress_ports [0x01000003,0x02000001] [0x02000001,0x01000003] [0x01000003] []",
    kPortFields, kPortLines, Ports{kEth3, kLag1}, Ports{kLag1, kEth3}, Ports{kEth3}, Ports())
ROW(ActionCopyToCpuCancel, &T::getCancelType, 4,
    "copy_to_cpu_cancel switch_to_cpu_cancel 4294967295 copy_to_cpu_cancel", "3801",
    "Cp2CPU Cancel type: SWITCH_TO_CPU_CANCEL", {1, kMax, 0})
ROW(ActionSetPcp, &T::getPcp, 5, "set_pcp 7 255 0", "1807", "PCP: 7", {7, 255, 0})
ROW(ActionSetPcpAndQueue, &T::getPcpAndQueue, 6, "set_pcp_and_queue 7 255 0", "2007",
    "PCP_AND_QUEUE: 7", {7, 255, 0})
ROW(ActionSetInnerPcp, &T::getInnerPcp, 7, "set_inner_pcp 7 255 0", "1807", "Inner PCP: 7",
    {7, 255, 0})
ROW(ActionSetDSCP, &T::getDSCP, 8, "set_dscp 46 255 0", "282e", "DSCP: 46", {46, 255, 0})
ROW(ActionMapToCosQueue, &T::getCosQueue, 9, "map_to_cos_queue 5 255 0", "3005", "CoS Queue: 5",
    {5, 255, 0})
ROW(ActionMapToCpuCosQueue, &T::getCpuCosQueue, 10, "map_to_cpu_cos_queue 5 255 0", "3005",
    "CPU CoS Queue: 5", {5, 255, 0})
ROW(ActionRedirect, 11, "redirect [0x01000003] [0x01000003,0x02000001] [0x02000001,0x01000003] []",
    "10" + varint(kEth3), {"\"eth-3\" "}, kEth3, redirectTo({kEth3, kLag1}),
    redirectTo({kLag1, kEth3}), redirectTo({}))
ROW(ActionReplaceDstMac, 12,
    "replace_dst_mac 00:1b:21:0a:ff:42 00:1b:21:0a:ff:43 00:00:00:00:00:00", "4206001b210aff42",
    {"Replace MAC: 0:1b:21:a:ff:42"}, kMac, kNextMac, ether_addr())
ROW(ActionRedirectCancel, 13, "redirect_cancel", "", kNoParameters, T())
ROW(ActionReplaceSrcMac, 14,
    "replace_src_mac 00:1b:21:0a:ff:42 00:1b:21:0a:ff:43 00:00:00:00:00:00", "4206001b210aff42",
    {"Replace MAC: 0:1b:21:a:ff:42"}, kMac, kNextMac, ether_addr())
ROW(ActionL3Switch, &T::getL3DestinationId, 15, "l3_switch 100000 4294967295 0", "48a08d06",
    "L3 Destination ID: 100000", {100000, kMax, 0})
ROW(ActionBlackHole, 16, "black_hole", "", kNoParameters, T())
ROW(ActionCopyInnerPcp, 17, "copy_inner_pcp", "", kNoParameters, T())
// This class writes interface indexes into messages. Every other class writes interface ids.
ROW(ActionMplsPortSet, 18,
    "mpls_port_set 0x03000007/0x01000003 0x03000007/0x02000001 0x04050009/0x01000003",
    "50" + varint(interfaceIndex(kVpws7)) + "58" + varint(interfaceIndex(kEth3)),
    {"VPN ID: vpws-7", "MPLS Access Port: eth-3"}, T(kVpws7, kEth3), T(kVpws7, kLag1),
    T(kVpls9, kEth3))
ROW(ActionL2ToCpuDrop, 19, "l2_to_cpu_drop", "", kNoParameters, T())
#undef ROW

}  // namespace

template <class T>
const Row<T>& rowOf() {
  static const Row<T> row = makeRow<T>();
  return row;
}
#define FILTERS_MATCH(code, T, blank) template const Row<T>& rowOf<T>();
#define FILTERS_MATCH_TWIN FILTERS_MATCH
#include <filter_common/filter_matches.def>
#define FILTERS_ACTION(code, T, blank) template const Row<T>& rowOf<T>();
#include <filter_common/filter_actions.def>

std::vector<std::pair<filtersMatch_t, std::unique_ptr<Match>>> oneMatchOfEachCode() {
  std::vector<std::pair<filtersMatch_t, std::unique_ptr<Match>>> list;
#define FILTERS_MATCH(code, T, blank) list.emplace_back(code, new T(samples<T>().front()));
#include <filter_common/filter_matches.def>
  return list;
}
std::vector<std::pair<filtersAction_t, std::unique_ptr<Action>>> oneActionOfEachCode() {
  std::vector<std::pair<filtersAction_t, std::unique_ptr<Action>>> list;
#define FILTERS_ACTION(code, T, blank) list.emplace_back(code, new T(samples<T>().front()));
#include <filter_common/filter_actions.def>
  return list;
}

}  // namespace catalogue

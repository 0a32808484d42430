#ifndef FILTER_COMMON_TESTS_SAMPLES_H_
#define FILTER_COMMON_TESTS_SAMPLES_H_

// Sample objects of every match and action class with what they write and print, to be walked by
// type (typed tests over AllMatches and AllActions, samples<T>() in them) or as a list
// (oneMatchOfEachCode, oneActionOfEachCode).

#include <filter_common/filter_actions.h>
#include <filter_common/filter_actions.pb.h>
#include <filter_common/filter_matches.h>
#include <filter_common/filter_matches.pb.h>
#include <gtest/gtest.h>
#include <limid/limid_standin.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <list>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace catalogue {

using namespace FiltersCommon;

// --- Text and bytes ------------------------------------------------------------------------------

// What an object prints; chosen by static type, so a Match or an Action prints by its code.
template <class T>
std::string printed(const T& object) {
  std::ostringstream os;
  os << object;
  return os.str();
}

// The bytes of "08 1a b001"; blanks do not count.
inline std::string fromHex(std::string hex) {
  hex.erase(std::remove(hex.begin(), hex.end(), ' '), hex.end());
  std::string bytes;
  for (std::size_t i = 0; i < hex.size(); i += 2) {
    bytes.push_back(static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

inline std::string toHex(const std::string& bytes) {
  std::string hex;
  for (char c : bytes) {
    for (int digit : {c >> 4 & 15, c & 15}) hex += "0123456789abcdef"[digit];
  }
  return hex;
}

// A number of the wire in hexadecimal, for values that the platform chooses.
inline std::string varint(std::uint32_t value) {
  std::string bytes;
  for (; value > 127; value >>= 7) bytes.push_back(static_cast<char>(value | 128));
  return toHex(bytes + static_cast<char>(value));
}

inline std::uint32_t interfaceIndex(limid_t limid) {
  std::uint32_t index = 0;
  EXPECT_EQ(limid_to_ifindex(limid, &index), 0);
  return index;
}

// What an object writes into a fresh message.
inline std::string wireOf(const Match& match) {
  MatchPB message;
  match.convertToMatchPB(&message);
  return toHex(message.SerializePartialAsString());
}
inline std::string wireOf(const Action& action) {
  ActionPB message;
  action.convertToActionPB(&message);
  return toHex(message.SerializePartialAsString());
}

// Has an object read a message given in hexadecimal.
inline void readInto(Match* match, const std::string& hex) {
  MatchPB message;
  ASSERT_TRUE(message.ParsePartialFromString(fromHex(hex)));
  match->convertFromMatchPB(&message);
}
inline void readInto(Action* action, const std::string& hex) {
  ActionPB message;
  ASSERT_TRUE(message.ParsePartialFromString(fromHex(hex)));
  action->convertFromActionPB(&message);
}

// --- Values --------------------------------------------------------------------------------------

using Ports = std::list<limid_t>;
using PortTypes = std::list<port_type_t>;
using VlanIds = std::set<unsigned short>;
using Pcps = std::set<unsigned char>;

template <class Address>
Address addressOf(std::initializer_list<std::uint8_t> bytes) {
  Address address{};
  std::memcpy(&address, std::data(bytes), bytes.size());
  return address;
}
inline const ether_addr kMac = addressOf<ether_addr>({0x00, 0x1b, 0x21, 0x0a, 0xff, 0x42});
inline const ether_addr kMacMask = addressOf<ether_addr>({0xff, 0xff, 0xff, 0x00, 0x00, 0x00});
inline const ether_addr kNextMac = addressOf<ether_addr>({0x00, 0x1b, 0x21, 0x0a, 0xff, 0x43});
inline const ether_addr kNoMac{};
inline const in_addr kIPv4 = addressOf<in_addr>({192, 0, 2, 1});
inline const in_addr kIPv4Mask = addressOf<in_addr>({255, 255, 240, 0});
inline const in_addr kNextIPv4 = addressOf<in_addr>({192, 0, 2, 2});
inline const in_addr kNoIPv4{};
inline const in6_addr kIPv6 =
    addressOf<in6_addr>({0x20, 0x01, 0x0d, 0xb8, 0x12, 0x34, 0, 0, 0, 0,  //
                         0, 0, 0, 0, 0xab, 0xcd});
inline const in6_addr kIPv6Mask = addressOf<in6_addr>({0xff, 0xff, 0xff, 0xff, 0xff, 0xff});
inline const in6_addr kNoIPv6{};

inline const limid_t kEth3 = limid_make_ethernet(3);
inline const limid_t kEth4 = limid_make_ethernet(4);
inline const limid_t kLag1 = limid_make_lag(1);
inline const limid_t kVpws7 = limid_make_mpls_vpws(7);
inline const limid_t kVpls9 = limid_make_bridgedomain(limid_bridgedomain_type_vpls, 9);
inline const limid_t kBridge9 = limid_make_bridgedomain(limid_bridgedomain_type_vpls + 1, 9);

inline const PortTypes kCpuPort{FILTERS_PORT_TYPE_CPU};
constexpr std::uint32_t kMax = 0xffffffff;  // as an enumerator: one that nobody has named

// A redirection to any number of ports comes out of a message only.
inline ActionRedirect redirectTo(const Ports& ports) {
  ActionRedirect action(0);
  std::string hex;
  for (limid_t port : ports) hex += "10" + varint(port);
  readInto(&action, hex);
  return action;
}

// --- Catalogue -----------------------------------------------------------------------------------

template <class T>
struct Row {
  unsigned code;
  std::string fields;              // what the first object writes behind its code
  std::vector<std::string> lines;  // what the first object prints below its code
  // They differ from each other. The last one holds zeros and empty lists.
  std::vector<T> objects;
  std::vector<std::uint32_t> given;  // what objects of a single number were made from
  std::vector<std::uint32_t> got;    // what their getter returns
};

// For a class made from one argument: each argument makes an object, and so do ready objects.
template <class T, class... Arguments>
Row<T> row(unsigned code, const std::string& fields, const std::vector<std::string>& lines,
           const Arguments&... arguments) {
  return {code, fields, lines, {T(arguments)...}, {}, {}};
}

template <class T, class Value>
T classOf(Value (T::*getter)() const);

// For a class made from one number.
template <auto getter, class T = decltype(classOf(getter))>
Row<T> numbers(unsigned code, const std::string& fields, const std::string& line,
               std::initializer_list<std::uint32_t> values) {
  Row<T> result{code, fields, {line}, {}, values, {}};
  for (std::uint32_t value : values) {
    using Value = decltype((std::declval<T>().*getter)());
    result.objects.emplace_back(static_cast<Value>(value));
    result.got.push_back((result.objects.back().*getter)());
  }
  return result;
}

// For a class without values.
template <class T>
Row<T> plain(unsigned code, const std::vector<std::string>& lines = {"<no parameters>"}) {
  return {code, "", lines, {T()}, {}, {}};
}

// A row of the catalogue, made when it is first asked for. Each has a function of its own: the
// initialiser of one table of them all takes a compiler minutes.
template <class T>
struct RowMaker {
  Row<T> (*make)();
};
template <class T>
constexpr RowMaker<T> makeBy(Row<T> (*make)()) {
  return {make};
}
#define ROW(...) makeBy(+[] { return __VA_ARGS__; })

// clang-format off
inline constexpr auto kMatchRows = std::make_tuple(
    ROW(plain<MatchAll>(0)),
    ROW(row<MatchIngressPorts>(1, "10" + varint(kEth3) + "10" + varint(kLag1),
        {"Number of ports: 2", "LIMIDs: \"eth-3\" \"lag-1\" "}, Ports{kEth3, kLag1},
        Ports{kLag1, kEth3}, Ports{kEth3}, kCpuPort, PortTypes{port_type_t(7)}, Ports())),
    ROW(row<MatchExternalVlanId>(2, "180a 18ff1f", {"VLAN IDs: [ 10 4095 ]"},
        VlanIds{4095, 10}, MatchExternalVlanId(10), VlanIds{10, 65535}, VlanIds())),
    ROW(numbers<&MatchTPID::getTPID>(3, "20808202", "TPID: 0x8100", {0x8100, 0x88a8, 0})),
    ROW(row<MatchDstMac>(4, "2a06001b210aff42 3a06ffffff000000",
        {"MAC: 0:1b:21:a:ff:42", "Mask: ff:ff:ff:0:0:0"},
        MatchDstMac(kMac, kMacMask), MatchDstMac(kNextMac, kMacMask), kMac,
        MatchDstMac(kNoMac, kNoMac))),
    ROW(row<MatchDstL4Port>(5, "3050 900180fe03", {"Param1: 80", "Param2: 65280"},
        MatchDstL4Port(80, 65280), MatchDstL4Port(80), MatchDstL4Port(443), MatchDstL4Port(0))),
    ROW(row<MatchSrcL4Port>(6, "3050 900180fe03", {"Param1: 80", "Param2: 65280"},
        MatchSrcL4Port(80, 65280), MatchSrcL4Port(80), MatchSrcL4Port(443), MatchSrcL4Port(0))),
    ROW(row<MatchSrcMac>(7, "2a06001b210aff42 3a06ffffff000000",
        {"MAC: 0:1b:21:a:ff:42", "Mask: ff:ff:ff:0:0:0"},
        MatchSrcMac(kMac, kMacMask), MatchSrcMac(kNextMac, kMacMask), kMac,
        MatchSrcMac(kNoMac, kNoMac))),
    ROW(numbers<&MatchL2SrcEntryType::getL2SrcEntryType>(
        8, "6802", "L2 Src Entry Type: 2", {2, kMax, 0})),
    ROW(row<MatchSrcIPv4>(9, "4204c0000201 5204fffff000", {"IP: 192.0.2.1", "Mask: 255.255.240.0"},
        MatchSrcIPv4(kIPv4, kIPv4Mask), MatchSrcIPv4(kNextIPv4, kIPv4Mask), kIPv4,
        MatchSrcIPv4(kNoIPv4, kNoIPv4))),
    ROW(row<MatchDstIPv4>(10, "4204c0000201 5204fffff000", {"IP: 192.0.2.1", "Mask: 255.255.240.0"},
        MatchDstIPv4(kIPv4, kIPv4Mask), MatchDstIPv4(kNextIPv4, kIPv4Mask), kIPv4,
        MatchDstIPv4(kNoIPv4, kNoIPv4))),
    ROW(row<MatchInternalVlanId>(11, "180a 18ff1f", {"VLAN IDs: [ 10 4095 ]"},
        VlanIds{4095, 10}, MatchInternalVlanId(10), VlanIds{10, 65535}, VlanIds())),
    ROW(row<MatchPcp>(12, "4803 4807", {"PCPs: [ \3 \7 ]"}, Pcps{7, 3}, MatchPcp(255), Pcps())),
    ROW(row<MatchInternalPcp>(13, "4803 4807", {"PCPs: [ \3 \7 ]"},
        Pcps{7, 3}, MatchInternalPcp(255), Pcps())),
    ROW(row<MatchSrcIPv6>(14,
        "5a1020010db812340000000000000000abcd 6210ffffffffffffffffffffffffffffffff",
        {"IPv6: 2001:db8:1234::abcd", "Mask: ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"},
        kIPv6, kNoIPv6)),
    ROW(row<MatchDstIPv6>(15,
        "5a1020010db812340000000000000000abcd 6210ffffffffffff00000000000000000000",
        {"IPv6: 2001:db8:1234::abcd", "Mask: ffff:ffff:ffff::"},
        MatchDstIPv6(kIPv6, kIPv6Mask), kIPv6, kNoIPv6, MatchDstIPv6(kNoIPv6, kNoIPv6))),
    ROW(numbers<&MatchVlanTagging::getTagging>(16, "d80101", "Tagging: tagged", {1, kMax, 0})),
    ROW(numbers<&MatchIpProtocol::getIpProtocol>(17, "7006", "Ip Protocol: 6", {6, 255, 0})),
    ROW(numbers<&MatchPacketRes::getPktRes>(18, "7808", "Pkt Resolution: 8", {8, kMax, 0})),
    ROW(numbers<&MatchMplsTerm::getMplsTerm>(19, "d00101", "Mpls Terminated status: 1", {1, 0})),
    ROW(numbers<&MatchToS::getToS>(20, "8001b901", "ToS: 185", {185, 184, 0})),
    ROW(numbers<&MatchVirtualPort::getLimId, MatchVirtualPort>(
        21, "8801" + varint(kEth3), "LIMID: eth-3", {kEth3, kMax, 0})),
    ROW(row<MatchEgressPorts>(22, "10" + varint(kEth3) + "10" + varint(kLag1),
        {"Number of ports: 2", "LIMIDs: \"eth-3\" \"lag-1\" "},
        Ports{kEth3, kLag1}, Ports{kLag1, kEth3}, Ports{kEth3, kEth3}, Ports())),
    ROW(numbers<&MatchIngressStpState::getIngressStpState>(
        23, "980104", "IngressStpState: 4", {4, kMax, 0})),
    ROW(row<MatchVlanInfo>(24, "a80101 f001ffffffff0f",
        {"SVC VLAN Type: 1", "Protocol2CPU VLAN Type: 4294967295"},
        vlan_info_t{1, kMax}, vlan_info_t{1, 0}, vlan_info_t{0, 0})),
    ROW(numbers<&MatchSrcPort::getLimId, MatchSrcPort>(
        25, "8801" + varint(kEth3), "LIMID: eth-3", {kEth3, kMax, 0})),
    ROW(numbers<&MatchTTL::getTTL>(26, "b00140", "TTL: 64", {64, 255, 0})),
    ROW(numbers<&MatchVrfId::getVrfId>(27, "b801ac02", "Match VRF ID: 300", {300, 65535, 0})),
    ROW(numbers<&MatchDrop::getDropFlag>(28, "c00101", "Match Drop: 1", {1, 0})),
    ROW(numbers<&MatchMyStationHit::getHitFlag>(29, "e00101", "Match MyStationHit: 1", {1, 0})),
    ROW(plain<MatchCpuPort>(30, {})),
    ROW(numbers<&MatchForwardingType::getForwardingType>(
        31, "c80102", "Forwarding Type: 2", {2, kMax, 0})),
    ROW(plain<MatchDestinationCpu>(32, {})),
    ROW(numbers<&MatchCPUInjectedPackets::getInjected>(33, "e80101", "Match Injected?: 1", {1, 0})),
    ROW(row<MatchDstL4PortRange>(34, "3064 9001c801", {"Min Port: 100", "Max Port: 200"},
        MatchDstL4PortRange(100, 200), MatchDstL4PortRange(100, 0), MatchDstL4PortRange(0, 0))),
    // Last: it shares the code of MatchToS.
    ROW(numbers<&MatchDSCP::getDSCP>(20, "8001b801", "DSCP: 46", {46, 63, 0})));

inline constexpr auto kActionRows = std::make_tuple(
    ROW(plain<ActionPermit>(0)), ROW(plain<ActionDeny>(1)), ROW(plain<ActionCopyToCpu>(2)),
    ROW(row<ActionBlockEgressPorts>(3, "10" + varint(kEth3) + "10" + varint(kLag1),
        {"Number of ports: 2", "LIMIDs: \"eth-3\" \"lag-1\" "},
        Ports{kEth3, kLag1}, Ports{kLag1, kEth3}, Ports{kEth3}, Ports())),
    ROW(numbers<&ActionCopyToCpuCancel::getCancelType>(
        4, "3801", "Cp2CPU Cancel type: SWITCH_TO_CPU_CANCEL", {1, kMax, 0})),
    ROW(numbers<&ActionSetPcp::getPcp>(5, "1807", "PCP: 7", {7, 255, 0})),
    ROW(numbers<&ActionSetPcpAndQueue::getPcpAndQueue>(6, "2007", "PCP_AND_QUEUE: 7", {7, 255, 0})),
    ROW(numbers<&ActionSetInnerPcp::getInnerPcp>(7, "1807", "Inner PCP: 7", {7, 255, 0})),
    ROW(numbers<&ActionSetDSCP::getDSCP>(8, "282e", "DSCP: 46", {46, 255, 0})),
    ROW(numbers<&ActionMapToCosQueue::getCosQueue>(9, "3005", "CoS Queue: 5", {5, 255, 0})),
    ROW(numbers<&ActionMapToCpuCosQueue::getCpuCosQueue>(
        10, "3005", "CPU CoS Queue: 5", {5, 255, 0})),
    ROW(row<ActionRedirect>(11, "10" + varint(kEth3), {"\"eth-3\" "},
        kEth3, redirectTo({kEth3, kLag1}), redirectTo({kLag1, kEth3}), redirectTo({}))),
    ROW(row<ActionReplaceDstMac>(12, "4206001b210aff42", {"Replace MAC: 0:1b:21:a:ff:42"},
        kMac, kNoMac)),
    ROW(plain<ActionRedirectCancel>(13)),
    ROW(row<ActionReplaceSrcMac>(14, "4206001b210aff42", {"Replace MAC: 0:1b:21:a:ff:42"},
        kMac, kNoMac)),
    ROW(numbers<&ActionL3Switch::getL3DestinationId>(
        15, "48a08d06", "L3 Destination ID: 100000", {100000, kMax, 0})),
    ROW(plain<ActionBlackHole>(16)), ROW(plain<ActionCopyInnerPcp>(17)),
    // Interface indexes on the wire, where every other class sends limids.
    ROW(row<ActionMplsPortSet>(18,
        "50" + varint(interfaceIndex(kVpws7)) + "58" + varint(interfaceIndex(kEth3)),
        {"VPN ID: vpws-7", "MPLS Access Port: eth-3"}, ActionMplsPortSet(kVpws7, kEth3),
        ActionMplsPortSet(kVpws7, kLag1), ActionMplsPortSet(kVpls9, kEth3))),
    ROW(plain<ActionL2ToCpuDrop>(19)));
// clang-format on
#undef ROW

// --- Walking -------------------------------------------------------------------------------------

template <class... T>
::testing::Types<T...> typesOf(const std::tuple<RowMaker<T>...>&);
using AllMatches = decltype(typesOf(kMatchRows));  // 35 in code order, and MatchDSCP
using AllActions = decltype(typesOf(kActionRows));

template <class... M, class... A>
::testing::Types<M..., A...> both(::testing::Types<M...>, ::testing::Types<A...>);
using EveryClass = decltype(both(AllMatches(), AllActions()));

template <class T>
const Row<T>& rowOf() {
  if constexpr (std::is_base_of_v<Match, T>) {
    static const Row<T> row = std::get<RowMaker<T>>(kMatchRows).make();
    return row;
  } else {
    static const Row<T> row = std::get<RowMaker<T>>(kActionRows).make();
    return row;
  }
}

// The code that a class must carry.
template <class T>
unsigned codeOf() {
  return rowOf<T>().code;
}

// Objects that differ from each other. The first has values that no default has; the last has
// zeros and empty lists, so that a message can be read into a copy of it.
template <class T>
const std::vector<T>& samples() {
  return rowOf<T>().objects;
}

// Fresh copies of the first sample of every class, in the order of the rows.
template <class Base, class Code, class... T>
std::vector<std::pair<Code, std::unique_ptr<Base>>> firstOfEach(const std::tuple<RowMaker<T>...>&) {
  std::vector<std::pair<Code, std::unique_ptr<Base>>> list;
  (list.emplace_back(Code(codeOf<T>()), std::make_unique<T>(samples<T>().front())), ...);
  return list;
}

// Codes 0 to 34 in order, each with an object of its class: MatchToS for 20.
inline auto oneMatchOfEachCode() {
  auto list = firstOfEach<Match, filtersMatch_t>(kMatchRows);
  list.pop_back();  // MatchDSCP
  return list;
}

// Codes 0 to 19 in order, each with an object of its class.
inline auto oneActionOfEachCode() { return firstOfEach<Action, filtersAction_t>(kActionRows); }

}  // namespace catalogue

#endif  // FILTER_COMMON_TESTS_SAMPLES_H_

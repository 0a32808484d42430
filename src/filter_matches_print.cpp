#include <filter_common/filter_matches.h>

#include <arpa/inet.h>

#include <charconv>
#include <iterator>
#include <ostream>

#include "match_visit.h"
#include "print.h"

namespace FiltersCommon {
namespace {

// Prints the lines that begin every block.
std::ostream& printHead(std::ostream& os, const char* header, const Match& match) {
  return os << header << "\n      Match Type ID: " << match.getType() << '\n';
}

// Prints a block with one value after its label.
template <class Value>
std::ostream& printOne(std::ostream& os, const char* header, const Match& match, const char* label,
                       const Value& value) {
  return printHead(os, header, match) << label << value << '\n';
}

std::ostream& printMac(std::ostream& os, const char* header, const MatchMac& match) {
  return printHead(os, header, match) << "      MAC: " << MacText(*match.getMac()).text
                                      << "\n      Mask: " << MacText(*match.getMask()).text << '\n';
}

std::ostream& printIPv4(std::ostream& os, const char* header, const MatchIPv4& match) {
  char ip[INET_ADDRSTRLEN];
  char mask[INET_ADDRSTRLEN];
  return printHead(os, header, match)
         << "      IP: " << inet_ntop(AF_INET, match.getIPv4(), ip, sizeof ip)
         << "\n      Mask: " << inet_ntop(AF_INET, match.getIPv4Mask(), mask, sizeof mask) << '\n';
}

std::ostream& printIPv6(std::ostream& os, const char* header, const MatchIPv6& match) {
  char ip[INET6_ADDRSTRLEN];
  char mask[INET6_ADDRSTRLEN];
  return printHead(os, header, match)
         << "      IPv6: " << inet_ntop(AF_INET6, match.getIPv6(), ip, sizeof ip)
         << "\n      Mask: " << inet_ntop(AF_INET6, match.getIPv6Mask(), mask, sizeof mask) << '\n';
}

std::ostream& printParams(std::ostream& os, const char* header, const MatchL4Port& match,
                          const char* label1, const char* label2) {
  return printHead(os, header, match)
         << label1 << match.getParam1() << label2 << match.getParam2() << '\n';
}

std::ostream& printLimId(std::ostream& os, const char* header, const MatchLimId& match) {
  return printOne(os, header, match, "      LIMID: ", InterfaceName<100>(match.getLimId()).text);
}

// Deliberate: each value is printed as the character with that code, not as digits.
std::ostream& printPcps(std::ostream& os, const std::vector<unsigned char>& pcps) {
  os << "      PCPs: [ ";
  for (unsigned char pcp : pcps) os << static_cast<char>(pcp) << ' ';
  return os << "]\n";
}

const char* portTypeName(port_type_t type) {
  return type == FILTERS_PORT_TYPE_CPU ? "CPU_PORT" : "";
}

}  // namespace

std::ostream& operator<<(std::ostream& os, const Match& match) {
  return visitMatch<std::ostream&>(match.getType(), os, [&](auto tag) -> std::ostream& {
    using T = typename decltype(tag)::Class;
    return os << static_cast<const T&>(match);
  });
}

std::ostream& operator<<(std::ostream& os, const MatchAll& match) {
  return printHead(os, "    =MatchAll=", match) << "      <no parameters>\n";
}

void MatchPorts::print(std::ostream& os) const {
  if (!excludedPortTypes_.empty()) {
    os << "      Excluded Port Types: ";
    for (port_type_t type : excludedPortTypes_) os << '"' << portTypeName(type) << "\" ";
    os << '\n';
  }
  os << "      Number of ports: " << ports_.size() << "\n      LIMIDs: ";
  for (limid_t port : ports_) os << '"' << InterfaceName<100>(port).text << "\" ";
  os << '\n';
}

void MatchVlanId::print(std::ostream& os) const {
  os << "      VLAN IDs: [ ";
  for (unsigned short vlanId : vlanIds_) os << vlanId << ' ';
  os << "]\n";
}

std::ostream& operator<<(std::ostream& os, const MatchIngressPorts& match) {
  match.print(printHead(os, "    =MatchIngressPorts=", match));
  return os;
}

std::ostream& operator<<(std::ostream& os, const MatchExternalVlanId& match) {
  match.print(printHead(os, "    =MatchExternalVlanId=", match));
  return os;
}

// Deliberate: the stream stays in hexadecimal. The flags of the stream do not affect the TPID
// itself.
std::ostream& operator<<(std::ostream& os, const MatchTPID& match) {
  char text[sizeof "ffff"] = {};
  std::to_chars(text, std::end(text), match.getTPID(), 16);
  printHead(os, "    =MatchTPID=", match);
  return os << std::hex << "      TPID: 0x" << text << '\n';
}

std::ostream& operator<<(std::ostream& os, const MatchDstMac& match) {
  return printMac(os, "    =MatchDstMac=", match);
}

std::ostream& operator<<(std::ostream& os, const MatchDstL4Port& match) {
  return printParams(os, "    =MatchDstL4Port=", match, "      Param1: ", "\n      Param2: ");
}

std::ostream& operator<<(std::ostream& os, const MatchSrcL4Port& match) {
  return printParams(os, "    =MatchSrcL4Port=", match, "      Param1: ", "\n      Param2: ");
}

std::ostream& operator<<(std::ostream& os, const MatchSrcMac& match) {
  return printMac(os, "    =MatchSrcMac=", match);
}

std::ostream& operator<<(std::ostream& os, const MatchL2SrcEntryType& match) {
  return printOne(os, "    =MatchL2SrcEntryType=", match,
                  "      L2 Src Entry Type: ", match.getL2SrcEntryType());
}

std::ostream& operator<<(std::ostream& os, const MatchSrcIPv4& match) {
  return printIPv4(os, "    =MatchSrcIPv4=", match);
}

std::ostream& operator<<(std::ostream& os, const MatchDstIPv4& match) {
  return printIPv4(os, "    =MatchDstIPv4=", match);
}

std::ostream& operator<<(std::ostream& os, const MatchInternalVlanId& match) {
  match.print(printHead(os, "    =MatchInternalVlanId=", match));
  return os;
}

std::ostream& operator<<(std::ostream& os, const MatchPcp& match) {
  return printPcps(printHead(os, "    =MatchPcp=", match), match.pcps_);
}

std::ostream& operator<<(std::ostream& os, const MatchInternalPcp& match) {
  return printPcps(printHead(os, "    =MatchInternalPcp=", match), match.pcps_);
}

std::ostream& operator<<(std::ostream& os, const MatchSrcIPv6& match) {
  return printIPv6(os, "    =MatchSrcIPv6=", match);
}

std::ostream& operator<<(std::ostream& os, const MatchDstIPv6& match) {
  return printIPv6(os, "    =MatchDstIPv6=", match);
}

std::ostream& operator<<(std::ostream& os, const MatchVlanTagging& match) {
  return printOne(os, "    =MatchVlanTagging=", match, "      Tagging: ",
                  match.getTagging() == FILTERS_VLAN_UNTAGGED ? "untagged" : "tagged");
}

std::ostream& operator<<(std::ostream& os, const MatchIpProtocol& match) {
  return printOne(os, "    =MatchIpProtocol=", match,
                  "      Ip Protocol: ", +match.getIpProtocol());
}

std::ostream& operator<<(std::ostream& os, const MatchPacketRes& match) {
  return printOne(os, "    =MatchPacketRes=", match, "      Pkt Resolution: ", match.getPktRes());
}

std::ostream& operator<<(std::ostream& os, const MatchMplsTerm& match) {
  return printOne(os, "    =MatchMplsTerm=", match,
                  "      Mpls Terminated status: ", +match.getMplsTerm());
}

std::ostream& operator<<(std::ostream& os, const MatchToS& match) {
  return printOne(os, "    =MatchToS=", match, "      ToS: ", +match.getToS());
}

std::ostream& operator<<(std::ostream& os, const MatchDSCP& match) {
  return printOne(os, "    =MatchDSCP=", match, "      DSCP: ", +match.getDSCP());
}

std::ostream& operator<<(std::ostream& os, const MatchVirtualPort& match) {
  return printLimId(os, "    =MatchVirtualPort=", match);
}

std::ostream& operator<<(std::ostream& os, const MatchEgressPorts& match) {
  match.print(printHead(os, "    =MatchEgressPorts=", match));
  return os;
}

std::ostream& operator<<(std::ostream& os, const MatchIngressStpState& match) {
  return printOne(os, "    =MatchIngressStpState=", match,
                  "      IngressStpState: ", match.getIngressStpState());
}

std::ostream& operator<<(std::ostream& os, const MatchVlanInfo& match) {
  const vlan_info_t info = match.getVlanInfo();
  return printHead(os, "    =MatchVlanInfo=", match)
         << "      SVC VLAN Type: " << info.svc_vlan_type
         << "\n      Protocol2CPU VLAN Type: " << info.proto_cpu_vlan_type << '\n';
}

std::ostream& operator<<(std::ostream& os, const MatchSrcPort& match) {
  return printLimId(os, "    =MatchSrcPort=", match);
}

std::ostream& operator<<(std::ostream& os, const MatchTTL& match) {
  return printOne(os, "    =MatchTTL=", match, "      TTL: ", +match.getTTL());
}

std::ostream& operator<<(std::ostream& os, const MatchVrfId& match) {
  return printOne(os, "    =MatchVrfId=", match, "      Match VRF ID: ", match.getVrfId());
}

std::ostream& operator<<(std::ostream& os, const MatchDrop& match) {
  return printOne(os, "    =MatchDrop=", match, "      Match Drop: ", +match.getDropFlag());
}

std::ostream& operator<<(std::ostream& os, const MatchMyStationHit& match) {
  return printOne(os, "    =MatchMyStationHit=", match,
                  "      Match MyStationHit: ", +match.getHitFlag());
}

std::ostream& operator<<(std::ostream& os, const MatchCpuPort& match) {
  return printHead(os, "    =MatchCpuPort=", match);
}

std::ostream& operator<<(std::ostream& os, const MatchForwardingType& match) {
  return printOne(os, "    =MatchForwardingType=", match,
                  "      Forwarding Type: ", match.getForwardingType());
}

std::ostream& operator<<(std::ostream& os, const MatchDestinationCpu& match) {
  return printHead(os, "    =MatchDestinationCpu=", match);
}

std::ostream& operator<<(std::ostream& os, const MatchCPUInjectedPackets& match) {
  return printOne(os, "    =MatchCPUInjectedPackets=", match,
                  "      Match Injected?: ", +match.getInjected());
}

std::ostream& operator<<(std::ostream& os, const MatchDstL4PortRange& match) {
  return printParams(os, "    =MatchDstL4PortRange=", match,
                     "      Min Port: ", "\n      Max Port: ");
}

}  // namespace FiltersCommon

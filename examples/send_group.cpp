// The tutorial, first half (receive_group.cpp is the second): builds the two filter groups that
// protect a router's control plane and sends them to another process.
//
//   send_group | receive_group    sends the bytes of each group after their length
//   send_group --print            prints what the other side must print
//   send_group --refusals         prints what the library refuses, and with which code

#include <arpa/inet.h>
#include <filter_common/filter_groups.h>
#include <limid/limid_standin.h>
#include <netinet/ether.h>

#include <iostream>
#include <list>
#include <set>
#include <stdexcept>
#include <string>

namespace fc = FiltersCommon;

namespace {

in_addr ipv4(const char* text) {
  in_addr address{};
  inet_pton(AF_INET, text, &address);
  return address;
}

in6_addr ipv6(const char* text) {
  in6_addr address{};
  inet_pton(AF_INET6, text, &address);
  return address;
}

ether_addr mac(const char* text) {
  ether_addr address{};
  ether_aton_r(text, &address);
  return address;
}

// Stops the program if a rule cannot be made, because a group without that rule would not protect
// the router.
void require(fc::filtersErr_t result) {
  if (result != fc::FILTERS_OK) throw std::runtime_error("refused: " + std::to_string(result));
}

// --- Layer 3: what may reach the CPU of the router -----------------------------------------------

// The common part of all rules: one parent policer for all traffic to the CPU. Copies of an entry
// share its parent policer, so every rule begins as a copy of this entry.
fc::FiltersEntry cpuRule() {
  fc::FiltersEntry rule;
  require(rule.setPolicerParent(policer::Policer(1, policer::Stage::Ingress,
                                                 policer::Mode::Flow(10000, 64000),
                                                 {policer::Action::Drop(policer::Color::Red)})));
  return rule;
}

// Admits matching packets to a queue of the CPU at a rate in kbit/s, and counts them.
void admit(fc::FiltersEntry& rule, unsigned char queue, std::uint32_t rate) {
  require(rule.setAction(fc::ActionPermit()));
  require(rule.setAction(fc::ActionMapToCpuCosQueue(queue)));
  require(rule.setPolicer(policer::Policer(rule.getId(), policer::Stage::Ingress,
                                           policer::Mode::TrTcm(rate, 16000, 2 * rate, 32000),
                                           {policer::Action::SetDscp(policer::Color::Yellow, 8),
                                            policer::Action::Drop(policer::Color::Red)})));
  require(rule.setCounter(fc::Counter(1, fc::FILTERS_COUNTER_TYPE_PACKETS)));
  require(rule.setCounter(fc::Counter(2, fc::FILTERS_COUNTER_TYPE_RED_OCTETS)));
}

// A rule for TCP packets (protocol 6) from one prefix. The caller adds the source or destination
// port, depending on which end opens the connection.
fc::FiltersEntry tcpFrom(fc::filtersEntryId_t id, const char* prefix, const char* mask) {
  fc::FiltersEntry rule(cpuRule());
  rule.setId(id);
  rule.setPriority(100);
  require(rule.setMatch(fc::MatchSrcIPv4(ipv4(prefix), ipv4(mask))));
  require(rule.setMatch(fc::MatchIpProtocol(IPPROTO_TCP)));
  return rule;
}

// A rule for a routing protocol that sends to a multicast group.
fc::FiltersEntry multicastProtocol(fc::filtersEntryId_t id, const char* group,
                                   unsigned char protocol) {
  fc::FiltersEntry rule(cpuRule());
  rule.setId(id);
  rule.setPriority(100);
  require(rule.setMatch(fc::MatchDstIPv4(ipv4(group))));
  require(rule.setMatch(fc::MatchIpProtocol(protocol)));
  return rule;
}

fc::FiltersGroup controlPlane() {
  fc::FiltersGroup group(1);
  group.setPriority(10);
  require(group.setStage(fc::FILTERS_GROUP_STAGE_INGRESS));
  require(group.setType(fc::FILTERS_GROUP_TYPE_3));

  fc::FiltersEntry bgp = tcpFrom(10, "192.0.2.0", "255.255.255.0");  // sessions that the peers open
  require(bgp.setMatch(fc::MatchDstL4Port(179, 0xffff)));
  admit(bgp, 6, 2000);
  require(group.insertEntry(bgp));

  fc::FiltersEntry bgpReply = tcpFrom(11, "192.0.2.0", "255.255.255.0");  // sessions that we open
  require(bgpReply.setMatch(fc::MatchSrcL4Port(179, 0xffff)));
  admit(bgpReply, 6, 2000);
  require(group.insertEntry(bgpReply));

  fc::FiltersEntry ssh = tcpFrom(20, "198.51.100.0", "255.255.255.240");
  require(ssh.setMatch(fc::MatchDstL4Port(22, 0xffff)));
  admit(ssh, 5, 1000);
  require(group.insertEntry(ssh));

  fc::FiltersEntry ospf = multicastProtocol(30, "224.0.0.5", 89);
  admit(ospf, 6, 500);
  require(group.insertEntry(ospf));

  fc::FiltersEntry vrrp = multicastProtocol(40, "224.0.0.18", 112);
  require(vrrp.setMatch(fc::MatchTTL(255)));  // RFC 5798: any other TTL came over another link
  admit(vrrp, 6, 100);
  require(group.insertEntry(vrrp));

  fc::FiltersEntry expiring(cpuRule());  // traceroute: the CPU answers a limited number
  expiring.setId(50);
  expiring.setPriority(50);
  require(expiring.setMatch(fc::MatchTTL(1)));
  admit(expiring, 1, 64);
  require(expiring.setAction(fc::ActionCopyToCpu()));
  require(group.insertEntry(expiring));

  fc::FiltersEntry rest(1000);
  require(rest.setMatch(fc::MatchDestinationCpu()));
  require(rest.setAction(fc::ActionDeny()));
  require(rest.setCounter(fc::Counter(1, fc::FILTERS_COUNTER_TYPE_PACKETS)));
  require(group.insertEntry(rest));
  return group;
}

// --- Layer 2: link protocols and customer VLANs --------------------------------------------------

// The rules for the reserved group MAC addresses of IEEE 802.1Q and 802.3.
void addLinkProtocol(fc::FiltersGroup& group, fc::filtersEntryId_t id, const char* destination,
                     const char* mask) {
  fc::FiltersEntry rule(id);
  rule.setPriority(100);
  require(rule.setMatch(fc::MatchDstMac(mac(destination), mac(mask))));
  require(rule.setMatch(fc::MatchVlanTagging(fc::FILTERS_VLAN_UNTAGGED)));
  require(rule.setAction(fc::ActionPermit()));
  require(rule.setAction(fc::ActionSetPcpAndQueue(7)));
  require(group.insertEntry(rule));
}

fc::FiltersGroup linkLayer() {
  fc::FiltersGroup group(2);
  require(group.setStage(fc::FILTERS_GROUP_STAGE_LOOKUP));
  require(group.setType(fc::FILTERS_GROUP_TYPE_6));
  addLinkProtocol(group, 1, "01:80:c2:00:00:02", "ff:ff:ff:ff:ff:ff");  // LACP
  addLinkProtocol(group, 2, "01:80:c2:00:00:00", "ff:ff:ff:ff:ff:ff");  // STP
  addLinkProtocol(group, 3, "01:80:c2:00:00:0e", "ff:ff:ff:ff:ff:ff");  // LLDP

  fc::FiltersEntry reserved(10);  // no bridge forwards the other addresses of this block
  require(reserved.setMatch(fc::MatchDstMac(mac("01:80:c2:00:00:00"), mac("ff:ff:ff:ff:ff:f0"))));
  require(reserved.setAction(fc::ActionDeny()));
  require(group.insertEntry(reserved));

  fc::FiltersEntry voice(20);
  const std::list<limid_t> ports = {limid_make_ethernet(1), limid_make_ethernet(2),
                                    limid_make_lag(1)};
  require(voice.setMatch(fc::MatchIngressPorts(ports)));
  require(voice.setMatch(fc::MatchExternalVlanId(std::set<unsigned short>{100, 110, 120})));
  require(voice.setMatch(fc::MatchPcp(std::set<unsigned char>{5, 6})));
  require(voice.setAction(fc::ActionSetPcpAndQueue(5)));
  require(group.insertEntry(voice));
  return group;
}

// --- What is refused -----------------------------------------------------------------------------

void printRefusals(std::ostream& os) {
  const auto show = [&](const char* what, int result) {
    os << "  " << result << "  " << what << '\n';
  };
  fc::FiltersGroup group = controlPlane();
  fc::FiltersEntry entry(99);
  show("removing an entry that is not there", group.removeEntry(99));
  require(entry.setMatch(fc::MatchSrcIPv4(ipv4("192.0.2.1"))));
  show("an IPv6 address beside an IPv4 address",
       entry.setMatch(fc::MatchDstIPv6(ipv6("2001:db8::1"))));
  show("deleting a counter that is not there", entry.deleteCounter(7));
  require(entry.setMatch(fc::MatchVrfId(5)));
  show("a match that the group's type does not admit", group.insertEntry(entry));
  show("a type that the group's stage does not admit", group.setType(fc::FILTERS_GROUP_TYPE_5));
  show("a stage that does not exist", group.setStage(static_cast<fc::filtersGroupStage_t>(4)));
  fc::FiltersEntry forward(100);
  require(forward.setAction(fc::ActionSetInnerPcp(3)));
  show("an action that the group's stage does not admit", group.insertEntry(forward));
  fc::FiltersEntry policed(101);
  require(policed.setPolicer(
      policer::Policer(5, policer::Stage::Egress, policer::Mode::Flow(1, 1), {})));
  show("a policer of another stage", group.insertEntry(policed));
  try {
    fc::ActionMplsPortSet(limid_make_ethernet(1), limid_make_lag(1));
  } catch (const std::invalid_argument& refusal) {
    os << "  exception: " << refusal.what() << '\n';
  }
}

// Writes the length in four bytes, the most significant first, then the bytes.
void send(const fc::FiltersGroup& group, std::ostream& os) {
  std::string bytes;
  group.serialize(&bytes);
  const std::uint32_t length = htonl(static_cast<std::uint32_t>(bytes.size()));
  os.write(reinterpret_cast<const char*>(&length), sizeof length);
  os.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace

int main(int argc, char** argv) {
  const std::string option = argc > 1 ? argv[1] : "";
  if (option == "--refusals") {
    printRefusals(std::cout);
  } else if (option == "--print") {
    std::cout << controlPlane() << linkLayer();
  } else if (option.empty()) {
    send(controlPlane(), std::cout);
    send(linkLayer(), std::cout);
  } else {
    std::cerr << "usage: send_group [--print | --refusals]\n";
    return 2;
  }
  return std::cout.flush() ? 0 : 1;
}

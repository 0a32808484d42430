#ifndef FILTER_COMMON_FILTER_MATCHES_H_
#define FILTER_COMMON_FILTER_MATCHES_H_

// The criteria of a filter rule. Each kind of criterion has a class. A match is a value: its
// constructor makes it, its getters read it, == compares it, << prints it, and it can be written to
// and read from a MatchPB message. An entry keeps copies and never takes ownership of the caller's
// object. For example:
//
//     const in_addr network = {htonl(0xc0000200)}, mask = {htonl(0xffffff00)};
//     const MatchSrcIPv4 source(network, mask);  // from 192.0.2.0/24
//     const Match& any = source;
//     std::cout << any;  // its name, code, address and mask, a line each
//     if (any.getType() != FILTERS_MATCH_SRC_IPV4 || any == MatchTTL(1)) return 1;
//
// Common to all classes:
// - No class checks the range of its values: a VLAN id of 5000, a PCP of 9 or an unnamed enumerator
//   is kept.
// - convertToMatchPB() sets the message's type_ and the fields of the class. Pass a fresh or
//   cleared message.
// - convertFromMatchPB() reads the fields of the class and ignores type_. It reads absent numbers
//   and addresses as 0 and absent sets as empty; absent port lists add nothing. It cuts numbers to
//   the width of the member and addresses to their size, and reads missing address bytes as zero.
// - Deliberate: operator== is virtual in some classes and not virtual in others.
// - An object of a base class can be made with the code of a derived class, for example
//   Match(FILTERS_MATCH_TTL). Do not compare, print or copy such an object as a Match: it would be
//   read as a MatchTTL, which it is not.
// - Functions of classes that hold lists throw std::bad_alloc when memory runs out. So do functions
//   that write lists or addresses into a message, which is then partly filled. The object is then
//   unchanged, except that an assignment leaves it valid with unspecified values.
// - Objects are not synchronised: any number of threads may read an object at once, but a thread
//   that changes it must be the only one to use it.

#include <iosfwd>
#include <list>
#include <set>
#include <vector>

#include <filter_common/filter_types.h>

namespace FiltersCommon {

class MatchPB;

// The operator== of a class hides the generic comparison of its base. That is wanted.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Woverloaded-virtual"

// The base class of all matches. Code that handles matches of any class uses it.
class FILTERS_API Match {
 public:
  explicit Match(filtersMatch_t type) : type_(type) {}
  Match(const Match&) = default;
  Match& operator=(const Match&) { return *this; }  // an object keeps its code for life
  virtual ~Match() = default;

  virtual void convertToMatchPB(MatchPB* message) const;
  virtual void convertFromMatchPB(const MatchPB* message);

  // The generic comparison: false if the codes differ or are unknown, else the comparison of the
  // class that the code names. Both objects must be of this class. MatchToS and MatchDSCP share a
  // code, and they are compared by their whole ToS bytes.
  virtual bool operator==(const Match& other) const;

  filtersMatch_t getType() const { return type_; }
 private:
  const filtersMatch_t type_;
};

// Compares two matches of different classes by the generic comparison.
template <class = void>
bool operator==(const Match& a, const Match& b) {
  return a.operator==(b);
}

// --- Every packet, ports and switching state -----------------------------------------------------

// Every packet.
class FILTERS_API MatchAll : public Match {
 public:
  MatchAll() : Match(FILTERS_MATCH_ALL) {}
  bool operator==(const MatchAll&) const { return true; }
};

class MatchIngressPorts;
class MatchEgressPorts;
class MatchExternalVlanId;
class MatchInternalVlanId;

// The base class of matches on ports. It holds a list of logical interface ids in the caller's
// order, or a list of port types to exclude. An object can hold both lists only if it was read from
// a message. The order of the elements matters when two objects are compared.
class FILTERS_API MatchPorts : public Match {
 public:
  MatchPorts(filtersMatch_t type, const std::list<limid_t>& ports);
  MatchPorts(filtersMatch_t type, const std::list<port_type_t>& excludedPortTypes);
  std::list<limid_t> getPorts() const { return {ports_.begin(), ports_.end()}; }
  std::list<port_type_t> getExcludedPortTypes() const;
  // Replaces the ports. Deliberate: a match that excludes port types never accepts ports and
  // returns FILTERS_ERR_INVALID_ARGUMENT.
  FILTERS_NODISCARD filtersErr_t setPorts(const std::list<limid_t>& ports);
  bool operator==(const MatchPorts& other) const;
 private:
  friend struct WireFields;
  friend FILTERS_API std::ostream& operator<<(std::ostream& os, const MatchIngressPorts& match);
  friend FILTERS_API std::ostream& operator<<(std::ostream& os, const MatchEgressPorts& match);

  FILTERS_INTERNAL void print(std::ostream& os) const;

  std::vector<limid_t> ports_;
  std::vector<port_type_t> excludedPortTypes_;
};

// The packet came in through one of these ports. Reading a message adds to the lists already held.
// The arguments {} and {port} are ambiguous: write std::list<limid_t>{port}, or
// std::list<port_type_t>{FILTERS_PORT_TYPE_CPU}.
class FILTERS_API MatchIngressPorts : public MatchPorts {
 public:
  explicit MatchIngressPorts(const std::list<limid_t>& ports);
  explicit MatchIngressPorts(const std::list<port_type_t>& excludedPortTypes);
  void convertToMatchPB(MatchPB* message) const override;
  void convertFromMatchPB(const MatchPB* message) override;
};

// The packet leaves through one of these ports. This match never excludes port types, and ignores
// the port types of a message. Reading a message adds to the ports already held.
class FILTERS_API MatchEgressPorts : public MatchPorts {
 public:
  explicit MatchEgressPorts(const std::list<limid_t>& ports);
  void convertToMatchPB(MatchPB* message) const override;
  void convertFromMatchPB(const MatchPB* message) override;
};

// The base class of matches on one logical interface id, which is compared as its four bytes.
class FILTERS_API MatchLimId : public Match {
 public:
  MatchLimId(filtersMatch_t type, limid_t limId) : Match(type), limId_(limId) {}
  limid_t getLimId() const { return limId_; }
  bool operator==(const MatchLimId& other) const;
  void convertToMatchPB(MatchPB* message) const override;
  void convertFromMatchPB(const MatchPB* message) override;
 protected:
  friend struct WireFields;
  limid_t limId_;
};

// The virtual port that the packet was assigned to.
class FILTERS_API MatchVirtualPort : public MatchLimId {
 public:
  explicit MatchVirtualPort(limid_t limId) : MatchLimId(FILTERS_MATCH_VIRTUAL_PORT, limId) {}
};

// The one port that the packet came from.
class FILTERS_API MatchSrcPort : public MatchLimId {
 public:
  explicit MatchSrcPort(limid_t limId) : MatchLimId(FILTERS_MATCH_SRC_PORT, limId) {}
  void setSrcPort(limid_t limId) { limId_ = limId; }
};

// The packet comes from the CPU port.
class FILTERS_API MatchCpuPort : public Match {
 public:
  MatchCpuPort() : Match(FILTERS_MATCH_CPU_PORT) {}
  virtual bool operator==(const MatchCpuPort&) const { return true; }
};

// The packet goes to the CPU.
class FILTERS_API MatchDestinationCpu : public Match {
 public:
  MatchDestinationCpu() : Match(FILTERS_MATCH_DESTINATION_CPU) {}
  bool operator==(const MatchDestinationCpu&) const { return true; }
};

// Whether the CPU injected the packet.
class FILTERS_API MatchCPUInjectedPackets : public Match {
 public:
  explicit MatchCPUInjectedPackets(bool injected)
      : Match(FILTERS_MATCH_CPU_INJECTED_PACKETS), injected_(injected) {}
  bool getInjected() const { return injected_; }
  virtual bool operator==(const MatchCPUInjectedPackets& o) const {
    return injected_ == o.injected_;
  }
  void convertToMatchPB(MatchPB* message) const override;
  void convertFromMatchPB(const MatchPB* message) override;
 private:
  friend struct WireFields;
  bool injected_;
};

// Whether an earlier decision drops the packet.
class FILTERS_API MatchDrop : public Match {
 public:
  explicit MatchDrop(bool drop) : Match(FILTERS_MATCH_DROP), drop_(drop) {}
  bool getDropFlag() const { return drop_; }
  virtual bool operator==(const MatchDrop& o) const { return drop_ == o.drop_; }
  void convertToMatchPB(MatchPB* message) const override;
  void convertFromMatchPB(const MatchPB* message) override;
 private:
  friend struct WireFields;
  bool drop_;
};

// The packet's resolution by the forwarding tables, for example a known unicast destination.
class FILTERS_API MatchPacketRes : public Match {
 public:
  explicit MatchPacketRes(en_Resolution res) : Match(FILTERS_MATCH_PACKET_RES), res_(res) {}
  en_Resolution getPktRes() const { return res_; }
  bool operator==(const MatchPacketRes& o) const { return res_ == o.res_; }
  void convertToMatchPB(MatchPB* message) const override;
  void convertFromMatchPB(const MatchPB* message) override;
 private:
  friend struct WireFields;
  en_Resolution res_;
};

// How the device forwards the packet.
class FILTERS_API MatchForwardingType : public Match {
 public:
  explicit MatchForwardingType(en_ForwardingType fwd)
      : Match(FILTERS_MATCH_FORWARDING_TYPE), fwd_(fwd) {}
  en_ForwardingType getForwardingType() const { return fwd_; }
  virtual bool operator==(const MatchForwardingType& o) const { return fwd_ == o.fwd_; }
  void convertToMatchPB(MatchPB* message) const override;
  void convertFromMatchPB(const MatchPB* message) override;
 private:
  friend struct WireFields;
  en_ForwardingType fwd_;
};

// The spanning-tree state of the ingress port.
class FILTERS_API MatchIngressStpState : public Match {
 public:
  explicit MatchIngressStpState(en_StpState state)
      : Match(FILTERS_MATCH_INGRESS_STP_STATE), state_(state) {}
  en_StpState getIngressStpState() const { return state_; }
  virtual bool operator==(const MatchIngressStpState& o) const { return state_ == o.state_; }
  void convertToMatchPB(MatchPB* message) const override;
  void convertFromMatchPB(const MatchPB* message) override;
 private:
  friend struct WireFields;
  en_StpState state_;
};

// Whether the packet's destination is one of the device's own MAC addresses.
class FILTERS_API MatchMyStationHit : public Match {
 public:
  explicit MatchMyStationHit(bool hit) : Match(FILTERS_MATCH_MY_STATION_HIT), hit_(hit) {}
  bool getHitFlag() const { return hit_; }
  virtual bool operator==(const MatchMyStationHit& o) const { return hit_ == o.hit_; }
  void convertToMatchPB(MatchPB* message) const override;
  void convertFromMatchPB(const MatchPB* message) override;
 private:
  friend struct WireFields;
  bool hit_;
};

// Whether the packet left an MPLS tunnel that ends in this device.
class FILTERS_API MatchMplsTerm : public Match {
 public:
  explicit MatchMplsTerm(bool terminated)
      : Match(FILTERS_MATCH_MPLS_TERM), terminated_(terminated) {}
  bool getMplsTerm() const { return terminated_; }
  bool operator==(const MatchMplsTerm& o) const { return terminated_ == o.terminated_; }
  void convertToMatchPB(MatchPB* message) const override;
  void convertFromMatchPB(const MatchPB* message) override;
 private:
  friend struct WireFields;
  bool terminated_;
};

// --- Layer 2 -------------------------------------------------------------------------------------

// The base class of matches on a MAC address under a mask; the default mask is all ones. Address
// and mask are compared byte by byte, without applying the mask. The getters point into the object.
class FILTERS_API MatchMac : public Match {
 public:
  MatchMac(filtersMatch_t type, ether_addr mac);
  MatchMac(filtersMatch_t type, ether_addr mac, ether_addr mask)
      : Match(type), mac_(mac), mask_(mask) {}
  const ether_addr* getMac() const { return &mac_; }
  const ether_addr* getMask() const { return &mask_; }
  bool operator==(const MatchMac& other) const;
  void convertToMatchPB(MatchPB* message) const override;
  void convertFromMatchPB(const MatchPB* message) override;
 private:
  friend struct WireFields;
  ether_addr mac_;
  ether_addr mask_;
};

// The destination MAC address under a mask.
class FILTERS_API MatchDstMac : public MatchMac {
 public:
  explicit MatchDstMac(ether_addr mac) : MatchMac(FILTERS_MATCH_DST_MAC, mac) {}
  MatchDstMac(ether_addr mac, ether_addr mask) : MatchMac(FILTERS_MATCH_DST_MAC, mac, mask) {}
};

// The source MAC address under a mask.
class FILTERS_API MatchSrcMac : public MatchMac {
 public:
  explicit MatchSrcMac(ether_addr mac) : MatchMac(FILTERS_MATCH_SRC_MAC, mac) {}
  MatchSrcMac(ether_addr mac, ether_addr mask) : MatchMac(FILTERS_MATCH_SRC_MAC, mac, mask) {}
};

// How the layer-2 table learned the packet's source address.
class FILTERS_API MatchL2SrcEntryType : public Match {
 public:
  explicit MatchL2SrcEntryType(l2SrcEntryType_t entryType)
      : Match(FILTERS_MATCH_L2_SRC_ENTRY_TYPE), entryType_(entryType) {}
  l2SrcEntryType_t getL2SrcEntryType() const { return entryType_; }
  bool operator==(const MatchL2SrcEntryType& o) const { return entryType_ == o.entryType_; }
  void convertToMatchPB(MatchPB* message) const override;
  void convertFromMatchPB(const MatchPB* message) override;
 private:
  friend struct WireFields;
  l2SrcEntryType_t entryType_;
};

// The tag protocol identifier of the frame's tag (IEEE 802.1Q). It is 0x8100 for a customer tag.
class FILTERS_API MatchTPID : public Match {
 public:
  explicit MatchTPID(unsigned short tpid) : Match(FILTERS_MATCH_TPID), tpid_(tpid) {}
  tpid_t getTPID() const { return tpid_; }
  bool operator==(const MatchTPID& o) const { return tpid_ == o.tpid_; }
  void convertToMatchPB(MatchPB* message) const override;
  void convertFromMatchPB(const MatchPB* message) override;
 private:
  friend struct WireFields;
  tpid_t tpid_;
};

// Whether the frame carries a VLAN tag.
class FILTERS_API MatchVlanTagging : public Match {
 public:
  explicit MatchVlanTagging(vlan_tagging_t tagging)
      : Match(FILTERS_MATCH_VLAN_TAGGING), tagging_(tagging) {}
  vlan_tagging_t getTagging() const { return tagging_; }
  bool operator==(const MatchVlanTagging& o) const { return tagging_ == o.tagging_; }
  void convertToMatchPB(MatchPB* message) const override;
  void convertFromMatchPB(const MatchPB* message) override;
 private:
  friend struct WireFields;
  vlan_tagging_t tagging_;
};

// The base class of matches on a VLAN id that is one of a set (IEEE 802.1Q: 12 bits). Empty braces,
// as in MatchExternalVlanId({}), give a set with only the id 0. For the empty set, write
// std::set<unsigned short>().
class FILTERS_API MatchVlanId : public Match {
 public:
  MatchVlanId(filtersMatch_t type, std::set<unsigned short>&& vlanIds);
  std::set<unsigned short> getVlanIds() const { return {vlanIds_.begin(), vlanIds_.end()}; }
  bool operator==(const MatchVlanId& other) const;
  void convertToMatchPB(MatchPB* message) const override;
  void convertFromMatchPB(const MatchPB* message) override;
 private:
  friend struct WireFields;
  friend FILTERS_API std::ostream& operator<<(std::ostream& os, const MatchExternalVlanId& match);
  friend FILTERS_API std::ostream& operator<<(std::ostream& os, const MatchInternalVlanId& match);

  FILTERS_INTERNAL void print(std::ostream& os) const;

  std::vector<unsigned short> vlanIds_;  // ascending, each once
};

// The VLAN id that the frame has on the wire.
class FILTERS_API MatchExternalVlanId : public MatchVlanId {
 public:
  explicit MatchExternalVlanId(std::set<unsigned short> vlanIds);
  explicit MatchExternalVlanId(unsigned short vlanId);
};

// The VLAN id that the device uses internally.
class FILTERS_API MatchInternalVlanId : public MatchVlanId {
 public:
  explicit MatchInternalVlanId(std::set<unsigned short> vlanIds);
  explicit MatchInternalVlanId(unsigned short vlanId);
};

// The priority code point of the frame's tag is one of a set (IEEE 802.1Q: 0 to 7). Empty braces
// give the set that holds only the priority 0. Write std::set<unsigned char>() for the empty set.
class FILTERS_API MatchPcp : public Match {
 public:
  explicit MatchPcp(const std::set<unsigned char>& pcps);
  explicit MatchPcp(unsigned char pcp);
  std::set<unsigned char> getPcps() const { return {pcps_.begin(), pcps_.end()}; }
  bool operator==(const MatchPcp& o) const { return pcps_ == o.pcps_; }
  void convertToMatchPB(MatchPB* message) const override;
  void convertFromMatchPB(const MatchPB* message) override;
  friend FILTERS_API std::ostream& operator<<(std::ostream& os, const MatchPcp& match);
 private:
  friend struct WireFields;
  std::vector<unsigned char> pcps_;  // ascending, each once
};

// The priority that the device uses internally is one of a set. Empty braces have the same meaning
// as for MatchPcp.
class FILTERS_API MatchInternalPcp : public Match {
 public:
  explicit MatchInternalPcp(const std::set<unsigned char>& pcps);
  explicit MatchInternalPcp(unsigned char pcp);
  std::set<unsigned char> getPcps() const { return {pcps_.begin(), pcps_.end()}; }
  bool operator==(const MatchInternalPcp& o) const { return pcps_ == o.pcps_; }
  void convertToMatchPB(MatchPB* message) const override;
  void convertFromMatchPB(const MatchPB* message) override;
  friend FILTERS_API std::ostream& operator<<(std::ostream& os, const MatchInternalPcp& match);
 private:
  friend struct WireFields;
  std::vector<unsigned char> pcps_;  // ascending, each once
};

// The two VLAN classes of the packet: each must equal the class in the match.
class FILTERS_API MatchVlanInfo : public Match {
 public:
  explicit MatchVlanInfo(vlan_info_t info) : Match(FILTERS_MATCH_VLAN_INFO), info_(info) {}
  vlan_info_t getVlanInfo() const { return info_; }
  virtual bool operator==(const MatchVlanInfo& other) const;
  void convertToMatchPB(MatchPB* message) const override;
  void convertFromMatchPB(const MatchPB* message) override;
 private:
  friend struct WireFields;
  vlan_info_t info_;
};

// --- Layer 3 -------------------------------------------------------------------------------------

// The base class of matches on an IPv4 address under a mask, both in network byte order. The
// default mask is 255.255.255.255. Address and mask are compared byte by byte, without applying the
// mask: 10.0.0.1/255.0.0.0 and 10.0.0.2/255.0.0.0 differ. The getters point into the object.
class FILTERS_API MatchIPv4 : public Match {
 public:
  MatchIPv4(filtersMatch_t type, in_addr ip);
  MatchIPv4(filtersMatch_t type, in_addr ip, in_addr mask) : Match(type), ip_(ip), mask_(mask) {}
  const in_addr* getIPv4() const { return &ip_; }
  const in_addr* getIPv4Mask() const { return &mask_; }
  bool operator==(const MatchIPv4& other) const;
  void convertToMatchPB(MatchPB* message) const override;
  void convertFromMatchPB(const MatchPB* message) override;
 private:
  friend struct WireFields;
  in_addr ip_;
  in_addr mask_;
};

// The source IPv4 address under a mask.
class FILTERS_API MatchSrcIPv4 : public MatchIPv4 {
 public:
  explicit MatchSrcIPv4(in_addr ip) : MatchIPv4(FILTERS_MATCH_SRC_IPV4, ip) {}
  MatchSrcIPv4(in_addr ip, in_addr mask) : MatchIPv4(FILTERS_MATCH_SRC_IPV4, ip, mask) {}
};

// The destination IPv4 address under a mask.
class FILTERS_API MatchDstIPv4 : public MatchIPv4 {
 public:
  explicit MatchDstIPv4(in_addr ip) : MatchIPv4(FILTERS_MATCH_DST_IPV4, ip) {}
  MatchDstIPv4(in_addr ip, in_addr mask) : MatchIPv4(FILTERS_MATCH_DST_IPV4, ip, mask) {}
};

// The base class of matches on an IPv6 address under a mask, both in network byte order. The
// default mask is all ones. Address and mask are compared byte by byte. The getters point into the
// object.
class FILTERS_API MatchIPv6 : public Match {
 public:
  MatchIPv6(filtersMatch_t type, in6_addr ip);
  MatchIPv6(filtersMatch_t type, in6_addr ip, in6_addr mask) : Match(type), ip_(ip), mask_(mask) {}
  const in6_addr* getIPv6() const { return &ip_; }
  const in6_addr* getIPv6Mask() const { return &mask_; }
  bool operator==(const MatchIPv6& other) const;
  void convertToMatchPB(MatchPB* message) const override;
  void convertFromMatchPB(const MatchPB* message) override;
 private:
  friend struct WireFields;
  in6_addr ip_;
  in6_addr mask_;
};

// The source IPv6 address under a mask. Deliberate: this is the only address class that has no
// constructor with a mask.
class FILTERS_API MatchSrcIPv6 : public MatchIPv6 {
 public:
  explicit MatchSrcIPv6(in6_addr ip) : MatchIPv6(FILTERS_MATCH_SRC_IPV6, ip) {}
};

// The destination IPv6 address under a mask.
class FILTERS_API MatchDstIPv6 : public MatchIPv6 {
 public:
  explicit MatchDstIPv6(in6_addr ip) : MatchIPv6(FILTERS_MATCH_DST_IPV6, ip) {}
  MatchDstIPv6(in6_addr ip, in6_addr mask) : MatchIPv6(FILTERS_MATCH_DST_IPV6, ip, mask) {}
};

// The protocol number of the IP header (IANA): 6 is TCP, 17 UDP, 89 OSPF, 112 VRRP.
class FILTERS_API MatchIpProtocol : public Match {
 public:
  explicit MatchIpProtocol(unsigned char protocol)
      : Match(FILTERS_MATCH_IP_PROTOCOL), protocol_(protocol) {}
  unsigned char getIpProtocol() const { return protocol_; }
  bool operator==(const MatchIpProtocol& o) const { return protocol_ == o.protocol_; }
  void convertToMatchPB(MatchPB* message) const override;
  void convertFromMatchPB(const MatchPB* message) override;
 private:
  friend struct WireFields;
  unsigned char protocol_;
};

// The whole type-of-service byte of the IPv4 header (RFC 791): DSCP and ECN together.
class FILTERS_API MatchToS : public Match {
 public:
  explicit MatchToS(unsigned char tos) : Match(FILTERS_MATCH_TOS), tos_(tos) {}
  unsigned char getToS() const { return tos_; }
  bool operator==(const MatchToS& o) const { return tos_ == o.tos_; }
  void convertToMatchPB(MatchPB* message) const override;
  void convertFromMatchPB(const MatchPB* message) override;
 private:
  friend struct WireFields;
  unsigned char tos_;
};

// The differentiated-services code point (RFC 2474), the upper six bits of the ToS byte.
// Deliberate: this class derives from MatchToS, has the same code (20), and only converts the
// value. An entry stores and sends a MatchDSCP as a MatchToS, and its reader gets a MatchToS.
// Values above 63 lose their upper bits.
class FILTERS_API MatchDSCP : public MatchToS {
 public:
  explicit MatchDSCP(unsigned char dscp) : MatchToS(static_cast<unsigned char>(dscp << 2)) {}
  unsigned char getDSCP() const { return static_cast<unsigned char>(getToS() >> 2); }
  bool operator==(const MatchDSCP& other) const { return getDSCP() == other.getDSCP(); }
};

// The time to live of the IP header. A packet whose time to live is 1 is not forwarded.
class FILTERS_API MatchTTL : public Match {
 public:
  explicit MatchTTL(unsigned char ttl) : Match(FILTERS_MATCH_TTL), ttl_(ttl) {}
  unsigned char getTTL() const { return ttl_; }
  bool operator==(const MatchTTL& o) const { return ttl_ == o.ttl_; }
  void convertToMatchPB(MatchPB* message) const override;
  void convertFromMatchPB(const MatchPB* message) override;
 private:
  friend struct WireFields;
  unsigned char ttl_;
};

// The virtual routing and forwarding instance that the packet belongs to.
class FILTERS_API MatchVrfId : public Match {
 public:
  explicit MatchVrfId(unsigned short vrfId) : Match(FILTERS_MATCH_VRF_ID), vrfId_(vrfId) {}
  unsigned short getVrfId() const { return vrfId_; }
  void setVrfId(unsigned short vrfId) { vrfId_ = vrfId; }
  virtual bool operator==(const MatchVrfId& o) const { return vrfId_ == o.vrfId_; }
  void convertToMatchPB(MatchPB* message) const override;
  void convertFromMatchPB(const MatchPB* message) override;
 private:
  friend struct WireFields;
  unsigned short vrfId_;
};

// --- Layer 4 -------------------------------------------------------------------------------------

// The base class of matches on TCP or UDP ports: two 16-bit parameters in host byte order.
class FILTERS_API MatchL4Port : public Match {
 public:
  MatchL4Port(filtersMatch_t type, unsigned short param1, unsigned short param2)
      : Match(type), param1_(param1), param2_(param2) {}
  l4port_t getParam1() const { return param1_; }
  l4port_t getParam2() const { return param2_; }
  bool operator==(const MatchL4Port& other) const;
  void convertToMatchPB(MatchPB* message) const override;
  void convertFromMatchPB(const MatchPB* message) override;
 private:
  friend struct WireFields;
  l4port_t param1_;
  l4port_t param2_;
};

// The destination port under a mask. Deliberate: the default mask is 0, not all ones.
class FILTERS_API MatchDstL4Port : public MatchL4Port {
 public:
  explicit MatchDstL4Port(unsigned short port) : MatchDstL4Port(port, 0) {}
  MatchDstL4Port(unsigned short port, unsigned short mask)
      : MatchL4Port(FILTERS_MATCH_DST_L4_PORT, port, mask) {}
  l4port_t getPort() const { return getParam1(); }
  l4port_t getMask() const { return getParam2(); }
};

// The source port under a mask. Deliberate: the default mask is 0, not all ones.
class FILTERS_API MatchSrcL4Port : public MatchL4Port {
 public:
  explicit MatchSrcL4Port(unsigned short port) : MatchSrcL4Port(port, 0) {}
  MatchSrcL4Port(unsigned short port, unsigned short mask)
      : MatchL4Port(FILTERS_MATCH_SRC_L4_PORT, port, mask) {}
  l4port_t getPort() const { return getParam1(); }
  l4port_t getMask() const { return getParam2(); }
};

// The destination port is in a range that includes both bounds. The order of the bounds is not
// checked.
class FILTERS_API MatchDstL4PortRange : public MatchL4Port {
 public:
  MatchDstL4PortRange(unsigned short min, unsigned short max)
      : MatchL4Port(FILTERS_MATCH_DST_L4_PORT_RANGE, min, max) {}
  l4port_t getMinPort() const { return getParam1(); }
  l4port_t getMaxPort() const { return getParam2(); }
  virtual bool operator==(const MatchDstL4PortRange& other) const;
};

#pragma GCC diagnostic pop

// --- Printing ------------------------------------------------------------------------------------

// Each operator prints a block: the name of the class, the code, then a line for each value. The
// operator for Match prints the block of the class that the object's code names (a MatchDSCP as a
// MatchToS), or nothing for an unknown code. Deliberate: printing a MatchTPID leaves the stream in
// hexadecimal. A PCP prints as the character with that value.
FILTERS_API std::ostream& operator<<(std::ostream& os, const Match& match);
#define FILTERS_MATCH(code, Class, blank) \
  FILTERS_API std::ostream& operator<<(std::ostream& os, const Class& match);
#define FILTERS_MATCH_TWIN FILTERS_MATCH
#include <filter_common/filter_matches.def>

}  // namespace FiltersCommon

#endif  // FILTER_COMMON_FILTER_MATCHES_H_

#ifndef FILTER_COMMON_FILTER_ACTIONS_H_
#define FILTER_COMMON_FILTER_ACTIONS_H_

// The actions of a filter rule, which the device applies to matching packets. Each kind of action
// has a class. An action is a value: its constructor makes it, its getters read it, == compares it,
// << prints it, and it can be written to and read from an ActionPB message. An entry keeps copies
// and never takes ownership of the caller's object. For example:
//
//     const ActionSetDSCP expedited(46);
//     const Action& any = expedited;
//     std::cout << any;  // its name, code and value, a line each
//     if (any.getType() != FILTERS_ACTION_SET_DSCP || any == ActionDeny()) return 1;
//
// Common to all classes:
// - convertToActionPB() sets the message's type_ and the fields of the class. Pass a fresh message.
// - convertFromActionPB() reads the fields of the class and ignores type_. It reads absent numbers
//   and addresses as 0 (but see ActionMplsPortSet), and absent ports as no ports. It cuts numbers
//   to the width of the member, and reads missing address bytes as zero.
// - No class checks the range of its values, except ActionMplsPortSet.
// - Deliberate: operator== is virtual in some classes and not virtual in others.
// - An object of a base class can be made with the code of a derived class, for example
//   Action(FILTERS_ACTION_REDIRECT). Do not compare, print or copy such an object as an Action: it
//   would be read as an ActionRedirect, which it is not.
// - Functions of classes that hold lists throw std::bad_alloc when memory runs out. So do functions
//   that write lists or addresses into a message, which is then partly filled. ActionMplsPortSet
//   also throws std::invalid_argument. The object is then unchanged, with two exceptions:
//   ActionMplsPortSet may keep the first of two ids that it reads, and an assignment that runs out
//   of memory leaves the object valid with unspecified values.
// - Objects are not synchronised: any number of threads may read an object at once, but a thread
//   that changes it must be the only one to use it.

#include <iosfwd>
#include <list>
#include <vector>

#include <filter_common/filter_types.h>

namespace FiltersCommon {
class ActionPorts;
}
FILTERS_API std::ostream& operator<<(std::ostream& os, const FiltersCommon::ActionPorts& action);

namespace FiltersCommon {

class ActionPB;

// The base class of all actions. Code that handles actions of any class uses it.
class FILTERS_API Action {
 public:
  explicit Action(filtersAction_t actionType) : type_(actionType) {}
  Action(const Action&) = default;
  Action& operator=(const Action&) { return *this; }  // an object keeps its code for life
  virtual ~Action() = default;

  virtual void convertToActionPB(ActionPB* message) const;
  virtual void convertFromActionPB(const ActionPB* message);

  // The generic comparison: false if the codes differ, else the comparison of the class that the
  // code names. Both objects must be of this class. Two objects with the same unknown code are
  // equal.
  bool operator==(const Action& other) const;

  filtersAction_t getType() const { return type_; }
 private:
  const filtersAction_t type_;
};

// Compares two actions of different classes by the generic comparison.
template <class = void>
bool operator==(const Action& a, const Action& b) {
  return a.operator==(b);
}

// --- Verdicts ------------------------------------------------------------------------------------

// Lets the packet through.
class FILTERS_API ActionPermit : public Action {
 public:
  ActionPermit() : Action(FILTERS_ACTION_PERMIT) {}
  virtual bool operator==(const ActionPermit&) const { return true; }
};

// Drops the packet.
class FILTERS_API ActionDeny : public Action {
 public:
  ActionDeny() : Action(FILTERS_ACTION_DENY) {}
  bool operator==(const ActionDeny&) const { return true; }
};

// Drops the packet in the routing stage.
class FILTERS_API ActionBlackHole : public Action {
 public:
  ActionBlackHole() : Action(FILTERS_ACTION_BLACK_HOLE) {}
  bool operator==(const ActionBlackHole&) const { return true; }
};

// --- Sending packets to the CPU ------------------------------------------------------------------

// Sends a copy of the packet to the CPU.
class FILTERS_API ActionCopyToCpu : public Action {
 public:
  ActionCopyToCpu() : Action(FILTERS_ACTION_COPY_TO_CPU) {}
  bool operator==(const ActionCopyToCpu&) const { return true; }
};

// Takes back an earlier decision to copy or to switch the packet to the CPU.
class FILTERS_API ActionCopyToCpuCancel : public Action {
 public:
  explicit ActionCopyToCpuCancel(cp2cpuCancelParam_t cancelType)
      : Action(FILTERS_ACTION_COPY_TO_CPU_CANCEL), cancelType_(cancelType) {}
  cp2cpuCancelParam_t getCancelType() const { return cancelType_; }
  bool operator==(const ActionCopyToCpuCancel& o) const { return cancelType_ == o.cancelType_; }
  void convertToActionPB(ActionPB* message) const override;
  void convertFromActionPB(const ActionPB* message) override;
 private:
  friend struct WireFields;
  cp2cpuCancelParam_t cancelType_;
};

// Chooses the queue to the CPU.
class FILTERS_API ActionMapToCpuCosQueue : public Action {
 public:
  explicit ActionMapToCpuCosQueue(unsigned char queue)
      : Action(FILTERS_ACTION_MAP_TO_CPU_COS_QUEUE), queue_(queue) {}
  unsigned char getCpuCosQueue() const { return queue_; }
  bool operator==(const ActionMapToCpuCosQueue& o) const { return queue_ == o.queue_; }
  void convertToActionPB(ActionPB* message) const override;
  void convertFromActionPB(const ActionPB* message) override;
 private:
  friend struct WireFields;
  unsigned char queue_;
};

// Drops a layer-2 packet that would go to the CPU.
class FILTERS_API ActionL2ToCpuDrop : public Action {
 public:
  ActionL2ToCpuDrop() : Action(FILTERS_ACTION_L2_TO_CPU_DROP) {}
  bool operator==(const ActionL2ToCpuDrop&) const { return true; }
};

// --- Ports and forwarding ------------------------------------------------------------------------

// The base class of actions with a list of ports, which keeps the caller's order. Two objects are
// equal if they have the same ports in the same order, even if their codes differ. The conversion
// of this class writes and reads only the code; the derived class adds the ports.
class FILTERS_API ActionPorts : public Action {
 public:
  ActionPorts(filtersAction_t actionType, const std::list<limid_t>& ports);
  std::list<limid_t> getPorts() const { return {ports_.begin(), ports_.end()}; }
  bool operator==(const ActionPorts& other) const;
 protected:
  friend struct WireFields;
  std::vector<limid_t> ports_;
  friend FILTERS_API std::ostream& ::operator<<(std::ostream& os, const ActionPorts& action);
};

// The ports through which the packet must not leave. Reading a message adds to the ports already
// held.
class FILTERS_API ActionBlockEgressPorts : public ActionPorts {
 public:
  explicit ActionBlockEgressPorts(const std::list<limid_t>& ports);
  void convertToActionPB(ActionPB* message) const override;
  void convertFromActionPB(const ActionPB* message) override;
};

// Sends the packet to other ports. The constructor sets one port. Reading a message sets any number
// of ports and replaces the ports already held.
class FILTERS_API ActionRedirect : public Action {
 public:
  explicit ActionRedirect(const limid_t& port);
  std::list<limid_t> getRedirectPorts() const { return ports_; }
  const std::list<limid_t>& getRedirectPortsRef() const { return ports_; }
  virtual bool operator==(const ActionRedirect& other) const;
  void convertToActionPB(ActionPB* message) const override;
  void convertFromActionPB(const ActionPB* message) override;
 private:
  friend struct WireFields;
  std::list<limid_t> ports_;
};

// Takes back an earlier redirection.
class FILTERS_API ActionRedirectCancel : public Action {
 public:
  ActionRedirectCancel() : Action(FILTERS_ACTION_REDIRECT_CANCEL) {}
  virtual bool operator==(const ActionRedirectCancel&) const { return true; }
};

// Routes the packet to a layer-3 destination of the device.
class FILTERS_API ActionL3Switch : public Action {
 public:
  explicit ActionL3Switch(unsigned int destinationId)
      : Action(FILTERS_ACTION_L3_SWITCH), destinationId_(destinationId) {}
  unsigned int getL3DestinationId() const { return destinationId_; }
  bool operator==(const ActionL3Switch& o) const { return destinationId_ == o.destinationId_; }
  void convertToActionPB(ActionPB* message) const override;
  void convertFromActionPB(const ActionPB* message) override;
 private:
  friend struct WireFields;
  unsigned int destinationId_;
};

// Puts the packet into an MPLS VPN through an access port. This is the only action that checks its
// values: the VPN must be a VPWS or a bridge domain of the VPLS type, and the access port must be a
// LAG or an Ethernet port. Any other value is not stored, and std::invalid_argument is thrown. The
// message has interface indexes for the VPN and the access port, not limids.
class FILTERS_API ActionMplsPortSet : public Action {
 public:
  // Sets both ids to zero; convertFromActionPB() fills them in later. BuildEmpty() returns such an
  // object too. An entry accepts an object whose ids are still zero, but then no reader accepts the
  // bytes of that entry or of its group.
  ActionMplsPortSet() : Action(FILTERS_ACTION_MPLS_PORT_SET) {}
  ActionMplsPortSet(limid_t vpnId, limid_t mplsAccessPort);
  static ActionMplsPortSet BuildEmpty() { return ActionMplsPortSet(); }

  limid_t getVpnId() const { return vpn_id; }
  limid_t getMplsAccessPort() const { return mpls_access_port; }
  void setVpnId(limid_t vpnId);
  void setMplsAccessPort(limid_t mplsAccessPort);
  static bool IsLimidFromVpnType(limid_t limid);

  bool operator==(const ActionMplsPortSet& other) const;
  void convertToActionPB(ActionPB* message) const override;
  // Throws std::invalid_argument if one of the two fields is absent or names an interface of the
  // wrong kind. An absent field changes nothing. If the VPN is good and the access port is bad, the
  // VPN is stored.
  void convertFromActionPB(const ActionPB* message) override;
 private:
  limid_t vpn_id{};
  limid_t mpls_access_port{};
};

// --- Rewriting -----------------------------------------------------------------------------------

// Rewrites the destination MAC address (6 bytes in transmission order).
class FILTERS_API ActionReplaceDstMac : public Action {
 public:
  explicit ActionReplaceDstMac(const ether_addr& mac)
      : Action(FILTERS_ACTION_REPLACE_DST_MAC), mac_(mac) {}
  ether_addr getReplaceDstMac() const { return mac_; }
  virtual bool operator==(const ActionReplaceDstMac& other) const;
  void convertToActionPB(ActionPB* message) const override;
  void convertFromActionPB(const ActionPB* message) override;
 private:
  friend struct WireFields;
  ether_addr mac_;
};

// Rewrites the source MAC address (6 bytes in transmission order).
class FILTERS_API ActionReplaceSrcMac : public Action {
 public:
  explicit ActionReplaceSrcMac(const ether_addr& mac)
      : Action(FILTERS_ACTION_REPLACE_SRC_MAC), mac_(mac) {}
  ether_addr getReplaceSrcMac() const { return mac_; }
  virtual bool operator==(const ActionReplaceSrcMac& other) const;
  void convertToActionPB(ActionPB* message) const override;
  void convertFromActionPB(const ActionPB* message) override;
 private:
  friend struct WireFields;
  ether_addr mac_;
};

// Rewrites the priority code point of the tag (IEEE 802.1Q: 0 to 7).
class FILTERS_API ActionSetPcp : public Action {
 public:
  explicit ActionSetPcp(unsigned char pcp) : Action(FILTERS_ACTION_SET_PCP), pcp_(pcp) {}
  unsigned char getPcp() const { return pcp_; }
  bool operator==(const ActionSetPcp& o) const { return pcp_ == o.pcp_; }
  void convertToActionPB(ActionPB* message) const override;
  void convertFromActionPB(const ActionPB* message) override;
 private:
  friend struct WireFields;
  unsigned char pcp_;
};

// Rewrites the priority code point and chooses the queue of that priority.
class FILTERS_API ActionSetPcpAndQueue : public Action {
 public:
  explicit ActionSetPcpAndQueue(unsigned char pcpAndQueue)
      : Action(FILTERS_ACTION_SET_PCP_AND_QUEUE), pcpAndQueue_(pcpAndQueue) {}
  unsigned char getPcpAndQueue() const { return pcpAndQueue_; }
  bool operator==(const ActionSetPcpAndQueue& o) const { return pcpAndQueue_ == o.pcpAndQueue_; }
  void convertToActionPB(ActionPB* message) const override;
  void convertFromActionPB(const ActionPB* message) override;
 private:
  friend struct WireFields;
  unsigned char pcpAndQueue_;
};

// Rewrites the priority code point of the inner tag. Deliberate: it uses the same message field as
// ActionSetPcp, and only the code distinguishes the two.
class FILTERS_API ActionSetInnerPcp : public Action {
 public:
  explicit ActionSetInnerPcp(unsigned char pcp) : Action(FILTERS_ACTION_SET_INNER_PCP), pcp_(pcp) {}
  unsigned char getInnerPcp() const { return pcp_; }
  bool operator==(const ActionSetInnerPcp& o) const { return pcp_ == o.pcp_; }
  void convertToActionPB(ActionPB* message) const override;
  void convertFromActionPB(const ActionPB* message) override;
 private:
  friend struct WireFields;
  unsigned char pcp_;
};

// Copies the outer tag's priority code point into the inner tag. It has no operator== of its own.
class FILTERS_API ActionCopyInnerPcp : public Action {
 public:
  ActionCopyInnerPcp() : Action(FILTERS_ACTION_COPY_INNER_PCP) {}
};

// Rewrites the differentiated-services code point (RFC 2474: 0 to 63).
class FILTERS_API ActionSetDSCP : public Action {
 public:
  explicit ActionSetDSCP(unsigned char dscp) : Action(FILTERS_ACTION_SET_DSCP), dscp_(dscp) {}
  unsigned char getDSCP() const { return dscp_; }
  bool operator==(const ActionSetDSCP& o) const { return dscp_ == o.dscp_; }
  void convertToActionPB(ActionPB* message) const override;
  void convertFromActionPB(const ActionPB* message) override;
 private:
  friend struct WireFields;
  unsigned char dscp_;
};

// Chooses the class-of-service queue. Deliberate: it uses the same message field as
// ActionMapToCpuCosQueue, and only the code distinguishes the two.
class FILTERS_API ActionMapToCosQueue : public Action {
 public:
  explicit ActionMapToCosQueue(unsigned char queue)
      : Action(FILTERS_ACTION_MAP_TO_COS_QUEUE), queue_(queue) {}
  unsigned char getCosQueue() const { return queue_; }
  virtual bool operator==(const ActionMapToCosQueue& o) const { return queue_ == o.queue_; }
  void convertToActionPB(ActionPB* message) const override;
  void convertFromActionPB(const ActionPB* message) override;
 private:
  friend struct WireFields;
  unsigned char queue_;
};

}  // namespace FiltersCommon

// --- Printing ------------------------------------------------------------------------------------

// Each operator prints a block: the name of the class, the code, then a line for each value. The
// operator for Action prints the block of the class that the object's code names, or nothing for an
// unknown code. The operator for ActionPorts prints the list alone.
//
// Deliberate: these operators are at global scope. A namespace with an operator<< of its own, such
// as FiltersCommon, hides them. Code in such a namespace writes `using ::operator<<;` at namespace
// scope (inside a function the line would hide the namespace's own operators), or calls
// ::operator<<(os, action). Templates of the standard library, such as
// std::ostream_iterator<ActionDeny>, find the operators only if the headers are included in a
// suitable order. One solution always works: write a type of your own, and let its operator<< call
// these operators.
FILTERS_API std::ostream& operator<<(std::ostream& os, const FiltersCommon::Action& action);
#define FILTERS_ACTION(code, Class, blank) \
  FILTERS_API std::ostream& operator<<(std::ostream& os, const FiltersCommon::Class& action);
#include <filter_common/filter_actions.def>

#endif  // FILTER_COMMON_FILTER_ACTIONS_H_

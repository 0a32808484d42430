#ifndef FILTER_INSPECT_FILTER_QUESTIONS_H_
#define FILTER_INSPECT_FILTER_QUESTIONS_H_

// Finds the rules of a group that take given packets. A question is about a set of packets, and its
// answers hold for every packet of the set. For example:
//
//     const auto telnet = PacketSet::parse("ip_protocol=tcp dst_l4_port=23", nullptr);
//
// The readings, the orders and the assumptions are those of filter_analysis.h. All functions may be
// called from any thread, if nobody changes the arguments meanwhile. They throw only std::bad_alloc
// and exceptions of a progress function.

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <filter_common/filter_entries.h>
#include <filter_inspect/filter_analysis.h>
#include <filter_inspect/filter_report.h>

namespace FiltersInspect {

// A set of packets. It is like a Packet, but each field can have several values. Each field that is
// named has
// - one value:              ttl=1
// - a value under a mask:   src_ipv4=10.0.0.0/8  dst_l4_port=0x1f00/0xff00
// - a value of a range:     dst_l4_port=1024-65535  (both ends belong to it)
// - one of a list of these: external_vlan_id={10,20-29}
// - no value:               vlan_tagging=none  (packets that lack the field)
// A field that is not named may have any value, and packets may also lack it. Names of values are
// those of the text form. The mask of an address can be a prefix length or written like an address;
// every other mask is in hexadecimal. Bits of a value outside of its mask are ignored. A mask with
// gaps between its ones may be in a list only if it stands for at most 16 ranges. The word `dscp`
// stands for the ToS bytes whose two low bits are 0; to ask for DSCP 46 with any ECN bits, write
// tos=184-187.
//
// Copies share their memory.
class FILTERS_API PacketSet {
 public:
  PacketSet() = default;  // every packet
  // Like Packet::parse(): returns nothing if a part of the text cannot be read. The report, which
  // may be null, then says why, with "1:column" as its path. A field that every packet has can be
  // `none` too, as in a Packet. Entries that test such a field then miss.
  static std::optional<PacketSet> parse(std::string_view text, Report* report,
                                        std::size_t max_findings = 1000);
  // Writes text from which parse() reads the same set. Two sets with the same values in each field
  // have the same text.
  std::string toText() const;
 private:
  friend struct PacketSetFields;
  struct Fields;
  std::shared_ptr<const Fields> fields_;
};

// Actions by name, as in the text form: "permit set_pcp=5". An action may be named without its
// value; it then stands for the action with any value.
class FILTERS_API ActionTest {
 public:
  // Reads one or more actions that blanks separate. Returns nothing if an action cannot be read.
  // The report, which may be null, then says why, with "1:column" as its path.
  static std::optional<ActionTest> parse(std::string_view text, Report* report,
                                         std::size_t max_findings = 1000);
  // hasAll() is true if the entry has all of these actions, and hasAny() if it has at least one of
  // them.
  bool hasAll(const FiltersCommon::FiltersEntry& entry) const;
  bool hasAny(const FiltersCommon::FiltersEntry& entry) const;
  std::string toText() const;
 private:
  friend struct ActionWords;
  struct Action {
    FiltersCommon::filtersAction_t code;
    std::string text;  // with its value; only the name if any value will do
    bool any_value;
  };
  std::vector<Action> actions_;
};

// --- Where packets go ----------------------------------------------------------------------------

// An entry that takes packets of a set, or the case that no entry takes some of them.
struct Destination {
  std::optional<FiltersCommon::filtersEntryId_t> entry;  // unset: no entry takes them
  // kHit: some packet of the set goes there under every reading. kUndecided: packets go there only
  // under some readings, or only for one outcome of a tie.
  Hit hit = Hit::kHit;
  bool all = false;    // every packet of the set goes there
  std::string reason;  // for kUndecided: which match has several readings, or which entries tie
  // A packet of the set. For kHit, trace() says that the entry takes this packet, or that no entry
  // takes it if `entry` is not set. For kUndecided, trace() says that this is possible.
  Packet witness;
};
struct Destinations {
  std::vector<Destination> found;  // in the order given; the case without an entry comes last
  // False if the limit of steps in AnalysisOptions was reached. Then some destinations may be
  // missing, and others may be kUndecided although more steps would decide them.
  bool complete = true;
};

// Every destination of packets of the set, with an example packet for each. The order in `options`
// is ignored. If `then` is given, only entries with all of its actions are in the answer.
FILTERS_API Destinations search(const FiltersCommon::FiltersGroup& group, const PacketSet& packets,
                                Order order, const AnalysisOptions& options = {},
                                const ActionTest* then = nullptr);

// The entries that match a packet of the set, also if earlier entries take the packet first. kHit:
// the entry matches under every reading; kUndecided: only under some. `all` is true if the entry
// matches every packet of the set. trace() of the witness says that the entry is a hit, or
// undecided.
FILTERS_API Destinations touching(const FiltersCommon::FiltersGroup& group,
                                  const PacketSet& packets, Order order,
                                  const AnalysisOptions& options = {},
                                  const ActionTest* then = nullptr);

// The packets of a set that reach an entry, because no entry before it takes them.
struct Remains {
  // kHit and kUndecided have the meaning that they have in Destination. kMiss means that no packet
  // is left.
  Hit hit = Hit::kMiss;
  std::string reason;
  Packet witness;
  // `surely` has all packets that the entry surely takes. `possibly` has all packets that the entry
  // takes under some reading, or for some outcome of a tie. A list is also empty if it would have
  // been too long; `hit` says whether there are packets at all.
  std::vector<PacketSet> surely, possibly;
  bool complete = true;  // false if the steps did not suffice
};

// Only packets of the set are considered. Returns nothing if the group has no such entry.
FILTERS_API std::optional<Remains> remains(const FiltersCommon::FiltersGroup& group,
                                           FiltersCommon::filtersEntryId_t entry,
                                           const PacketSet& packets, Order order,
                                           const AnalysisOptions& options = {});

// The answers as findings. `entry` is the entry, `treatment` what it does, and `after` the name of
// the Hit.
// - kPacketsGo, kPacketsMayGo: a destination that search() found, in its order. Without an `entry`,
//   no entry takes `witness`.
// - kPacketsMatch: an entry that touching() found.
// - kPacketsLeft: the packets that are left for an entry. A finding with a `value` gives one of the
//   sets of packets that are left: `after` is "hit" for packets that surely reach the entry, and
//   "undecided" for packets that may reach it. A set that is in both lists gives one finding. The
//   first finding has the witness and no `value`. It is the only one if one of the lists would be
//   too long.
// - kNotDecided: the limit of steps was reached.
FILTERS_API Report searchReport(const FiltersCommon::FiltersGroup& group,
                                const Destinations& found);
FILTERS_API Report touchingReport(const FiltersCommon::FiltersGroup& group,
                                  const Destinations& found);
FILTERS_API Report remainsReport(const FiltersCommon::FiltersGroup& group,
                                 FiltersCommon::filtersEntryId_t entry, const Remains& left);

// --- What a change does to packets ---------------------------------------------------------------

// Reports the effect of each changed rule on packets. A rule that only one group has is changed
// too. compareTreatment() has a finding for each pair of rules, and one changed rule can be in many
// pairs. This function gives one finding for all pairs of a rule. It gives a further finding only
// for packets that the change treats in another way. For example
//
//     entry 20: permit became deny: packets like this one are now dropped [treatment-differs]
//     entry 5: new: it takes packets of entries 30 and 40; packets like this one are now permitted
//
// `entry` is the changed rule, of `b` if `a` does not have it. `others` are the rules that take the
// packets instead of `entry`, before or after the change. `witness` is an example packet, `before`
// and `after` what the groups do with it. kNoDifference: the rule has changed, but every packet is
// treated as before. kNotDecided has the same meaning as in compareTreatment(). Rules that have not
// changed share one such finding, without an `entry`. If `packets` are given, only packets of this
// set are compared.
FILTERS_API Report explainChanges(const FiltersCommon::FiltersGroup& a,
                                  const FiltersCommon::FiltersGroup& b,
                                  const AnalysisOptions& options = {},
                                  const PacketSet* packets = nullptr);

// True if some packet outside of the set is treated differently, false if it is certain that there
// is no such packet. Returns nothing if the answer depends on readings or takes too many steps.
FILTERS_API std::optional<bool> changesOthers(const FiltersCommon::FiltersGroup& a,
                                              const FiltersCommon::FiltersGroup& b,
                                              const PacketSet& packets,
                                              const AnalysisOptions& options = {});

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_FILTER_QUESTIONS_H_

#ifndef FILTER_INSPECT_FILTER_QUESTIONS_H_
#define FILTER_INSPECT_FILTER_QUESTIONS_H_

// Asks the rules of a group where packets go. A question is about a set of packets, and its answers
// hold for every packet of the set. For example:
//
//     const auto telnet = PacketSet::parse("ip_protocol=tcp dst_l4_port=23", nullptr);
//
// The readings, the orders and the assumptions are those of filter_analysis.h. All functions may be
// called from any thread, if nobody changes the arguments meanwhile. They throw std::bad_alloc, and
// what a progress function throws.

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

// A set of packets: a Packet with room in it. Each field that is named has
// - one value:              ttl=1
// - a value under a mask:   src_ipv4=10.0.0.0/8  dst_l4_port=0x1f00/0xff00
// - a value of a range:     dst_l4_port=1024-65535  (both ends belong to it)
// - one of a list of these: external_vlan_id={10,20-29}
// - no value:               vlan_tagging=none  (packets that lack the field)
// A field that is not named has any value, or is lacking. Names of values are those of the text
// form. An address takes a prefix length or a mask, every other field a mask in hexadecimal. Bits
// of a value outside of its mask do not count. A mask with holes may be in a list only if it stands
// for at most 16 ranges. The word `dscp` stands for the ToS bytes whose two low bits are 0; to ask
// for any congestion notification, write tos=184-187.
//
// Copies share their memory.
class FILTERS_API PacketSet {
 public:
  PacketSet() = default;  // every packet
  // Like Packet::parse(): returns nothing if a part cannot be read, and the report, which may be
  // null, then says why at "1:column". Fields that every packet has can be `none` too, as in a
  // Packet: entries that test the field then miss.
  static std::optional<PacketSet> parse(std::string_view text, Report* report,
                                        std::size_t max_findings = 1000);
  // Reads back to the same set. Two sets with the same values in each field have the same text.
  std::string toText() const;
 private:
  friend struct PacketSetFields;
  struct Fields;
  std::shared_ptr<const Fields> fields_;
};

// Actions by name, as in the text form: "permit set_pcp=5". An action that holds a value may be
// named without it, and then has any value.
class FILTERS_API ActionTest {
 public:
  // Reads one or more actions between blanks. Returns nothing if one cannot be read, and the
  // report, which may be null, then says why at "1:column".
  static std::optional<ActionTest> parse(std::string_view text, Report* report,
                                         std::size_t max_findings = 1000);
  // True if the entry has all of these actions, or any of them.
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
  // kHit: under every reading, some packet of the set goes there. kUndecided: packets go there only
  // under some reading, or only if a tie is decided so.
  Hit hit = Hit::kHit;
  bool all = false;    // every packet of the set goes there
  std::string reason;  // for kUndecided: which match has several readings, or which entries tie
  // A packet of the set. For kHit, trace() says that this entry takes it, or that none does. For
  // kUndecided, trace() says that this may be so.
  Packet witness;
};
struct Destinations {
  std::vector<Destination> found;  // in the order given; the case without an entry comes last
  // False if the steps of AnalysisOptions did not suffice. Then some destinations may be missing,
  // and others may be kUndecided although more steps would decide them.
  bool complete = true;
};

// Every place where a packet of the set can go, with an example each. The order in `options` does
// not count. If there is a `then`, only entries with all of its actions are in the answer.
FILTERS_API Destinations search(const FiltersCommon::FiltersGroup& group, const PacketSet& packets,
                                Order order, const AnalysisOptions& options = {},
                                const ActionTest* then = nullptr);

// The entries that match a packet of the set, also if earlier entries take the packet first. kHit:
// the entry matches under every reading; kUndecided: only under some. `all`: it matches every
// packet of the set. trace() says of the witness that the entry is a hit, or undecided.
FILTERS_API Destinations touching(const FiltersCommon::FiltersGroup& group,
                                  const PacketSet& packets, Order order,
                                  const AnalysisOptions& options = {},
                                  const ActionTest* then = nullptr);

// The packets that are left for an entry after the entries before it have taken theirs.
struct Remains {
  // As in Destination. kMiss means that no packet is left.
  Hit hit = Hit::kMiss;
  std::string reason;
  Packet witness;
  // `surely` has all packets that the entry surely takes. `possibly` has all packets that it takes
  // under some reading, or if a tie is decided so. `hit` says whether there are such packets. If
  // there are, an empty list means that the list would be too long.
  std::vector<PacketSet> surely, possibly;
  bool complete = true;  // false if the steps did not suffice
};

// Looks at the packets of the set alone. Returns nothing if the group has no such entry.
FILTERS_API std::optional<Remains> remains(const FiltersCommon::FiltersGroup& group,
                                           FiltersCommon::filtersEntryId_t entry,
                                           const PacketSet& packets, Order order,
                                           const AnalysisOptions& options = {});

// The answers as findings. `entry` is the entry, `treatment` what it does, and `after` the name of
// the Hit.
// - kPacketsGo, kPacketsMayGo: a destination that search() found, in its order. Without an `entry`,
//   no entry takes `witness`.
// - kPacketsMatch: an entry that touching() found.
// - kPacketsLeft: what is left of an entry. With a `value` it is one of the sets: `after` is "hit"
//   for what surely reaches the entry, and "undecided" for all that may reach it. A set that is in
//   both lists is there once. The first finding has the witness and no `value`. It stands alone if
//   one of the lists would be too long.
// - kNotDecided: the steps did not suffice.
FILTERS_API Report searchReport(const FiltersCommon::FiltersGroup& group,
                                const Destinations& found);
FILTERS_API Report touchingReport(const FiltersCommon::FiltersGroup& group,
                                  const Destinations& found);
FILTERS_API Report remainsReport(const FiltersCommon::FiltersGroup& group,
                                 FiltersCommon::filtersEntryId_t entry, const Remains& left);

// --- What a change does to packets ---------------------------------------------------------------

// Says for each changed rule what its change does. A rule that only one group has is changed too.
// compareTreatment() has a finding for each pair of rules, and one changed rule can be in many
// pairs. Here all pairs of a rule are one finding, and packets that are treated otherwise are
// another one. For example
//
//     entry 20: permit became deny: packets like this one are now dropped [treatment-differs]
//     entry 5: new: it takes packets of entries 30 and 40; packets like this one are now permitted
//
// `entry` is the changed rule, of `b` if `a` does not have it. `others` are the rules that take the
// packets before or after the change instead of it. `witness` is an example packet, `before` and
// `after` what the groups do with it. kNoDifference: the rule has changed, but every packet is
// treated as before. kNotDecided: as from compareTreatment(); rules that have not changed share one
// such finding, without an `entry`. If there are `packets`, only packets of this set count.
FILTERS_API Report explainChanges(const FiltersCommon::FiltersGroup& a,
                                  const FiltersCommon::FiltersGroup& b,
                                  const AnalysisOptions& options = {},
                                  const PacketSet* packets = nullptr);

// True if some packet outside of the set is treated differently, false if surely none is. Returns
// nothing if the answer depends on readings or takes too many steps.
FILTERS_API std::optional<bool> changesOthers(const FiltersCommon::FiltersGroup& a,
                                              const FiltersCommon::FiltersGroup& b,
                                              const PacketSet& packets,
                                              const AnalysisOptions& options = {});

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_FILTER_QUESTIONS_H_

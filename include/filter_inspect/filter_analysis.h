#ifndef FILTER_INSPECT_FILTER_ANALYSIS_H_
#define FILTER_INSPECT_FILTER_ANALYSIS_H_

// Which packets a group's rules take, rule against rule and packet against rules. For example:
//
//     AnalysisOptions options;
//     options.order = Order::kHighestPriority;
//     std::cout << analyse(group, options);  // a line for each rule that never takes effect, ...
//
//     const auto packet = Packet::parse("src_ipv4=192.0.2.7 ip_protocol=6", nullptr);
//     if (packet) std::cout << trace(group, *packet, options.order);
//
// Order. Rules of one group may take the same packet. Which of them comes first the model does not
// say: the device does. The order is a parameter, and the default claims only what holds in every
// order. Nor does the model say that the first one ends the search: that is an assumption.
//
// Readings. The model leaves some values to the device: what a layer-4 mask of zero means, an empty
// set of VLAN ids, a range whose ends are swapped, the two low bits of a ToS byte, ... For each
// match this library knows two sets of packets: those it takes under every reading (must) and those
// it takes under some reading (may). Equal matches take equal packets, whatever the device makes of
// them. What is claimed holds under every reading; what does not is left undecided.
// docs/analysis.md lists the readings, and the assumptions that every claim rests on.
//
// All of this may be called from any thread, as long as nobody changes the arguments meanwhile. It
// throws std::bad_alloc, what a progress function throws, and nothing else.

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <filter_common/filter_groups.h>
#include <filter_inspect/filter_names.h>
#include <filter_inspect/filter_report.h>

namespace FiltersInspect {

// Which of two rules that take the same packet comes first. Rules of equal rank have no order: what
// depends on it is reported as a tie.
enum class Order : std::uint8_t {
  kUnspecified,      // nothing is known: all rules are of equal rank
  kHighestPriority,  // larger numbers first
  kLowestPriority,   // smaller numbers first
  kAscendingId,      // smaller ids first
  // By priority, and where that is equal by id, so that no two rules are of equal rank.
  kHighestPriorityAscendingId,
  kHighestPriorityDescendingId,
  kLowestPriorityAscendingId,
  kLowestPriorityDescendingId,
};
constexpr std::array<Order, 8> kAllOrders = {
    Order::kUnspecified,
    Order::kHighestPriority,
    Order::kLowestPriority,
    Order::kAscendingId,
    Order::kHighestPriorityAscendingId,
    Order::kHighestPriorityDescendingId,
    Order::kLowestPriorityAscendingId,
    Order::kLowestPriorityDescendingId,
};

// "unspecified", "highest-priority", "lowest-priority", "ascending-id",
// "highest-priority,ascending-id" and its three sisters, each followed by a zero.
FILTERS_API std::string_view nameOf(Order);
FILTERS_API std::optional<Order> orderFromName(std::string_view name);

// What every claim rests on, a sentence each, beginning with "A1: ".
FILTERS_API const std::vector<std::string_view>& assumptions();

struct AnalysisOptions {
  Order order = Order::kUnspecified;
  bool redundant = true;             // also redundant entries, which takes most of the time
  bool overlaps = false;             // also every pair that overlaps and is treated differently
  std::size_t max_findings = 1000;   // more are counted in Report::left_out
  std::uint64_t max_steps = 100000;  // a rule that would take more is kNotDecided
  // Called before each part of the work on each rule, with how many parts of how many are done.
  std::function<void(std::size_t done, std::size_t all)> progress;
};

// toJson() of filter_report.h for what the functions below find, with the order and the
// assumptions.
FILTERS_API std::string toJson(const Report& report, Order order,
                               std::string_view command = "analyse", std::string_view file = "");
FILTERS_API std::string toJson(const std::vector<ReportInput>& inputs, Order order,
                               std::string_view command);

// What the rules of a group do to each other. Treatment is actions, policer and parent; counters
// and ids are none of it. A finding has the entry that it is about in `entry` and other entries in
// `others`. Where a packet shows it, `witness` has one, which trace() finds to be so; `before` is
// then what the entry does with packets, and `after` what another entry does. The codes:
// - kEntryUnreachable: every packet that the entry may take is taken before it; the entries in
//   `others` alone would take them all, and none of these can be left out. The treatment that the
//   sentence and `after` tell is that of the entries that take the packets first, which may be
//   others.
// - kEntriesTie: nothing says whether it comes before another entry that takes the same packet and
//   treats it differently, and the packet gets that far. If no order is given, only if both take
//   the very same packets.
// - kEntryRedundant: without it every packet would be treated as it is. Each such finding stands
//   alone: when one entry has been removed, others may no longer be redundant. If no order is
//   given, also the second of two that take the very same packets and treat them alike: whichever
//   comes later takes no effect.
// - kEntriesOverlap: it shares packets with the others and treats them differently. If no order is
//   given, the others each take all of its packets, but for those that take nearly all packets of a
//   large group; when that is so of many entries, one finding without an entry says how many. If
//   one is given, pairs are told on request.
// - kValueUnusual: what hardly any sender means; the sentence says what to write instead. It is
//   about the match or action in `offender`, whose value is odd or contradicts that in `others`, or
//   about the entry, which has no action. docs/analysis.md lists what is told of.
// - kNotDecided: the steps did not suffice.
FILTERS_API Report analyse(const FiltersCommon::FiltersGroup& group,
                           const AnalysisOptions& options = {});

// kValueUnusual alone.
FILTERS_API Report unusualValues(const FiltersCommon::FiltersGroup& group,
                                 std::size_t max_findings = 1000);

// Packets that the two groups treat differently: a finding (kTreatmentDiffers) for each pair of
// rules, that of `a` in `entry` and that of `b` in `others`, with a packet in `witness` and what is
// done with it in `before` and `after`. Where no rule surely
// takes the packet on one side, that side is empty. What differs under some reading only, and rules
// that take too many steps, are kNotDecided.
FILTERS_API Report compareTreatment(const FiltersCommon::FiltersGroup& a,
                                    const FiltersCommon::FiltersGroup& b,
                                    const AnalysisOptions& options = {});

// What is known of one packet: fields by name, as the text form writes their values. A field is
// given, or known to be absent ("none"), or not told.
class FILTERS_API Packet {
 public:
  // "ingress_port=0x01000003 src_ipv4=192.0.2.1 ip_protocol=6 dst_l4_port=179 vlan_tagging=none".
  // Nothing when some of it cannot be read; the report, which may be null, then says what, and
  // counts findings beyond `max_findings` in Report::left_out.
  static std::optional<Packet> parse(std::string_view text, Report* report,
                                     std::size_t max_findings = 1000);
  std::string toText() const;  // in the order of the fields' match codes
 private:
  friend struct PacketFields;
  std::map<std::uint8_t, std::optional<std::array<std::uint64_t, 2>>> fields_;
};

// The names of all fields, in the order of their match codes.
FILTERS_API std::vector<std::string_view> packetFieldNames();

enum class Hit : std::uint8_t { kMiss, kHit, kUndecided };
FILTERS_API std::string_view nameOf(Hit);  // "miss", "hit", "undecided"

struct Traced {
  FiltersCommon::filtersEntryId_t entry;
  Hit hit;
  std::vector<std::string> lacking;  // of kUndecided: fields that the packet does not tell
  std::string reason;                // the field that missed, or the reading that is open
};
struct Trace {
  std::vector<Traced> entries;  // in the order given, by id where there is none
  // kHit: `entry` takes the packet; kMiss: none does; both whatever the fields that are not told,
  // and under every reading. Entries that tie are undecided.
  Hit outcome = Hit::kMiss;
  std::optional<FiltersCommon::filtersEntryId_t> entry;
  // For kUndecided: those it may be, each for some packet of which the same is told, and whether it
  // may be none. If `at_most`, that takes too long to say: some of them may not be possible.
  std::vector<FiltersCommon::filtersEntryId_t> candidates;
  bool may_be_none = false;
  bool at_most = false;
  // What is done with the packet, "permit, set_pcp=5": by the entry, or by all candidates alike.
  // Empty where that is open, and where none takes it.
  std::string treatment;
};
// "undecided: entry 10 or 60, or 1000"; "hit", "miss: the field that missed".
FILTERS_API std::string toText(const Trace& trace);
FILTERS_API std::string toText(const Traced& traced);

FILTERS_API Trace trace(const FiltersCommon::FiltersGroup& group, const Packet& packet,
                        Order order);

// A group made ready for many packets. It keeps nothing of the group, and copies share what they
// keep.
class FILTERS_API Tracer {
 public:
  Tracer(const FiltersCommon::FiltersGroup& group, Order order);
  Trace trace(const Packet& packet) const;
 private:
  struct Prepared;
  std::shared_ptr<const Prepared> prepared_;
};

// "hit: entry 10 (permit, set_pcp=5)", "undecided: entry 10 or 60, or 1000 (all deny)", then a line
// for each entry.
FILTERS_API std::ostream& operator<<(std::ostream& os, const Trace& trace);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_FILTER_ANALYSIS_H_

#ifndef FILTER_INSPECT_FILTER_ANALYSIS_H_
#define FILTER_INSPECT_FILTER_ANALYSIS_H_

// Says which packets the rules of a group take: compares rules with each other, and a packet with
// the rules. For example:
//
//     AnalysisOptions options;
//     options.order = Order::kHighestPriority;
//     std::cout << analyse(group, options);  // a line for each rule that never takes effect, ...
//
//     const auto packet = Packet::parse("src_ipv4=192.0.2.7 ip_protocol=6", nullptr);
//     if (packet) std::cout << trace(group, *packet, options.order);
//
// Order. Several rules of a group may take the same packet. The device decides which of them comes
// first; the model does not say. So the order is a parameter. By default the library makes only
// claims that hold in every order. The model also does not say if the search ends at the first rule
// that takes the packet. The library assumes that it does.
//
// Readings. The model leaves the meaning of some values to the device. Examples are a layer-4 mask
// of zero, an empty set of VLAN ids, a range with swapped ends, and the two low bits of a ToS byte.
// A reading is one of the ways in which a device may understand such a value. For each match this
// library knows two sets of packets: the packets that the match takes under every reading (must)
// and the packets that it takes under some reading (may). Equal matches take the same packets under
// every reading. Every claim holds under every reading; everything else is undecided.
// docs/analysis.md lists the readings, and the assumptions behind every claim.
//
// All functions may be called from any thread, if nobody changes the arguments meanwhile. They
// throw only std::bad_alloc and exceptions of a progress function.

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <filter_common/filter_groups.h>
#include <filter_inspect/filter_names.h>
#include <filter_inspect/filter_report.h>

namespace FiltersInspect {

// Decides which of two rules comes first if both take a packet. Rules of equal rank have no order.
// If a result depends on which of two such rules comes first, a tie is reported.
enum class Order : std::uint8_t {
  kUnspecified,      // all rules have equal rank
  kHighestPriority,  // larger numbers first
  kLowestPriority,   // smaller numbers first
  kAscendingId,      // smaller ids first
  // By priority, and by id if priorities are equal, so that no two rules have equal rank.
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

// The name of an order: "unspecified", "highest-priority", "lowest-priority", "ascending-id",
// "highest-priority,ascending-id" and so on. Each name ends with a zero byte.
FILTERS_API std::string_view nameOf(Order);
FILTERS_API std::optional<Order> orderFromName(std::string_view name);

// The entry with the smaller rank comes first. Entries of equal rank have no order.
FILTERS_API std::uint64_t rankOf(Order order, FiltersCommon::filtersEntryId_t id,
                                 FiltersCommon::filtersEntryPriority_t priority);

// The assumptions behind every claim. Each assumption is a sentence that begins with its name, for
// example "A1: ".
FILTERS_API const std::vector<std::string_view>& assumptions();

struct AnalysisOptions {
  Order order = Order::kUnspecified;
  bool redundant = true;             // looks for redundant entries, which takes most of the time
  bool overlaps = false;             // reports each pair that overlaps and is treated differently
  std::size_t max_findings = 1000;   // more are counted in Report::left_out
  std::uint64_t max_steps = 100000;  // a rule that needs more is kNotDecided
  // Called before each part of the work, with the number of finished parts and the number of all
  // parts. While a part takes long, it is called again with the same numbers.
  std::function<void(std::size_t done, std::size_t all)> progress;
};

// Like toJson() of filter_report.h, for reports of the functions below. The document also has the
// order and the assumptions.
FILTERS_API std::string toJson(const Report& report, Order order,
                               std::string_view command = "analyse", std::string_view file = "");
FILTERS_API std::string toJson(const std::vector<ReportInput>& inputs, Order order,
                               std::string_view command);

// Writes the document of toJson() on one line and without the assumptions. Use it for a stream of
// answers.
FILTERS_API std::string toJsonLine(const std::vector<ReportInput>& inputs, Order order,
                                   std::string_view command);

// Reports how the rules of a group affect each other, for example that one rule hides another. The
// treatment of a packet is the actions, the policer and the parent policer; counters and ids do not
// count. The field `entry` of a finding is the entry that it is about; `others` are other entries.
// If a packet can show the finding, `witness` is such a packet, and trace() of this packet agrees
// with the finding. `before` is then what the entry does with such packets, and `after` what
// another entry does with them. The codes:
// - kEntryUnreachable: entries before this one take every packet that it may take. The entries in
//   `others` together take all these packets, and none of these entries can be left out. The
//   sentence and `after` say how the entries that take the packets first treat them. They may be
//   different entries than those in `others`.
// - kEntriesTie: a packet reaches this entry and another one that treats it differently, and the
//   order does not say which of the two comes first. Without an order, a tie is reported only if
//   both entries take the same packets.
// - kEntryRedundant: without this entry every packet would be treated as before. Each such finding
//   assumes that only its own entry is removed: after that, another redundant entry may be needed.
//   Without an order, there is also a finding if two entries take the same packets and treat them
//   alike. It is about the second of the two entries.
// - kEntriesOverlap: this entry and those in `others` may take the same packets, and treat them
//   differently. Without an order, each entry in `others` takes all packets of this entry. Two
//   kinds of entries are not listed in `others`, because they are probably meant for the packets
//   that other entries leave. The first kind takes every packet. The second kind exists only in a
//   group of more than eight entries: it takes all packets of at least three quarters of the other
//   entries. If more than eight entries have such a finding, one finding without an `entry` gives
//   their number instead. With an order, kEntriesOverlap is reported only if `overlaps` of the
//   options is set.
// - kValueUnusual: senders hardly ever mean this value; the sentence says what to write instead.
//   The finding is about an entry without an action, or about the match or action in `offender`.
//   The value of the match or action is odd, or contradicts one in `others`. docs/analysis.md lists
//   all such values.
// - kNotDecided: the limit of steps was reached.
FILTERS_API Report analyse(const FiltersCommon::FiltersGroup& group,
                           const AnalysisOptions& options = {});

// Reports kValueUnusual alone.
FILTERS_API Report unusualValues(const FiltersCommon::FiltersGroup& group,
                                 std::size_t max_findings = 1000);

// Reports packets that the two groups treat differently. There is a finding (kTreatmentDiffers) for
// each pair of rules: the rule of `a` is in `entry` and the rule of `b` in `others`. `witness` is
// an example packet, and `before` and `after` are what the groups `a` and `b` do with it. If a
// group has no rule that certainly takes the packet, the fields of that group are empty. A
// difference that exists only under some readings is kNotDecided, and so are rules that need too
// many steps.
FILTERS_API Report compareTreatment(const FiltersCommon::FiltersGroup& a,
                                    const FiltersCommon::FiltersGroup& b,
                                    const AnalysisOptions& options = {});

// The known fields of one packet, with values as the text form writes them. A field has a value, or
// is known to be absent ("none"), or is unknown.
class FILTERS_API Packet {
 public:
  // Reads text such as "ingress_port=0x01000003 src_ipv4=192.0.2.1 ip_protocol=6
  // vlan_tagging=none". Returns nothing if a part of the text cannot be read. The report, which may
  // be null, then says why, and counts findings beyond `max_findings` in Report::left_out.
  static std::optional<Packet> parse(std::string_view text, Report* report,
                                     std::size_t max_findings = 1000);
  std::string toText() const;  // in the order of the fields' match codes
 private:
  friend struct PacketFields;
  struct Field {
    std::uint8_t number;
    bool has;                            // false: the packet lacks the field
    std::array<std::uint64_t, 2> value;  // the upper half of 128 bits comes first
  };
  std::vector<Field> fields_;  // in the order of their numbers
};

// The names of all fields, in the order of their match codes.
FILTERS_API std::vector<std::string_view> packetFieldNames();

enum class Hit : std::uint8_t { kMiss, kHit, kUndecided };
FILTERS_API std::string_view nameOf(Hit);  // "miss", "hit", "undecided"

struct Traced {
  FiltersCommon::filtersEntryId_t entry;
  Hit hit;
  std::vector<std::string> lacking;  // the unknown fields on which the result depends
  std::string reason;                // the field that missed, or why the match has several readings
};
struct Trace {
  std::vector<Traced> entries;  // in the order asked for, or by id
  // kHit: `entry` takes the packet. kMiss: no entry takes it. kHit and kMiss hold for all values of
  // unknown fields and under every reading. If entries tie, the outcome is kUndecided.
  Hit outcome = Hit::kMiss;
  std::optional<FiltersCommon::filtersEntryId_t> entry;
  // For kUndecided: the entries that may take the packet, each for some values of the unknown
  // fields. `may_be_none` is true if no entry takes the packet for some values of these fields.
  // `at_most` is true if the check ran out of steps. The list may then hold entries that cannot
  // take the packet, and `may_be_none` may be wrongly true.
  std::vector<FiltersCommon::filtersEntryId_t> candidates;
  bool may_be_none = false;
  bool at_most = false;
  // The treatment of the packet, for example "permit, set_pcp=5". If there are several candidates,
  // all of them treat the packet in this way. The text is empty if the treatment is undecided, or
  // if no entry takes the packet.
  std::string treatment;
  // The treatment of the packet by each candidate, in the order of `candidates`.
  std::vector<std::string> treatments;
};
// The text of a Trace is a line about the packet, for example "undecided: 50 takes it, unless 10,
// 11 or 30 does". The text of a Traced is about one entry: "hit", "miss: the field that missed" and
// so on.
FILTERS_API std::string toText(const Trace& trace);
FILTERS_API std::string toText(const Traced& traced);

FILTERS_API Trace trace(const FiltersCommon::FiltersGroup& group, const Packet& packet,
                        Order order);

// The outcome of a trace without a line for each entry. Each field has the value that it has in the
// Trace of the same packet.
struct Decision {
  Hit outcome = Hit::kMiss;
  std::optional<FiltersCommon::filtersEntryId_t> entry;
  std::vector<FiltersCommon::filtersEntryId_t> candidates;
  bool may_be_none = false;
  bool at_most = false;
};

// A group that is prepared for tracing many packets. The object may outlive the group, and copies
// of the object share their memory.
//
// trace() examines every entry, and decide() only the few entries that may take the packet. So
// decide() is the function for millions of packets: its time hardly grows with the number of
// entries. Each thread remembers its last decisions in a few hundred KiB, and frees this memory
// when it ends.
class FILTERS_API Tracer {
 public:
  Tracer(const FiltersCommon::FiltersGroup& group, Order order);
  Trace trace(const Packet& packet) const;
  Decision decide(const Packet& packet) const;
 private:
  struct Prepared;
  std::shared_ptr<const Prepared> prepared_;
};

// Writes the outcome, for example "hit: entry 10 (permit, set_pcp=5)", and then a line for each
// entry.
FILTERS_API std::ostream& operator<<(std::ostream& os, const Trace& trace);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_FILTER_ANALYSIS_H_

#ifndef FILTER_INSPECT_SRC_FORMS_GROUP_BUILDER_H_
#define FILTER_INSPECT_SRC_FORMS_GROUP_BUILDER_H_

// What the readers of text and of JSON share: messages become groups by a strict decode, and
// faults become findings with a place. And what both writers put beside a value for people.

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <filter_common/filter_groups.pb.h>
#include <filter_inspect/filter_text.h>

#include "shared/arena.h"
#include "report/limited_report.h"

namespace FiltersInspect {

// What is said of a byte that ends the text for many who read it.
inline constexpr const char* kZeroByte = "no zero byte is allowed here";

// Takes groups entry by entry, as bytes, so that no message of a whole group is held.
class GroupsReader {
 public:
  static constexpr std::size_t kMaxFindings = 1000;  // where the caller wants no other number

  explicit GroupsReader(std::size_t maxFindings)
      : maxFindings_(maxFindings), report_(maxFindings) {}

  // What the caller fills.
  FiltersCommon::FiltersGroupPB* head() { return head_; }
  FiltersCommon::FiltersEntryPB* entry() { return entries_->mutable_entries_(0); }

  void beginGroup(TextPlace place);
  void beginEntry(TextPlace place);
  // A policer that was not given is the default one.
  void endEntry();
  // Refuses whatever the decoder has more than a note about, of the entries without faults. Below a
  // head that has some nobody knows what is refused.
  void endGroup();

  // The place of the entry at hand, or of the head.
  void fail(Code code, TextPlace place, std::string message);
  // All groups, or none and the findings.
  ParsedGroups finish();
 private:
  TextPlace placeOf(const std::string& path) const;

  const std::size_t maxFindings_;
  std::vector<FiltersCommon::FiltersGroup> groups_;
  std::vector<GroupPlaces> places_of_groups_;
  LimitedReport report_;
  // Messages outside of an arena leak when memory runs out.
  FiltersCommon::MessageArena arena_;
  FiltersCommon::FiltersGroupPB* const head_ = arena_.make<FiltersCommon::FiltersGroupPB>();
  FiltersCommon::FiltersGroupPB* const entries_ =  // of the one entry at hand
      arena_.make<FiltersCommon::FiltersGroupPB>();
  std::string bytes_;  // of the entries before it
  bool isHeadFaulty_ = false;
  bool inEntry_ = false, isEntryFaulty_ = false;
  GroupPlaces places_;  // of the group at hand, its entries in `bytes_` and the one at hand
};

// The bytes in hexadecimal digits, both ways; upper-case digits are read too.
void appendHex(std::string_view bytes, std::string* out);
std::optional<std::string> parseHex(std::string_view digits);

// The bytes of the policer that an entry without one of its own holds.
const std::string& defaultPolicer();

// The name of an interface as the platform gives it; what is not printable ASCII is '?'.
std::string interfaceName(std::uint32_t limid);

// What a policer says: the name or number behind each key, for all but the actions. Writers leave
// out figures that are 0.
struct PolicerFact {
  const char* key;
  std::string_view name;  // empty: the number
  std::uint32_t number;
  bool figure;
};
using PolicerFacts = std::array<PolicerFact, 9>;
PolicerFacts factsOf(const policer::Policer& policer);
// " 10 ingress trtcm cir=2000".
void appendFacts(const policer::Policer& policer, std::string* out);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_FORMS_GROUP_BUILDER_H_

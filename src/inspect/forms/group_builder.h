#ifndef FILTER_INSPECT_SRC_FORMS_GROUP_BUILDER_H_
#define FILTER_INSPECT_SRC_FORMS_GROUP_BUILDER_H_

// What the readers of text and of JSON share: messages become groups by a strict decode, and
// faults become findings with a position.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <filter_common/filter_groups.pb.h>
#include <filter_inspect/filter_text.h>

#include "shared/arena.h"

namespace FiltersInspect {

// What is said of a byte that ends the text for many who read it.
inline constexpr const char* kZeroByte = "no zero byte is allowed here";

// Takes groups entry by entry, as bytes, so that no message of a whole group is held.
class GroupBuilder {
 public:
  static constexpr std::size_t kMaxFindings = 1000;  // where the caller wants no other number

  explicit GroupBuilder(std::size_t max_findings)
      : max_findings_(max_findings), report_(max_findings) {}

  // What the caller fills.
  FiltersCommon::FiltersGroupPB* head() { return head_; }
  FiltersCommon::FiltersEntryPB* entry() { return entries_->mutable_entries_(0); }

  void beginGroup(TextPosition position);
  void beginEntry(TextPosition position);
  // A policer that was not given is the default one.
  void endEntry();
  // Refuses whatever the decoder has more than a note about, of the entries without faults. Below a
  // head that has some nobody knows what is refused.
  void endGroup();

  // The position of the entry at hand, or of the head.
  void fail(Code code, TextPosition position, std::string message);
  // All groups, or none and the findings.
  ParsedGroups finish();
 private:
  TextPosition positionOf(const std::string& path) const;

  const std::size_t max_findings_;
  std::vector<FiltersCommon::FiltersGroup> groups_;
  std::vector<GroupPositions> positions_of_groups_;
  LimitedReport report_;
  // Messages outside of an arena leak when memory runs out.
  FiltersCommon::MessageArena arena_;
  FiltersCommon::FiltersGroupPB* const head_ = arena_.make<FiltersCommon::FiltersGroupPB>();
  FiltersCommon::FiltersGroupPB* const entries_ =  // of the one entry at hand
      arena_.make<FiltersCommon::FiltersGroupPB>();
  std::string bytes_;  // of the entries before it
  bool is_head_faulty_ = false;
  bool in_entry_ = false, is_entry_faulty_ = false;
  GroupPositions positions_;  // of the group at hand, its entries in `bytes_` and the one at hand
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_FORMS_GROUP_BUILDER_H_

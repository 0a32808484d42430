#ifndef FILTER_INSPECT_SRC_FORMS_GROUP_BUILDER_H_
#define FILTER_INSPECT_SRC_FORMS_GROUP_BUILDER_H_

// Builds groups for the readers of text and of JSON. A strict decode turns messages into groups.
// Faults become findings with a position.

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

// The message for a zero byte in the text. Many programs would end the text at such a byte.
inline constexpr const char* kZeroByte = "no zero byte is allowed here";

// Takes a group one entry at a time and keeps only its bytes, so that the message of the whole
// group is never in memory.
class GroupBuilder {
 public:
  static constexpr std::size_t kMaxFindings = 1000;  // unless the caller sets another limit
  // The result of reading a text: groups, or the bytes of groups without decoding.
  enum class Makes : std::uint8_t { kGroups, kBytes };

  GroupBuilder(Makes makes, std::size_t max_findings)
      : makes_(makes), max_findings_(max_findings), report_(max_findings) {}

  // The caller fills in these messages.
  FiltersCommon::FiltersGroupPB* head() { return head_; }
  FiltersCommon::FiltersEntryPB* entry() { return entries_->mutable_entries_(0); }

  void beginGroup(TextPosition position);
  void beginEntry(TextPosition position);
  // If the caller does not set a policer, the entry has the default policer.
  void endEntry();
  // Refuses every loss that the decoder reports for entries without faults. If the stage or type of
  // the group has a fault, it is not known which entries the group admits.
  void endGroup();

  // Reports a fault of the current entry, or of the group's own fields.
  void fail(Code code, TextPosition position, std::string_view word, std::string message);
  // Returns all groups, or no groups and the findings.
  ParsedGroups finish();
  ParsedBytes finishBytes();
  // The entry that was read without a group.
  ParsedEntry finishEntry();
 private:
  TextPosition positionOf(const std::string& path) const;
  void refuse(Report&& losses);

  const Makes makes_;
  const std::size_t max_findings_;
  std::vector<FiltersCommon::FiltersGroup> groups_;
  std::vector<std::string> bytes_of_groups_;
  std::vector<GroupPositions> positions_of_groups_;
  LimitedReport report_;
  // Without an arena, messages can leak when memory runs out.
  FiltersCommon::MessageArena arena_;
  FiltersCommon::FiltersGroupPB* const head_ = arena_.make<FiltersCommon::FiltersGroupPB>();
  FiltersCommon::FiltersGroupPB* const entries_ =  // holds the current entry alone
      arena_.make<FiltersCommon::FiltersGroupPB>();
  std::string bytes_;       // of the entries before the current one
  std::size_t number_ = 0;  // of the current group, counted from 1; 0 for an entry without a group
  bool is_head_faulty_ = false;
  bool in_entry_ = false, is_entry_faulty_ = false;
  GroupPositions positions_;  // of the current group, and of its entries so far
};

// Reads the whole text or JSON with `Reader`, and returns the groups and findings.
template <class Reader>
ParsedGroups readGroups(std::string_view all, std::size_t max_findings) {
  GroupBuilder groups(GroupBuilder::Makes::kGroups, max_findings);
  Reader(all, &groups).read();
  return groups.finish();
}
template <class Reader>
ParsedBytes readBytes(std::string_view all, std::size_t max_findings) {
  GroupBuilder groups(GroupBuilder::Makes::kBytes, max_findings);
  Reader(all, &groups).read();
  return groups.finishBytes();
}
template <class Reader>
ParsedEntry readEntry(std::string_view all) {
  GroupBuilder groups(GroupBuilder::Makes::kBytes, GroupBuilder::kMaxFindings);
  Reader(all, &groups).readOnlyEntry();
  return groups.finishEntry();
}

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_FORMS_GROUP_BUILDER_H_

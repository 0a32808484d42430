#include "group_builder.h"

#include <algorithm>
#include <charconv>

#include <filter_inspect/filter_decode.h>

#include "policer_facts.h"

namespace FiltersInspect {

using namespace FiltersCommon;

std::string toText(TextPosition position) {
  return std::to_string(position.line) + ':' + std::to_string(position.column);
}

TextPosition GroupPositions::of(std::optional<filtersEntryId_t> entry) const {
  if (!entry) return group;
  const auto found = std::partition_point(entries.begin(), entries.end(),
                                          [&](const auto& one) { return one.first < *entry; });
  return found != entries.end() && found->first == *entry ? found->second : group;
}

void GroupBuilder::beginGroup(TextPosition position) {
  is_head_faulty_ = false;
  head_->Clear();
  bytes_.clear();
  positions_ = {position, {}};
}

void GroupBuilder::beginEntry(TextPosition position) {
  positions_.entries.emplace_back(0, position);
  in_entry_ = true;
  is_entry_faulty_ = false;
  entries_->Clear();
  entries_->add_entries_();
}

void GroupBuilder::endEntry() {
  in_entry_ = false;
  if (is_entry_faulty_) return positions_.entries.pop_back();
  positions_.entries.back().first = entry()->id_();
  if (entry()->policer_().empty()) entry()->set_policer_(defaultPolicer());
  // Messages whose bytes follow each other are one message with the fields of both.
  static_cast<void>(entries_->AppendPartialToString(&bytes_));
}

void GroupBuilder::endGroup() {
  if (is_head_faulty_) return;
  const std::string bytes = head_->SerializePartialAsString() + bytes_;
  DecodeLimits limits;
  limits.max_findings = max_findings_;
  limits.max_bytes = bytes.size();
  limits.least = Severity::kWarning;  // a note means that nothing is lost
  DecodedGroup decoded = decodeGroup(bytes, limits);
  for (Finding& finding : decoded.report.findings) {
    finding.path = toText(positionOf(finding.path));
    finding.bytes.reset();  // the bytes were made here, and nobody sees them
  }
  report_.append(std::move(decoded.report));
  if (!report_.empty()) return;
  groups_.push_back(std::move(*decoded.group));
  std::sort(positions_.entries.begin(), positions_.entries.end(),
            [](const auto& a, const auto& b) { return a.first < b.first; });
  positions_of_groups_.push_back(std::move(positions_));
}

ParsedGroups GroupBuilder::finish() {
  if (!report_.empty()) return {{}, report_.take(), {}};
  return {std::move(groups_), {}, std::move(positions_of_groups_)};
}

void GroupBuilder::fail(Code code, TextPosition position, std::string message) {
  (in_entry_ ? is_entry_faulty_ : is_head_faulty_) = true;
  Finding* finding = report_.add(code);
  if (finding == nullptr) return;
  finding->path = toText(position);
  finding->message = std::move(message);
}

// The position of the entry whose number begins the path, or of the group.
TextPosition GroupBuilder::positionOf(const std::string& path) const {
  static constexpr std::string_view kEntries = "entries_[";
  std::size_t index = positions_.entries.size();
  if (path.compare(0, kEntries.size(), kEntries) == 0) {
    std::from_chars(path.data() + kEntries.size(), path.data() + path.size(), index);
  }
  return index < positions_.entries.size() ? positions_.entries[index].second : positions_.group;
}

}  // namespace FiltersInspect

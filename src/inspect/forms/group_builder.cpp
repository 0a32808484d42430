#include "group_builder.h"

#include <algorithm>
#include <charconv>

#include <filter_inspect/filter_decode.h>

#include "catalogue/name_or_number.h"
#include "policer_facts.h"

namespace FiltersInspect {

using namespace FiltersCommon;

namespace {

// Returns the sentence for a finding about something written twice, or about something that is
// refused. Other findings keep the sentence of the decoder, so the result is empty for them.
std::string sentenceFor(const Finding& finding) {
  switch (finding.code) {
    case Code::kEntryRefused:
      return "the group does not admit it";
    case Code::kEntryReplaced:
      return "another entry of the group has this id";
    case Code::kCounterReplaced:
      return "another counter of the entry has this id";
    case Code::kMatchRefused: {
      std::string others;
      for (const std::uint32_t other : finding.others) {
        others += others.empty() ? "" : " or ";
        others += nameOrNumber(static_cast<filtersMatch_t>(other));
      }
      return "it cannot stand beside " + others;
    }
    default:
      return {};
  }
}

}  // namespace

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
  ++number_;
  is_head_faulty_ = false;
  head_->Clear();
  bytes_.clear();
  positions_ = {position, {}};
}

void GroupBuilder::beginEntry(TextPosition position) {
  if (number_ == 0) positions_.group = position;
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
  // If the bytes of two messages are joined, they are one message with the fields of both.
  static_cast<void>(entries_->AppendPartialToString(&bytes_));
}

void GroupBuilder::endGroup() {
  if (is_head_faulty_) return;
  std::string bytes = head_->SerializePartialAsString() + bytes_;
  std::optional<FiltersGroup> group;
  if (makes_ == Makes::kGroups) {
    DecodeLimits limits;
    limits.max_findings = max_findings_;
    limits.max_bytes = bytes.size();
    limits.least = Severity::kWarning;  // a note means that nothing is lost
    DecodedGroup decoded = decodeGroup(bytes, limits);
    refuse(std::move(decoded.report));
    group = std::move(decoded.group);
  }
  if (!report_.empty()) return;
  std::sort(positions_.entries.begin(), positions_.entries.end(),
            [](const auto& a, const auto& b) { return a.first < b.first; });
  positions_of_groups_.push_back(std::move(positions_));
  if (group) {
    groups_.push_back(std::move(*group));
  } else {
    bytes_of_groups_.push_back(std::move(bytes));
  }
}

// If reading the bytes would lose something, the whole text is refused.
void GroupBuilder::refuse(Report&& losses) {
  for (Finding& finding : losses.findings) {
    finding.path = toText(positionOf(finding.path));
    finding.bytes.reset();  // the bytes were made here, and nobody sees them
    finding.severity = Severity::kError;
    if (number_ != 0) finding.group_number = number_;
    if (finding.subject == Subject::kMatch) {
      finding.word = nameOf(static_cast<filtersMatch_t>(finding.offender));
    } else if (finding.subject == Subject::kAction) {
      finding.word = nameOf(static_cast<filtersAction_t>(finding.offender));
    }
    std::string sentence = sentenceFor(finding);
    if (!sentence.empty()) finding.message = std::move(sentence);
  }
  Report errors;
  errors.findings = std::move(losses.findings);
  errors.leaveOut(Severity::kError, losses.left_out);
  report_.append(std::move(errors));
}

ParsedGroups GroupBuilder::finish() {
  if (!report_.empty()) return {{}, report_.take(), {}};
  return {std::move(groups_), {}, std::move(positions_of_groups_)};
}

ParsedBytes GroupBuilder::finishBytes() {
  if (!report_.empty()) return {{}, report_.take(), {}};
  return {std::move(bytes_of_groups_), {}, std::move(positions_of_groups_)};
}

ParsedEntry GroupBuilder::finishEntry() {
  ParsedEntry parsed;
  if (report_.empty()) {
    const std::string bytes = entry()->SerializePartialAsString();
    DecodeLimits limits;
    limits.max_bytes = bytes.size();
    limits.least = Severity::kWarning;
    DecodedEntry decoded = decodeEntry(bytes, limits);
    refuse(std::move(decoded.report));
    if (report_.empty()) parsed.entry.emplace(*decoded.entry);
  }
  parsed.report = report_.take();
  return parsed;
}

void GroupBuilder::fail(Code code, TextPosition position, std::string_view word,
                        std::string message) {
  constexpr std::size_t kMostOfWord = 200;
  (in_entry_ ? is_entry_faulty_ : is_head_faulty_) = true;
  Finding* finding = report_.add(code);
  if (finding == nullptr) return;
  finding->path = toText(position);
  if (number_ != 0) finding->group_number = number_;
  finding->word = word.substr(0, kMostOfWord);
  finding->message = std::move(message);
}

// The position of the entry whose number begins the path. If there is no such entry, the position
// of the group.
TextPosition GroupBuilder::positionOf(const std::string& path) const {
  static constexpr std::string_view kEntries = "entries_[";
  std::size_t index = positions_.entries.size();
  if (path.compare(0, kEntries.size(), kEntries) == 0) {
    std::from_chars(path.data() + kEntries.size(), path.data() + path.size(), index);
  }
  return index < positions_.entries.size() ? positions_.entries[index].second : positions_.group;
}

}  // namespace FiltersInspect

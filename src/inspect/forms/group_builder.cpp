#include "group_builder.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include <filter_inspect/filter_decode.h>
#include <filter_inspect/filter_names.h>

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

constexpr std::string_view kHexDigits = "0123456789abcdef";

std::string_view modeName(policer::ModeType type) {
  switch (type) {
    case policer::ModeType::SrTcm:
      return "srtcm";
    case policer::ModeType::TrTcm:
      return "trtcm";
    case policer::ModeType::TrTcmDs:
      return "trtcmds";
    case policer::ModeType::Flow:
      return "flow";
    case policer::ModeType::None:
      return "none";
  }
  return {};
}

}  // namespace

std::string toText(TextPlace place) {
  return std::to_string(place.line) + ':' + std::to_string(place.column);
}

TextPlace GroupPlaces::of(std::optional<filtersEntryId_t> entry) const {
  if (!entry) return group;
  const auto found = std::partition_point(entries.begin(), entries.end(),
                                          [&](const auto& one) { return one.first < *entry; });
  return found != entries.end() && found->first == *entry ? found->second : group;
}

void GroupsReader::beginGroup(TextPlace place) {
  isHeadFaulty_ = false;
  head_->Clear();
  bytes_.clear();
  places_ = {place, {}};
}

void GroupsReader::beginEntry(TextPlace place) {
  places_.entries.emplace_back(0, place);
  inEntry_ = true;
  isEntryFaulty_ = false;
  entries_->Clear();
  entries_->add_entries_();
}

void GroupsReader::endEntry() {
  inEntry_ = false;
  if (isEntryFaulty_) return places_.entries.pop_back();
  places_.entries.back().first = entry()->id_();
  if (entry()->policer_().empty()) entry()->set_policer_(defaultPolicer());
  // Fields written one behind the other are the bytes of one message of all of them.
  static_cast<void>(entries_->AppendPartialToString(&bytes_));
}

void GroupsReader::endGroup() {
  if (isHeadFaulty_) return;
  const std::string bytes = head_->SerializePartialAsString() + bytes_;
  DecodeLimits limits;
  limits.max_findings = maxFindings_;
  limits.max_bytes = bytes.size();
  limits.least = Severity::kWarning;  // what is only noted is not lost
  DecodedGroup decoded = decodeGroup(bytes, limits);
  for (Finding& finding : decoded.report.findings) {
    finding.path = toText(placeOf(finding.path));
    finding.bytes.reset();  // of the bytes in between, which nobody sees
  }
  report_.append(std::move(decoded.report));
  if (!report_.empty()) return;
  groups_.push_back(std::move(*decoded.group));
  std::sort(places_.entries.begin(), places_.entries.end(),
            [](const auto& a, const auto& b) { return a.first < b.first; });
  places_of_groups_.push_back(std::move(places_));
}

ParsedGroups GroupsReader::finish() {
  if (!report_.empty()) return {{}, report_.take(), {}};
  return {std::move(groups_), {}, std::move(places_of_groups_)};
}

void GroupsReader::fail(Code code, TextPlace place, std::string message) {
  (inEntry_ ? isEntryFaulty_ : isHeadFaulty_) = true;
  if (!report_.takes(severityOf(code))) return;
  Finding& finding = report_.add(code);
  finding.path = toText(place);
  finding.message = std::move(message);
}

// Of the entry whose number the path begins with, else of the group.
TextPlace GroupsReader::placeOf(const std::string& path) const {
  static constexpr std::string_view kEntries = "entries_[";
  std::size_t index = places_.entries.size();
  if (path.compare(0, kEntries.size(), kEntries) == 0) {
    std::from_chars(path.data() + kEntries.size(), path.data() + path.size(), index);
  }
  return index < places_.entries.size() ? places_.entries[index].second : places_.group;
}

void appendHex(std::string_view bytes, std::string* out) {
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    *out += kHexDigits[byte >> 4];
    *out += kHexDigits[byte & 15];
  }
}

std::optional<std::string> parseHex(std::string_view digits) {
  if (digits.size() % 2 != 0) return std::nullopt;
  std::string bytes;
  bytes.reserve(digits.size() / 2);
  for (; !digits.empty(); digits.remove_prefix(2)) {
    unsigned char byte = 0;
    const auto [end, fault] = std::from_chars(digits.data(), digits.data() + 2, byte, 16);
    if (fault != std::errc() || end != digits.data() + 2) return std::nullopt;
    bytes += static_cast<char>(byte);
  }
  return bytes;
}

const std::string& defaultPolicer() {
  static const std::string bytes = policer::Policer(std::string()).Serialize();
  return bytes;
}

std::string interfaceName(std::uint32_t limid) {
  constexpr std::size_t kSize = 100;
  limid_t id;
  std::memcpy(&id, &limid, sizeof id);
  char text[kSize + 1] = {};  // ends in a zero even if the platform fills all it is offered
  limid_to_intfname(id, text, kSize);
  std::string name = text;
  std::replace_if(
      name.begin(), name.end(), [](char c) { return c <= ' ' || c > '~'; }, '?');
  return name;
}

PolicerFacts factsOf(const policer::Policer& policer) {
  const auto& mode = policer.GetMode();
  const auto figure = [](const char* key, auto value) {
    return PolicerFact{key, {}, static_cast<std::uint32_t>(value), true};
  };
  const auto named = [](const char* key, std::string_view name, auto value) {
    return PolicerFact{key, name, static_cast<std::uint32_t>(value), false};
  };
  return {named("id", {}, policer.GetId()),
          named("stage", nameOf(policer.GetStage()), policer.GetStage()),
          named("mode", modeName(mode.GetType()), mode.GetType()),
          figure("cir", mode.GetCir()),
          figure("cbs", mode.GetCbs()),
          figure("pir", mode.GetPir()),
          figure("pbs", mode.GetPbs()),
          figure("eir", mode.GetEir()),
          figure("ebs", mode.GetEbs())};
}

void appendFacts(const policer::Policer& policer, std::string* out) {
  for (const PolicerFact& fact : factsOf(policer)) {
    if (fact.figure && fact.number == 0) continue;
    *out += ' ';
    if (fact.figure) (*out += fact.key) += '=';
    *out += fact.name;
    if (fact.name.empty()) *out += std::to_string(fact.number);
  }
}

}  // namespace FiltersInspect

#ifndef FILTER_COMMON_TESTS_INSPECT_DECODING_H_
#define FILTER_COMMON_TESTS_INSPECT_DECODING_H_

// Checks that strict decoding keeps its promises for any bytes. Tests and fuzz/ use these checks.
// Each check returns the fault as text, or an empty text.

#include <filter_inspect/filter_decode.h>

#include <numeric>

#include "../../meaning.h"

namespace catalogue {

using namespace FiltersInspect;

// Sorts the matches, the actions, the counters or the elements of a set, because their order has no
// meaning.
template <class Parts, class Key>
void sortBy(Parts* parts, Key key) {
  std::stable_sort(parts->pointer_begin(), parts->pointer_end(),
                   [&](const auto* a, const auto* b) { return key(*a) < key(*b); });
}
inline void normalise(FiltersEntryPB* entry) {
  sortBy(entry->mutable_matches_(), [](const MatchPB& match) { return match.type_(); });
  sortBy(entry->mutable_actions_(), [](const ActionPB& action) { return action.type_(); });
  sortBy(entry->mutable_counters_(), [](const CounterPB& counter) { return counter.id(); });
  for (MatchPB& match : *entry->mutable_matches_()) {
    for (auto* set : {match.mutable_vlan_id_(), match.mutable_pcp_()}) {
      std::sort(set->begin(), set->end());
    }
  }
}
inline void normalise(FiltersGroupPB* group) {
  sortBy(group->mutable_entries_(), [](const FiltersEntryPB& entry) { return entry.id_(); });
  for (FiltersEntryPB& entry : *group->mutable_entries_()) normalise(&entry);
}

template <class Message>
std::string meaningOf(const std::string& bytes) {
  Message message;
  message.ParsePartialFromString(bytes);
  normalise(&message);
  return message.SerializePartialAsString();
}

// Decodes a group or an entry, depending on T.
template <class T>
auto decode(const std::string& bytes, const DecodeLimits& limits = {}) {
  if constexpr (std::is_same_v<T, FiltersEntry>) {
    DecodedEntry decoded = decodeEntry(bytes, limits);
    return std::pair(std::move(decoded.entry), std::move(decoded.report));
  } else {
    DecodedGroup decoded = decodeGroup(bytes, limits);
    return std::pair(std::move(decoded.group), std::move(decoded.report));
  }
}

inline std::string faultOf(const Report& report, std::size_t size) {
  std::ostringstream text;
  text << report;
  for (const Finding& finding : report.findings) {
    if (finding.severity != severityOf(finding.code)) return "severity: " + text.str();
    if (!finding.bytes || finding.message.empty()) return "says too little: " + text.str();
    const auto [offset, length] = *finding.bytes;
    if (offset > size || length > size - offset) return "out of range: " + text.str();
  }
  return "";
}

// With a lower limit, the report must keep the most severe findings. If several findings are
// equally severe, it must keep the first of them.
template <class T>
std::string faultWithLimit(const std::string& bytes, const Report& all, std::size_t most) {
  DecodeLimits limits;
  limits.max_findings = most;
  const Report some = decode<T>(bytes, limits).second;
  if (some.findings.size() > most) return "more findings than there is room for";
  if (some.findings.size() + some.left_out != all.findings.size() + all.left_out) {
    return "a limit changes how many findings there are";
  }
  if (some.worst() != all.worst()) return "a limit hides the worst of them";
  std::vector<std::size_t> order(all.findings.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), [&all](std::size_t a, std::size_t b) {
    return all.findings[a].severity > all.findings[b].severity;
  });
  std::sort(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(some.findings.size()));
  for (std::size_t i = 0; i < some.findings.size(); ++i) {
    if (some.findings[i].path != all.findings[order[i]].path ||
        some.findings[i].code != all.findings[order[i]].code) {
      return "a limit keeps other findings";
    }
  }
  return "";
}

template <class T>
std::string faultInDecoding(const std::string& bytes) {
  using Message =
      std::conditional_t<std::is_same_v<T, FiltersEntry>, FiltersEntryPB, FiltersGroupPB>;
  const auto [object, report] = decode<T>(bytes);
  if (const std::string fault = faultOf(report, bytes.size()); fault != "") return fault;
  const auto has = [&found = report.findings](Code code) {
    return std::any_of(found.begin(), found.end(), [&](auto& it) { return it.code == code; });
  };
  const auto [made, refusal] = outcomeOf([&] { return std::make_unique<T>(bytes); });
  if (object.has_value() != (made != nullptr)) return "is there, or not, unlike the constructor's";
  if (!object) return has(Code::kRebuildThrows) || report.left_out != 0 ? "" : "throws silently";
  if (!(*object == *made) || bytesOf(*object) != bytesOf(*made)) return "is another object";
  if (report.empty() && bytesOf(*made) != bytes) return "is silent about other bytes";
  if (report.worst() == Severity::kNote &&
      meaningOf<Message>(bytes) != meaningOf<Message>(bytesOf(*made))) {
    return "is silent about a loss";
  }
  Message message;
  const bool whole = message.ParsePartialFromString(bytes);
  if (!whole && report.left_out == 0 && !has(Code::kBytesBroken) && !has(Code::kTrailingZero)) {
    return "is silent about broken bytes";
  }
  if (whole && has(Code::kBytesBroken)) return "calls bytes broken that are not";
  return report.findings.empty() ? "" : faultWithLimit<T>(bytes, report, 1);
}

}  // namespace catalogue

#endif  // FILTER_COMMON_TESTS_INSPECT_DECODING_H_

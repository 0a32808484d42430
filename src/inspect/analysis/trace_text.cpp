#include <filter_inspect/filter_analysis.h>

#include <algorithm>
#include <ostream>

namespace FiltersInspect {

using namespace FiltersCommon;

std::string_view nameOf(Hit hit) {
  switch (hit) {
    case Hit::kMiss:
      return "miss";
    case Hit::kHit:
      return "hit";
    case Hit::kUndecided:
      return "undecided";
  }
  return {};
}

namespace {

// "10, 11 or 30"
std::string listed(const std::vector<filtersEntryId_t>& ids) {
  std::string list;
  for (std::size_t i = 0; i < ids.size(); ++i) {
    list += (i == 0 ? "" : i + 1 == ids.size() ? " or " : ", ") + std::to_string(ids[i]);
  }
  return list;
}

// Says which candidates may take the packet, for example "10 takes it, unless 20 or 30 does".
std::string candidatesText(const Trace& trace) {
  std::vector<filtersEntryId_t> sure, others;
  auto traced = trace.entries.begin();  // the candidates are in the order of the entries
  for (const filtersEntryId_t id : trace.candidates) {
    traced = std::find_if(traced, trace.entries.end(),
                          [id](const Traced& one) { return one.entry == id; });
    const bool isSure = traced != trace.entries.end() && traced->hit == Hit::kHit;
    (isSure ? sure : others).push_back(id);
  }
  std::string text = trace.may_be_none ? "no entry" : sure.empty() ? listed(others) : listed(sure);
  text += " takes it";
  const bool isUnless = !others.empty() && (trace.may_be_none || !sure.empty());
  if (isUnless) text += ", unless " + listed(others) + " does";
  if (sure.size() > 1) text += "; nothing says which of " + listed(sure) + " comes first";
  return text;
}

}  // namespace

std::string toText(const Trace& trace) {
  std::string text(nameOf(trace.outcome));
  if (trace.entry) text += ": entry " + std::to_string(*trace.entry);
  const std::size_t count = trace.candidates.size();
  if (count != 0) text += ": " + candidatesText(trace);
  if (trace.at_most) text += "; some of them may be impossible";
  if (!trace.treatment.empty()) {
    text += (count == 0 ? " (" : count == 2 ? " (both: " : " (all: ") + trace.treatment + ')';
  }
  return text;
}

std::string toText(const Traced& traced) {
  std::string why = traced.reason;
  for (std::size_t i = 0; i < traced.lacking.size(); ++i) {
    why += (i == 0 ? (why.empty() ? "" : "; ") : ", ") + traced.lacking[i];
  }
  if (!traced.lacking.empty()) why += traced.lacking.size() == 1 ? " is not told" : " are not told";
  return std::string(nameOf(traced.hit)) + (why.empty() ? "" : ": " + why);
}

std::ostream& operator<<(std::ostream& os, const Trace& trace) {
  std::string text = toText(trace) + '\n';
  for (const Traced& one : trace.entries) {
    text += "  " + std::to_string(one.entry) + ' ' + toText(one) + '\n';
  }
  return os << text;
}

}  // namespace FiltersInspect

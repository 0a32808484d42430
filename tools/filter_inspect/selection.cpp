#include "selection.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace FilterInspectTool {
namespace {

constexpr std::size_t kMostNamed = 8;  // ids in a sentence

// True if the option does not name any id, or names this id.
bool isAmong(const std::vector<std::uint32_t>& asked, std::uint32_t id) {
  return asked.empty() || std::find(asked.begin(), asked.end(), id) != asked.end();
}

template <class Items, class Drop>
void dropFrom(Items* items, const Drop& drop) {
  items->erase(std::remove_if(items->begin(), items->end(), drop), items->end());
}

}  // namespace

void Selection::choose(Input* input) {
  std::set<std::size_t> dropped;
  dropFrom(&input->groups, [&](const InputGroup& group) {
    if (!group.group) return false;  // nothing says which group it would be
    const std::uint32_t id = group.group->getId();
    groups_.there.insert(id);
    if (!isAmong(options_.groups, id)) return dropped.insert(group.number).second;
    for (const auto& [entry, its] : group.group->getEntriesRef()) entries_.there.insert(entry);
    return false;
  });
  dropFrom(&input->report.findings, [&](const Finding& finding) {
    return finding.group_number && dropped.count(*finding.group_number) != 0;
  });
}

bool Selection::isThere(Console* console) const {
  return groups_.tellMissing("group", options_.groups, console) &&
         entries_.tellMissing("entry", options_.entries, console);
}

bool Selection::has(std::uint32_t entry) const { return isAmong(options_.entries, entry); }

void Selection::keep(Report* report) const {
  if (options_.entries.empty()) return;
  dropFrom(&report->findings, [this](const Finding& finding) {
    const bool isOther = finding.subject != FiltersInspect::Subject::kMatch &&
                         finding.subject != FiltersInspect::Subject::kAction &&
                         std::any_of(finding.others.begin(), finding.others.end(),
                                     [this](std::uint32_t other) { return has(other); });
    return !(finding.entry && has(*finding.entry)) && !isOther;
  });
}

bool Selection::Ids::tellMissing(const char* what, const std::vector<std::uint32_t>& asked,
                                 Console* console) const {
  for (const std::uint32_t id : asked) {
    if (there.count(id) != 0) continue;
    std::string list;
    std::size_t count = 0;
    for (const std::uint32_t other : there) {
      if (count++ == kMostNamed) break;
      list += (list.empty() ? "" : ", ") + std::to_string(other);
    }
    if (there.size() > kMostNamed) {
      list += " and " + std::to_string(there.size() - kMostNamed) + " more";
    }
    const std::string none = std::string("there is no ") + what;
    console->trouble(Code::kUsage, "",
                     none + ' ' + std::to_string(id) +
                         (list.empty() ? ", nor any other" : "; there are: " + list));
    return false;
  }
  return true;
}

std::optional<Input> readChosen(const Options& options, Selection* selection, Console* console) {
  std::vector<Input> inputs = readInputs(options, console);
  if (inputs.empty()) return std::nullopt;
  selection->choose(&inputs.front());
  if (!selection->isThere(console)) return std::nullopt;
  tellLosses(inputs.front(), console);
  return std::move(inputs.front());
}

}  // namespace FilterInspectTool

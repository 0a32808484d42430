#include "entry_findings.h"

namespace FiltersInspect {

using namespace FiltersCommon;

Finding* EntryFindings::add(Code code, std::optional<filtersEntryId_t> entry) {
  Finding* finding = report_.add(code);
  if (finding == nullptr) return nullptr;
  finding->subject = entry ? Subject::kEntry : Subject::kGroup;
  finding->group = group_;
  finding->entry = entry;
  return finding;
}

std::string entriesText(const std::vector<std::uint32_t>& ids, bool others) {
  constexpr std::size_t kMost = 5;
  std::vector<std::string> names;
  for (std::size_t i = 0; i < (ids.size() > kMost ? kMost - 1 : ids.size()); ++i) {
    names.push_back(std::to_string(ids[i]));
  }
  if (others) {
    names.emplace_back("others");
  } else if (ids.size() > kMost) {
    names.push_back(std::to_string(ids.size() - names.size()) + " more");
  }
  std::string text = ids.size() == 1 ? "entry " : "entries ";
  for (std::size_t i = 0; i < names.size(); ++i) {
    text += (i == 0 ? "" : i + 1 == names.size() ? " and " : ", ") + names[i];
  }
  return text;
}

}  // namespace FiltersInspect

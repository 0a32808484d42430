// Asks libfilter_inspect these questions: Why is a rule refused? Which groups would admit it? What
// is lost when the bytes of another sender are read? The program exits with 0 only if everything
// was as expected.

#include <filter_inspect/filter_decode.h>
#include <filter_inspect/filter_explain.h>
#include <filter_inspect/filter_names.h>

#include <iostream>

using namespace FiltersCommon;
using namespace FiltersInspect;

namespace {

// Prints the report. True if the report begins with the expected finding.
bool show(const Report& report, Code expected) {
  std::cout << report;
  if (!report.empty() && report.findings.front().code == expected) return true;
  std::cerr << "inspect: " << nameOf(expected) << " was expected\n";
  return false;
}

// Prints why a rule is refused, and the groups that would admit it.
bool whyRefused() {
  FiltersEntry rule(30);
  if (rule.setMatch(MatchVrfId(5)) != FILTERS_OK) return false;
  FiltersGroup group(1);
  if (group.setStage(FILTERS_GROUP_STAGE_INGRESS) != FILTERS_OK ||
      group.setType(FILTERS_GROUP_TYPE_3) != FILTERS_OK) {
    return false;
  }
  const bool good = show(explainInsert(group, rule), Code::kMatchNotAdmitted);
  for (const Placement& place : placementsOf(rule)) {
    std::cout << "  a group at stage " << nameOf(place.stage) << " of type " << nameOf(place.type)
              << " takes it\n";
  }
  return good;
}

// Reads bytes with a number that is too wide for its field: the only rule of the group matches VLAN
// 65636.
bool whatWasLost() {
  std::string rule;
  FiltersEntry(40).serialize(&rule);
  rule += std::string("\x22\x06\x08\x02\x18\xe4\x80\x04", 8);
  FiltersGroup group(1);
  std::string bytes;
  static_cast<void>(group.setType(FILTERS_GROUP_TYPE_2));
  group.serialize(&bytes);
  bytes += '\x2a';
  bytes += static_cast<char>(rule.size());
  bytes += rule;

  const DecodedGroup decoded = decodeGroup(bytes);
  const bool good = show(decoded.report, Code::kValueCut);
  if (!decoded.group || decoded.group->getEntriesRef().empty()) return false;
  MatchExternalVlanId vlan(0);
  if (decoded.group->getEntriesRef().begin()->second.getMatch(vlan) != FILTERS_OK) return false;
  std::cout << "  what is left is VLAN " << *vlan.getVlanIds().begin() << '\n';
  return good;
}

}  // namespace

int main() {
  std::cout << "Why is it refused?\n";
  const bool refusal = whyRefused();
  std::cout << "What did these bytes lose?\n";
  const bool loss = whatWasLost();
  return refusal && loss ? 0 : 1;
}

// Prints what each type and each stage of a group admits, in Markdown. docs/capabilities.md is the
// output of this program.

#include <filter_common/filter_groups.h>

#include <iostream>
#include <string>

namespace fc = FiltersCommon;

namespace {

template <class Code>
struct Row {
  Code code;
  const char* enumerator;
  const char* className;
};

const Row<fc::filtersMatch_t> kMatches[] = {
#define FILTERS_MATCH(code, T, blank) {fc::code, #code, #T},
#include <filter_common/filter_matches.def>
};

const Row<fc::filtersAction_t> kActions[] = {
#define FILTERS_ACTION(code, T, blank) {fc::code, #code, #T},
#include <filter_common/filter_actions.def>
};

// The part of an enumerator's name behind FILTERS_GROUP_TYPE_ or FILTERS_GROUP_STAGE_.
std::string nameOf(fc::filtersGroupType_t type) {
  return type == fc::FILTERS_GROUP_TYPE_NONE ? "NONE" : std::to_string(type);
}

std::string nameOf(fc::filtersGroupStage_t stage) {
#define STAGE(name) \
  if (stage == fc::FILTERS_GROUP_STAGE_##name) return #name
  STAGE(NONE);
  STAGE(LOOKUP);
  STAGE(INGRESS);
  STAGE(EGRESS);
#undef STAGE
  return std::to_string(stage);
}

// Prints the head of a table: the given columns, then a column for each type or stage in the
// library's table.
template <class Table>
void printHead(const std::string& columns, const std::string& rule, const Table& table) {
  std::cout << '\n' << columns;
  for (const auto& [key, codes] : table) std::cout << ' ' << nameOf(key) << " |";
  std::cout << '\n' << rule;
  for (std::size_t i = 0; i < table.size(); ++i) std::cout << " :-: |";
  std::cout << '\n';
}

template <class Table, class Code>
void printCells(const Table& table, Code code) {
  for (const auto& [key, codes] : table) std::cout << (codes.count(code) != 0 ? " x |" : "   |");
  std::cout << '\n';
}

template <class Rows, class Table>
void printTable(const std::string& kind, const Rows& rows, const Table& table) {
  printHead("| " + kind + " | class |", "| --- | --- |", table);
  for (const auto& row : rows) {
    std::cout << "| `" << row.enumerator << "` | `" << row.className << "` |";
    printCells(table, row.code);
  }
}

void printTypes() {
  const auto& table = fc::FiltersGroup::StageTypesDescription_;
  printHead("| type |", "| --- |", table);
  for (const auto& [type, matches] : fc::FiltersGroup::TypeDescription_) {
    std::cout << "| `FILTERS_GROUP_TYPE_" << nameOf(type) << "` |";
    printCells(table, type);
  }
}

// The library has no public table of policer stages, so this function calls the check for each
// stage.
void printPolicerStages() {
  const fc::FiltersGroup group(0);
  std::cout << "\n| stage | policer stages |\n| --- | --- |\n";
  for (const auto& [stage, types] : fc::FiltersGroup::StageTypesDescription_) {
    std::cout << "| `FILTERS_GROUP_STAGE_" << nameOf(stage) << "` |";
#define POLICER(name)                                                                     \
  if (const policer::Policer policer(1, policer::Stage::name, policer::Mode::None(), {}); \
      group.groupPolicerValidation(policer, stage) == fc::FILTERS_OK) {                   \
    std::cout << " `" #name "`";                                                          \
  }
    POLICER(None)
    POLICER(Ingress)
    POLICER(Egress)
#undef POLICER
    std::cout << " |\n";
  }
}

}  // namespace

int main() {
  std::cout
      << "# What groups admit\n\n"
         "`examples/capabilities` prints this page; change the library, not the page. In the\n"
         "tables, x means that the library admits a match, an action or a type.\n\n"
         "## The matches of each group type\n\n"
         "This is `FiltersGroup::TypeDescription_`. For example, column 3 is\n"
         "`FILTERS_GROUP_TYPE_3`. The library refuses other matches with\n"
         "`FILTERS_ERR_MATCH_NOT_ALLOWED`. `MatchDSCP` has the code of `MatchToS`.\n";
  printTable("match", kMatches, fc::FiltersGroup::TypeDescription_);
  std::cout << "\n## The actions of each stage\n\n"
               "This is `FiltersGroup::StageActionsDescription_`. For example, column LOOKUP is\n"
               "`FILTERS_GROUP_STAGE_LOOKUP`. The library refuses other actions with\n"
               "`FILTERS_ERR_ACTION_NOT_ALLOWED`.\n";
  printTable("action", kActions, fc::FiltersGroup::StageActionsDescription_);
  std::cout
      << "\n## The types of each stage\n\n"
         "This is `FiltersGroup::StageTypesDescription_`. The library refuses other types with\n"
         "`FILTERS_ERR_TYPE_NOT_ALLOWED`.\n";
  printTypes();
  std::cout
      << "\n## The policers of each stage\n\n"
         "These are the stages that a policer in the group may have. The library refuses other\n"
         "policers with `FILTERS_ERR_POLICER_STAGE`.\n";
  printPolicerStages();
  return std::cout.flush() ? 0 : 1;
}

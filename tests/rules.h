#ifndef FILTER_COMMON_TESTS_RULES_H_
#define FILTER_COMMON_TESTS_RULES_H_

// The codes that exist, by the rows of the catalogue, and which may stand where, by hand.

#include <filter_common/filter_types.h>

#include <cstdint>
#include <set>
#include <vector>

namespace catalogue {

using Codes = std::vector<unsigned>;

#define FILTERS_ROW(code, Class, blank) FiltersCommon::code,
#define FILTERS_MATCH FILTERS_ROW
inline const Codes kMatchCodes = {
#include <filter_common/filter_matches.def>
};
#define FILTERS_ACTION FILTERS_ROW
inline const Codes kActionCodes = {
#include <filter_common/filter_actions.def>
};
#undef FILTERS_ROW

using CodeSet = std::set<unsigned>;

// Matches of which an entry holds one alone: a destination port or a range, IPv4 or IPv6.
inline const std::set<CodeSet> kExcludedPairs = {{5, 34}, {9, 14}, {9, 15}, {10, 14}, {10, 15}};

// The matches that only the classes reach.
inline const CodeSet kMatchesOfClassesAlone = {29, 31};

// What each type or stage admits.
using Table = std::vector<CodeSet>;
inline const Table kMatchesOfType = {
    // a row a type
    {},
    {0, 1, 2, 3, 4, 7, 8, 18, 19, 23, 28, 30},
    {0, 1, 2, 3, 7, 9, 11, 21},
    {0, 1, 2, 3, 5, 6, 9, 10, 17, 26, 29, 31, 32},
    {0, 1, 2, 3, 5, 9, 10, 11, 12, 13, 17, 20},
    {0, 1, 2, 3, 4, 11, 12, 13, 22},
    {0, 1, 2, 3, 4, 7, 11, 12, 13, 16},
    {0, 1, 3, 4, 5, 8, 17, 24, 25, 31},
    {0, 15, 27},
    {0, 1, 2, 11, 12, 13, 20},
    {0, 1, 3, 9, 10},
    {0, 3, 4, 17, 24, 33, 34},
};
inline const Table kActionsOfStage = {
    // None, Lookup, Ingress, Egress
    {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 12, 13, 14, 15, 16, 17, 18, 19},
    {0, 1, 6, 7, 17, 18},
    {0, 1, 2, 3, 4, 5, 8, 9, 10, 11, 12, 13, 14, 15, 16, 19},
    {0, 1},
};
inline const Table kTypesOfStage = {
    {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11},
    {0, 4, 6},
    {0, 1, 2, 3, 7, 8, 9, 10, 11},
    {0, 5},
};
inline const auto kUnknownType = static_cast<int>(kMatchesOfType.size()),
                  kUnknownStage = static_cast<int>(kTypesOfStage.size());
inline const Table kPolicersOfStage = {{2}, {2}, {0, 2}, {1, 2}};  // 0 Ingress, 1 Egress, 2 None

inline bool admits(const Table& table, std::uint32_t row, unsigned code) {
  return row < table.size() && table[row].count(code) != 0;
}

}  // namespace catalogue

#endif  // FILTER_COMMON_TESTS_RULES_H_

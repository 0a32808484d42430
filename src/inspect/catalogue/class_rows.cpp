#include "class_rows.h"

#include <algorithm>
#include <iterator>

namespace FiltersInspect {

using namespace FiltersCommon;

namespace {

// A blank object. getMatch() and getAction() can also read a held match or action into it.
template <class T>
T blankOf();
#define FILTERS_MATCH(code, T, blank) \
  template <>                         \
  T blankOf<T>() {                    \
    return T blank;                   \
  }
#include <filter_common/filter_matches.def>
#define FILTERS_ACTION(code, T, blank) \
  template <>                          \
  T blankOf<T>() {                     \
    return T blank;                    \
  }
#include <filter_common/filter_actions.def>

// Compares two objects in the way in which operator== of entries compares them.
template <class Base>
bool isSame(const Base& a, const Base& b) {
  return a == b;
}

template <class T>
constexpr MatchRow matchRow(filtersMatch_t code) {
  return {code,
          [](const FiltersEntry& entry) {
            T blank = blankOf<T>();
            return entry.getMatch(blank) == FILTERS_OK;
          },
          [](FiltersEntry* entry) { return entry->setMatch(blankOf<T>()) == FILTERS_OK; },
          [](const FiltersEntry& a, const FiltersEntry& b) {
            T x = blankOf<T>(), y = blankOf<T>();
            return a.getMatch(x) == FILTERS_OK && b.getMatch(y) == FILTERS_OK &&
                   isSame<Match>(x, y);
          },
          [](const MatchPB& in, MatchPB* out) {
            T object = blankOf<T>();
            object.convertFromMatchPB(&in);
            object.convertToMatchPB(out);
          }};
}

template <class T>
constexpr ActionRow actionRow(filtersAction_t code) {
  return {code,
          [](const FiltersEntry& entry) {
            T blank = blankOf<T>();
            return entry.getAction(blank) == FILTERS_OK;
          },
          [](FiltersEntry* entry) { return entry->setAction(blankOf<T>()) == FILTERS_OK; },
          [](const FiltersEntry& a, const FiltersEntry& b) {
            T x = blankOf<T>(), y = blankOf<T>();
            return a.getAction(x) == FILTERS_OK && b.getAction(y) == FILTERS_OK &&
                   isSame<Action>(x, y);
          },
          [](const ActionPB& in, ActionPB* out) {
            T object = blankOf<T>();
            object.convertFromActionPB(&in);
            object.convertToActionPB(out);
          }};
}

constexpr MatchRow kMatchRows[] = {
#define FILTERS_MATCH(code, T, blank) matchRow<T>(code),
#include <filter_common/filter_matches.def>
};

constexpr ActionRow kActionRows[] = {
#define FILTERS_ACTION(code, T, blank) actionRow<T>(code),
#include <filter_common/filter_actions.def>
};

// The rows are in ascending order of codes.
template <class Row, class Code, std::size_t count>
const Row* find(const Row (&rows)[count], Code code) {
  const Row* row = std::lower_bound(std::begin(rows), std::end(rows), code,
                                    [](const Row& a, Code b) { return a.code < b; });
  return row != std::end(rows) && row->code == code ? row : nullptr;
}

}  // namespace

const MatchRow* rowOf(filtersMatch_t code) { return find(kMatchRows, code); }
const ActionRow* rowOf(filtersAction_t code) { return find(kActionRows, code); }

Rows<MatchRow> matchRows() { return {std::begin(kMatchRows), std::end(kMatchRows)}; }
Rows<ActionRow> actionRows() { return {std::begin(kActionRows), std::end(kActionRows)}; }

}  // namespace FiltersInspect

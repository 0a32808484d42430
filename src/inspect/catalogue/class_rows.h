#ifndef FILTER_INSPECT_SRC_CATALOGUE_CLASS_ROWS_H_
#define FILTER_INSPECT_SRC_CATALOGUE_CLASS_ROWS_H_

// The classes of the catalogues as tables, for functions that know a class only by its number.

#include <filter_common/filter_entries.h>

namespace FiltersInspect {

struct MatchRow {
  FiltersCommon::filtersMatch_t code;
  // isIn() returns whether the entry holds a match of this class. putBlank() puts a blank match
  // into the entry, or returns false if the entry refuses the match.
  bool (*isIn)(const FiltersCommon::FiltersEntry& entry);
  bool (*putBlank)(FiltersCommon::FiltersEntry* entry);
  // Compares the matches of two entries. Each entry must hold a match of this class.
  bool (*isSame)(const FiltersCommon::FiltersEntry& a, const FiltersCommon::FiltersEntry& b);
  // Reads a match's message into a blank object and writes that object as a message. The second
  // message shows what the library has kept of the first.
  void (*echo)(const FiltersCommon::MatchPB& in, FiltersCommon::MatchPB* out);
};

struct ActionRow {
  FiltersCommon::filtersAction_t code;
  bool (*isIn)(const FiltersCommon::FiltersEntry& entry);
  bool (*putBlank)(FiltersCommon::FiltersEntry* entry);
  bool (*isSame)(const FiltersCommon::FiltersEntry& a, const FiltersCommon::FiltersEntry& b);
  // Like echo() of a MatchRow. It throws what the conversion of the action throws.
  void (*echo)(const FiltersCommon::ActionPB& in, FiltersCommon::ActionPB* out);
};

// The functions return all rows in the order of codes, or the row of one code. The row of a code
// without a class is null.
const MatchRow* rowOf(FiltersCommon::filtersMatch_t code);
const ActionRow* rowOf(FiltersCommon::filtersAction_t code);

template <class Row>
struct Rows {
  const Row* first;
  const Row* last;
  const Row* begin() const { return first; }
  const Row* end() const { return last; }
};
Rows<MatchRow> matchRows();
Rows<ActionRow> actionRows();

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_CATALOGUE_CLASS_ROWS_H_

#ifndef FILTER_INSPECT_SRC_CATALOGUE_CLASS_ROWS_H_
#define FILTER_INSPECT_SRC_CATALOGUE_CLASS_ROWS_H_

// The classes of the catalogues as tables, for code that has only the code of a class.

#include <filter_common/filter_entries.h>

namespace FiltersInspect {

struct MatchRow {
  FiltersCommon::filtersMatch_t code;
  // isIn: whether the entry holds such a match. putBlank: puts a blank match into the entry, or
  // returns false if the entry refuses it.
  bool (*isIn)(const FiltersCommon::FiltersEntry& entry);
  bool (*putBlank)(FiltersCommon::FiltersEntry* entry);
  // Compares the matches of two entries. Each entry must hold a match of this class.
  bool (*isSame)(const FiltersCommon::FiltersEntry& a, const FiltersCommon::FiltersEntry& b);
  // Reads a match's message into a blank object and writes that object as a message. This shows
  // what the library makes of the first message.
  void (*echo)(const FiltersCommon::MatchPB& in, FiltersCommon::MatchPB* out);
};

struct ActionRow {
  FiltersCommon::filtersAction_t code;
  bool (*isIn)(const FiltersCommon::FiltersEntry& entry);
  bool (*putBlank)(FiltersCommon::FiltersEntry* entry);
  bool (*isSame)(const FiltersCommon::FiltersEntry& a, const FiltersCommon::FiltersEntry& b);
  // Does the same for actions. Throws what the action throws.
  void (*echo)(const FiltersCommon::ActionPB& in, FiltersCommon::ActionPB* out);
};

// All rows in the order of codes, and the row of one code. A code without a class has no row, so
// the result is null.
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

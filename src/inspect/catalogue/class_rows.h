#ifndef FILTER_INSPECT_SRC_CATALOGUE_CLASS_ROWS_H_
#define FILTER_INSPECT_SRC_CATALOGUE_CLASS_ROWS_H_

// The classes of the catalogues as tables, for code that knows a class by its code alone.

#include <filter_common/filter_entries.h>

namespace FiltersInspect {

struct MatchRow {
  FiltersCommon::filtersMatch_t code;
  // Whether the entry holds such a match; whether it took a blank one.
  bool (*isIn)(const FiltersCommon::FiltersEntry& entry);
  bool (*putBlank)(FiltersCommon::FiltersEntry* entry);
  // Whether two entries that both hold one hold equal ones.
  bool (*isSame)(const FiltersCommon::FiltersEntry& a, const FiltersCommon::FiltersEntry& b);
  // What the library makes of a match's message: it is read into a blank object, and written again.
  void (*echo)(const FiltersCommon::MatchPB& in, FiltersCommon::MatchPB* out);
};

struct ActionRow {
  FiltersCommon::filtersAction_t code;
  bool (*isIn)(const FiltersCommon::FiltersEntry& entry);
  bool (*putBlank)(FiltersCommon::FiltersEntry* entry);
  bool (*isSame)(const FiltersCommon::FiltersEntry& a, const FiltersCommon::FiltersEntry& b);
  // Throws what the action throws.
  void (*echo)(const FiltersCommon::ActionPB& in, FiltersCommon::ActionPB* out);
};

// In code order, one row a code: ranges for loops, and the row of a code, null for a code that no
// class carries.
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

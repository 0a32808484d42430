#ifndef FILTER_COMMON_FILTER_GROUPS_H_
#define FILTER_COMMON_FILTER_GROUPS_H_

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <set>
#include <string>
#include <utility>

#include <policer/policer.h>

#include <filter_common/filter_entries.h>
#include <filter_common/filter_types.h>

namespace FiltersCommon {

class FiltersGroupPB;
class FiltersSerialized;

// One table of filter rules: where in the pipeline it is applied (the stage), what kind of table it
// is (the type), and its rules by entry id. The type decides which matches a rule may use. The
// stage decides which types, actions and policers the group admits. For example:
//
//     FiltersGroup group(1);
//     if (group.setStage(FILTERS_GROUP_STAGE_INGRESS) != FILTERS_OK) return 1;
//     if (group.setType(FILTERS_GROUP_TYPE_3) != FILTERS_OK) return 1;
//     FiltersEntry entry(10);
//     if (entry.setMatch(MatchVrfId(1)) != FILTERS_OK) return 1;  // not what type 3 matches
//     if (group.insertEntry(entry) != FILTERS_ERR_MATCH_NOT_ALLOWED) return 1;
//     std::cout << group;
//
// Invariants: every entry is the group's own copy, stored under its own id. Every insertEntry(),
// setStage() and setType() that succeeded has passed the checks below.
//
// A refused call returns a result code and leaves the group unchanged. Building a group from bytes
// reports nothing: entries that the checks refuse are left out. WARNING: when bytes were cut off or
// damaged, entries can be missing. An entry can also come back with fewer matches, or with a match
// that has zeros for missing bytes. Such an entry applies to more packets than its sender meant;
// see FiltersEntry.
//
// Objects are not synchronised: any number of threads may read a group at once, but a thread that
// changes it must be the only one to use it. The tables of the checks never change, so any thread
// may read them.
class FILTERS_API FiltersGroup {
 public:
  // The new group has priority 0, stage and type NONE, and no entries.
  explicit FiltersGroup(const unsigned short& id) : id_(id) {}

  // Reads the bytes of serialize(). The group keeps whatever the parser could read, even when
  // parsing fails. Empty bytes give a group whose fields are all 0. Id and priority keep their low
  // 16 bits. Deliberate: stage and type are accepted unchecked. Each entry then has to pass the
  // checks of insertEntry(). If two entries with the same id pass, the later one stays. The
  // constructors throw the same exceptions as those of FiltersEntry.
  explicit FiltersGroup(const std::string& bytes);
  // Deliberate: the parameter is not const, although the buffer is only read.
  explicit FiltersGroup(FiltersSerialized& buffer);

  // These functions copy every entry and check nothing. An assignment that throws changes nothing.
  FiltersGroup(const FiltersGroup& other) = default;
  FiltersGroup& operator=(const FiltersGroup& other);
  // These functions move the entries and copy none. The source keeps its id, priority, stage and
  // type, and holds no entries afterwards. A group that is assigned to itself does not change.
  FiltersGroup(FiltersGroup&& other) noexcept = default;
  FiltersGroup& operator=(FiltersGroup&& other) noexcept {
    std::map<unsigned int, FiltersEntry> entries(std::move(other.entries_));  // perhaps its own
    id_ = other.id_;
    priority_ = other.priority_;
    stage_ = other.stage_;
    type_ = other.type_;
    entries_.swap(entries);
    return *this;
  }
  ~FiltersGroup() = default;

  filtersGroupId_t getId() const { return id_; }
  filtersGroupPriority_t getPriority() const { return priority_; }
  void setPriority(const unsigned short& priority) { priority_ = priority; }

  // The setter runs these checks, in this order, and each can refuse the stage:
  // groupStageValidation(), then the action check and the policer check of each entry.
  filtersGroupStage_t getStage() const { return stage_; }
  FILTERS_NODISCARD filtersErr_t setStage(const filtersGroupStage_t& stage);

  // The setter runs these checks, in this order, and each can refuse the type:
  // groupStageValidation(), then the match check of each entry.
  filtersGroupType_t getType() const { return type_; }
  FILTERS_NODISCARD filtersErr_t setType(const filtersGroupType_t& type);

  // Returns a copy of every entry.
  std::map<unsigned int, FiltersEntry> getEntries() const { return entries_; }
  // The group's own entries. The reference is valid until the group changes.
  const std::map<unsigned int, FiltersEntry>& getEntriesRef() const { return entries_; }

  // Stores a copy of the entry. Deliberate: it replaces a held entry with the same id, and that is
  // not an error. The match check, the action check and the policer check, in this order, can
  // refuse the entry. If the copy throws std::bad_alloc, the group holds no entry with that id.
  FILTERS_NODISCARD filtersErr_t insertEntry(const FiltersEntry& entry);

  // Returns FILTERS_ERR_NOT_FOUND if no entry has this id.
  FILTERS_NODISCARD filtersErr_t removeEntry(const unsigned int& entryId);

  // --- The checks. Callers may run them too: they read only their arguments and the tables ---

  // Returns FILTERS_ERR_INVALID for an unknown type, and FILTERS_ERR_MATCH_NOT_ALLOWED for a match
  // that the type does not admit.
  FILTERS_NODISCARD filtersErr_t groupMatchValidation(const FiltersEntry& entry,
                                                      filtersGroupType_t type) const;
  // Returns FILTERS_ERR_INVALID_STAGE for an unknown stage, and FILTERS_ERR_ACTION_NOT_ALLOWED for
  // an action that the stage does not admit.
  FILTERS_NODISCARD filtersErr_t groupActionValidation(const FiltersEntry& entry,
                                                       filtersGroupStage_t stage) const;
  // Returns FILTERS_ERR_INVALID_STAGE for an unknown stage, and FILTERS_ERR_TYPE_NOT_ALLOWED for a
  // type that the stage does not admit.
  FILTERS_NODISCARD filtersErr_t groupStageValidation(filtersGroupStage_t stage,
                                                      filtersGroupType_t type) const;
  // A policer with stage None is admitted at every stage, even an unknown one. Any other policer
  // gets FILTERS_ERR_INVALID_STAGE at an unknown stage, and FILTERS_ERR_POLICER_STAGE at a stage
  // that requires another policer stage: INGRESS requires Ingress, EGRESS requires Egress, NONE and
  // LOOKUP require None.
  FILTERS_NODISCARD filtersErr_t groupPolicerValidation(const policer::Policer& policer,
                                                        filtersGroupStage_t stage) const;

  // The tables of the checks: the matches that each type admits, and the actions and types that
  // each stage admits. They are built while the library is loaded.
  static const std::map<filtersGroupType_t, const std::set<filtersMatch_t>> TypeDescription_;
  static const std::map<filtersGroupStage_t, const std::set<filtersAction_t>>
      StageActionsDescription_;
  static const std::map<filtersGroupStage_t, const std::set<filtersGroupType_t>>
      StageTypesDescription_;

  // --- Conversion and comparison ---

  FiltersGroupPB convertToFiltersGroupPB() const;
  // Sets id, priority, stage and type from the message and adds its entries, as the constructor
  // from bytes does. The entries already held are not checked again. The parts that were read
  // before an exception stay.
  void convertFromFiltersGroupPB(const FiltersGroupPB* message);

  // Writes the bytes of the group's message: they replace the content of the string, or fill an
  // empty buffer. After an exception the buffer is still empty, and the string's content is
  // unspecified.
  void serialize(std::string* out) const;
  void serialize(FiltersSerialized* out) const;

  // Compares everything by value.
  bool operator==(const FiltersGroup& other) const;
  bool operator!=(const FiltersGroup& other) const { return !(*this == other); }
 private:
  friend struct WireFields;
  FILTERS_INTERNAL void add(std::map<unsigned int, FiltersEntry>* made);
  FILTERS_INTERNAL void parse(const char* bytes, std::size_t size);
  FILTERS_INTERNAL bool parseAsWritten(const char* bytes, std::size_t size);
  FILTERS_INTERNAL filtersErr_t validate(const FiltersEntry& entry) const;

  filtersGroupId_t id_;
  filtersGroupPriority_t priority_ = 0;
  filtersGroupStage_t stage_ = FILTERS_GROUP_STAGE_NONE;
  filtersGroupType_t type_ = FILTERS_GROUP_TYPE_NONE;
  std::map<unsigned int, FiltersEntry> entries_;
};

// Prints the group's own fields, then its entries in ascending order of their ids.
FILTERS_API std::ostream& operator<<(std::ostream& os, const FiltersGroup& group);

}  // namespace FiltersCommon

#endif  // FILTER_COMMON_FILTER_GROUPS_H_

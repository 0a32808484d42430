#ifndef FILTER_COMMON_FILTER_GROUPS_H_
#define FILTER_COMMON_FILTER_GROUPS_H_

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <set>
#include <string>

#include <policer/policer.h>

#include <filter_common/filter_entries.h>
#include <filter_common/filter_types.h>

namespace FiltersCommon {

class FiltersGroupPB;
class FiltersSerialized;

// One table of filter rules: where in the pipeline it is applied (stage), what kind of table it is
// (type) and its rules, by entry id. The type decides which matches a rule may use; the stage
// decides which types, which actions and which policer stage. For example:
//
//     FiltersGroup group(1);
//     if (group.setStage(FILTERS_GROUP_STAGE_INGRESS) != FILTERS_OK) return 1;
//     if (group.setType(FILTERS_GROUP_TYPE_3) != FILTERS_OK) return 1;
//     FiltersEntry entry(10);
//     if (entry.setMatch(MatchVrfId(1)) != FILTERS_OK) return 1;  // not what type 3 matches
//     if (group.insertEntry(entry) != FILTERS_ERR_MATCH_NOT_ALLOWED) return 1;
//     std::cout << group;
//
// Invariants: every entry is the group's own copy, stored under its own id. An entry that came in
// by insertEntry(), and every later setStage() and setType(), passed the checks below.
//
// Refusals are result codes and leave the group unchanged. Building a group from bytes reports
// nothing: entries that the checks refuse are left out. WARNING: of bytes that were cut off or
// damaged, entries can be missing, and one can come back with fewer matches, or with a match cut to
// zeros, and then apply to more packets; see FiltersEntry.
//
// Objects are not synchronised: any number of threads may read one group at a time, a writer needs
// it alone. The tables never change and may be read from any thread.
class FILTERS_API FiltersGroup {
 public:
  // Priority 0, stage and type NONE, no entries.
  explicit FiltersGroup(const unsigned short& id) : id_(id) {}

  // From the bytes of serialize(). Bytes that do not parse give what could be read of them, and
  // empty bytes a group of zeros. The group's id and priority keep their low 16 bits; stage and
  // type are taken unchecked (deliberate), the entries then pass the checks of insertEntry(), and
  // of two with one id that do, the later one stays. Throws as the same constructors of
  // FiltersEntry do.
  explicit FiltersGroup(const std::string& bytes);
  // Deliberate: the buffer is only read, and is not const all the same.
  explicit FiltersGroup(FiltersSerialized& buffer);

  // Copies every entry, and checks nothing. An assignment that throws changes nothing.
  FiltersGroup(const FiltersGroup& other) = default;
  FiltersGroup& operator=(const FiltersGroup& other);
  ~FiltersGroup() = default;

  filtersGroupId_t getId() const { return id_; }
  filtersGroupPriority_t getPriority() const { return priority_; }
  void setPriority(const unsigned short& priority) { priority_ = priority; }

  // Refused by groupStageValidation(); then, entry by entry, by the action and policer checks.
  filtersGroupStage_t getStage() const { return stage_; }
  FILTERS_NODISCARD filtersErr_t setStage(const filtersGroupStage_t& stage);

  // Refused by groupStageValidation(); then, entry by entry, by the match check.
  filtersGroupType_t getType() const { return type_; }
  FILTERS_NODISCARD filtersErr_t setType(const filtersGroupType_t& type);

  // A copy of every entry.
  std::map<unsigned int, FiltersEntry> getEntries() const { return entries_; }
  // The group's own entries; valid until the group changes.
  const std::map<unsigned int, FiltersEntry>& getEntriesRef() const { return entries_; }

  // Stores a copy of the entry, in place of one with its id (deliberate: no error). Refused, in
  // this order, by the match check, the action check and the policer check. Should the copy throw
  // std::bad_alloc, the group holds no entry of that id.
  FILTERS_NODISCARD filtersErr_t insertEntry(const FiltersEntry& entry);

  // FILTERS_ERR_NOT_FOUND when there is none.
  FILTERS_NODISCARD filtersErr_t removeEntry(const unsigned int& entryId);

  // --- The checks, for asking beforehand; they read their arguments and the tables alone ---

  // FILTERS_ERR_INVALID for an unknown type, FILTERS_ERR_MATCH_NOT_ALLOWED for a match that the
  // type does not admit.
  FILTERS_NODISCARD filtersErr_t groupMatchValidation(const FiltersEntry& entry,
                                                      filtersGroupType_t type) const;
  // FILTERS_ERR_INVALID_STAGE for an unknown stage, FILTERS_ERR_ACTION_NOT_ALLOWED for an action
  // that the stage does not admit.
  FILTERS_NODISCARD filtersErr_t groupActionValidation(const FiltersEntry& entry,
                                                       filtersGroupStage_t stage) const;
  // FILTERS_ERR_INVALID_STAGE for an unknown stage, FILTERS_ERR_TYPE_NOT_ALLOWED for a type that
  // the stage does not admit.
  FILTERS_NODISCARD filtersErr_t groupStageValidation(filtersGroupStage_t stage,
                                                      filtersGroupType_t type) const;
  // A policer of stage None fits everywhere, even at an unknown stage; any other is refused with
  // FILTERS_ERR_INVALID_STAGE at an unknown stage and FILTERS_ERR_POLICER_STAGE at a stage that
  // requires another: NONE and LOOKUP require None, INGRESS Ingress, EGRESS Egress.
  FILTERS_NODISCARD filtersErr_t groupPolicerValidation(const policer::Policer& policer,
                                                        filtersGroupStage_t stage) const;

  // What the checks go by: the matches that each type admits, the actions and the types that each
  // stage admits. Built while the library is loaded.
  static const std::map<filtersGroupType_t, const std::set<filtersMatch_t>> TypeDescription_;
  static const std::map<filtersGroupStage_t, const std::set<filtersAction_t>>
      StageActionsDescription_;
  static const std::map<filtersGroupStage_t, const std::set<filtersGroupType_t>>
      StageTypesDescription_;

  // --- Conversion and comparison ---

  FiltersGroupPB convertToFiltersGroupPB() const;
  // Takes id, priority, stage and type from the message and adds its entries to those held, as the
  // constructor from bytes does; those held are not checked anew. What was taken before an
  // exception stays.
  void convertFromFiltersGroupPB(const FiltersGroupPB* message);

  // The bytes of the group's message, in place of the string's content or into an empty buffer.
  // When it throws, the buffer is still empty; the string's content is unspecified.
  void serialize(std::string* out) const;
  void serialize(FiltersSerialized* out) const;

  // Everything compared by value.
  bool operator==(const FiltersGroup& other) const;
  bool operator!=(const FiltersGroup& other) const { return !(*this == other); }
 private:
  FILTERS_INTERNAL void setHead(std::uint32_t id, std::uint32_t priority, std::uint32_t stage,
                                std::uint32_t type);
  FILTERS_INTERNAL void addFrom(const FiltersEntryPB& message);
  FILTERS_INTERNAL void parse(const char* bytes, std::size_t size);
  FILTERS_INTERNAL bool parseAsWritten(const char* bytes, std::size_t size);
  FILTERS_INTERNAL filtersErr_t validate(const FiltersEntry& entry) const;
  FILTERS_INTERNAL void fillHead(FiltersGroupPB* message) const;

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

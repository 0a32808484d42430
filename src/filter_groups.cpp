#include <filter_common/filter_groups.h>

#include <filter_common/filter_groups.pb.h>
#include <filter_common/filter_serialized.h>
#include <google/protobuf/arena.h>

#include <ostream>

#include "parse.h"
#include "wire.h"

namespace FiltersCommon {

FiltersGroup::FiltersGroup(const std::string& bytes) : FiltersGroup(0) {
  parse(bytes.data(), bytes.size());
}

FiltersGroup::FiltersGroup(FiltersSerialized& buffer) : FiltersGroup(0) {
  parse(checkedData(buffer), buffer.size());
}

FiltersGroup& FiltersGroup::operator=(const FiltersGroup& other) {
  std::map<unsigned int, FiltersEntry> entries(other.entries_);
  id_ = other.id_;
  priority_ = other.priority_;
  stage_ = other.stage_;
  type_ = other.type_;
  entries_.swap(entries);
  return *this;
}

filtersErr_t FiltersGroup::setStage(const filtersGroupStage_t& stage) {
  filtersErr_t result = groupStageValidation(stage, type_);
  for (auto it = entries_.begin(); result == FILTERS_OK && it != entries_.end(); ++it) {
    result = groupActionValidation(it->second, stage);
    if (result == FILTERS_OK) result = groupPolicerValidation(it->second.getPolicer(), stage);
  }
  if (result == FILTERS_OK) stage_ = stage;
  return result;
}

filtersErr_t FiltersGroup::setType(const filtersGroupType_t& type) {
  filtersErr_t result = groupStageValidation(stage_, type);
  for (auto it = entries_.begin(); result == FILTERS_OK && it != entries_.end(); ++it) {
    result = groupMatchValidation(it->second, type);
  }
  if (result == FILTERS_OK) type_ = type;
  return result;
}

filtersErr_t FiltersGroup::validate(const FiltersEntry& entry) const {
  filtersErr_t result = groupMatchValidation(entry, type_);
  if (result == FILTERS_OK) result = groupActionValidation(entry, stage_);
  if (result == FILTERS_OK) result = groupPolicerValidation(entry.getPolicer(), stage_);
  return result;
}

filtersErr_t FiltersGroup::insertEntry(const FiltersEntry& entry) {
  const filtersErr_t result = validate(entry);
  if (result != FILTERS_OK) return result;
  // The argument may be the very entry that is replaced: the node keeps it until it is copied.
  const auto replaced = entries_.extract(entry.getId());
  entries_.emplace(entry.getId(), entry);
  return FILTERS_OK;
}

filtersErr_t FiltersGroup::removeEntry(const unsigned int& entryId) {
  const auto it = entries_.find(entryId);
  if (it == entries_.end()) return FILTERS_ERR_NOT_FOUND;
  entries_.erase(it);
  return FILTERS_OK;
}

bool FiltersGroup::operator==(const FiltersGroup& other) const {
  return id_ == other.id_ && priority_ == other.priority_ && stage_ == other.stage_ &&
         type_ == other.type_ && entries_ == other.entries_;
}

FiltersGroupPB FiltersGroup::convertToFiltersGroupPB() const {
  FiltersGroupPB message;
  fill(&message);
  return message;
}

void FiltersGroup::fill(FiltersGroupPB* message) const {
  message->set_id_(id_);
  message->set_priority_(priority_);
  message->set_stage_(static_cast<std::uint32_t>(stage_));
  message->set_type_(static_cast<std::uint32_t>(type_));
  reserveMore(message->mutable_entries_(), entries_.size());
  for (const auto& [id, entry] : entries_) entry.convertToFiltersEntryPB(message->add_entries_());
}

// Deliberate: stage and type are stored as they come, even a pair that setType() would refuse, and
// entries that the group refuses are dropped.
void FiltersGroup::convertFromFiltersGroupPB(const FiltersGroupPB* message) {
  id_ = static_cast<filtersGroupId_t>(message->id_());
  priority_ = static_cast<filtersGroupPriority_t>(message->priority_());
  stage_ = static_cast<filtersGroupStage_t>(message->stage_());
  type_ = static_cast<filtersGroupType_t>(message->type_());
  for (const FiltersEntryPB& entryMessage : message->entries_()) {
    FiltersEntry entry;
    entry.convertFromFiltersEntryPB(&entryMessage);
    if (validate(entry) == FILTERS_OK) entries_[entry.getId()] = std::move(entry);
  }
}

void FiltersGroup::parse(const char* bytes, std::size_t size) {
  google::protobuf::Arena arena;
  convertFromFiltersGroupPB(parseMessage<FiltersGroupPB>(bytes, size, &arena));
}

void FiltersGroup::serialize(std::string* out) const {
  google::protobuf::Arena arena;
  auto* message = google::protobuf::Arena::CreateMessage<FiltersGroupPB>(&arena);
  fill(message);
  message->SerializeToString(out);
}

void FiltersGroup::serialize(FiltersSerialized* out) const {
  std::string bytes;
  serialize(&bytes);
  out->setData(bytes);
}

std::ostream& operator<<(std::ostream& os, const FiltersGroup& group) {
  os << "=FiltersGroup=\n";
  os << "  ID: " << group.getId() << '\n';
  os << "  Priority: " << group.getPriority() << '\n';
  os << "  Stage: " << group.getStage() << '\n';
  os << "  Type: " << group.getType() << '\n';
  for (const auto& [id, entry] : group.getEntriesRef()) os << entry;
  return os;
}

}  // namespace FiltersCommon

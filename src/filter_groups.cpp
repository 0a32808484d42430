#include <filter_common/filter_groups.h>

#include <filter_common/filter_groups.pb.h>
#include <filter_common/filter_serialized.h>
#include <google/protobuf/io/coded_stream.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <ostream>
#include <utility>

#include "parse.h"
#include "wire.h"

namespace FiltersCommon {
namespace {

using google::protobuf::io::CodedInputStream;
using google::protobuf::io::CodedOutputStream;

// The tag of a field on the wire: its number, and its wire type in the low three bits.
constexpr std::uint32_t tagOf(int field, int wireType) {
  return static_cast<std::uint32_t>(field << 3 | wireType);
}
constexpr int kVarint = 0;
constexpr std::uint32_t kEntryTag =
    tagOf(FiltersGroupPB::kEntriesFieldNumber, 2);  // length-delimited

// Each entry is preceded by its tag (one byte) and its length (up to five bytes).
constexpr std::size_t kMaxPrefix = 6;
// The room reserved for each further entry is the size of the first entry plus kMaxGrowth: an id
// and a priority take one byte each in small entries and up to five in later ones. A first entry
// larger than kUsualSize counts as kUsualSize, since it says nothing about the others.
constexpr std::size_t kMaxGrowth = 8;
constexpr std::size_t kUsualSize = 512;

}  // namespace

FiltersGroup::FiltersGroup(const std::string& bytes) : FiltersGroup(0) {
  parse(bytes.data(), bytes.size());
}

FiltersGroup::FiltersGroup(FiltersSerialized& buffer) : FiltersGroup(0) {
  parse(checkedData(buffer), buffer.size());
}

FiltersGroup& FiltersGroup::operator=(const FiltersGroup& other) {
  return *this = FiltersGroup(other);
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
  // The argument may be the very entry that is replaced. The extracted node keeps that entry until
  // it is copied.
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
  fillHead(&message);
  reserveMore(message.mutable_entries_(), entries_.size());
  for (const auto& [id, entry] : entries_) entry.convertToFiltersEntryPB(message.add_entries_());
  return message;
}

void FiltersGroup::fillHead(FiltersGroupPB* message) const {
  message->set_id_(id_);
  message->set_priority_(priority_);
  message->set_stage_(static_cast<std::uint32_t>(stage_));
  message->set_type_(static_cast<std::uint32_t>(type_));
}

// Deliberate: stage and type are stored unchecked, even a pair that setType() would refuse.
void FiltersGroup::setHead(std::uint32_t id, std::uint32_t priority, std::uint32_t stage,
                           std::uint32_t type) {
  id_ = static_cast<filtersGroupId_t>(id);
  priority_ = static_cast<filtersGroupPriority_t>(priority);
  stage_ = static_cast<filtersGroupStage_t>(stage);
  type_ = static_cast<filtersGroupType_t>(type);
}

void FiltersGroup::convertFromFiltersGroupPB(const FiltersGroupPB* message) {
  setHead(message->id_(), message->priority_(), message->stage_(), message->type_());
  for (const FiltersEntryPB& entryMessage : message->entries_()) addFrom(entryMessage);
}

// Deliberate: an entry that the group refuses is dropped, and an entry replaces a held one with its
// id.
void FiltersGroup::addFrom(const FiltersEntryPB& message) {
  std::map<unsigned int, FiltersEntry> made;  // one entry, whose node moves into the group
  FiltersEntry& entry = made.try_emplace(message.id_(), message.id_()).first->second;
  entry.convertFromFiltersEntryPB(&message);
  if (validate(entry) != FILTERS_OK) return;
  auto node = made.extract(made.begin());
  const auto held = entries_.insert(entries_.end(), std::move(node));
  if (!node.empty()) held->second = std::move(node.mapped());
}

void FiltersGroup::parse(const char* bytes, std::size_t size) {
  if (parseAsWritten(bytes, size)) return;
  entries_.clear();
  MessageArena arena;
  convertFromFiltersGroupPB(parseMessage<FiltersGroupPB>(bytes, size, &arena));
}

// Reads bytes of the shape that serialize() writes (each head field at most once, then entries) one
// entry at a time, so that the message of the whole group is never in memory. False if the bytes
// have another shape anywhere; the caller then parses the whole message.
bool FiltersGroup::parseAsWritten(const char* bytes, std::size_t size) {
  if (size > INT_MAX) return false;
  CodedInputStream in(reinterpret_cast<const std::uint8_t*>(bytes), static_cast<int>(size));
  std::uint32_t head[4] = {};
  for (int field = 1; field <= 4; ++field) {
    if (in.ExpectTag(tagOf(field, kVarint)) && !in.ReadVarint32(&head[field - 1])) return false;
  }
  setHead(head[0], head[1], head[2], head[3]);
  // One message is used for all entries and keeps its memory. On an arena it leaks nothing when
  // memory runs out.
  MessageArena arena;
  auto& message = *arena.make<FiltersEntryPB>();
  while (in.ExpectTag(kEntryTag)) {
    // A length beyond the end, or with more bytes than it needs, is another shape.
    const int before = in.CurrentPosition();
    std::uint32_t length;
    if (!in.ReadVarint32(&length)) return false;
    const int after = in.CurrentPosition();
    if (after - before != static_cast<int>(CodedOutputStream::VarintSize32(length))) return false;
    if (length > size - static_cast<std::size_t>(after)) return false;
    const auto limit = in.IncrementRecursionDepthAndPushLimit(static_cast<int>(length));
    message.Clear();
    if (!message.MergePartialFromCodedStream(&in)) return false;
    if (!in.DecrementRecursionDepthAndPopLimit(limit.first)) return false;
    addFrom(message);
  }
  // What follows must be the end, or the zero byte that ends a buffer.
  const auto read = static_cast<std::size_t>(in.CurrentPosition());
  return read == size || bytes[read] == '\0';
}

// Writes one entry's message at a time. This is possible because the bytes of a message are the
// bytes of its fields in a row.
void FiltersGroup::serialize(std::string* out) const {
  FiltersGroupPB head;
  fillHead(&head);
  std::string bytes;
  static_cast<void>(head.AppendToString(&bytes));
  MessageArena arena;
  auto& message = *arena.make<FiltersEntryPB>();
  std::size_t left = entries_.size();
  for (const auto& [id, entry] : entries_) {
    message.Clear();
    entry.convertToFiltersEntryPB(&message);
    const std::size_t size = message.ByteSizeLong();
    --left;
    if (bytes.capacity() - bytes.size() < kMaxPrefix + size) {
      const std::size_t guess = kMaxPrefix + std::min(size, kUsualSize) + kMaxGrowth;
      bytes.reserve(bytes.size() + kMaxPrefix + size + guess * left);
    }
    std::uint8_t prefix[kMaxPrefix];
    std::uint8_t* end = CodedOutputStream::WriteTagToArray(kEntryTag, prefix);
    end = CodedOutputStream::WriteVarint32ToArray(static_cast<std::uint32_t>(size), end);
    bytes.append(prefix, end);
    const std::size_t start = bytes.size();
    bytes.resize(start + size);
    auto* const body = reinterpret_cast<std::uint8_t*>(&bytes[start]);
    static_cast<void>(message.SerializeWithCachedSizesToArray(body));
  }
  *out = std::move(bytes);
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

#include <filter_common/filter_groups.h>

#include <filter_common/filter_groups.pb.h>
#include <filter_common/filter_serialized.h>
#include <google/protobuf/io/coded_stream.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <optional>
#include <ostream>
#include <utility>

#include "parse.h"
#include "wire_fields.h"

namespace FiltersCommon {
namespace {

using google::protobuf::io::CodedInputStream;
using Entries = std::map<unsigned int, FiltersEntry>;

// The space reserved for each further entry is the size of the first entry plus kMaxGrowth, because
// an id and a priority take one byte each in small entries and up to five each in later entries. A
// first entry larger than kUsualSize counts as kUsualSize, since later entries are probably
// smaller.
constexpr std::size_t kMaxGrowth = 8;
constexpr std::size_t kUsualSize = 512;

// Parses entries whose bytes have another form than serialize() writes. One message is used for all
// entries and keeps its memory. The message is on an arena, so nothing is leaked if memory runs
// out.
class OddEntries {
 public:
  // False if the bytes do not parse. The parser gets the bytes of the entry together with all later
  // bytes of the group, and the end of the entry as a limit, as if it parsed the whole group.
  // This matters if a field crosses the limit, because releases of the message runtime read such a
  // field differently.
  bool parse(const WireReader& entry, const char* end) {
    CodedInputStream in(reinterpret_cast<const std::uint8_t*>(entry.data()),
                        static_cast<int>(end - entry.data()));
    const auto limit = in.IncrementRecursionDepthAndPushLimit(static_cast<int>(entry.size()));
    message_->Clear();
    return message_->MergePartialFromCodedStream(&in) &&
           in.DecrementRecursionDepthAndPopLimit(limit.first);
  }
  const FiltersEntryPB* message() const { return message_; }
 private:
  MessageArena arena_;
  FiltersEntryPB* message_ = arena_.make<FiltersEntryPB>();
};

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
  // The argument may refer to the entry that is replaced. The extracted node keeps that entry until
  // the copy is made.
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

// --- Messages and bytes --------------------------------------------------------------------------

FiltersGroupPB FiltersGroup::convertToFiltersGroupPB() const {
  FiltersGroupPB message;
  MessageWriter<FiltersGroupPB> out(&message);
  auto put = withMessages(PutFields<MessageWriter<FiltersGroupPB>>{out},
                          [&](const auto& field, const Entries& entries) {
                            out.appendMessages(field, entries,
                                               [](const auto& held, FiltersEntryPB* entry) {
                                                 held.second.convertToFiltersEntryPB(entry);
                                               });
                          });
  WireFields::of(put, *this);
  return message;
}

// Deliberate: stage and type are stored unchecked, even a pair that setType() would refuse.
void FiltersGroup::convertFromFiltersGroupPB(const FiltersGroupPB* message) {
  MessageReader<FiltersGroupPB> in(*message);
  auto take = withMessages(TakeFields<MessageReader<FiltersGroupPB>>{in},
                           [&](const auto& field, const Entries&) {
                             for (const FiltersEntryPB& entry : in.messages(field)) {
                               Entries made;
                               made[0].convertFromFiltersEntryPB(&entry);
                               add(&made);
                             }
                           });
  WireFields::of(take, *this);
}

// Moves the only entry of `made` into the group. Deliberate: an entry that the group refuses is
// dropped, and an accepted entry replaces the held entry that has the same id.
void FiltersGroup::add(std::map<unsigned int, FiltersEntry>* made) {
  const FiltersEntry& entry = made->begin()->second;
  if (validate(entry) != FILTERS_OK) return;
  auto node = made->extract(made->begin());
  node.key() = entry.getId();
  const auto held = entries_.insert(entries_.end(), std::move(node));
  if (!node.empty()) held->second = std::move(node.mapped());
}

void FiltersGroup::parse(const char* bytes, std::size_t size) {
  if (size <= INT_MAX && parseAsWritten(bytes, size)) return;
  entries_.clear();
  MessageArena arena;
  convertFromFiltersGroupPB(parseMessage<FiltersGroupPB>(bytes, size, &arena));
}

// Reads bytes of the form that serialize() writes, one entry at a time, so that the message of the
// whole group is never in memory. An entry that has another form is parsed as a message. Returns
// false if anything else in the group has another form. The caller then parses the whole message.
bool FiltersGroup::parseAsWritten(const char* bytes, std::size_t size) {
  WireReader in(bytes, size);
  auto take = withMessages(TakeFields<WireReader>{in}, [&](const auto& field, const Entries&) {
    std::optional<OddEntries> odd;
    std::string scratch;
    while (in.hasBytes(field)) {
      const WireReader entry = in.bytes(field);
      Entries made;
      if (!WireFields::Entry::take(&made[0], entry, &scratch)) {
        if (!odd) odd.emplace();
        if (!odd->parse(entry, bytes + size)) return in.fail();
        made.clear();
        made[0].convertFromFiltersEntryPB(odd->message());
      }
      add(&made);
    }
  });
  WireFields::of(take, *this);
  return in.finishedOrZero();
}

// Writes one entry at a time. This is possible because a message is written as the bytes of its
// fields, one after the other.
void FiltersGroup::serialize(std::string* out) const {
  std::string bytes;
  WireWriter writer;
  auto put =
      withMessages(PutFields<WireWriter>{writer}, [&](const auto& field, const Entries& entries) {
        bytes.assign(writer.data(), writer.size());
        std::size_t left = entries.size();
        for (const auto& held : entries) {
          writer.clear();
          writer.message(field, [&] { WireFields::Entry::put(held.second, writer); });
          const std::size_t size = writer.size();
          --left;
          if (bytes.capacity() - bytes.size() < size) {
            bytes.reserve(bytes.size() + size + (std::min(size, kUsualSize) + kMaxGrowth) * left);
          }
          bytes.append(writer.data(), size);
        }
      });
  WireFields::of(put, *this);
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

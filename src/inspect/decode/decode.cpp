#include <filter_inspect/filter_decode.h>

#include <algorithm>
#include <climits>
#include <stdexcept>
#include <string>
#include <utility>

#include <filter_common/filter_groups.pb.h>

#include "entry_reader.h"
#include "message_check.h"
#include "shared/arena.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

// Makes the object. Returns nothing if the constructor throws because of the bytes.
template <class T>
void make(std::string_view bytes, std::optional<T>* object) {
  try {
    object->emplace(std::string(bytes));
  } catch (const std::invalid_argument&) {
    object->reset();
  }
}

template <class T>
bool writesAgain(const std::optional<T>& object, std::string_view bytes) {
  if (!object) return false;
  std::string again;
  object->serialize(&again);
  return again == bytes;
}

bool fits(std::string_view bytes, const DecodeLimits& limits, DecodeFindings* findings) {
  if (bytes.size() <= limits.max_bytes && bytes.size() <= INT_MAX) return true;
  findings->add(Code::kBytesBroken, {nullptr, {}, MessagePart::kAlone, {0, bytes.size()}},
                "there are more bytes than the limit, and none is read");
  return false;
}

template <class Message>
std::pair<Message*, bool> parse(std::string_view bytes, MessageArena* arena) {
  auto* message = arena->make<Message>();
  const auto size = static_cast<int>(bytes.size());
  const bool whole = message->ParsePartialFromArray(bytes.data(), size);
  return {message, whole};
}

// Reports losses that concern all bytes together, unless another finding has reported them. `ended`
// is true if a finding reports where the bytes break off.
void noteRest(std::string_view bytes, bool whole, bool ended, bool unmade, bool same,
              DecodeFindings* findings) {
  const MessagePart all = {nullptr, {}, MessagePart::kAlone, {0, bytes.size()}};
  findings->entry.reset();
  findings->subject = Subject::kGroup;
  findings->offender = 0;
  if (!whole && !ended) {
    findings->add(Code::kBytesBroken, all, "they cannot be read to their end");
  }
  if (unmade) findings->add(Code::kRebuildThrows, all, "nothing can be made of them");
  if (!same && findings->empty()) {
    findings->add(Code::kEncodingDiffers, all, "other bytes are written");
  }
}

// True if the group has nothing that would be reported. The caller already knows that the group
// writes the same bytes again.
bool areUsual(const FiltersGroup& group) {
  if (group.groupStageValidation(group.getStage(), group.getType()) != FILTERS_OK) return false;
  for (const auto& [id, entry] : group.getEntriesRef()) {
    if (!isUsual(entry.getCounters())) return false;
  }
  return true;
}

// Reserves space for all entries at once, because a vector that grows copies its entries.
void makeRoom(std::size_t more, std::vector<FiltersEntry>* entries) {
  const std::size_t all = entries->size() + more;
  if (all > entries->capacity()) entries->reserve(std::max(all, 2 * entries->capacity()));
}

void replaceHead(const StageTypeInstead& instead, FiltersGroupPB* message) {
  if (instead.stage) message->set_stage_(static_cast<std::uint32_t>(*instead.stage));
  if (instead.type) message->set_type_(static_cast<std::uint32_t>(*instead.type));
}

// Like make(), but with the stage or type of `instead`.
void makeInstead(std::string_view bytes, const StageTypeInstead& instead,
                 std::optional<FiltersGroup>* group) {
  MessageArena arena;
  FiltersGroupPB* message = parse<FiltersGroupPB>(bytes, &arena).first;
  replaceHead(instead, message);
  try {
    group->emplace(filtersGroupId_t{0}).convertFromFiltersGroupPB(message);
  } catch (const std::invalid_argument&) {
    group->reset();
  }
}

void noteGroup(std::string_view bytes, const StageTypeInstead* instead, bool same,
               const DecodeLimits& limits, bool isMade, std::vector<FiltersEntry>* entries,
               DecodeFindings* findings) {
  MessageArena arena;
  const auto [head, whole] = parse<FiltersGroupPB>(bytes, &arena);
  if (instead != nullptr) replaceHead(*instead, head);
  auto* const rest = arena.make<FiltersGroupPB>();
  rest->mutable_entries_()->Swap(head->mutable_entries_());
  FiltersGroup blank(0);
  blank.convertFromFiltersGroupPB(head);
  if (head->has_id_()) findings->group = blank.getId();
  // Losses of the group's own fields come first, even if the fields come later in the bytes.
  DecodeFindings ofEntries(limits);
  ofEntries.group = findings->group;
  EntryReader reader(bytes, whole, &arena, &ofEntries);
  if (entries != nullptr) makeRoom(static_cast<std::size_t>(rest->entries__size()), entries);
  reader.keepEntries(entries);
  const auto visit = [&, parsed = rest](const MessageCheck::Field&, const MessagePart& part) {
    const auto index = static_cast<int>(part.index);
    return index >= parsed->entries__size() ||
           reader.read(parsed->entries_(index), part, WireScanner::kDepth - 1, &blank);
  };
  MessageCheck check(FiltersGroupPB::descriptor());
  if (instead != nullptr && instead->stage) check.assume(FiltersGroupPB::kStageFieldNumber);
  if (instead != nullptr && instead->type) check.assume(FiltersGroupPB::kTypeFieldNumber);
  const MessagePart part = {nullptr, {}, MessagePart::kAlone, {0, bytes.size()}};
  const bool walked = check.walk(bytes, part, WireScanner::kDepth, whole, findings, visit);
  check.compare(*head, blank.convertToFiltersGroupPB(), part, findings);
  if (instead == nullptr &&
      blank.groupStageValidation(blank.getStage(), blank.getType()) != FILTERS_OK) {
    findings->add(Code::kStageTypePair, check.partOf(FiltersGroupPB::kTypeFieldNumber, part),
                  "setters would not give a group this stage and type together");
  }
  findings->append(std::move(ofEntries));
  noteRest(bytes, whole, !walked, !isMade && !reader.threw(), same, findings);
}

void noteEntry(std::string_view bytes, bool isMade, bool same, DecodeFindings* findings) {
  MessageArena arena;
  const auto [message, whole] = parse<FiltersEntryPB>(bytes, &arena);
  EntryReader entries(bytes, whole, &arena, findings);
  const MessagePart part = {nullptr, {}, MessagePart::kAlone, {0, bytes.size()}};
  const bool walked = entries.read(*message, part, WireScanner::kDepth, nullptr);
  noteRest(bytes, whole, !walked, !isMade && !entries.threw(), same, findings);
}

}  // namespace

DecodedGroup decodeGroup(std::string_view bytes, const DecodeLimits& limits) {
  return decodeGroupAndEntries(bytes, nullptr, limits);
}

DecodedGroup decodeGroupAndEntries(std::string_view bytes, std::vector<FiltersEntry>* entries,
                                   const DecodeLimits& limits) {
  DecodedGroup decoded;
  DecodeFindings findings(limits);
  if (fits(bytes, limits, &findings)) {
    make(bytes, &decoded.group);
    const bool same = writesAgain(decoded.group, bytes);
    if (!same || !areUsual(*decoded.group)) {
      noteGroup(bytes, nullptr, same, limits, decoded.group.has_value(), entries, &findings);
    } else if (entries != nullptr) {
      const auto& held = decoded.group->getEntriesRef();
      makeRoom(held.size(), entries);
      for (const auto& [id, entry] : held) entries->push_back(entry);
    }
  }
  decoded.report = findings.take();
  return decoded;
}

DecodedGroup decodeGroupAs(std::string_view bytes, const StageTypeInstead& instead,
                           const DecodeLimits& limits) {
  DecodedGroup decoded;
  DecodeFindings findings(limits);
  if (fits(bytes, limits, &findings)) {
    makeInstead(bytes, instead, &decoded.group);
    // `instead` replaces the stage or the type. The group would then write other bytes than it was
    // read from, so these bytes cannot be compared.
    noteGroup(bytes, &instead, true, limits, decoded.group.has_value(), nullptr, &findings);
  }
  decoded.report = findings.take();
  return decoded;
}

DecodedEntry decodeEntry(std::string_view bytes, const DecodeLimits& limits) {
  DecodedEntry decoded;
  DecodeFindings findings(limits);
  if (fits(bytes, limits, &findings)) {
    make(bytes, &decoded.entry);
    const bool same = writesAgain(decoded.entry, bytes);
    if (!same || !isUsual(decoded.entry->getCounters())) {
      noteEntry(bytes, decoded.entry.has_value(), same, &findings);
    }
  }
  decoded.report = findings.take();
  return decoded;
}

}  // namespace FiltersInspect

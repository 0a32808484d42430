#include <filter_inspect/filter_text.h>

#include <filter_common/filter_entries.pb.h>

#include "interface_ids.h"
#include "json_keys.h"
#include "policer_facts.h"
#include "report/hex.h"
#include "report/json_writer.h"
#include "shared/arena.h"
#include "value_text.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

template <class Value>
void write(std::string_view key, Value value, JsonWriter* out) {
  out->key(key);
  out->value(value);
}

void writeName(const Enumeration& names, std::uint32_t value, JsonWriter* out) {
  const std::string_view name = names.nameOf(value);
  if (name.empty()) return out->value(value);
  out->value(name);
}

void writeLimid(std::uint32_t limid, JsonWriter* out) {
  out->open('{');
  write(kLimidKey, limid, out);
  const std::string name = interfaceName(limid);
  if (!name.empty()) write(kNameKey, std::string_view(name), out);
  out->close('}');
}

void writeAddress(const FormRow& row, const AnyMessage& message, const MessageField& field,
                  JsonWriter* out) {
  std::string text;
  appendAddress(row.form, addressIn(message, field, row.form), &text);
  out->value(std::string_view(text));
}

template <class Write>
void writeList(const NumberList& numbers, JsonWriter* out, Write writeOne) {
  out->open('[');
  for (const std::uint32_t number : numbers) writeOne(number);
  out->close(']');
}

void writeLimids(const FormRow& row, const AnyMessage& message, JsonWriter* out) {
  const auto [ports, types] = keysOf(row.form);
  out->open('{');
  out->key(ports);
  writeList(numbersIn(message, row.fields[0]), out,
            [&](std::uint32_t limid) { writeLimid(limid, out); });
  if (row.fields[1] && !numbersIn(message, row.fields[1]).empty()) {
    out->key(types);
    writeList(numbersIn(message, row.fields[1]), out,
              [&](std::uint32_t type) { writeName(row.names, type, out); });
  }
  out->close('}');
}

// Writes both parts of a value under their keys.
template <class Write>
void writePair(const FormRow& row, JsonWriter* out, Write writeOne) {
  const auto [first, second] = keysOf(row.form);
  out->open('{');
  out->key(first);
  writeOne(row.fields[0]);
  out->key(second);
  writeOne(row.fields[1]);
  out->close('}');
}

void writeValue(const FormRow& row, const AnyMessage& message, JsonWriter* out) {
  const MessageField& field = row.fields[0];
  switch (row.form) {
    case ValueForm::kFlag:
      return out->flag(true);
    case ValueForm::kBoolean:
      return out->flag(numberIn(message, field) != 0);
    case ValueForm::kNumber:
    case ValueForm::kHexadecimal:
      return out->value(numberIn(message, field));
    case ValueForm::kName:
      return writeName(row.names, numberIn(message, field), out);
    case ValueForm::kMac:
    case ValueForm::kIPv4:
    case ValueForm::kIPv6:
      if (!row.fields[1]) return writeAddress(row, message, field, out);
      return writePair(row, out,
                       [&](const MessageField& which) { writeAddress(row, message, which, out); });
    case ValueForm::kPortMask:
    case ValueForm::kPortRange:
    case ValueForm::kVlanInfo:
      return writePair(row, out,
                       [&](const MessageField& which) { out->value(numberIn(message, which)); });
    case ValueForm::kMplsPorts:
      return writePair(row, out, [&](const MessageField& which) {
        writeLimid(limidFromField(row, numberIn(message, which)), out);
      });
    case ValueForm::kNumbers:
      return writeList(numbersIn(message, field), out,
                       [&](std::uint32_t number) { out->value(number); });
    case ValueForm::kLimid:
      return writeLimid(numberIn(message, field), out);
    case ValueForm::kLimids:
      return writeLimids(row, message, out);
  }
}

template <class CodeEnum, class Messages>
void writeAll(std::string_view key, const Messages& messages, JsonWriter* out) {
  if (messages.empty()) return;
  out->key(key);
  out->open('{');
  for (const auto& message : messages) {
    const auto code = static_cast<CodeEnum>(message.type_());
    out->key(nameOf(code));
    writeValue(*formOf(code), message, out);
  }
  out->close('}');
}

void writeCounter(const CounterPB& counter, JsonWriter* out) {
  out->open('{');
  write(kIdKey, static_cast<std::uint64_t>(counter.id()), out);
  out->key(kTypeKey);
  const std::string_view name = nameOf(static_cast<counter_type_t>(counter.type()));
  if (name.empty()) {
    out->signedValue(counter.type());
  } else {
    out->value(name);
  }
  out->close('}');
}

void writePolicerAction(const PolicerAction& action, JsonWriter* out) {
  out->open('{');
  out->key(kColorKey);
  writeName(kPolicerColors, action.color, out);
  out->key(kDoKey);
  writeName(kPolicerActionTypes, action.type, out);
  if (hasCodePoint(action.type)) write(kValueKey, action.value, out);
  out->close('}');
}

// Also writes the bytes if the values do not describe them completely.
void writePolicer(std::string_view key, std::string_view bytes, const policer::Policer& policer,
                  JsonWriter* out) {
  const PolicerFacts facts = factsOf(policer);
  out->key(key);
  out->open('{');
  if (!sayAllOf(bytes, facts)) {
    std::string digits;
    appendHex(bytes, &digits);
    write(kBytesKey, std::string_view(digits), out);
  }
  out->key(kAboutKey);
  out->open('{');
  for (std::size_t i = 0; i < kPolicerKeys.size(); ++i) {
    const std::uint32_t number = facts.numbers[i];
    if (i >= kFirstParameter && number == 0) continue;
    out->key(kPolicerKeys[i].key);
    if (kPolicerKeys[i].names != nullptr) {
      writeName(*kPolicerKeys[i].names, number, out);
    } else {
      out->value(number);
    }
  }
  if (!facts.actions.empty()) {
    out->key(kActionsKey);
    out->open('[');
    for (const PolicerAction& action : facts.actions) writePolicerAction(action, out);
    out->close(']');
  }
  out->close('}');
  out->close('}');
}

void writeEntry(const FiltersEntry& entry, FiltersEntryPB* message, JsonWriter* out) {
  message->Clear();
  entry.convertToFiltersEntryPB(message);
  out->open('{');
  write(kIdKey, message->id_(), out);
  write(kPriorityKey, message->priority_(), out);
  writeAll<filtersMatch_t>(kMatchesKey, message->matches_(), out);
  writeAll<filtersAction_t>(kActionsKey, message->actions_(), out);
  if (!message->counters_().empty()) {
    out->key(kCountersKey);
    out->open('[');
    for (const CounterPB& counter : message->counters_()) writeCounter(counter, out);
    out->close(']');
  }
  if (message->policer_() != defaultPolicer()) {
    writePolicer(kPolicerKey, message->policer_(), entry.getPolicer(), out);
  }
  if (const auto parent = entry.getPolicerParent()) {
    writePolicer(kParentKey, message->policer_parent_(), *parent, out);
  }
  out->close('}');
}

constexpr JsonStyle styleOf(JsonLayout layout) {
  return layout == JsonLayout::kCompact ? JsonStyle::kCompact : JsonStyle::kIndented;
}

std::string jsonOfGroups(const FiltersGroup* groups, std::size_t count, JsonLayout layout) {
  JsonWriter out(styleOf(layout));
  MessageArena arena;
  auto& message = *arena.make<FiltersEntryPB>();
  out.open('{');
  write(kFormatKey, kFormat, &out);
  write(kVersionKey, unsigned{kJsonVersion}, &out);
  out.key(kGroupsKey);
  out.open('[');
  for (const FiltersGroup* group = groups; group != groups + count; ++group) {
    out.open('{');
    write(kIdKey, group->getId(), &out);
    write(kPriorityKey, group->getPriority(), &out);
    out.key(kStageKey);
    writeName(kNamesOf<filtersGroupStage_t>, static_cast<std::uint32_t>(group->getStage()), &out);
    write(kTypeKey, static_cast<std::uint32_t>(group->getType()), &out);
    out.key(kEntriesKey);
    out.open('[');
    for (const auto& [id, entry] : group->getEntriesRef()) writeEntry(entry, &message, &out);
    out.close(']');
    out.close('}');
  }
  out.close(']');
  out.close('}');
  return out.take();
}

}  // namespace

std::string toJson(const std::vector<FiltersGroup>& groups) {
  return toJson(groups, JsonLayout::kIndented);
}

std::string toJson(const std::vector<FiltersGroup>& groups, JsonLayout layout) {
  return jsonOfGroups(groups.data(), groups.size(), layout);
}

std::string toJson(const FiltersGroup& group, JsonLayout layout) {
  return jsonOfGroups(&group, 1, layout);
}

std::string toJson(const FiltersEntry& entry, JsonLayout layout) {
  JsonWriter out(styleOf(layout));
  MessageArena arena;
  writeEntry(entry, arena.make<FiltersEntryPB>(), &out);
  return out.take();
}

}  // namespace FiltersInspect

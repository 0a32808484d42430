#include <filter_inspect/filter_text.h>

#include "form_rows.h"
#include "group_builder.h"
#include "json_keys.h"
#include "report/json_writer.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

template <class Value>
void write(std::string_view key, Value value, JsonText* out) {
  out->key(key);
  out->value(value);
}

void writeName(const Enumeration& names, std::uint32_t value, JsonText* out) {
  const std::string_view name = names.nameOf(value);
  if (name.empty()) return out->value(value);
  out->value(name);
}

void writeLimid(std::uint32_t limid, JsonText* out) {
  out->open('{');
  write(kLimidKey, limid, out);
  const std::string name = interfaceName(limid);
  if (!name.empty()) write(kNameKey, std::string_view(name), out);
  out->close('}');
}

void writeAddress(const FormRow& row, const AnyMessage& message, int field, JsonText* out) {
  std::string text;
  appendAddress(row.form, addressIn(message, field, row.form), &text);
  out->value(std::string_view(text));
}

template <class Write>
void writeList(const AnyMessage& message, int field, JsonText* out, Write writeOne) {
  out->open('[');
  const std::size_t count = countIn(message, field);
  for (std::size_t i = 0; i < count; ++i) writeOne(numberIn(message, field, i));
  out->close(']');
}

void writeLimids(const FormRow& row, const AnyMessage& message, JsonText* out) {
  const auto [ports, types] = keysOf(row.form);
  out->open('{');
  out->key(ports);
  writeList(message, row.fields[0], out, [&](std::uint32_t limid) { writeLimid(limid, out); });
  if (row.fields[1] != 0 && countIn(message, row.fields[1]) != 0) {
    out->key(types);
    writeList(message, row.fields[1], out,
              [&](std::uint32_t type) { writeName(row.names, type, out); });
  }
  out->close('}');
}

// Both parts of a value under their keys.
template <class Write>
void writePair(const FormRow& row, JsonText* out, Write writeOne) {
  const auto [first, second] = keysOf(row.form);
  out->open('{');
  out->key(first);
  writeOne(row.fields[0]);
  out->key(second);
  writeOne(row.fields[1]);
  out->close('}');
}

void writeValue(const FormRow& row, const AnyMessage& message, JsonText* out) {
  const int field = row.fields[0];
  switch (row.form) {
    case Form::kFlag:
      return out->flag(true);
    case Form::kBoolean:
      return out->flag(numberIn(message, field) != 0);
    case Form::kNumber:
    case Form::kHexadecimal:
      return out->value(numberIn(message, field));
    case Form::kName:
      return writeName(row.names, numberIn(message, field), out);
    case Form::kMac:
    case Form::kIPv4:
    case Form::kIPv6:
      if (row.fields[1] == 0) return writeAddress(row, message, field, out);
      return writePair(row, out, [&](int which) { writeAddress(row, message, which, out); });
    case Form::kPortMask:
    case Form::kPortRange:
    case Form::kVlanInfo:
      return writePair(row, out, [&](int which) { out->value(numberIn(message, which)); });
    case Form::kMplsPorts:
      return writePair(row, out, [&](int which) {
        writeLimid(limidFromField(row, numberIn(message, which)), out);
      });
    case Form::kNumbers:
      return writeList(message, field, out, [&](std::uint32_t number) { out->value(number); });
    case Form::kLimid:
      return writeLimid(numberIn(message, field), out);
    case Form::kLimids:
      return writeLimids(row, message, out);
  }
}

template <class Code_, class Messages>
void writeAll(std::string_view key, const Messages& messages, JsonText* out) {
  if (messages.empty()) return;
  out->key(key);
  out->open('{');
  for (const auto& message : messages) {
    const auto code = static_cast<Code_>(message.type_());
    out->key(nameOf(code));
    writeValue(*formOf(code), message, out);
  }
  out->close('}');
}

void writeCounter(const CounterPB& counter, JsonText* out) {
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

void writePolicer(std::string_view key, std::string_view bytes, const policer::Policer& policer,
                  JsonText* out) {
  std::string digits;
  appendHex(bytes, &digits);
  out->key(key);
  out->open('{');
  write(kBytesKey, std::string_view(digits), out);
  out->key(kAboutKey);
  out->open('{');
  for (const PolicerFact& fact : factsOf(policer)) {
    if (fact.figure && fact.number == 0) continue;
    out->key(fact.key);
    if (fact.name.empty()) {
      out->value(fact.number);
    } else {
      out->value(fact.name);
    }
  }
  out->close('}');
  out->close('}');
}

void writeEntry(const FiltersEntry& entry, FiltersEntryPB* message, JsonText* out) {
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

}  // namespace

std::string toJson(const std::vector<FiltersGroup>& groups) {
  JsonText out;
  FiltersEntryPB message;
  out.open('{');
  write(kFormatKey, kFormat, &out);
  write(kVersionKey, unsigned{kJsonVersion}, &out);
  out.key(kGroupsKey);
  out.open('[');
  for (const FiltersGroup& group : groups) {
    out.open('{');
    write(kIdKey, group.getId(), &out);
    write(kPriorityKey, group.getPriority(), &out);
    out.key(kStageKey);
    writeName(kNamesOf<filtersGroupStage_t>, static_cast<std::uint32_t>(group.getStage()), &out);
    write(kTypeKey, static_cast<std::uint32_t>(group.getType()), &out);
    out.key(kEntriesKey);
    out.open('[');
    for (const auto& [id, entry] : group.getEntriesRef()) writeEntry(entry, &message, &out);
    out.close(']');
    out.close('}');
  }
  out.close(']');
  out.close('}');
  return out.take();
}

}  // namespace FiltersInspect

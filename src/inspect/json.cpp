#include <filter_inspect/filter_text.h>

#include "forms.h"
#include "groups_reader.h"
#include "json_keys.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

// Values one behind the other, each on a line of its own, indented by two blanks a level.
class JsonWriter {
 public:
  explicit JsonWriter(std::string* out) : out_(out) {}

  void begin(char bracket) {
    place();
    *out_ += bracket;
    ++depth_;
    first_ = true;
  }
  void end(char bracket) {
    --depth_;
    if (!first_) newLine();
    *out_ += bracket;
    first_ = false;
  }
  void key(std::string_view name) {
    value(name);
    *out_ += ": ";
    behindKey_ = true;
  }
  void value(std::uint32_t number) {
    place();
    appendNumber(number, out_);
  }
  // Of printable characters alone.
  void value(std::string_view text) {
    place();
    *out_ += '"';
    for (const char c : text) {
      if (c == '"' || c == '\\') *out_ += '\\';
      *out_ += c;
    }
    *out_ += '"';
  }
  void literal(std::string_view text) {
    place();
    *out_ += text;
  }
 private:
  void newLine() {
    *out_ += '\n';
    out_->append(2 * depth_, ' ');
  }
  void place() {
    if (behindKey_) {
      behindKey_ = false;
      return;
    }
    if (!first_) *out_ += ',';
    if (depth_ != 0) newLine();
    first_ = false;
  }

  std::string* out_;
  std::size_t depth_ = 0;
  bool first_ = true;
  bool behindKey_ = false;
};

template <class Value>
void write(std::string_view key, const Value& value, JsonWriter* out) {
  out->key(key);
  out->value(value);
}

void writeName(const Enumeration& names, std::uint32_t value, JsonWriter* out) {
  const std::string_view name = names.nameOf(value);
  if (name.empty()) return out->value(value);
  out->value(name);
}

void writeLimid(std::uint32_t limid, JsonWriter* out) {
  out->begin('{');
  write(kLimidKey, limid, out);
  const std::string name = interfaceName(limid);
  if (!name.empty()) write(kNameKey, name, out);
  out->end('}');
}

void writeAddress(const FormRow& row, const AnyMessage& message, int field, JsonWriter* out) {
  std::string text;
  appendAddress(row.form, addressIn(message, field, row.form), &text);
  out->value(text);
}

template <class Write>
void writeList(const AnyMessage& message, int field, JsonWriter* out, Write writeOne) {
  out->begin('[');
  const std::size_t count = countIn(message, field);
  for (std::size_t i = 0; i < count; ++i) writeOne(numberIn(message, field, i));
  out->end(']');
}

void writeLimids(const FormRow& row, const AnyMessage& message, JsonWriter* out) {
  const auto [ports, types] = keysOf(row.form);
  out->begin('{');
  out->key(ports);
  writeList(message, row.fields[0], out, [&](std::uint32_t limid) { writeLimid(limid, out); });
  if (row.fields[1] != 0 && countIn(message, row.fields[1]) != 0) {
    out->key(types);
    writeList(message, row.fields[1], out,
              [&](std::uint32_t type) { writeName(row.names, type, out); });
  }
  out->end('}');
}

// Both parts of a value under their keys.
template <class Write>
void writePair(const FormRow& row, JsonWriter* out, Write writeOne) {
  const auto [first, second] = keysOf(row.form);
  out->begin('{');
  out->key(first);
  writeOne(row.fields[0]);
  out->key(second);
  writeOne(row.fields[1]);
  out->end('}');
}

void writeValue(const FormRow& row, const AnyMessage& message, JsonWriter* out) {
  const int field = row.fields[0];
  switch (row.form) {
    case Form::kFlag:
      return out->literal("true");
    case Form::kBoolean:
      return out->literal(numberIn(message, field) != 0 ? "true" : "false");
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
void writeAll(std::string_view key, const Messages& messages, JsonWriter* out) {
  if (messages.empty()) return;
  out->key(key);
  out->begin('{');
  for (const auto& message : messages) {
    const auto code = static_cast<Code_>(message.type_());
    out->key(nameOf(code));
    writeValue(*formOf(code), message, out);
  }
  out->end('}');
}

void writeCounter(const CounterPB& counter, JsonWriter* out) {
  out->begin('{');
  write(kIdKey, static_cast<std::uint32_t>(counter.id()), out);
  out->key(kTypeKey);
  const std::string_view name = nameOf(static_cast<counter_type_t>(counter.type()));
  if (name.empty()) {
    out->literal(std::to_string(counter.type()));
  } else {
    out->value(name);
  }
  out->end('}');
}

void writePolicer(std::string_view key, std::string_view bytes, const policer::Policer& policer,
                  JsonWriter* out) {
  std::string digits;
  appendHex(bytes, &digits);
  out->key(key);
  out->begin('{');
  write(kBytesKey, digits, out);
  out->key(kAboutKey);
  out->begin('{');
  for (const PolicerFact& fact : factsOf(policer)) {
    if (fact.figure && fact.number == 0) continue;
    out->key(fact.key);
    if (fact.name.empty()) {
      out->value(fact.number);
    } else {
      out->value(fact.name);
    }
  }
  out->end('}');
  out->end('}');
}

void writeEntry(const FiltersEntry& entry, FiltersEntryPB* message, JsonWriter* out) {
  message->Clear();
  entry.convertToFiltersEntryPB(message);
  out->begin('{');
  write(kIdKey, message->id_(), out);
  write(kPriorityKey, message->priority_(), out);
  writeAll<filtersMatch_t>(kMatchesKey, message->matches_(), out);
  writeAll<filtersAction_t>(kActionsKey, message->actions_(), out);
  if (!message->counters_().empty()) {
    out->key(kCountersKey);
    out->begin('[');
    for (const CounterPB& counter : message->counters_()) writeCounter(counter, out);
    out->end(']');
  }
  if (message->policer_() != defaultPolicer()) {
    writePolicer(kPolicerKey, message->policer_(), entry.getPolicer(), out);
  }
  if (const auto parent = entry.getPolicerParent()) {
    writePolicer(kParentKey, message->policer_parent_(), *parent, out);
  }
  out->end('}');
}

}  // namespace

std::string toJson(const std::vector<FiltersGroup>& groups) {
  std::string json;
  JsonWriter out(&json);
  FiltersEntryPB message;
  out.begin('{');
  write(kFormatKey, kFormat, &out);
  write(kVersionKey, std::uint32_t{kJsonVersion}, &out);
  out.key(kGroupsKey);
  out.begin('[');
  for (const FiltersGroup& group : groups) {
    out.begin('{');
    write(kIdKey, std::uint32_t{group.getId()}, &out);
    write(kPriorityKey, std::uint32_t{group.getPriority()}, &out);
    out.key(kStageKey);
    writeName(kNamesOf<filtersGroupStage_t>, static_cast<std::uint32_t>(group.getStage()), &out);
    write(kTypeKey, static_cast<std::uint32_t>(group.getType()), &out);
    out.key(kEntriesKey);
    out.begin('[');
    for (const auto& [id, entry] : group.getEntriesRef()) writeEntry(entry, &message, &out);
    out.end(']');
    out.end('}');
  }
  out.end(']');
  out.end('}');
  return json += '\n';
}

}  // namespace FiltersInspect

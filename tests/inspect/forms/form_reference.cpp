// Prints text that is made from the rows of forms.def: `form_reference schema` prints the JSON
// schema of groups, and `form_reference values` the tables of docs/text-format.md.

#include <iostream>
#include <nlohmann/json.hpp>

#include "../../../src/inspect/forms/form_rows.h"
#include "../../../src/inspect/forms/json_keys.h"
#include "../../../src/inspect/forms/message_fields.h"
#include "../../../src/inspect/forms/policer_facts.h"
#include "../../samples.h"

namespace {

using namespace FiltersCommon;
using namespace FiltersInspect;
using Json = nlohmann::ordered_json;

// --- The schema ----------------------------------------------------------------------------------

Json definition(const std::string& name) { return {{"$ref", "#/$defs/" + name}}; }
Json number(unsigned bits) { return definition("number" + std::to_string(bits)); }

Json nameOr(const Json& number, const Enumeration& names) {
  return {{"oneOf", {{{"enum", names.all()}}, number}}};
}

Json listOf(const Json& items) { return {{"type", "array"}, {"items", items}}; }

// The schema of an object. The keys in `required` must be present, and all keys must be in
// `properties`.
Json object(const Json& properties, const std::vector<std::string_view>& required) {
  return {{"type", "object"},
          {"properties", properties},
          {"required", std::vector<std::string>(required.begin(), required.end())},
          {"additionalProperties", false}};
}

Json pair(ValueForm form, const Json& value) {
  const auto [first, second] = keysOf(form);
  return object({{std::string(first), value}, {std::string(second), value}}, {first, second});
}

Json shapeOf(const FormRow& row) {
  switch (row.form) {
    case ValueForm::kFlag:
      return {{"const", true}};
    case ValueForm::kBoolean:
      return {{"type", "boolean"}};
    case ValueForm::kNumber:
    case ValueForm::kHexadecimal:
      return row.names.all == nullptr ? number(row.bits) : nameOr(number(row.bits), row.names);
    case ValueForm::kName:
      return nameOr(number(32), row.names);
    case ValueForm::kMac:
    case ValueForm::kIPv4:
    case ValueForm::kIPv6: {
      const char* name = row.form == ValueForm::kMac    ? "mac"
                         : row.form == ValueForm::kIPv4 ? "ipv4"
                                                        : "ipv6";
      return !row.fields[1] ? definition(name) : pair(row.form, definition(name));
    }
    case ValueForm::kPortMask:
    case ValueForm::kPortRange:
    case ValueForm::kVlanInfo:
      return pair(row.form, number(row.bits));
    case ValueForm::kMplsPorts:
      return pair(row.form, definition("limid"));
    case ValueForm::kNumbers: {
      Json list = listOf(number(row.bits));
      list["uniqueItems"] = true;
      return list;
    }
    case ValueForm::kLimid:
      return definition("limid");
    case ValueForm::kLimids: {
      const auto [ports, types] = keysOf(row.form);
      Json shape = object({{std::string(ports), listOf(definition("limid"))}}, {ports});
      if (row.fields[1]) {
        shape["properties"][std::string(types)] = listOf(nameOr(number(32), row.names));
      }
      return shape;
    }
  }
  return {};
}

template <class Code>
Json shapesOf() {
  Json shapes = Json::object();
  for (const auto& [code, name] : namesOf<Code>()) {
    shapes[std::string(name)] = shapeOf(*formOf(code));
  }
  return object(shapes, {});
}

Json definitions() {
  Json made = Json::object();
  for (const unsigned bits : {8u, 16u, 32u}) {
    made["number" + std::to_string(bits)] = {
        {"type", "integer"}, {"minimum", 0}, {"maximum", (std::uint64_t{1} << bits) - 1}};
  }
  made["mac"] = {{"type", "string"}, {"pattern", "^([0-9a-f]{2}:){5}[0-9a-f]{2}$"}};
  made["ipv4"] = {{"type", "string"}, {"pattern", "^([0-9]{1,3}\\.){3}[0-9]{1,3}$"}};
  made["ipv6"] = {{"type", "string"}, {"pattern", "^[0-9a-f:.]+$"}};
  made["limid"] = object({{"limid", number(32)}, {"name", {{"type", "string"}}}}, {kLimidKey});
  const Json action = object({{std::string(kColorKey), nameOr(number(32), kPolicerColors)},
                              {std::string(kDoKey), nameOr(number(32), kPolicerActionTypes)},
                              {std::string(kValueKey), number(8)}},
                             {kColorKey, kDoKey});
  Json facts = Json::object();
  for (const PolicerKey& key : kPolicerKeys) {
    facts[key.key] = key.names != nullptr ? nameOr(number(32), *key.names) : number(32);
  }
  facts[std::string(kActionsKey)] = listOf(action);
  Json about = object(facts, {});
  about["description"] = "Beside bytes it may be left out; else it fits them.";
  made["policer"] =
      object({{std::string(kBytesKey), {{"type", "string"}, {"pattern", "^([0-9a-f]{2})*$"}}},
              {std::string(kAboutKey), about}},
             {});
  const Json byValue = {{std::string(kAboutKey), {{"required", {"id", "stage", "mode"}}}}};
  made["policer"]["anyOf"] = {{{"required", {kBytesKey}}},
                              {{"required", {kAboutKey}}, {"properties", byValue}}};
  return made;
}

Json schema() {
  const Json integer = {{"type", "integer"}};
  const Json counter =
      object({{"id", number(16)}, {"type", nameOr(integer, kNamesOf<counter_type_t>)}},
             {kIdKey, kTypeKey});
  const Json entry = object({{"id", number(32)},
                             {"priority", number(32)},
                             {"matches", shapesOf<filtersMatch_t>()},
                             {"actions", shapesOf<filtersAction_t>()},
                             {"counters", listOf(counter)},
                             {"policer", definition("policer")},
                             {"parent", definition("policer")}},
                            {kIdKey, kPriorityKey});
  const Json group = object({{"id", number(16)},
                             {"priority", number(16)},
                             {"stage", nameOr(integer, kNamesOf<filtersGroupStage_t>)},
                             {"type", integer},
                             {"entries", listOf(entry)}},
                            {kIdKey, kPriorityKey, kStageKey, kTypeKey, kEntriesKey});
  Json whole = {{"$schema", "https://json-schema.org/draft/2020-12/schema"},
                {"title", "filter groups, version 1"}};
  whole.update(object(
      {{"format", {{"const", kFormat}}}, {"version", {{"const", 1}}}, {"groups", listOf(group)}},
      {kFormatKey, kVersionKey, kGroupsKey}));
  whole["$defs"] = definitions();
  return whole;
}

// --- The tables ----------------------------------------------------------------------------------

std::string listed(const Enumeration& names, const char* end = ", ") {
  std::string list;
  for (const std::string_view name : names.all()) {
    list.append(list.empty() ? "`" : ", `").append(name).append("`");
  }
  return list + end;
}

// The range of a value as text.
std::string rangeOf(const FormRow& row) {
  const std::string bits = std::to_string(row.bits) + " bits";
  const auto masked = static_cast<bool>(row.fields[1]);
  switch (row.form) {
    case ValueForm::kFlag:
      return "no value";
    case ValueForm::kNumber:
    case ValueForm::kHexadecimal:
      return row.names.all == nullptr ? bits : bits + ", or a name: " + listed(row.names, "");
    case ValueForm::kName:
      return listed(row.names) + "or a number";
    case ValueForm::kBoolean:
      return "`true`, `false`";
    case ValueForm::kMac:
      return masked ? "a mask is an address" : "no mask";
    case ValueForm::kIPv4:
    case ValueForm::kIPv6:
      return masked ? "a mask is a length or an address" : "no mask";
    case ValueForm::kPortMask:
      return "port and hexadecimal mask, " + bits + " each; 0xffff if there is no mask";
    case ValueForm::kPortRange:
      return "both ends belong to it, " + bits + " each";
    case ValueForm::kNumbers:
      return "a set, " + bits + " each";
    case ValueForm::kLimid:
      return "an interface id";
    case ValueForm::kLimids:
      return "interface ids in their order" +
             (masked ? "; behind `!` kinds of port left out: " + listed(row.names) + "or a number"
                     : "");
    case ValueForm::kVlanInfo:
      return "the service's class, then the protocol's; " + bits + " each";
    case ValueForm::kMplsPorts:
      return "the VPN's interface id, then the access port's";
  }
  return "";
}

// The text of the first sample of a class.
template <class T>
std::string example() {
  std::istringstream words(catalogue::rowOf<T>().text);
  std::string name, value;
  words >> name >> value;
  return value.empty() ? name : name + '=' + value;
}

void convert(const Match& match, MatchPB* message) { match.convertToMatchPB(message); }
void convert(const Action& action, ActionPB* message) { action.convertToActionPB(message); }
void convert(const MatchPB& message, Match* match) { match->convertFromMatchPB(&message); }
void convert(const ActionPB& message, Action* action) { action->convertFromActionPB(&message); }

// Says whether the class keeps this number when it reads it from a message.
template <class T, class Message>
bool keeps(const FormRow& row, std::uint64_t number) {
  Message came, kept;
  T object = catalogue::samples<T>().back();
  convert(object, &came);
  setNumber(&came, row.fields[0], static_cast<std::uint32_t>(number));
  convert(came, &object);
  convert(object, &kept);
  return numberIn(kept, row.fields[0]) == number;
}

// The width of a number is written twice: in its row, and in the class that holds the number.
// Checks that both widths are equal.
template <class T, class Code>
bool hasTrueWidth(Code code) {
  using Message = std::conditional_t<std::is_base_of_v<Match, T>, MatchPB, ActionPB>;
  const FormRow& row = *formOf(code);
  if (row.form != ValueForm::kNumber && row.form != ValueForm::kHexadecimal) return true;
  const std::uint64_t beyond = std::uint64_t{1} << row.bits;
  if (keeps<T, Message>(row, beyond - 1) && (row.bits == 32 || !keeps<T, Message>(row, beyond))) {
    return true;
  }
  std::cerr << "forms.def: " << nameOf(code) << " does not have " << unsigned{row.bits}
            << " bits\n";
  return false;
}

bool haveTrueWidths() {
  bool all = true;
#define FILTERS_MATCH(code, T, blank) all &= hasTrueWidth<T>(code);
#include <filter_common/filter_matches.def>
#define FILTERS_ACTION(code, T, blank) all &= hasTrueWidth<T>(code);
#include <filter_common/filter_actions.def>
  return all;
}

template <class T, class Code>
void printRow(Code code) {
  std::cout << "| `" << nameOf(code) << "` | `" << example<T>() << "` | " << rangeOf(*formOf(code))
            << " |\n";
}

const char* packetsWith(Layer layer) {
  switch (layer) {
    case Layer::kSome:
      return "unknown";
    case Layer::kEvery:
    case Layer::kTagging:
      return "all";
    case Layer::kTag:
      return "with a tag";
    case Layer::kIp:
    case Layer::kIpProtocol:
      return "IPv4, IPv6";
    case Layer::kIPv4:
      return "IPv4";
    case Layer::kIPv6:
      return "IPv6";
    case Layer::kPorts:
      return "TCP, UDP and others with ports";
  }
  return "";
}

// The fields of packets, each with the matches that test it. The row of the first match on a field
// describes the field.
void printFields() {
  std::vector<std::string> names;
  std::map<std::string, std::pair<const PacketField*, std::string>> fields;
#define FILTERS_MATCH(code, T, blank)                                                   \
  for (std::size_t i = 0; i < 2; ++i) {                                                 \
    const std::string name(packetFieldName(code, i));                                   \
    if (name.empty()) continue;                                                         \
    const auto [field, isNew] = fields.try_emplace(name, &formOf(code)->packet[i], ""); \
    if (isNew) names.push_back(name);                                                   \
    field->second.second.append(isNew ? "`" : ", `").append(nameOf(code)).append("`");  \
  }
#include <filter_common/filter_matches.def>
  std::cout << "\n| field of a packet | matches that test it | packets that have it |\n"
               "| --- | --- | --- |\n";
  for (const std::string& name : names) {
    const auto& [field, matches] = fields[name];
    std::cout << "| `" << name << "` | " << matches << " | " << packetsWith(field->layer) << " |\n";
  }
}

void printValues() {
  std::cout << "\n| match | example | value |\n| --- | --- | --- |\n";
#define FILTERS_MATCH(code, T, blank) printRow<T>(code);
#include <filter_common/filter_matches.def>
  std::cout << "\n| action | example | value |\n| --- | --- | --- |\n";
#define FILTERS_ACTION(code, T, blank) printRow<T>(code);
#include <filter_common/filter_actions.def>
  printFields();
  std::cout << '\n';
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view what = argc > 1 ? argv[1] : "";
  if (what == "schema") {
    std::cout << schema().dump(1) << '\n';
  } else if (what == "values") {
    if (!haveTrueWidths()) return 1;
    printValues();
  }
  return std::cout.flush() ? 0 : 1;
}

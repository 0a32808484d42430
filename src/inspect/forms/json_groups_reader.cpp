#include <algorithm>
#include <array>
#include <iterator>

#include <filter_inspect/filter_text.h>

#include "catalogue/in_quotes.h"
#include "group_builder.h"
#include "interface_ids.h"
#include "json_keys.h"
#include "json_nesting.h"
#include "json_tokens.h"
#include "policer_facts.h"
#include "report/hex.h"
#include "utf8_mark.h"
#include "value_text.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

// A number, a text, true or false, as it was read.
struct Scalar {
  enum Type : std::uint8_t { kNumber, kText, kBoolean, kOther } type;
  std::int64_t number = 0;  // 1 for true; the nearest number of 64 bits
  std::string_view text = {};
};

// Only known keys may hold values, so nesting has a limit. The functions that read a token return
// false after a fault, which ends the reading.
class JsonReader {
 public:
  JsonReader(std::string_view text, GroupBuilder* groups)
      : text_(text), tokens_(text), groups_(*groups) {}

  void read();
  void readOnlyEntry() {
    top().in = In::kEntries;
    read();
  }
 private:
  // The last token that was read.
  enum class Last : std::uint8_t { kNothing, kOpening, kKey, kValue };

  struct Frame {
    In in = In::kNowhere;
    bool is_list = false;
    std::size_t key = 0;          // the last one
    std::uint32_t seen_keys = 0;  // a bit for each key

    bool hasSeen(std::size_t one) const { return (seen_keys >> one & 1) != 0; }
    void see(std::size_t one) { seen_keys |= std::uint32_t{1} << (key = one); }
  };

  bool readValue(char token);
  void noJsonHere();
  bool begin(char bracket);
  bool key(std::string_view name);
  bool end();
  bool scalar(const Scalar& value);
  template <class CodeEnum, class Messages>
  bool keyOfOne(std::string_view name, Messages* messages);

  bool scalarOfFile(const Scalar& value);
  bool scalarOfGroup(const Scalar& value);
  bool scalarOfCounter(const Scalar& value);
  bool scalarOfPolicer(const Scalar& value);
  bool scalarOfPolicerAction(const Scalar& value);
  bool scalarOfForm(const Scalar& value, const MessageField& field);
  bool endLimid();
  bool endPolicer();
  bool endPolicerAction();
  std::optional<std::size_t> contradictionToBytes() const;
  bool makePolicerBytes();

  Frame& top() { return frames_[depth_]; }
  const Frame& top() const { return frames_[depth_]; }
  Frame& outer() { return frames_[depth_ - 1]; }

  // The token that was found becomes the current token.
  void take(Last last) {
    last_ = last;
    place_ = token_ = tokens_.start();
  }

  std::string_view word() const { return tokens_.wordAt(token_); }
  // Reports a fault of the current token. The finding has the word without its quotes.
  bool fail(Code code, std::string message) {
    std::string_view word = this->word();
    if (word.size() > 1 && word.front() == '"') word = word.substr(1, word.size() - 2);
    groups_.fail(code, tokens_.positionOf(place_), word, std::move(message));
    return false;
  }
  // Reports a value of another kind than `what`.
  bool wanted(const std::string& what) {
    return fail(Code::kTextSyntax, subject() + " is " + what);
  }
  bool wantedNumber(unsigned bits) {
    return wanted("a number from 0 to " + std::to_string(mostOf(bits)));
  }
  std::string subject() const;
  std::string shape() const;
  std::string noJson() const;

  // Sets a number of at most `bits` bits, or a value that has a name.
  template <class Set>
  bool number(const Scalar& value, unsigned bits, Set set) {
    if (value.type != Scalar::kNumber) return wantedNumber(bits);
    if (value.number < 0 || value.number >> bits != 0) {
      return fail(Code::kTextValue, noNumber(word(), bits));
    }
    set(static_cast<std::uint32_t>(value.number));
    return true;
  }
  template <class Set>
  bool named(const Enumeration& names, const Scalar& value, Set set, unsigned bits = 32) {
    if (value.type == Scalar::kNumber) return number(value, bits, set);
    if (value.type != Scalar::kText) return wanted("a name or a number");
    const auto code = names.fromName(value.text);
    if (!code && parseNumber(value.text, bits)) return wanted("a number without quotes");
    if (!code) {
      const std::string kind = top().in == In::kTypes ? "kind of port" : subject();
      return fail(Code::kTextValue, noName(kind, names, value.text, bits));
    }
    set(*code);
    return true;
  }

  std::string_view text_;
  JsonTokens tokens_;
  // The offset of the current token, and the offset at which its faults are reported.
  std::size_t token_ = 0;
  std::size_t place_ = 0;
  GroupBuilder& groups_;
  std::array<Frame, 10> frames_;
  std::size_t depth_ = 0;
  Last last_ = Last::kNothing;

  // The current match or action, and the values that have been read of it or of a policer.
  AnyMessage* message_ = nullptr;
  const FormRow* row_ = nullptr;
  std::string_view name_of_row_;
  std::string_view subject_;  // if the current value is none of its place
  std::uint32_t limid_ = 0;
  std::optional<std::string> name_;
  std::size_t place_of_name_ = 0;
  std::string bytes_;
  // A value in the description of a policer. If the policer also has bytes, the value must agree
  // with them. Otherwise the policer is made from the values.
  struct Fact {
    bool isText = false;
    std::int64_t number = 0;
    std::string text;
    std::size_t token = 0;
  };
  std::array<std::optional<Fact>, kPolicerKeys.size()> facts_;
  std::optional<std::vector<PolicerAction>> policer_actions_;
  std::size_t place_of_policer_actions_ = 0;
};

// Names the current value, for sentences.
std::string JsonReader::subject() const {
  if (!subject_.empty()) return std::string(subject_);
  const Frame& frame = frames_[depth_];
  switch (frame.in) {
    case In::kNowhere:
      return "the file";
    case In::kGroups:
      return "a group";
    case In::kEntries:
      return "an entry";
    case In::kCounters:
      return "a counter";
    case In::kNumbers:
      return "each value of the list";
    case In::kPorts:
      return "a port";
    case In::kTypes:
      return "a kind of port";
    case In::kPolicerActions:
      return "an action of a policer";
    case In::kMatches:
    case In::kActions:
      return std::string(name_of_row_);
    default:
      return std::string(keysOf(frame.in, row_).names[frame.key]);
  }
}

// Describes the value that must stand here, for sentences. The text is empty for a value without
// brackets, unless it is the value of a match or action or a number in a list.
std::string JsonReader::shape() const {
  const Frame& frame = frames_[depth_];
  const Nesting nesting = nestingOf(frame.in, frame.key, row_);
  if (nesting.bracket == '[') return "a list";
  if (nesting.bracket == '{') {
    const Keys& keys = keysOf(nesting.inner, row_);
    std::string text = "an object";
    for (std::size_t i = 0; i < keys.required; ++i) {
      text += i == 0 ? " with " : i + 1 == keys.required ? " and " : ", ";
      text += keys.names[i];
    }
    return text;
  }
  if (frame.in == In::kNumbers) return "a number from 0 to " + std::to_string(mostOf(row_->bits));
  if (frame.in != In::kMatches && frame.in != In::kActions) return {};
  return row_->form == ValueForm::kFlag ? "true, or is left out" : describe(*row_);
}

// Names the tokens that JSON allows after the last token.
std::string JsonReader::noJson() const {
  constexpr std::string_view kBlanks = " \t\r\n";
  const std::size_t read = last_ == Last::kNothing ? lengthOfMark(text_) : token_ + word().size();
  std::string_view rest = text_.substr(read);
  const auto skip = [&rest](std::string_view characters) {
    const std::size_t size = std::min(rest.find_first_not_of(characters), rest.size());
    rest.remove_prefix(size);
    return size != 0;
  };
  skip(kBlanks);
  const bool isSeparated =
      !rest.empty() && rest[0] == (last_ == Last::kKey ? ':' : ',') && last_ >= Last::kKey;
  if (isSeparated) rest.remove_prefix(1);
  skip(kBlanks);
  const bool isList = frames_[depth_].is_list;
  const std::string closing = isList ? "`]`" : "`}`";
  const std::string next = isList ? "a value" : "a key in double quotes";
  std::string expected;
  if (last_ == Last::kNothing) {
    expected = "`{`";
  } else if (depth_ == 0) {
    expected = "nothing more";
  } else if (last_ == Last::kKey) {
    expected = isSeparated ? "a value" : "`:`";
  } else if (last_ == Last::kOpening) {
    expected = next + " or " + closing;
  } else {
    expected = isSeparated ? next : "`,` or " + closing;
  }
  if (rest.empty()) return "the file ends too early: " + expected + " comes here";
  if (rest[0] == '"' && expected[0] == 'a') {
    return "the text in double quotes does not end, or has a character that JSON does not allow";
  }
  return "this is no JSON: " + expected + " comes here";
}

void JsonReader::read() {
  bool good = readValue(tokens_.next());
  while (good && depth_ != 0) {
    char token = tokens_.next();
    if (token == (top().is_list ? ']' : '}')) {
      good = end();
      continue;
    }
    if (last_ == Last::kValue) {
      if (token != ',') return noJsonHere();
      token = tokens_.next();
    }
    if (!top().is_list) {
      if (token != JsonTokens::kText) return noJsonHere();
      if (!key(tokens_.text())) return;
      if (tokens_.next() != ':') return noJsonHere();
      token = tokens_.next();
    }
    good = readValue(token);
  }
  if (good && tokens_.next() != JsonTokens::kEnd) noJsonHere();
}

bool JsonReader::readValue(char token) {
  switch (token) {
    case '{':
    case '[':
      return begin(token);
    case JsonTokens::kText:
      return scalar({Scalar::kText, 0, tokens_.text()});
    case JsonTokens::kWhole:
      return scalar({Scalar::kNumber, tokens_.number()});
    case JsonTokens::kTrue:
    case JsonTokens::kFalse:
      return scalar({Scalar::kBoolean, token == JsonTokens::kTrue ? 1 : 0});
    case JsonTokens::kFraction:
    case JsonTokens::kNull:
      return scalar({Scalar::kOther});
    default:
      noJsonHere();
      return false;
  }
}

void JsonReader::noJsonHere() {
  const std::size_t place = tokens_.reached();
  const std::string_view found = text_.substr(place, 1);
  const bool isZero = found == std::string_view("\0", 1);
  groups_.fail(Code::kTextSyntax, tokens_.positionOf(place), found, isZero ? kZeroByte : noJson());
}

bool JsonReader::begin(char bracket) {
  take(Last::kOpening);
  const Nesting nesting = nestingOf(top().in, top().key, row_);
  if (nesting.bracket != bracket) {
    const std::string its = shape();
    return wanted(!its.empty() ? its : bracket == '{' ? "no object" : "no list");
  }
  frames_[++depth_] = {nesting.inner, bracket == '[', 0, 0};
  switch (nesting.inner) {
    case In::kGroup:
      groups_.beginGroup(tokens_.position());
      break;
    case In::kEntry:
      groups_.beginEntry(tokens_.position());
      break;
    case In::kCounter:
      groups_.entry()->add_counters_();
      break;
    case In::kLimid:
      name_.reset();
      break;
    case In::kPolicer:
      facts_ = {};
      policer_actions_.reset();
      break;
    case In::kPolicerActions:
      policer_actions_.emplace();
      place_of_policer_actions_ = token_;
      break;
    case In::kPolicerAction:
      policer_actions_->push_back({});
      break;
    default:
      break;
  }
  return true;
}

bool JsonReader::key(std::string_view name) {
  take(Last::kKey);
  if (top().in == In::kMatches) {
    return keyOfOne<filtersMatch_t>(name, groups_.entry()->mutable_matches_());
  }
  if (top().in == In::kActions) {
    return keyOfOne<filtersAction_t>(name, groups_.entry()->mutable_actions_());
  }
  const Keys& keys = keysOf(top().in, row_);
  const auto found = std::find(std::begin(keys.names), std::end(keys.names), name);
  if (found == std::end(keys.names) || name.empty()) {
    std::vector<std::string_view> names;
    for (const std::string_view one : keys.names) {
      if (!one.empty()) names.push_back(one);
    }
    return fail(Code::kTextSyntax, "there is no key " + inQuotes(name) + suggestion(name, names));
  }
  const auto place = static_cast<std::size_t>(found - std::begin(keys.names));
  if (top().hasSeen(place))
    return fail(Code::kTextRepeated, std::string(name) + " stands here twice");
  top().see(place);
  return true;
}

// Makes the message of the match or action.
template <class CodeEnum, class Messages>
bool JsonReader::keyOfOne(std::string_view name, Messages* messages) {
  const auto code = fromName<CodeEnum>(name);
  if (!code) {
    constexpr bool isMatch = std::is_same_v<CodeEnum, filtersMatch_t>;
    if (isMatch && name == kDscp) {
      return fail(Code::kTextSyntax, "JSON has no match " + inQuotes(name) +
                                         "; write tos, which is four times the DSCP");
    }
    const std::string_view kind = isMatch ? "match" : "action";
    const std::string all = isMatch ? "matches" : "actions";
    return fail(Code::kTextSyntax,
                "there is no " + std::string(kind) + ' ' + inQuotes(name) +
                    suggestion(name, kNamesOf<CodeEnum>.all(), "filter-inspect names " + all));
  }
  for (const auto& held : *messages) {
    if (held.type_() == static_cast<std::uint32_t>(*code)) {
      return fail(Code::kTextRepeated, std::string(name) + " stands here twice");
    }
  }
  auto* message = messages->Add();
  message->set_type_(static_cast<std::uint32_t>(*code));
  message_ = message;
  row_ = formOf(*code);
  name_of_row_ = nameOf(*code);
  return true;
}

bool JsonReader::end() {
  take(Last::kValue);
  const Keys& keys = keysOf(top().in, row_);
  for (std::size_t i = 0; i < keys.required; ++i) {
    if (!top().hasSeen(i)) {
      return fail(Code::kTextSyntax, "the key " + inQuotes(keys.names[i]) + " is missing");
    }
  }
  const In ended = top().in;
  bool good = true;
  if (ended == In::kGroup) groups_.endGroup();
  if (ended == In::kEntry) groups_.endEntry();
  if (ended == In::kLimid) good = endLimid();
  if (ended == In::kPolicer) good = endPolicer();
  if (ended == In::kPolicerAction) good = endPolicerAction();
  --depth_;
  return good;
}

bool JsonReader::endLimid() {
  if (name_ && *name_ != interfaceName(limid_)) {
    place_ = place_of_name_;
    return fail(Code::kTextContradiction,
                "the limid is that of the interface " + interfaceName(limid_));
  }
  const std::uint32_t value = limidToField(*row_, limid_);
  if (outer().in == In::kPorts) {
    addNumber(message_, row_->fields[0], value);
  } else {
    setNumber(message_, row_->fields[outer().in == In::kMplsPorts ? outer().key : 0], value);
  }
  return true;
}

bool JsonReader::endPolicer() {
  if (!top().hasSeen(kPolicerBytes)) {
    if (!top().hasSeen(kPolicerAbout)) {
      return fail(Code::kTextSyntax, "the policer has neither values in about nor bytes");
    }
    if (!makePolicerBytes()) return false;
  } else if (const auto place = contradictionToBytes()) {
    place_ = *place;
    return fail(Code::kTextContradiction, "the policer's bytes say something else");
  }
  if (outer().key == kEntryParent) {
    groups_.entry()->set_policer_parent_(bytes_);
  } else {
    groups_.entry()->set_policer_(bytes_);
  }
  return true;
}

bool JsonReader::endPolicerAction() {
  const bool has = hasCodePoint(policer_actions_->back().type);
  if (has == top().hasSeen(kActionValue)) return true;
  return fail(Code::kTextSyntax, has ? "the key 'value' is missing" : "this action has no value");
}

// The position of the first value that contradicts the bytes.
std::optional<std::size_t> JsonReader::contradictionToBytes() const {
  if (!top().hasSeen(kPolicerAbout)) return std::nullopt;
  const PolicerFacts said = factsOf(policer::Policer(bytes_));
  for (std::size_t i = 0; i < facts_.size(); ++i) {
    if (!facts_[i]) continue;
    const Enumeration* names = kPolicerKeys[i].names;
    const bool same = facts_[i]->isText
                          ? names != nullptr && facts_[i]->text == names->nameOf(said.numbers[i])
                          : facts_[i]->number == said.numbers[i];
    if (!same) return facts_[i]->token;
  }
  if (policer_actions_ && *policer_actions_ != said.actions) return place_of_policer_actions_;
  return std::nullopt;
}

bool JsonReader::makePolicerBytes() {
  const std::size_t end = token_;
  PolicerFacts facts;
  std::uint32_t given = 0;
  for (std::size_t i = 0; i < facts_.size(); ++i) {
    if (!facts_[i]) continue;
    place_ = token_ = facts_[i]->token;
    subject_ = kPolicerKeys[i].key;
    const Scalar value{facts_[i]->isText ? Scalar::kText : Scalar::kNumber, facts_[i]->number,
                       facts_[i]->text};
    const auto set = [&](std::uint32_t number) { facts.numbers[i] = number; };
    const Enumeration* names = kPolicerKeys[i].names;
    if (!(names != nullptr ? named(*names, value, set) : number(value, 32, set))) return false;
    given |= std::uint32_t{1} << i;
  }
  subject_ = {};
  place_ = token_ = end;
  if (policer_actions_) facts.actions = *policer_actions_;
  const auto fault = makePolicer(facts, given, &bytes_);
  if (!fault) return true;
  if (fault->number < facts_.size()) place_ = token_ = facts_[fault->number]->token;
  return fail(Code::kTextSyntax, fault->why);
}

bool JsonReader::scalar(const Scalar& value) {
  take(Last::kValue);
  const std::size_t key = top().key;
  switch (top().in) {
    case In::kFile:
      return scalarOfFile(value);
    case In::kGroup:
      return scalarOfGroup(value);
    case In::kEntry: {
      FiltersEntryPB* entry = groups_.entry();
      if (key == kEntryId) return number(value, 32, [&](std::uint32_t id) { entry->set_id_(id); });
      if (key == kEntryPriority) {
        return number(value, 32, [&](std::uint32_t n) { entry->set_priority_(n); });
      }
      return wanted(shape());
    }
    case In::kCounter:
      return scalarOfCounter(value);
    case In::kPolicer:
    case In::kAbout:
      return scalarOfPolicer(value);
    case In::kPolicerAction:
      return scalarOfPolicerAction(value);
    case In::kMatches:
    case In::kActions:
      if (nestingOf(top().in, key, row_).bracket != '\0') return wanted(shape());
      return scalarOfForm(value, row_->fields[0]);
    case In::kPair:
      return scalarOfForm(value, row_->fields[key]);
    case In::kNumbers:
      return number(value, row_->bits,
                    [&](std::uint32_t n) { addNumber(message_, row_->fields[0], n); });
    case In::kTypes:
      return named(row_->names, value,
                   [&](std::uint32_t n) { addNumber(message_, row_->fields[1], n); });
    case In::kLimid:
      if (key == kLimidNumber) {
        return number(value, 32, [&](std::uint32_t limid) { limid_ = limid; });
      }
      if (value.type != Scalar::kText) return wanted("a text in double quotes");
      name_ = value.text;
      place_of_name_ = token_;
      return true;
    case In::kNowhere:
    case In::kGroups:
    case In::kEntries:
    case In::kCounters:
    case In::kPolicerActions:
    case In::kLimids:
    case In::kPorts:
    case In::kMplsPorts:
      break;
  }
  return wanted(shape());
}

bool JsonReader::scalarOfFile(const Scalar& value) {
  if (top().key == kFileFormat) {
    if (value.type == Scalar::kText && value.text == kFormat) return true;
    return wanted('"' + std::string(kFormat) + '"');
  }
  if (top().key == kFileGroups) return wanted(shape());
  if (value.type == Scalar::kNumber && value.number == kJsonVersion) return true;
  return fail(Code::kTextVersion, "only version 1 is read here");
}

bool JsonReader::scalarOfGroup(const Scalar& value) {
  FiltersGroupPB* head = groups_.head();
  switch (top().key) {
    case kGroupId:
      return number(value, 16, [&](std::uint32_t id) { head->set_id_(id); });
    case kGroupPriority:
      return number(value, 16, [&](std::uint32_t priority) { head->set_priority_(priority); });
    case kGroupStage:
      return named(kNamesOf<filtersGroupStage_t>, value,
                   [&](std::uint32_t stage) { head->set_stage_(stage); });
    case kGroupType:
      return number(value, 32, [&](std::uint32_t type) { head->set_type_(type); });
    default:
      return wanted(shape());
  }
}

bool JsonReader::scalarOfCounter(const Scalar& value) {
  auto* counters = groups_.entry()->mutable_counters_();
  CounterPB* counter = counters->Mutable(counters->size() - 1);
  if (top().key == kCounterId) {
    return number(value, 16,
                  [&](std::uint32_t id) { counter->set_id(static_cast<std::int32_t>(id)); });
  }
  if (value.type == Scalar::kText) {
    return named(kNamesOf<counter_type_t>, value,
                 [&](std::uint32_t type) { counter->set_type(static_cast<std::int32_t>(type)); });
  }
  if (value.type != Scalar::kNumber) return wanted("a name or a number");
  if (value.number != static_cast<std::int32_t>(value.number)) {
    return fail(Code::kTextValue, inQuotes(word()) + " is no signed number of 32 bits");
  }
  counter->set_type(static_cast<std::int32_t>(value.number));
  return true;
}

bool JsonReader::scalarOfPolicer(const Scalar& value) {
  if (top().in == In::kAbout) {
    if (top().key == kAboutActions) return wanted(shape());
    if (value.type != Scalar::kNumber && value.type != Scalar::kText) {
      return wanted("a number or a name");
    }
    facts_[top().key] = {value.type == Scalar::kText, value.number, std::string(value.text),
                         token_};
    return true;
  }
  if (top().key != kPolicerBytes) return wanted("an object");
  if (value.type != Scalar::kText) return wanted("a text in double quotes");
  auto bytes = parseHex(value.text);
  if (!bytes) {
    return fail(Code::kTextValue,
                inQuotes(value.text) + " is not bytes: write pairs of hexadecimal digits");
  }
  bytes_ = std::move(*bytes);
  return true;
}

bool JsonReader::scalarOfPolicerAction(const Scalar& value) {
  PolicerAction& action = policer_actions_->back();
  switch (top().key) {
    case kActionColor:
      return named(kPolicerColors, value, [&](std::uint32_t color) { action.color = color; });
    case kActionDo:
      return named(kPolicerActionTypes, value, [&](std::uint32_t type) { action.type = type; });
    default:
      return number(value, 8, [&](std::uint32_t number) { action.value = number; });
  }
}

// Reads a value without brackets, or one part of a pair.
bool JsonReader::scalarOfForm(const Scalar& value, const MessageField& field) {
  const auto set = [&](std::uint32_t code) { setNumber(message_, field, code); };
  switch (row_->form) {
    case ValueForm::kFlag:
      return (value.type == Scalar::kBoolean && value.number == 1) || wanted(shape());
    case ValueForm::kBoolean:
      if (value.type != Scalar::kBoolean) return wanted(shape());
      setNumber(message_, field, value.number != 0 ? 1 : 0);
      return true;
    case ValueForm::kName:
      return named(row_->names, value, set);
    case ValueForm::kMac:
    case ValueForm::kIPv4:
    case ValueForm::kIPv6: {
      if (value.type != Scalar::kText) return wanted(describe(*row_) + ", in double quotes");
      const auto bytes = parseAddress(row_->form, value.text);
      if (!bytes) {
        return fail(Code::kTextValue, inQuotes(value.text) + " is not " + describe(*row_));
      }
      setAddress(message_, field, row_->form, *bytes);
      return true;
    }
    case ValueForm::kNumber:
      if (row_->names.all != nullptr) return named(row_->names, value, set, row_->bits);
      return number(value, row_->bits, set);
    default:
      return number(value, row_->bits, set);
  }
}

}  // namespace

ParsedGroups groupsFromJson(std::string_view json, std::size_t max_findings) {
  return readGroups<JsonReader>(json, max_findings);
}

ParsedBytes groupBytesFromJson(std::string_view json, std::size_t max_findings) {
  return readBytes<JsonReader>(json, max_findings);
}

ParsedGroups groupsFromJson(std::string_view json) {
  return groupsFromJson(json, GroupBuilder::kMaxFindings);
}

ParsedEntry entryFromJson(std::string_view json) { return readEntry<JsonReader>(json); }

}  // namespace FiltersInspect

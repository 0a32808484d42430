#include <algorithm>
#include <iterator>
#include <limits>

#include <filter_inspect/filter_text.h>
#include <nlohmann/json.hpp>

#include "group_builder.h"
#include "interface_ids.h"
#include "json_keys.h"
#include "json_nesting.h"
#include "json_tokens.h"
#include "policer_facts.h"
#include "report/hex.h"
#include "value_text.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

// A number, a text, true or false, as the parser read it.
struct Scalar {
  enum Type : std::uint8_t { kNumber, kText, kBoolean, kOther } type;
  std::int64_t number = 0;  // 1 for true; the nearest number of 64 bits
  std::string_view text = {};
};

// The parser calls these functions for each token; false ends it. Only known keys may hold values,
// so nesting has a limit.
class JsonReader {
 public:
  JsonReader(std::string_view text, std::size_t max_findings)
      : text_(text), positions_(text), groups_(max_findings) {}

  ParsedGroups read() {
    const char* const begin = text_.data();
    nlohmann::json::sax_parse(Characters(begin), Characters(begin + text_.size()), this);
    return groups_.finish();
  }

  bool null() { return scalar({Scalar::kOther}); }
  bool boolean(bool value) { return scalar({Scalar::kBoolean, value ? 1 : 0}); }
  bool number_integer(std::int64_t value) { return scalar({Scalar::kNumber, value}); }
  bool number_unsigned(std::uint64_t value) {
    constexpr std::uint64_t kMax = std::numeric_limits<std::int64_t>::max();
    return scalar({Scalar::kNumber, static_cast<std::int64_t>(std::min(value, kMax))});
  }
  // Whole numbers of more than 64 bits also come here.
  bool number_float(double value, const std::string& digits) {
    if (digits.find_first_of(".eE") != digits.npos) return scalar({Scalar::kOther});
    using Limits = std::numeric_limits<std::int64_t>;
    return scalar({Scalar::kNumber, value < 0 ? Limits::min() : Limits::max()});
  }
  bool string(const std::string& value) { return scalar({Scalar::kText, 0, value}); }
  bool binary(const nlohmann::json::binary_t&) { return scalar({Scalar::kOther}); }

  bool start_object(std::size_t) { return begin('{'); }
  bool start_array(std::size_t) { return begin('['); }
  bool end_object() { return end(); }
  bool end_array() { return end(); }
  bool key(const std::string& name);
  bool parse_error(std::size_t position, const std::string&, const std::exception&) {
    const std::size_t read = std::min(position == 0 ? 0 : position - 1, text_.size());
    position_ = TokenPositions::of(text_.substr(0, read));
    const bool isZero = read < text_.size() && text_[read] == '\0';
    return fail(Code::kTextSyntax,
                isZero ? kZeroByte : "what stands here, or ends here, is no JSON");
  }
 private:
  struct Frame {
    In in = In::kNowhere;
    std::size_t key = 0;          // the last one
    std::uint32_t seen_keys = 0;  // a bit for each key

    bool hasSeen(std::size_t one) const { return (seen_keys >> one & 1) != 0; }
    void see(std::size_t one) { seen_keys |= std::uint32_t{1} << (key = one); }
  };

  bool begin(char bracket);
  bool end();
  bool scalar(const Scalar& value);
  template <class CodeEnum, class Messages>
  bool keyOfOne(const std::string& name, Messages* messages);

  bool scalarOfFile(const Scalar& value);
  bool scalarOfGroup(const Scalar& value);
  bool scalarOfCounter(const Scalar& value);
  bool scalarOfPolicer(const Scalar& value);
  bool scalarOfPolicerAction(const Scalar& value);
  bool scalarOfForm(const Scalar& value, int field);
  bool endLimid();
  bool endPolicer();
  bool endPolicerAction();
  std::optional<TextPosition> contradictionToBytes() const;
  bool makePolicerBytes();

  Frame& top() { return frames_[depth_]; }
  const Frame& top() const { return frames_[depth_]; }
  Frame& outer() { return frames_[depth_ - 1]; }

  bool fail(Code code, std::string message) {
    groups_.fail(code, position_, std::move(message));
    return false;
  }
  bool wanted(const std::string& what) { return fail(Code::kTextSyntax, what + " is wanted"); }

  // Sets a number of at most `bits` bits, or a value that has a name.
  template <class Set>
  bool number(const Scalar& value, unsigned bits, Set set) {
    if (value.type != Scalar::kNumber) return wanted("a whole number");
    if (value.number < 0 || value.number >> bits != 0) {
      return fail(Code::kTextValue,
                  "a number of up to " + std::to_string(bits) + " bits is wanted");
    }
    set(static_cast<std::uint32_t>(value.number));
    return true;
  }
  template <class Set>
  bool named(const Enumeration& names, const Scalar& value, Set set) {
    if (value.type != Scalar::kText) return number(value, 32, set);
    const auto code = names.fromName(value.text);
    if (!code) return fail(Code::kTextValue, "no such name is known here");
    set(*code);
    return true;
  }

  std::string_view text_;
  TokenPositions positions_;
  TextPosition position_;  // of the current token
  GroupBuilder groups_;
  std::array<Frame, 10> frames_;
  std::size_t depth_ = 0;

  // The current match or action, and what has been read of it or of a policer.
  AnyMessage* message_ = nullptr;
  const FormRow* row_ = nullptr;
  std::uint32_t limid_ = 0;
  std::optional<std::string> name_;
  TextPosition name_position_;
  std::string bytes_;
  // What is said about a policer. It describes the bytes, or if there are none, it is the policer.
  struct Fact {
    bool isText = false;
    std::int64_t number = 0;
    std::string text;
    TextPosition position;
  };
  std::array<std::optional<Fact>, kPolicerKeys.size()> facts_;
  std::optional<std::vector<PolicerAction>> policer_actions_;
  TextPosition policer_actions_position_;
};

bool JsonReader::begin(char bracket) {
  position_ = positions_.next();
  const Nesting nesting = nestingOf(top().in, top().key, row_);
  if (nesting.bracket != bracket) {
    return fail(Code::kTextSyntax,
                bracket == '{' ? "no object may stand here" : "no list may stand here");
  }
  frames_[++depth_] = {nesting.inner, 0, 0};
  switch (nesting.inner) {
    case In::kGroup:
      groups_.beginGroup(position_);
      break;
    case In::kEntry:
      groups_.beginEntry(position_);
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
      policer_actions_position_ = position_;
      break;
    case In::kPolicerAction:
      policer_actions_->push_back({});
      break;
    default:
      break;
  }
  return true;
}

bool JsonReader::key(const std::string& name) {
  position_ = positions_.next();
  if (top().in == In::kMatches) {
    return keyOfOne<filtersMatch_t>(name, groups_.entry()->mutable_matches_());
  }
  if (top().in == In::kActions) {
    return keyOfOne<filtersAction_t>(name, groups_.entry()->mutable_actions_());
  }
  const Keys keys = keysOf(top().in, row_);
  const auto found = std::find(std::begin(keys.names), std::end(keys.names), name);
  if (found == std::end(keys.names) || name.empty()) {
    return fail(Code::kTextSyntax, "no such key is known here");
  }
  const auto place = static_cast<std::size_t>(found - std::begin(keys.names));
  if (top().hasSeen(place)) return fail(Code::kTextRepeated, name + " stands here twice");
  top().see(place);
  return true;
}

// Makes the message of the match or action.
template <class CodeEnum, class Messages>
bool JsonReader::keyOfOne(const std::string& name, Messages* messages) {
  const auto code = fromName<CodeEnum>(name);
  if (!code) return fail(Code::kTextSyntax, "no such name is known here");
  for (const auto& held : *messages) {
    if (held.type_() == static_cast<std::uint32_t>(*code)) {
      return fail(Code::kTextRepeated, name + " stands here twice");
    }
  }
  auto* message = messages->Add();
  message->set_type_(static_cast<std::uint32_t>(*code));
  message_ = message;
  row_ = formOf(*code);
  return true;
}

bool JsonReader::end() {
  position_ = positions_.next();
  const Keys keys = keysOf(top().in, row_);
  for (std::size_t i = 0; i < keys.required; ++i) {
    if (!top().hasSeen(i)) {
      return fail(Code::kTextSyntax, "there is no " + std::string(keys.names[i]));
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
    position_ = name_position_;
    return fail(Code::kTextContradiction, "the interface is called " + interfaceName(limid_));
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
  } else if (const auto position = contradictionToBytes()) {
    position_ = *position;
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
  return fail(Code::kTextSyntax, has ? "there is no value" : "this action has no value");
}

// The place of the first fact that the bytes contradict.
std::optional<TextPosition> JsonReader::contradictionToBytes() const {
  if (!top().hasSeen(kPolicerAbout)) return std::nullopt;
  const PolicerFacts said = factsOf(policer::Policer(bytes_));
  for (std::size_t i = 0; i < facts_.size(); ++i) {
    if (!facts_[i]) continue;
    const Enumeration* names = kPolicerKeys[i].names;
    const bool same = facts_[i]->isText
                          ? names != nullptr && facts_[i]->text == names->nameOf(said.numbers[i])
                          : facts_[i]->number == said.numbers[i];
    if (!same) return facts_[i]->position;
  }
  if (policer_actions_ && *policer_actions_ != said.actions) return policer_actions_position_;
  return std::nullopt;
}

bool JsonReader::makePolicerBytes() {
  const TextPosition end = position_;
  PolicerFacts facts;
  std::uint32_t given = 0;
  for (std::size_t i = 0; i < facts_.size(); ++i) {
    if (!facts_[i]) continue;
    position_ = facts_[i]->position;
    const Scalar value{facts_[i]->isText ? Scalar::kText : Scalar::kNumber, facts_[i]->number,
                       facts_[i]->text};
    const auto set = [&](std::uint32_t number) { facts.numbers[i] = number; };
    const Enumeration* names = kPolicerKeys[i].names;
    if (!(names != nullptr ? named(*names, value, set) : number(value, 32, set))) return false;
    given |= std::uint32_t{1} << i;
  }
  if (policer_actions_) facts.actions = *policer_actions_;
  const auto fault = makePolicer(facts, given, &bytes_);
  if (!fault) return true;
  position_ = fault->number == facts_.size() ? end : facts_[fault->number]->position;
  return fail(Code::kTextSyntax, fault->why);
}

bool JsonReader::scalar(const Scalar& value) {
  position_ = positions_.next();
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
      return wanted(key == kEntryCounters ? "a list" : "an object");
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
      if (nestingOf(top().in, key, row_).bracket != '\0') return wanted("an object or a list");
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
      if (value.type != Scalar::kText) return wanted("a text");
      name_ = value.text;
      name_position_ = position_;
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
  return wanted("an object or a list");
}

bool JsonReader::scalarOfFile(const Scalar& value) {
  if (top().key == kFileFormat) {
    if (value.type == Scalar::kText && value.text == kFormat) return true;
    return wanted('"' + std::string(kFormat) + '"');
  }
  if (top().key == kFileGroups) return wanted("a list");
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
      return wanted("a list");
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
  if (value.type != Scalar::kNumber) return wanted("a whole number");
  if (value.number != static_cast<std::int32_t>(value.number)) {
    return fail(Code::kTextValue, "a signed number of up to 32 bits is wanted");
  }
  counter->set_type(static_cast<std::int32_t>(value.number));
  return true;
}

bool JsonReader::scalarOfPolicer(const Scalar& value) {
  if (top().in == In::kAbout) {
    if (top().key == kAboutActions) return wanted("a list");
    if (value.type != Scalar::kNumber && value.type != Scalar::kText) {
      return wanted("a number or a name");
    }
    facts_[top().key] = {value.type == Scalar::kText, value.number, std::string(value.text),
                         position_};
    return true;
  }
  if (top().key != kPolicerBytes) return wanted("an object");
  if (value.type != Scalar::kText) return wanted("a text");
  auto bytes = parseHex(value.text);
  if (!bytes) return fail(Code::kTextValue, "bytes in pairs of hexadecimal digits are wanted");
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
bool JsonReader::scalarOfForm(const Scalar& value, int field) {
  const auto set = [&](std::uint32_t code) { setNumber(message_, field, code); };
  switch (row_->form) {
    case ValueForm::kFlag:
      return (value.type == Scalar::kBoolean && value.number == 1) || wanted("true");
    case ValueForm::kBoolean:
      if (value.type != Scalar::kBoolean) return wanted("true or false");
      setNumber(message_, field, value.number != 0 ? 1 : 0);
      return true;
    case ValueForm::kName:
      return named(row_->names, value, set);
    case ValueForm::kMac:
    case ValueForm::kIPv4:
    case ValueForm::kIPv6: {
      if (value.type != Scalar::kText) return wanted("a text");
      const auto bytes = parseAddress(row_->form, value.text);
      if (!bytes) return fail(Code::kTextValue, "this is no address of the kind wanted");
      setAddress(message_, field, row_->form, *bytes);
      return true;
    }
    default:
      return number(value, row_->bits, set);
  }
}

}  // namespace

ParsedGroups groupsFromJson(std::string_view json, std::size_t max_findings) {
  return JsonReader(json, max_findings).read();
}

ParsedGroups groupsFromJson(std::string_view json) {
  return groupsFromJson(json, GroupBuilder::kMaxFindings);
}

}  // namespace FiltersInspect

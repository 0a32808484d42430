#include "policer_text.h"

#include <algorithm>
#include <array>

#include "catalogue/in_quotes.h"
#include "value_text.h"

namespace FiltersInspect {
namespace {

void appendParameter(const PolicerFacts& facts, std::size_t i, std::string* out) {
  (*out += ' ') += kPolicerKeys[i].key;
  *out += '=';
  appendNumber(facts.numbers[i], out);
}

void appendMode(std::uint32_t mode, std::string* out) {
  *out += kPolicerModes.nameOf(mode).empty() ? " mode=" : " ";
  appendName(kPolicerModes, mode, out);
}

// Appends " red=drop yellow=dscp:8".
void appendActions(const PolicerFacts& facts, std::string* out) {
  for (const PolicerAction& action : facts.actions) {
    *out += ' ';
    appendName(kPolicerColors, action.color, out);
    *out += '=';
    appendName(kPolicerActionTypes, action.type, out);
    if (!hasCodePoint(action.type)) continue;
    *out += ':';
    appendNumber(action.value, out);
  }
}

void appendRates(const PolicerFacts& facts, std::string* out) {
  for (std::size_t i = kFirstParameter; i < kPolicerKeys.size(); ++i) {
    if (facts.numbers[i] != 0) appendParameter(facts, i, out);
  }
}

// "10 ingress trtcm"
std::string identityOf(const PolicerFacts& facts) {
  std::string text = std::to_string(facts.numbers[kNumberId]) + ' ';
  appendName(*kPolicerKeys[kNumberStage].names, facts.numbers[kNumberStage], &text);
  appendMode(facts.numbers[kNumberMode], &text);
  return text;
}

// The index of the key in kPolicerKeys, or the number of keys if it is not there.
std::size_t placeOf(std::string_view key) {
  const auto found = std::find_if(kPolicerKeys.begin(), kPolicerKeys.end(),
                                  [&](const PolicerKey& one) { return key == one.key; });
  return static_cast<std::size_t>(found - kPolicerKeys.begin());
}

class PolicerReader {
 public:
  explicit PolicerReader(std::string_view text) : rest_(text) {}

  std::optional<PolicerTextFault> read(std::string* bytes) {
    while (nextWord()) {
      if (!readWord()) return std::move(fault_);
    }
    const auto fault = makePolicer(facts_, given_, bytes);
    if (!fault) return std::nullopt;
    const bool isWhole = fault->number == kPolicerKeys.size();
    constexpr char kExample[] = "; an example is {id=10 stage=ingress flow cir=1000 cbs=1500}";
    fail(Code::kTextSyntax, isWhole ? rest_ : places_[fault->number],
         fault->why + (isWhole ? kExample : ""));
    return std::move(fault_);
  }
 private:
  bool nextWord() {
    word_ = takeWord(&rest_);
    return !word_.empty();
  }

  bool fail(Code code, std::string_view word, std::string why) {
    fault_ = {code, word, std::move(why)};
    return false;
  }

  bool readWord() {
    const std::size_t equals = word_.find('=');
    if (equals == word_.npos) return readBareWord();
    const std::string_view key = word_.substr(0, equals), value = word_.substr(equals + 1);
    if (const std::size_t i = placeOf(key); i < kPolicerKeys.size()) return readNumber(i, value);
    if (const auto color = parseName(kPolicerColors, key)) return readAction(*color, value);
    std::vector<std::string_view> keys = kPolicerColors.all();
    for (const PolicerKey& one : kPolicerKeys) keys.emplace_back(one.key);
    return fail(Code::kTextSyntax, key,
                "a policer has no value " + inQuotes(key) + suggestion(key, keys));
  }

  bool readBareWord() {
    if (const auto mode = kPolicerModes.fromName(word_)) return set(kNumberMode, *mode);
    if (placeOf(word_) < kPolicerKeys.size() || kPolicerColors.fromName(word_)) {
      return fail(Code::kTextSyntax, word_.substr(word_.size()),
                  std::string(word_) + " needs '=' and a value");
    }
    if (parseNumber(word_, 32))
      return fail(Code::kTextSyntax, word_,
                  inQuotes(word_) + " has no key: write id=" + std::string(word_));
    if (kNamesOf<policer::Stage>.fromName(word_)) {
      return fail(Code::kTextSyntax, word_,
                  inQuotes(word_) + " has no key: write stage=" + std::string(word_));
    }
    return fail(Code::kTextSyntax, word_, noName("mode", kPolicerModes, word_, 32));
  }

  bool readNumber(std::size_t i, std::string_view value) {
    const auto& [key, names] = kPolicerKeys[i];
    const auto number = names != nullptr ? parseName(*names, value) : parseNumber(value, 32);
    if (number) return set(i, *number);
    return fail(Code::kTextValue, value,
                names != nullptr ? noName(key, *names, value, 32) : noNumber(value, 32));
  }

  bool set(std::size_t i, std::uint32_t number) {
    if ((given_ >> i & 1) != 0) {
      return fail(Code::kTextRepeated, word_,
                  "the policer has a second " + std::string(kPolicerKeys[i].key));
    }
    given_ |= std::uint32_t{1} << i;
    facts_.numbers[i] = number;
    places_[i] = word_;
    return true;
  }

  bool readAction(std::uint32_t color, std::string_view text) {
    const std::size_t colon = std::min(text.find(':'), text.size());
    const auto type = parseName(kPolicerActionTypes, text.substr(0, colon));
    if (!type) {
      return fail(Code::kTextValue, text,
                  "write red=drop or yellow=dscp:8: " +
                      noName("action", kPolicerActionTypes, text.substr(0, colon), 32));
    }
    PolicerAction action{color, *type, 0};
    if (hasCodePoint(*type)) {
      const std::string_view point = text.substr(std::min(colon + 1, text.size()));
      const auto value =
          kPolicerActionTypes.nameOf(*type) == kDscp && kDscpRow.names.fromName(point)
              ? kDscpRow.names.fromName(point)
              : parseNumber(point, 8);
      if (!value) {
        return fail(Code::kTextValue, text,
                    "this action writes a code point, as in dscp:46 or pcp:5");
      }
      action.value = *value;
    } else if (colon != text.size()) {
      return fail(Code::kTextValue, text.substr(colon), "this action writes no number");
    }
    facts_.actions.push_back(action);
    return true;
  }

  std::string_view rest_;  // behind word_
  std::string_view word_;
  PolicerFacts facts_;
  std::uint32_t given_ = 0;  // a bit for each number that was read
  std::array<std::string_view, kPolicerKeys.size()> places_;
  std::optional<PolicerTextFault> fault_;
};

}  // namespace

std::string policerText(const PolicerFacts& facts) {
  std::string text = "{id=";
  appendNumber(facts.numbers[kNumberId], &text);
  text += " stage=";
  appendName(*kPolicerKeys[kNumberStage].names, facts.numbers[kNumberStage], &text);
  appendMode(facts.numbers[kNumberMode], &text);
  appendRates(facts, &text);
  appendActions(facts, &text);
  return text += '}';
}

std::string policerRates(const PolicerFacts& facts) {
  std::string text = identityOf(facts);
  appendRates(facts, &text);
  return text;
}

std::string policerWords(const PolicerFacts& facts) {
  std::string text = policerRates(facts);
  appendActions(facts, &text);
  return text;
}

std::string policerChange(const PolicerFacts& before, const PolicerFacts& after) {
  const std::string head = identityOf(before);
  if (head != identityOf(after)) return policerWords(before) + " became " + policerWords(after);
  std::string a, b;
  for (std::size_t i = kFirstParameter; i < kPolicerKeys.size(); ++i) {
    if (before.numbers[i] == after.numbers[i]) continue;
    appendParameter(before, i, &a);
    appendParameter(after, i, &b);
  }
  if (before.actions != after.actions) {
    for (const auto& [facts, text] : {std::pair(&before, &a), std::pair(&after, &b)}) {
      if (facts->actions.empty()) *text += " no actions";
      appendActions(*facts, text);
    }
  }
  return head + a + " became" + b;
}

std::optional<PolicerTextFault> policerFromText(std::string_view text, std::string* bytes) {
  return PolicerReader(text).read(bytes);
}

}  // namespace FiltersInspect

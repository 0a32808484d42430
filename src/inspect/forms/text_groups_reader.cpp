#include <filter_inspect/filter_text.h>

#include <algorithm>

#include "group_builder.h"
#include "policer_text.h"
#include "report/hex.h"
#include "value_text.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

class TextReader {
 public:
  TextReader(std::string_view text, std::size_t max_findings)
      : rest_(text), groups_(max_findings) {}

  ParsedGroups read() {
    nextLine();
    if (readVersion()) {
      while (nextLine()) readLine();
      if (in_group_) groups_.endGroup();
    }
    return groups_.finish();
  }
 private:
  // Goes to the next line and drops its comment. Returns false after the last line.
  bool nextLine() {
    if (position_.line != 0 && rest_.empty()) return false;
    ++position_.line;
    const std::size_t end = std::min(rest_.find('\n'), rest_.size());
    line_ = rest_.substr(0, end);
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
    const std::size_t comment = std::min(line_.find('#'), line_.size());
    words_ = line_.substr(0, comment);
    const std::size_t zero = line_.find('\0', comment);
    if (zero != line_.npos) fail(Code::kTextSyntax, line_.substr(zero), kZeroByte);
    nextWord();
    return true;
  }

  // Goes to the next word of the line; after the last one, word_ is empty.
  void nextWord() {
    words_.remove_prefix(std::min(words_.find_first_not_of(kWordBreaks), words_.size()));
    const std::size_t end = std::min(words_.find_first_of(kWordBreaks), words_.size());
    word_ = words_.substr(0, end);
    words_.remove_prefix(end);
  }

  TextPosition positionOf(std::string_view piece) const {
    return {position_.line, static_cast<std::size_t>(piece.data() - line_.data()) + 1};
  }
  bool fail(Code code, std::string_view piece, std::string message) {
    if (!piece.empty() && piece.back() == '\r') message = "a carriage return ends no line here";
    const std::size_t zero = piece.find('\0');
    if (zero != piece.npos) {
      piece.remove_prefix(zero);
      code = Code::kTextSyntax;
      message = kZeroByte;
    }
    groups_.fail(code, positionOf(piece), std::move(message));
    return false;
  }
  bool wanted(const std::string& what) {
    return fail(Code::kTextSyntax, word_, what + " is wanted");
  }

  bool take(std::string_view word) {
    if (word_ != word) return false;
    nextWord();
    return true;
  }

  bool readVersion() {
    if (!take("filter-groups")) return wanted("'filter-groups' and a version");
    if (word_ != std::to_string(kTextVersion)) {
      return fail(Code::kTextVersion, word_, "only version 1 is read here");
    }
    nextWord();
    return word_.empty() || wanted("the end of the line");
  }

  void readLine() {
    if (word_.empty()) return;
    const TextPosition position = positionOf(word_);
    // A line with a stage was meant as a head, so what follows does not belong to the group before
    // it.
    if (word_ == "group" || (word_ != "entry" && words_.find("stage=") != words_.npos)) {
      beginGroup(position);
      if (!take("group")) {
        wanted("'group' or 'entry'");
      } else if (readHead() && !word_.empty()) {
        wanted("the end of the line");
      }
      return;
    }
    // Every other line counts as an entry, so that faults of other entries are still found.
    const bool isEntry = take("entry");
    if (isEntry && !in_group_) {
      beginGroup(position);
      groups_.fail(Code::kTextSyntax, position, "an entry before any group");
    }
    groups_.beginEntry(position);
    if (!isEntry) {
      wanted("'group' or 'entry'");
    } else if (readEntry() && !word_.empty()) {
      wanted("a match, action or counter, 'then', 'count', 'police' or 'parent'");
    }
    groups_.endEntry();
  }

  void beginGroup(TextPosition position) {
    if (in_group_) groups_.endGroup();
    in_group_ = true;
    groups_.beginGroup(position);
  }

  // The number in the current word, or in the part of it after a key.
  std::optional<std::uint32_t> number(std::string_view key, unsigned bits) {
    const auto text = behind(key);
    if (!text) return std::nullopt;
    const auto value = parseNumber(*text, bits);
    if (!value) {
      fail(Code::kTextValue, *text,
           "a number of up to " + std::to_string(bits) + " bits is wanted");
    }
    nextWord();
    return value;
  }
  template <class Enum>
  std::optional<std::uint32_t> named(std::string_view key) {
    const auto text = behind(key);
    if (!text) return std::nullopt;
    const auto value = parseName(kNamesOf<Enum>, *text);
    if (!value) fail(Code::kTextValue, *text, "neither a name known here nor a number");
    nextWord();
    return value;
  }
  std::optional<std::string_view> behind(std::string_view key) {
    if (word_.empty() || word_.substr(0, key.size()) != key) {
      wanted(key.empty() ? "a number" : '\'' + std::string(key) + '\'');
      return std::nullopt;
    }
    return word_.substr(key.size());
  }

  bool readHead() {
    const auto id = number("", 16);
    const auto priority = id ? number("priority=", 16) : id;
    const auto stage = priority ? named<filtersGroupStage_t>("stage=") : priority;
    const auto type = stage ? named<filtersGroupType_t>("type=") : stage;
    if (!type) return false;
    FiltersGroupPB* head = groups_.head();
    head->set_id_(*id);
    head->set_priority_(*priority);
    head->set_stage_(*stage);
    head->set_type_(*type);
    return true;
  }

  bool readEntry() {
    FiltersEntryPB* entry = groups_.entry();
    const auto id = number("", 32);
    const auto priority = id ? number("priority=", 32) : id;
    if (!priority) return false;
    entry->set_id_(*id);
    entry->set_priority_(*priority);
    if (take("if")) {
      while (!atKeyword()) {
        if (!readOne<filtersMatch_t>(entry->mutable_matches_())) return false;
      }
    }
    if (take("then")) {
      while (!atKeyword()) {
        if (!readOne<filtersAction_t>(entry->mutable_actions_())) return false;
      }
    }
    if (take("count")) {
      while (!atKeyword()) {
        if (!readCounter(entry->add_counters_())) return false;
      }
    }
    return readPolicer("police", [&](std::string&& bytes) { entry->set_policer_(bytes); }) &&
           readPolicer("parent", [&](std::string&& bytes) { entry->set_policer_parent_(bytes); });
  }

  bool atKeyword() const {
    return word_.empty() || word_ == "then" || word_ == "count" || word_ == "police" ||
           word_ == "parent" || word_ == "if";
  }

  // Reads one match or action.
  template <class CodeEnum, class Messages>
  bool readOne(Messages* messages) {
    const std::size_t equals = std::min(word_.find('='), word_.size());
    const std::string_view name = word_.substr(0, equals);
    std::string_view value = word_.substr(std::min(equals + 1, word_.size()));
    if constexpr (std::is_same_v<CodeEnum, filtersMatch_t>) {
      if (name == "dscp") return readDscp(value, messages);
    }
    const auto code = fromName<CodeEnum>(name);
    if (!code) return fail(Code::kTextSyntax, name, "no such name is known here");
    const FormRow& row = *formOf(*code);
    if ((row.form == ValueForm::kFlag) != (equals == word_.size())) {
      return fail(
          Code::kTextSyntax, word_.substr(equals),
          row.form == ValueForm::kFlag ? "no value may stand here" : "'=' and a value is wanted");
    }
    auto* message = addNew(*code, messages);
    if (message == nullptr) return false;
    if (const auto fault = readValue(row, value, message)) {
      return fail(Code::kTextValue, value.substr(fault->at), fault->why);
    }
    nextWord();
    return true;
  }

  // Returns null and reports a fault if the entry already has this code.
  template <class CodeEnum, class Messages>
  auto addNew(CodeEnum code, Messages* messages) -> decltype(messages->Add()) {
    for (const auto& held : *messages) {
      if (held.type_() == static_cast<std::uint32_t>(code)) {
        fail(Code::kTextRepeated, word_, std::string(nameOf(code)) + " stands here twice");
        return nullptr;
      }
    }
    auto* message = messages->Add();
    message->set_type_(static_cast<std::uint32_t>(code));
    return message;
  }

  // Reads `dscp`, which is another way to write a ToS, like the library's class MatchDSCP.
  template <class Messages>
  bool readDscp(std::string_view value, Messages* messages) {
    const auto dscp = parseNumber(value, 6);
    if (!dscp) return fail(Code::kTextValue, value, "a number of up to 6 bits is wanted");
    auto* message = addNew(FILTERS_MATCH_TOS, messages);
    if (message == nullptr) return false;
    MatchDSCP(static_cast<unsigned char>(*dscp)).convertToMatchPB(message);
    nextWord();
    return true;
  }

  bool readCounter(CounterPB* counter) {
    const std::size_t equals = std::min(word_.find('='), word_.size());
    const auto id = parseNumber(word_.substr(0, equals), 16);
    if (!id || equals == word_.size()) {
      return wanted("a counter's id of up to 16 bits, '=' and its type");
    }
    const std::string_view text = word_.substr(equals + 1);
    const auto type = parseCounterType(text);
    if (!type) return fail(Code::kTextValue, text, "neither a counter's type nor a number");
    counter->set_id(static_cast<std::int32_t>(*id));
    counter->set_type(*type);
    nextWord();
    return true;
  }

  template <class Set>
  bool readPolicer(std::string_view keyword, Set set) {
    if (!take(keyword)) return true;
    if (word_.empty()) return wanted("the policer's values in braces, its bytes, or '-'");
    if (word_.front() == '{') return readPolicerValues(set);
    auto bytes = parseHex(word_ == "-" ? std::string_view() : word_);
    if (!bytes)
      return fail(Code::kTextValue, word_, "bytes in pairs of hexadecimal digits are wanted");
    set(std::move(*bytes));
    nextWord();
    return true;
  }

  template <class Set>
  bool readPolicerValues(Set set) {
    const std::string_view opened(word_.data(), word_.size() + words_.size());
    const std::size_t end = opened.find('}');
    if (end == opened.npos) return fail(Code::kTextSyntax, word_, "there is no '}' behind it");
    std::string bytes;
    if (const auto fault = policerFromText(opened.substr(1, end - 1), &bytes)) {
      return fail(fault->code, fault->word, fault->why);
    }
    words_ = opened.substr(end + 1);
    if (!words_.empty() && kWordBreaks.find(words_.front()) == kWordBreaks.npos) {
      return fail(Code::kTextSyntax, words_, "a blank follows the '}'");
    }
    set(std::move(bytes));
    nextWord();
    return true;
  }

  std::string_view rest_;   // lines not read yet
  std::string_view line_;   // the current one
  std::string_view words_;  // the rest of the line, after word_
  std::string_view word_;
  TextPosition position_ = {0, 1};
  bool in_group_ = false;
  GroupBuilder groups_;
};

}  // namespace

ParsedGroups groupsFromText(std::string_view text, std::size_t max_findings) {
  return TextReader(text, max_findings).read();
}

ParsedGroups groupsFromText(std::string_view text) {
  return groupsFromText(text, GroupBuilder::kMaxFindings);
}

}  // namespace FiltersInspect

#include <filter_inspect/filter_text.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "catalogue/in_quotes.h"
#include "group_builder.h"
#include "policer_text.h"
#include "report/hex.h"
#include "text_lines.h"
#include "value_text.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

constexpr char kGroupExample[] = "`group 1 priority=10 stage=ingress type=3`";
constexpr char kEntryExample[] = "`entry 10 priority=100 if ttl=1 then deny`";

class TextReader : TextLines {
 public:
  TextReader(std::string_view text, GroupBuilder* groups)
      : TextLines(text, "filter-groups", kTextVersion), groups_(*groups) {}

  void read() {
    if (!readVersion()) return;
    while (nextLine()) readLine();
    if (in_group_) groups_.endGroup();
  }

  void readOnlyEntry() {
    example_ = kEntryExample;
    bool isRead = false;
    while (nextLine()) {
      if (word_.empty()) continue;
      if (std::exchange(isRead, true)) {
        failWord("an entry is one line");
        return;
      }
      const TextPosition position = positionOf(word_);
      readLineOfEntry(position, take("entry"), {"entry"});
    }
    if (!isRead) groups_.fail(Code::kTextSyntax, {}, {}, "there is no entry");
  }
 private:
  void report(Code code, TextPosition position, std::string_view word,
              std::string message) override {
    groups_.fail(code, position, word, std::move(message));
  }

  void readLine() {
    if (word_.empty()) return;
    const TextPosition position = positionOf(word_);
    // A line with a stage was meant as the first line of a group, so later lines do not belong to
    // the previous group.
    if (word_ == "group" || (word_ != "entry" && words_.find("stage=") != words_.npos)) {
      beginGroup(position);
      example_ = kGroupExample;
      if (!take("group")) {
        failFirstWord({"group", "entry"});
      } else if (readHead() && !word_.empty()) {
        failWord(std::string("the line of a group ends behind its type, as in ") + kGroupExample);
      }
      return;
    }
    // Every other line is treated as an entry, so that faults of other entries are still found.
    example_ = kEntryExample;
    const bool isEntry = take("entry");
    if (isEntry && !in_group_) {
      beginGroup(position);
      groups_.fail(
          Code::kTextSyntax, position, "entry",
          std::string("an entry follows a group: first write a line like ") + kGroupExample);
    }
    readLineOfEntry(position, isEntry, {"group", "entry"});
  }

  // Reads a line as that of an entry. If it is not one, reports that its first word should have
  // been one of `words`.
  void readLineOfEntry(TextPosition position, bool isEntry,
                       const std::vector<std::string_view>& words) {
    groups_.beginEntry(position);
    if (!isEntry) {
      failFirstWord(words);
    } else if (readEntry() && !word_.empty()) {
      failMisplaced();
    }
    groups_.endEntry();
  }

  void failMisplaced() {
    const char* place = fromName<filtersMatch_t>(word_.substr(0, word_.find('=')))
                            ? "matches stand behind `if`"
                        : fromName<filtersAction_t>(word_.substr(0, word_.find('=')))
                            ? "actions stand behind `then`"
                        : atKeyword() ? "the order is `if`, `then`, `count`, `police`, `parent`"
                                      : "`if` begins the matches and `then` the actions";
    failWord(inQuotes(word_) + " is out of place: " + place);
  }

  void beginGroup(TextPosition position) {
    if (in_group_) groups_.endGroup();
    in_group_ = true;
    groups_.beginGroup(position);
  }

  bool readHead() {
    const auto id = number("", 16);
    const auto priority = id ? number("priority=", 16) : id;
    const auto stage = priority ? named("stage=", kNamesOf<filtersGroupStage_t>) : priority;
    const auto type = stage ? named("type=", kNamesOf<filtersGroupType_t>) : stage;
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
      if (isNothing("if", "match, as in `ttl=1`")) return false;
      while (!atKeyword()) {
        if (!readOne<filtersMatch_t>(entry->mutable_matches_())) return false;
      }
    }
    if (take("then")) {
      if (isNothing("then", "action, as in `deny`")) return false;
      while (!atKeyword()) {
        if (!readOne<filtersAction_t>(entry->mutable_actions_())) return false;
      }
    }
    if (take("count")) {
      if (isNothing("count", "counter, as in `1=packets`")) return false;
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

  // Reports a keyword that nothing follows. A forgotten match would otherwise make a rule that
  // takes every packet.
  bool isNothing(const char* keyword, const char* what) {
    if (!atKeyword()) return false;
    failWord('`' + std::string(keyword) + "` is followed by at least one " + what);
    return true;
  }

  // Reads one match or action.
  template <class CodeEnum, class Messages>
  bool readOne(Messages* messages) {
    const std::size_t equals = std::min(word_.find('='), word_.size());
    const std::string_view name = word_.substr(0, equals);
    std::string_view value = word_.substr(std::min(equals + 1, word_.size()));
    if constexpr (std::is_same_v<CodeEnum, filtersMatch_t>) {
      if (name == kDscp) return readDscp(value, messages);
    }
    const auto code = fromName<CodeEnum>(name);
    if (!code) return failName<CodeEnum>(name);
    const FormRow& row = *formOf(*code);
    if ((row.form == ValueForm::kFlag) != (equals == word_.size())) {
      return failValue(name, row, equals);
    }
    auto* message = addNew(*code, messages);
    if (message == nullptr) return false;
    if (const auto fault = readValue(row, value, message)) {
      return fail(Code::kTextValue, fault->word, fault->why);
    }
    nextWord();
    return true;
  }

  // Reports a missing value, or a value too many, at this position in the word.
  bool failValue(std::string_view name, const FormRow& row, std::size_t at) {
    return fail(
        Code::kTextSyntax, word_.substr(at),
        std::string(name) +
            (row.form == ValueForm::kFlag ? " takes no value" : " needs `=` and " + describe(row)));
  }

  // Reports a word that is not the name of a match or an action.
  template <class CodeEnum>
  bool failName(std::string_view name) {
    constexpr bool isMatch = std::is_same_v<CodeEnum, filtersMatch_t>;
    if (isMatch && fromName<filtersAction_t>(name)) {
      return failWord(inQuotes(name) + " is an action: write `then` before the first action");
    }
    if (!isMatch && (fromName<filtersMatch_t>(name) || name == kDscp)) {
      return failWord(
          inQuotes(name) + " is a match: matches stand behind `if`, before `then`" +
          (name == nameOf(FILTERS_MATCH_DROP) ? "; the action that drops is deny" : ""));
    }
    std::vector<std::string_view> names = kNamesOf<CodeEnum>.all();
    if (isMatch) names.insert(names.end(), {kDscp, "then"});
    names.push_back("count");
    return fail(
        Code::kTextSyntax, name,
        std::string("there is no ") + (isMatch ? "match " : "action ") + inQuotes(name) +
            suggestion(name, names,
                       isMatch ? "filter-inspect names matches" : "filter-inspect names actions"));
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

  // Reads `dscp`, which is another notation for a ToS, like the library's class MatchDSCP.
  template <class Messages>
  bool readDscp(std::string_view value, Messages* messages) {
    if (word_ == kDscp) return failValue(kDscp, kDscpRow, kDscp.size());
    const auto dscp = parseName(kDscpRow.names, value, kDscpRow.bits);
    if (!dscp) {
      return fail(Code::kTextValue, value, noName(kDscp, kDscpRow.names, value, kDscpRow.bits));
    }
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
      return failWord("a counter is its id, from 0 to 65535, and its type, as in `1=packets`");
    }
    const std::string_view text = word_.substr(equals + 1);
    const auto type = parseCounterType(text);
    if (!type) {
      const bool isNumber = text.find_first_of("-0123456789") == 0;
      return fail(Code::kTextValue, text,
                  isNumber ? inQuotes(text) + " is no signed number of 32 bits"
                           : noName("counter type", kNamesOf<counter_type_t>, text, 32));
    }
    counter->set_id(static_cast<std::int32_t>(*id));
    counter->set_type(*type);
    nextWord();
    return true;
  }

  template <class Set>
  bool readPolicer(std::string_view keyword, Set set) {
    if (!take(keyword)) return true;
    if (word_.empty()) {
      return failWord('`' + std::string(keyword) + "` needs a policer, as in `" +
                      std::string(keyword) + " {id=10 stage=ingress flow cir=1000 cbs=1500}`");
    }
    if (word_.front() == '{') return readPolicerValues(set);
    auto bytes = parseHex(word_ == "-" ? std::string_view() : word_);
    if (!bytes) {
      return fail(Code::kTextValue, word_,
                  inQuotes(word_) + " is not bytes: write pairs of hexadecimal digits");
    }
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
    if (!words_.empty() && !isWordBreak(words_.front())) {
      return fail(Code::kTextSyntax, words_, "a blank follows the '}'");
    }
    set(std::move(bytes));
    nextWord();
    return true;
  }

  bool in_group_ = false;
  GroupBuilder& groups_;
};

}  // namespace

ParsedGroups groupsFromText(std::string_view text, std::size_t max_findings) {
  return readGroups<TextReader>(text, max_findings);
}

ParsedBytes groupBytesFromText(std::string_view text, std::size_t max_findings) {
  return readBytes<TextReader>(text, max_findings);
}

ParsedGroups groupsFromText(std::string_view text) {
  return groupsFromText(text, GroupBuilder::kMaxFindings);
}

ParsedEntry entryFromText(std::string_view line) { return readEntry<TextReader>(line); }

}  // namespace FiltersInspect

#include <filter_inspect/filter_text.h>

#include <algorithm>

#include "form_rows.h"
#include "group_builder.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

// --- Writing -------------------------------------------------------------------------------------

void appendNumberFor(std::string_view key, std::uint32_t value, std::string* out) {
  *out += key;
  appendNumber(value, out);
}

// The names of a row's limids, behind the name of their match or action.
void appendPorts(std::string_view name, const FormRow& row, const AnyMessage& message,
                 std::string* out) {
  const auto append = [&](std::uint32_t limid) { *out += ' ' + interfaceName(limid); };
  if (row.form == Form::kLimids) {
    const std::size_t count = countIn(message, row.fields[0]);
    if (count == 0) return;
    (*out += ", ") += name;
    for (std::size_t i = 0; i < count; ++i) append(numberIn(message, row.fields[0], i));
  } else if (row.form == Form::kLimid || row.form == Form::kMplsPorts) {
    (*out += ", ") += name;
    append(limidFromField(row, numberIn(message, row.fields[0])));
    if (row.fields[1] != 0) append(limidFromField(row, numberIn(message, row.fields[1])));
  }
}

// Matches or actions, and into the comment what is to be said of them.
template <class Code, class Messages>
void appendAll(const char* keyword, const Messages& messages, std::string* out,
               std::string* comment) {
  if (messages.empty()) return;
  *out += keyword;
  for (const auto& message : messages) {
    const auto code = static_cast<Code>(message.type_());
    const FormRow& row = *formOf(code);
    *out += ' ';
    *out += nameOf(code);
    appendValue(row, message, out);
    appendPorts(nameOf(code), row, message, comment);
  }
}

// A policer's bytes; none are a sign, since something must stand behind the keyword.
void appendPolicer(std::string_view bytes, std::string* out) {
  if (bytes.empty()) *out += '-';
  appendHex(bytes, out);
}

// The message is the caller's, to be used again.
void appendEntry(const FiltersEntry& entry, FiltersEntryPB* message, std::string* out) {
  message->Clear();
  entry.convertToFiltersEntryPB(message);
  std::string comment;
  appendNumberFor("entry ", message->id_(), out);
  appendNumberFor(" priority=", message->priority_(), out);
  appendAll<filtersMatch_t>(" if", message->matches_(), out, &comment);
  appendAll<filtersAction_t>(" then", message->actions_(), out, &comment);
  if (!message->counters_().empty()) *out += " count";
  for (const CounterPB& counter : message->counters_()) *out += ' ' + textOf(counter);
  if (message->policer_() != defaultPolicer()) {
    appendPolicer(message->policer_(), &(*out += " police "));
    appendFacts(entry.getPolicer(), &(comment += ", policer"));
  }
  if (const auto parent = entry.getPolicerParent()) {
    appendPolicer(message->policer_parent_(), &(*out += " parent "));
    appendFacts(*parent, &(comment += ", parent"));
  }
  if (!comment.empty()) (*out += "  #").append(comment, 1);
}

// --- Reading -------------------------------------------------------------------------------------

class TextReader {
 public:
  TextReader(std::string_view text, std::size_t maxFindings) : rest_(text), groups_(maxFindings) {}

  ParsedGroups read() {
    nextLine();
    if (readVersion()) {
      while (nextLine()) readLine();
      if (inGroup_) groups_.endGroup();
    }
    return groups_.finish();
  }
 private:
  // Makes the next line the one that words come from, without its comment. False behind the last.
  bool nextLine() {
    if (place_.line != 0 && rest_.empty()) return false;
    ++place_.line;
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

  // The next word becomes word_; behind the last one it is empty.
  void nextWord() {
    words_.remove_prefix(std::min(words_.find_first_not_of(" \t"), words_.size()));
    const std::size_t end = std::min(words_.find_first_of(" \t"), words_.size());
    word_ = words_.substr(0, end);
    words_.remove_prefix(end);
  }

  TextPlace placeOf(std::string_view piece) const {
    return {place_.line, static_cast<std::size_t>(piece.data() - line_.data()) + 1};
  }
  bool fail(Code code, std::string_view piece, std::string message) {
    if (!piece.empty() && piece.back() == '\r') message = "a carriage return ends no line here";
    const std::size_t zero = piece.find('\0');
    if (zero != piece.npos) {
      piece.remove_prefix(zero);
      code = Code::kTextSyntax;
      message = kZeroByte;
    }
    groups_.fail(code, placeOf(piece), std::move(message));
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
    const TextPlace place = placeOf(word_);
    // A line with a stage was to be a head: what follows does not belong to the group before it.
    if (word_ == "group" || (word_ != "entry" && words_.find("stage=") != words_.npos)) {
      beginGroup(place);
      if (!take("group")) {
        wanted("'group' or 'entry'");
      } else if (readHead() && !word_.empty()) {
        wanted("the end of the line");
      }
      return;
    }
    // Every other line is taken for an entry, so that it hides nothing about the others.
    const bool isEntry = take("entry");
    if (isEntry && !inGroup_) {
      beginGroup(place);
      groups_.fail(Code::kTextSyntax, place, "an entry before any group");
    }
    groups_.beginEntry(place);
    if (!isEntry) {
      wanted("'group' or 'entry'");
    } else if (readEntry() && !word_.empty()) {
      wanted("a match, action or counter, 'then', 'count', 'police' or 'parent'");
    }
    groups_.endEntry();
  }

  void beginGroup(TextPlace place) {
    if (inGroup_) groups_.endGroup();
    inGroup_ = true;
    groups_.beginGroup(place);
  }

  // A whole word, or what follows in it behind a key.
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

  // One match or action.
  template <class Code_, class Messages>
  bool readOne(Messages* messages) {
    const std::size_t equals = std::min(word_.find('='), word_.size());
    const std::string_view name = word_.substr(0, equals);
    std::string_view value = word_.substr(std::min(equals + 1, word_.size()));
    if constexpr (std::is_same_v<Code_, filtersMatch_t>) {
      if (name == "dscp") return readDscp(value, messages);
    }
    const auto code = fromName<Code_>(name);
    if (!code) return fail(Code::kTextSyntax, name, "no such name is known here");
    const FormRow& row = *formOf(*code);
    if ((row.form == Form::kFlag) != (equals == word_.size())) {
      return fail(
          Code::kTextSyntax, word_.substr(equals),
          row.form == Form::kFlag ? "no value may stand here" : "'=' and a value is wanted");
    }
    auto* message = addNew(*code, messages);
    if (message == nullptr) return false;
    if (const auto fault = readValue(row, value, message)) {
      return fail(Code::kTextValue, value.substr(fault->at), fault->why);
    }
    nextWord();
    return true;
  }

  // Null and a finding for a code that the entry has already.
  template <class Code_, class Messages>
  auto addNew(Code_ code, Messages* messages) -> decltype(messages->Add()) {
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

  // Another way to write a ToS, as the library's class has it.
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
    if (word_.empty()) return wanted("the policer's bytes, or '-'");
    auto bytes = parseHex(word_ == "-" ? std::string_view() : word_);
    if (!bytes)
      return fail(Code::kTextValue, word_, "bytes in pairs of hexadecimal digits are wanted");
    set(std::move(*bytes));
    nextWord();
    return true;
  }

  std::string_view rest_;   // lines not read yet
  std::string_view line_;   // the one at hand
  std::string_view words_;  // of the line, behind word_
  std::string_view word_;
  TextPlace place_ = {0, 1};
  bool inGroup_ = false;
  GroupsReader groups_;
};

}  // namespace

std::string toText(const std::vector<FiltersGroup>& groups) {
  std::string text = "filter-groups ";
  appendNumber(kTextVersion, &text);
  text += '\n';
  FiltersEntryPB message;
  for (const FiltersGroup& group : groups) {
    appendNumberFor("group ", group.getId(), &text);
    appendNumberFor(" priority=", group.getPriority(), &text);
    text += " stage=";
    appendName(kNamesOf<filtersGroupStage_t>, static_cast<std::uint32_t>(group.getStage()), &text);
    text += " type=";
    appendName(kNamesOf<filtersGroupType_t>, static_cast<std::uint32_t>(group.getType()), &text);
    text += '\n';
    for (const auto& [id, entry] : group.getEntriesRef()) {
      appendEntry(entry, &message, &text);
      text += '\n';
    }
  }
  return text;
}

std::string toText(const FiltersEntry& entry) {
  std::string text;
  FiltersEntryPB message;
  appendEntry(entry, &message, &text);
  return text;
}

ParsedGroups groupsFromText(std::string_view text, std::size_t max_findings) {
  return TextReader(text, max_findings).read();
}

ParsedGroups groupsFromText(std::string_view text) {
  return groupsFromText(text, GroupsReader::kMaxFindings);
}

}  // namespace FiltersInspect

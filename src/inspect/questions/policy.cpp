#include <filter_inspect/filter_policy.h>

#include <algorithm>
#include <array>
#include <utility>

#include "action_test.h"
#include "analysis/readings.h"
#include "catalogue/in_quotes.h"
#include "forms/text_lines.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

constexpr char kPolicyGroup[] = "`group 1 order=highest-priority`";
constexpr char kPromiseExample[] = "`never permit if ip_protocol=tcp dst_l4_port=23`";
constexpr char kAcceptExample[] = "`accept entry-redundant entry 60`";
constexpr char kListsOrders[] = "filter-inspect analyse --help";
constexpr std::string_view kTaken = "taken", kIf = "if";

// The codes of analyse().
constexpr std::array kAcceptable = {Code::kEntryUnreachable, Code::kEntriesTie,
                                    Code::kValueUnusual,     Code::kEntryRedundant,
                                    Code::kEntriesOverlap,   Code::kNotDecided};

class PolicyReader : TextLines {
 public:
  PolicyReader(std::string_view text, std::size_t max_findings)
      : TextLines(text, "filter-policy", kPolicyVersion),
        max_findings_(max_findings),
        faults_(max_findings) {}

  // Reads the whole policy. If there are faults, the groups are not used.
  Report read(std::vector<PolicyGroup>* groups) {
    groups_ = groups;
    if (!readVersion()) return faults_.take();
    while (nextLine()) {
      if (!word_.empty()) readLine();
    }
    return faults_.take();
  }
 private:
  void report(Code code, TextPosition position, std::string_view word,
              std::string message) override {
    constexpr std::size_t kMostOfWord = 200;
    Finding* finding = faults_.add(code);
    if (finding == nullptr) return;
    finding->path = toText(position);
    finding->word = word.substr(0, kMostOfWord);
    finding->message = std::move(message);
  }

  void readLine() {
    if (take("group")) return readGroup();
    const bool isAlways = word_ == "always";
    const bool isPromise = isAlways || word_ == "never", isAccept = word_ == "accept";
    if (!isPromise && !isAccept) {
      failFirstWord({"group", "always", "never", "accept"});
      return;
    }
    if (groups_->empty()) {
      failWord(std::string("a group comes first: write a line like ") + kPolicyGroup);
      groups_->emplace_back();  // so that the fault is reported once
    }
    if (isAccept) return readAcceptance();
    readPromise(isAlways);
  }

  void readGroup() {
    example_ = kPolicyGroup;
    PolicyGroup group = {0, Order::kUnspecified, 0, {}, {}};
    const std::string_view word = word_;
    if (const auto id = number("", 16)) {
      group.group = static_cast<filtersGroupId_t>(*id);
      group.line = position_.line;
      refuseSecond(group, word);
    }
    if (readOrder(&group.order) && !word_.empty()) {
      failWord(std::string("the line of a group ends behind its order, as in ") + kPolicyGroup);
    }
    groups_->push_back(std::move(group));
  }

  void refuseSecond(const PolicyGroup& group, std::string_view word) {
    for (const PolicyGroup& other : *groups_) {
      if (other.line == 0 || other.group != group.group) continue;
      fail(Code::kTextRepeated, word,
           "the group stands in line " + std::to_string(other.line) +
               " already: write its promises there");
      return;
    }
  }

  bool readOrder(Order* order) {
    const auto name = behind("order=");
    if (!name) return false;
    const std::optional<Order> known = orderFromName(*name);
    if (!known) {
      std::vector<std::string_view> names;
      for (const Order one : kAllOrders) names.push_back(nameOf(one));
      return fail(Code::kTextValue, *name,
                  "there is no order " + inQuotes(*name) + suggestion(*name, names, kListsOrders));
    }
    *order = *known;
    nextWord();
    return true;
  }

  // --- Promises ---

  void readPromise(bool isAlways) {
    std::string_view text(word_.data(), word_.size() + words_.size());
    text = text.substr(0, text.find_last_not_of(kWordBreaks) + 1);
    const TextPosition at = positionOf(word_);
    Promise promise = {isAlways, false, {}, {}, at.line, at.column, std::string(text), comment()};
    nextWord();
    readActions(&promise);
    if (take(kIf)) readPackets(&promise);
    groups_->back().promises.push_back(std::move(promise));
  }

  // The text after '#', without the blanks around it.
  std::string comment() const {
    constexpr std::string_view kBlanks = " \t\r";
    const std::size_t mark = std::min(line_.find('#'), line_.size());
    std::string_view text = line_.substr(std::min(mark + 1, line_.size()));
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    return std::string(text.substr(0, text.find_last_not_of(kBlanks) + 1));
  }

  bool atEnd() const { return word_.empty() || word_ == kIf; }

  void readActions(Promise* promise) {
    if (atEnd()) {
      failWord(std::string("an action is missing here, or `taken`; an example is ") +
               kPromiseExample);
      return;
    }
    promise->taken = take(kTaken);
    if (promise->taken && !atEnd()) failWord("`taken` stands alone: it is any entry at all");
    std::vector<std::string_view> held;
    for (; !atEnd(); nextWord()) {
      if (!promise->taken && readAction(promise, held)) held.push_back(word_);
    }
  }

  // Reads an action. Reports a word that is not an action.
  bool readAction(Promise* promise, const std::vector<std::string_view>& held) {
    const std::string_view name = word_.substr(0, word_.find('='));
    if (word_ == kTaken) return failWord("`taken` stands alone: it is any entry at all");
    if (!fromName<filtersAction_t>(name) && isField(name)) {
      return failWord(inQuotes(name) + " is a field of packets: write `if` before the first field");
    }
    if (const auto fault = ActionWords::add(word_, &promise->actions)) {
      return fail(fault->code, fault->piece, fault->why);
    }
    const auto isSame = [&](std::string_view other) {
      // A promise with `never` may name two values of the same action, but no entry can have both.
      return promise->always ? other.substr(0, other.find('=')) == name : other == word_;
    };
    return std::none_of(held.begin(), held.end(), isSame) ||
           fail(Code::kTextRepeated, word_, std::string(name) + " stands here twice");
  }

  static bool isField(std::string_view name) { return name == kDscp || packetField(name); }

  void readPackets(Promise* promise) {
    if (word_.empty()) {
      failWord("`if` is followed by at least one field, as in `ttl=1`");
      return;
    }
    const std::string_view text(word_.data(), word_.size() + words_.size());
    const std::size_t wrong = text.find_first_of(std::string_view("\0\r", 2));
    if (wrong != text.npos) {
      fail(Code::kTextSyntax, text.substr(wrong, 1), {});
      return;
    }
    Report faults;
    auto packets = PacketSet::parse(text, &faults, max_findings_);
    if (packets) promise->packets = std::move(*packets);
    // The columns of these faults count from the beginning of the packet set, so they are converted
    // to positions in the file.
    for (Finding& fault : faults.findings) {
      const std::size_t column = std::stoul(fault.path.substr(fault.path.find(':') + 1));
      fault.path = toText(positionOf(text.substr(column - 1)));
    }
    faults_.append(std::move(faults));
  }

  // --- Acceptances ---

  void readAcceptance() {
    example_ = kAcceptExample;
    nextWord();
    const std::optional<Code> code = readCode();
    if (!code) return;
    if (!take("entry")) {
      failWord(std::string("`entry` is missing here; an example is ") + kAcceptExample);
      return;
    }
    const std::string_view word = word_;
    const auto entry = number("", 32);
    if (!entry) return;
    if (!word_.empty()) {
      failWord(std::string("the line ends behind the entry, as in ") + kAcceptExample);
    }
    auto& all = groups_->back().accepted;
    const auto isIt = [&](const Acceptance& one) {
      return one.code == *code && one.entry == *entry;
    };
    if (std::any_of(all.begin(), all.end(), isIt)) {
      fail(Code::kTextRepeated, word, "the finding is accepted twice");
    }
    all.push_back({*code, *entry, position_.line});
  }

  std::optional<Code> readCode() {
    std::vector<std::string_view> names;
    for (const Code code : kAcceptable) {
      if (word_ != nameOf(code)) {
        names.push_back(nameOf(code));
        continue;
      }
      nextWord();
      return code;
    }
    if (word_.empty()) {
      failWord(std::string("a finding is missing here; an example is ") + kAcceptExample);
    } else {
      fail(Code::kTextValue, word_,
           "analyse has no finding " + inQuotes(word_) + suggestion(word_, names));
    }
    return std::nullopt;
  }

  const std::size_t max_findings_;
  LimitedReport faults_;
  std::vector<PolicyGroup>* groups_ = nullptr;
};

}  // namespace

std::optional<Policy> Policy::parse(std::string_view text, Report* report,
                                    std::size_t max_findings) {
  Policy policy;
  Report faults = PolicyReader(text, max_findings).read(&policy.groups_);
  if (faults.empty()) return policy;
  if (report != nullptr) report->append(std::move(faults));
  return std::nullopt;
}

const PolicyGroup* Policy::find(filtersGroupId_t group) const {
  const auto isIt = [&](const PolicyGroup& one) { return one.group == group; };
  const auto found = std::find_if(groups_.begin(), groups_.end(), isIt);
  return found == groups_.end() ? nullptr : &*found;
}

std::size_t acceptFindings(const Policy& policy, filtersGroupId_t group, Report* report) {
  const PolicyGroup* its = policy.find(group);
  if (its == nullptr) return 0;
  std::vector<bool> needed(its->accepted.size());
  auto& all = report->findings;
  const auto isAccepted = [&](const Finding& finding) {
    for (std::size_t i = 0; i < needed.size(); ++i) {
      const Acceptance& one = its->accepted[i];
      if (one.code != finding.code || one.entry != finding.entry) continue;
      needed[i] = true;
      return true;
    }
    return false;
  };
  const auto kept = std::remove_if(all.begin(), all.end(), isAccepted);
  const auto count = static_cast<std::size_t>(all.end() - kept);
  all.erase(kept, all.end());
  for (std::size_t i = 0; i < needed.size() && report->left_out == 0; ++i) {
    if (needed[i]) continue;
    const Acceptance& one = its->accepted[i];
    Finding finding;
    finding.code = Code::kAcceptStale;
    finding.severity = severityOf(finding.code);
    finding.subject = Subject::kEntry;
    finding.group = group;
    finding.entry = one.entry;
    finding.message = "line " + std::to_string(one.line) + " of the policy accepts " +
                      std::string(nameOf(one.code)) + ", which is not found: remove the line";
    all.push_back(std::move(finding));
  }
  return count;
}

}  // namespace FiltersInspect

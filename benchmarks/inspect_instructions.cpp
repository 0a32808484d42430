// Counts the instructions of the second library's operations for a group of N rules. The counts are
// the same in every run. Usage:
//   inspect_instructions N
// Explaining, texts and differences use the rules of workload.h; analysis, packets and searches use
// rules like those of an access list. Each operation runs twice, and only the second run is
// counted.
#include <filter_inspect/filter_diff.h>
#include <filter_inspect/filter_explain.h>
#include <filter_inspect/filter_questions.h>
#include <filter_inspect/filter_text.h>

#include "count_instructions.h"
#include "packets.h"
#include "workload.h"

namespace benchmarks {
namespace {

using namespace FiltersInspect;
using Groups = std::vector<FiltersGroup>;

constexpr Order kOrder = Order::kHighestPriority;

// Changes every tenth rule so much that a plan inserts the rule again.
FiltersGroup changed(FiltersGroup group, unsigned rules) {
  for (unsigned id = 0; id < rules; id += 10) {
    FiltersEntry rule = makeRule(id);
    rule.setPriority(id + 1);
    require(rule.setAction(ActionSetPcp(kPcp - 1)) == FILTERS_OK &&
                group.insertEntry(rule) == FILTERS_OK,
            "a changed rule is refused");
  }
  return group;
}

template <class Run>
void count(const char* name, const Run& run) {
  countInstructions(name, run, run);
}

void countExplanations(const FiltersGroup& group) {
  const auto explain = [&](filtersGroupStage_t stage, filtersGroupType_t type, bool refused) {
    for (const auto& [id, rule] : group.getEntriesRef()) {
      require(explainInsert(stage, type, rule).empty() != refused, "an explanation is wrong");
    }
  };
  count("explain_accepted", [&] { explain(group.getStage(), group.getType(), false); });
  count("explain_refused",
        [&] { explain(FILTERS_GROUP_STAGE_EGRESS, FILTERS_GROUP_TYPE_5, true); });
}

void countForms(const FiltersGroup& group) {
  const Groups groups{group};
  const std::string text = toText(groups), json = toJson(groups);
  count("text_write", [&] { require(toText(groups) == text, "another text is written"); });
  count("text_read", [&] { require(groupsFromText(text).report.empty(), "text is refused"); });
  count("json_write", [&] { require(toJson(groups) == json, "other JSON is written"); });
  count("json_read", [&] { require(groupsFromJson(json).report.empty(), "JSON is refused"); });
}

void countDifferences(const FiltersGroup& group, unsigned rules) {
  const FiltersGroup other = changed(group, rules);
  const std::size_t differ = (rules + 9) / 10;
  count("diff", [&] { require(diff(group, other).findings.size() >= differ, "no difference"); });
  count("plan", [&] { require(plan(group, other).steps.size() == differ, "another plan"); });
}

void countQuestions(unsigned rules) {
  constexpr std::size_t kTraced = 10;
  RuleSet set(kShapes[0], rules);
  const FiltersGroup group = set.make(rules);
  std::vector<Packet> packets;
  for (const Values& values : makeValues(set.tuples(), rules)) packets.push_back(packetOf(values));
  AnalysisOptions options;
  options.order = kOrder;
  count("analyse", [&] { require(!analyse(group, options).empty(), "nothing is found"); });
  // Ten packets.
  count("trace", [&] {
    const Tracer tracer(group, kOrder);
    for (std::size_t i = 0; i < kTraced; ++i) {
      require(tracer.trace(packets[i]).outcome == Hit::kHit, "a packet is not decided");
    }
  });
  // Decides as many packets as there are rules, with a new tracer that remembers no decision.
  count("decide", [&] {
    const Tracer tracer(group, kOrder);
    for (const Packet& packet : packets) {
      require(tracer.decide(packet).outcome == Hit::kHit, "a packet is not decided");
    }
  });
  const auto asked = PacketSet::parse("ip_protocol=6 dst_l4_port=443", nullptr);
  require(asked.has_value(), "a packet set cannot be read");
  count("search", [&] { require(search(group, *asked, kOrder).complete, "a search has no end"); });
}

}  // namespace
}  // namespace benchmarks

int main(int argc, char** argv) {
  using namespace benchmarks;
  require(argc == 2, "say how many rules");
  const auto rules = static_cast<unsigned>(std::atoi(argv[1]));
  const FiltersGroup group = makeGroup(rules);
  countExplanations(group);
  countForms(group);
  countDifferences(group, rules);
  countQuestions(rules);
}

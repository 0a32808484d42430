// Measures the CPU time and the memory of an analysis, for groups like real filters and for some
// hard groups. Fails if a figure is above its limit. For a slow machine, `analysis FACTOR`
// multiplies the limits by FACTOR.

#include <filter_inspect/filter_analysis.h>
#include <sys/resource.h>
#include <algorithm>

#include <arpa/inet.h>
#include <cstdlib>
#include <ctime>

#include "rule_sets.h"
#include "workload.h"

namespace benchmarks {
namespace {

using namespace FiltersInspect;

double factor = 1;
bool good = true;

std::size_t count(const Report& report, Code code) {
  std::size_t found = 0;
  for (const Finding& finding : report.findings) found += finding.code == code ? 1 : 0;
  return found;
}

// Takes the fastest of some runs, because disturbances only make a run longer.
Report measure(const std::string& name, const FiltersGroup& group, const AnalysisOptions& options,
               double limitMs, int runs) {
  Report report;
  double best = 0;
  for (int i = 0; i < runs; ++i) {
    const std::clock_t start = std::clock();
    report = analyse(group, options);
    const double ms = 1000.0 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    best = i == 0 || ms < best ? ms : best;
  }
  const bool reached = best <= limitMs * factor;
  good = good && reached;
  std::printf("%-28s %9.1f ms of %7.0f  %5zu unreachable %5zu redundant %3zu not decided%s\n",
              name.c_str(), best, limitMs, count(report, Code::kEntryUnreachable),
              count(report, Code::kEntryRedundant), count(report, Code::kNotDecided),
              reached ? "" : "  TOO SLOW");
  return report;
}

AnalysisOptions options(bool redundant) {
  AnalysisOptions options;
  options.order = Order::kHighestPriority;
  options.redundant = redundant;
  options.max_findings = 100000;
  return options;
}

void measureShapes() {
  for (const Shape& shape : kShapes) {
    for (const unsigned rules : {1000U, 10000U}) {
      const FiltersGroup group = RuleSet(shape, rules).make(rules);
      const bool small = rules == 1000;
      const std::string name = std::string(shape.name) + ' ' + std::to_string(rules);
      measure(name, group, options(false), small ? 15 : 1000, small ? 5 : 1);
      const Report report =
          measure(name + ", redundant", group, options(true), small ? 100 : 10000, small ? 5 : 1);
      const bool decided = count(report, Code::kNotDecided) * 1000 <= rules;
      if (!decided) std::printf("%s: less than 99.9 %% decided\n", name.c_str());
      good = good && decided;
    }
  }
}

// Compares two groups in which one rule in a thousand is treated differently.
void measureComparison() {
  const FiltersGroup a = RuleSet(kShapes[1], 10000).make(10000);
  FiltersGroup b = a;
  for (unsigned id = 500; id < 10000; id += 1000) {
    FiltersEntry rule(b.getEntriesRef().at(id));
    require(rule.setAction(ActionCopyToCpu()) == FILTERS_OK && b.insertEntry(rule) == FILTERS_OK,
            "a changed rule is refused");
  }
  const std::clock_t start = std::clock();
  const Report report = compareTreatment(a, b, options(true));
  std::printf("%-28s %9.1f ms  %zu pairs %zu not decided\n", "FW 10000, compared",
              1000.0 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC,
              count(report, Code::kTreatmentDiffers), count(report, Code::kNotDecided));
}

// Traces packets that have all fields that the rules test.
void measureTrace() {
  const FiltersGroup group = RuleSet(kShapes[1], 10000).make(10000);
  const Tracer tracer(group, Order::kHighestPriority);
  constexpr unsigned kPackets = 200;
  std::size_t decided = 0;
  const std::clock_t start = std::clock();
  for (unsigned i = 0; i < kPackets; ++i) {
    const auto packet = Packet::parse(
        "ip_protocol=6 src_l4_port=1024 dst_ipv4=192.0.2.1 dst_l4_port=" + std::to_string(i) +
            " src_ipv4=10.0.0." + std::to_string(i),
        nullptr);
    require(packet.has_value(), "a packet cannot be read");
    decided += tracer.trace(*packet).outcome != Hit::kUndecided ? 1 : 0;
  }
  const double ms = 1000.0 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC / kPackets;
  const bool reached = ms <= 5 * factor;
  good = good && reached;
  std::printf("%-28s %9.1f ms of %7.0f  %5zu of %u decided%s\n", "FW 10000, a packet", ms, 5.0,
              decided, kPackets, reached ? "" : "  TOO SLOW");
}

FiltersGroup emptyGroup() {
  FiltersGroup group(kGroupId);
  require(group.setType(FILTERS_GROUP_TYPE_3) == FILTERS_OK, "the type is refused");
  return group;
}

void insert(FiltersGroup* group, FiltersEntry* rule) {
  rule->setPriority(~rule->getId());
  require(group->insertEntry(*rule) == FILTERS_OK, "a rule is refused");
}

// Analyses a hundred thousand rules, once.
void measureLarge() {
  constexpr unsigned kRules = 100000;
  for (const Shape& shape : kShapes) {
    const FiltersGroup group = RuleSet(shape, kRules).make(kRules);
    const std::string name = std::string(shape.name) + ' ' + std::to_string(kRules);
    measure(name, group, options(false), 5000, 1);
    measure(name + ", redundant", group, options(true), 30000, 1);
  }
}

// Analyses rules with random sets of a thousand ports each. All sets together have a million ports.
void measurePorts() {
  std::mt19937 engine(1);
  FiltersGroup group(kGroupId);
  require(group.setType(FILTERS_GROUP_TYPE_4) == FILTERS_OK, "the type is refused");
  for (unsigned id = 0; id < 1000; ++id) {
    std::list<limid_t> ports;
    for (unsigned i = 0; i < 1000; ++i) {
      ports.push_back(makePort(static_cast<std::uint16_t>(engine() % 60000)));
    }
    FiltersEntry rule(id);
    require(rule.setMatch(MatchIngressPorts(ports)) == FILTERS_OK, "a match is refused");
    insert(&group, &rule);
  }
  measure("1,000 x 1,000 ports", group, options(true), 20000, 1);
}

// Analyses 64 x 64 rules, each for one pair of a source network and a destination network. Only all
// of them together take every packet of the rule behind them.
void measureTiles() {
  FiltersGroup group = emptyGroup();
  for (unsigned i = 0; i < 64 * 64; ++i) {
    FiltersEntry tile(i);
    require(
        tile.setMatch(MatchSrcIPv4({htonl(i / 64 << 26)}, {htonl(0xfc000000)})) == FILTERS_OK &&
            tile.setMatch(MatchDstIPv4({htonl(i % 64 << 26)}, {htonl(0xfc000000)})) == FILTERS_OK &&
            tile.setAction(ActionPermit()) == FILTERS_OK,
        "a part is refused");
    insert(&group, &tile);
  }
  FiltersEntry all(64 * 64);
  require(all.setMatch(MatchSrcIPv4({0}, {0})) == FILTERS_OK &&
              all.setMatch(MatchDstIPv4({0}, {0})) == FILTERS_OK &&
              all.setAction(ActionPermit()) == FILTERS_OK,
          "a part is refused");
  insert(&group, &all);
  const Report report = measure("64 x 64 tiles", group, options(false), 60, 5);
  // Some of these rules have source addresses that no packet should have. The findings about these
  // addresses do not count here.
  const auto found =
      std::find_if(report.findings.begin(), report.findings.end(),
                   [](const Finding& finding) { return finding.code == Code::kEntryUnreachable; });
  require(found != report.findings.end() && found->others.size() == 64 * 64,
          "the tiles do not cover");
}

// Analyses a problem of propositional logic: each rule is a clause of three literals over the bits
// of two addresses. The last rule is covered if no assignment of the bits satisfies all clauses.
// The number of clauses makes this hard to decide.
void measureClauses() {
  std::mt19937 engine(1);
  for (const unsigned variables : {40U, 64U}) {
    FiltersGroup group = emptyGroup();
    const unsigned clauses = variables * 43 / 10;
    for (unsigned id = 0; id <= clauses; ++id) {
      std::uint64_t mask = 0;
      const std::uint64_t value = (std::uint64_t{engine()} << 32) | engine();
      while (id < clauses && __builtin_popcountll(mask) < 3) {
        mask |= std::uint64_t{1} << engine() % variables;
      }
      const auto half = [](std::uint64_t bits, int shift) {
        return in_addr{htonl(static_cast<std::uint32_t>(bits >> shift))};
      };
      FiltersEntry rule(id);
      require(rule.setMatch(MatchSrcIPv4(half(value, 32), half(mask, 32))) == FILTERS_OK &&
                  rule.setMatch(MatchDstIPv4(half(value, 0), half(mask, 0))) == FILTERS_OK,
              "a match is refused");
      insert(&group, &rule);
    }
    measure(std::to_string(clauses) + " clauses", group, options(true), 20000, 1);
  }
}

void showMemory(const char* name, long before, int limit) {
  rusage usage;
  getrusage(RUSAGE_SELF, &usage);
  const double mib = static_cast<double>(usage.ru_maxrss - before) / 1024;
  const bool reached = mib <= limit;
  good = good && reached;
  std::printf("%-28s %9.1f MiB of %4d%s\n", name, mib, limit, reached ? "" : "  TOO MUCH");
}

}  // namespace
}  // namespace benchmarks

int main(int argc, char** argv) {
  using namespace benchmarks;
  if (argc > 1) factor = std::atof(argv[1]);
  rusage usage;
  getrusage(RUSAGE_SELF, &usage);
  measureShapes();
  measureComparison();
  measureTrace();
  measureTiles();
  measureClauses();
  showMemory("memory of all these", usage.ru_maxrss, 64);
  measurePorts();
  showMemory("memory, with the ports", usage.ru_maxrss, 128);
  measureLarge();
  showMemory("memory, with 100,000 rules", usage.ru_maxrss, 512);
  return good ? 0 : 1;
}

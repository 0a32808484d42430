// Measures the time of the library's common operations, and compares each with a floor (the same
// operation with the message classes alone). The operation and its floor run in turn within each
// iteration, so that a slow moment of the machine slows both. The result is the median of their
// ratios.
#include <benchmark/benchmark.h>

#include <chrono>
#include <map>

#include "operations.h"

namespace benchmarks {
namespace {

double medianOf(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

Fixture* fixtureOf(unsigned rules) {
  static std::map<unsigned, Fixture> fixtures;
  return &fixtures.try_emplace(rules, rules).first->second;
}

double secondsOf(const Operation& operation, Fixture* fixture) {
  operation.warm(fixture);
  const auto start = std::chrono::steady_clock::now();
  (fixture->*operation.run)();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void run(benchmark::State& state, const Operation& operation, const Operation& floor) {
  const auto rules = static_cast<unsigned>(state.range(0));
  Fixture* fixture = fixtureOf(rules);
  std::vector<double> times;
  std::vector<double> ratios;
  for (auto _ : state) {
    const double floorTime = secondsOf(floor, fixture);
    const double time = secondsOf(operation, fixture);
    state.SetIterationTime(time);
    times.push_back(time);
    ratios.push_back(time / floorTime);
  }
  state.counters["ns_a_rule"] = medianOf(times) * 1e9 / rules;
  state.counters["floor_ratio"] = medianOf(ratios);
}

struct Pair {
  const char* operation;
  const char* floor;
};
// plot.py draws the first comparison of each operation.
constexpr Pair kPairs[] = {
    {"serialize", "write"},
    {"serialize", "write_arena"},
    {"serialize", "write_again"},
    {"rebuild", "parse"},
    {"rebuild_destroy", "parse_destroy"},
    {"rebuild_destroy", "parse_arena"},
    {"rebuild_destroy", "parse_again"},
    {"insert", "parse"},
    {"insert_shuffled", "parse"},
    {"copy", "parse"},
    {"compare", "parse_destroy"},
    {"print", "debug_string"},
};

}  // namespace
}  // namespace benchmarks

int main(int argc, char** argv) {
  using namespace benchmarks;
  requireSameBytes(1000);
  for (const auto& [operation, floor] : kPairs) {
    const std::string name = std::string(operation) + '.' + floor;
    benchmark::RegisterBenchmark(name.c_str(), run, operationOf(operation), operationOf(floor))
        ->RangeMultiplier(10)
        ->Range(100, 100000)
        ->UseManualTime()
        ->MinTime(0.5)
        ->Unit(benchmark::kMicrosecond);
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
}

// How long the library takes for what it does all day, each beside its floor: the same bytes with
// the message classes alone. Both run in turn within each iteration, so that what slows the machine
// down slows both; the median of their ratios is what counts. Parsing with the messages
// includes destroying them; the groups that are made here are destroyed outside of what is timed,
// and by themselves in `destroy`.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <ostream>
#include <random>
#include <streambuf>
#include <vector>

#include "workload.h"

namespace benchmarks {
namespace {

double secondsOf(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double medianOf(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// Takes everything and keeps nothing, so that printing is all that is measured.
class NullBuffer : public std::streambuf {
 protected:
  int_type overflow(int_type c) override { return traits_type::not_eof(c); }
  std::streamsize xsputn(const char*, std::streamsize size) override { return size; }
};

// A group and everything that the work on it needs, made once a size.
struct Fixture {
  explicit Fixture(unsigned size) : rules(size), group(makeGroup(size)), twin(group) {
    group.serialize(&bytes);
    for (const auto& [id, rule] : group.getEntriesRef()) inOrder.push_back(&rule);
    shuffled = inOrder;
    std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937(1));
  }

  void write() const { writeWithMessages(rules, policer, &out_); }
  void read() const { readWithMessages(bytes); }

  void serialize() const { group.serialize(&out_); }
  void rebuild() const { made_.emplace(bytes); }
  void copy() const { made_.emplace(group); }
  void destroy() const { made_.reset(); }
  void compare() const { require(group == twin, "a copy differs"); }
  // Gives back what the last work made: every work starts with a string and a group of its own.
  void forget() const {
    made_.reset();
    out_ = std::string();
  }
  void print() const {
    NullBuffer nowhere;
    std::ostream(&nowhere) << group;
  }
  void insert() const { insertAll(inOrder); }
  void insertShuffled() const { insertAll(shuffled); }

  unsigned rules;
  std::string policer = makePolicer().Serialize();
  FiltersGroup group;
  FiltersGroup twin;
  std::string bytes;
  std::vector<const FiltersEntry*> inOrder;
  std::vector<const FiltersEntry*> shuffled;
 private:
  void insertAll(const std::vector<const FiltersEntry*>& entries) const {
    made_.emplace(makeEmptyGroup());
    for (const FiltersEntry* rule : entries) {
      require(made_->insertEntry(*rule) == FILTERS_OK, "a rule is refused");
    }
  }
  mutable std::optional<FiltersGroup> made_;
  mutable std::string out_;
};

const Fixture& fixtureOf(unsigned rules) {
  static std::map<unsigned, Fixture> fixtures;
  return fixtures.try_emplace(rules, rules).first->second;
}

using Work = void (Fixture::*)() const;

void run(benchmark::State& state, Work work, Work floor) {
  const Fixture& fixture = fixtureOf(static_cast<unsigned>(state.range(0)));
  std::vector<double> times;
  std::vector<double> ratios;
  // Work is timed when it has just been done once: the caches hold what it needs, and not what the
  // other work has left in them.
  const auto once = [&](Work run) {
    fixture.forget();
    if (run == &Fixture::destroy) fixture.copy();
    return secondsOf([&] { (fixture.*run)(); });
  };
  for (auto _ : state) {
    once(floor);
    const double floorTime = once(floor);
    once(work);
    const double time = once(work);
    state.SetIterationTime(time);
    times.push_back(time);
    ratios.push_back(time / floorTime);
  }
  state.counters["ns_a_rule"] = medianOf(times) * 1e9 / fixture.rules;
  state.counters["floor_ratio"] = medianOf(ratios);
}

void add(const char* name, Work work, Work floor) {
  benchmark::RegisterBenchmark(name, run, work, floor)
      ->RangeMultiplier(10)
      ->Range(100, 100000)
      ->UseManualTime()
      ->MinTime(0.5)
      ->Unit(benchmark::kMicrosecond);
}

}  // namespace
}  // namespace benchmarks

int main(int argc, char** argv) {
  using namespace benchmarks;
  requireSameBytes(1000);
  add("serialize", &Fixture::serialize, &Fixture::write);
  add("rebuild", &Fixture::rebuild, &Fixture::read);
  add("insert", &Fixture::insert, &Fixture::read);
  add("insert_shuffled", &Fixture::insertShuffled, &Fixture::read);
  add("destroy", &Fixture::destroy, &Fixture::read);
  add("copy", &Fixture::copy, &Fixture::read);
  add("compare", &Fixture::compare, &Fixture::read);
  add("print", &Fixture::print, &Fixture::write);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
}

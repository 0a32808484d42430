// Counts under valgrind's callgrind what the library takes for a group of N rules, and what the
// message classes alone take for the same bytes: instructions, the same in every run.
//   instructions N [WORK...]
// Each work is done twice, and the second time is counted: caches of the runtime are filled then,
// and memory is where it will be. callgrind writes a file of totals a work, named by its trigger.
#include <valgrind/callgrind.h>

#include <functional>
#include <optional>
#include <ostream>
#include <streambuf>

#include "workload.h"
#ifdef BENCHMARKS_WITH_INSPECT
#include <filter_inspect/filter_decode.h>
#endif

using namespace benchmarks;

namespace {

class NullBuffer : public std::streambuf {
 protected:
  int_type overflow(int_type c) override { return traits_type::not_eof(c); }
  std::streamsize xsputn(const char*, std::streamsize size) override { return size; }
};

#ifdef BENCHMARKS_WITH_INSPECT
// The same group, of which each rule has a field that its match does not look at.
std::string withLosses(const std::string& bytes) {
  FiltersGroupPB group;
  require(group.ParseFromString(bytes), "the bytes do not parse");
  for (FiltersEntryPB& rule : *group.mutable_entries_()) {
    rule.mutable_matches_(2)->set_vrf_id_(1);
  }
  return group.SerializeAsString();
}
#endif

struct Work {
  const char* name;
  std::function<void()> run;
  std::function<void()> before;  // not counted
};

}  // namespace

int main(int argc, char** argv) {
  require(argc > 1, "say how many rules");
  const auto rules = static_cast<unsigned>(std::atoi(argv[1]));
  const std::string policer = makePolicer().Serialize();
  FiltersGroup group = makeGroup(rules);
  const FiltersGroup twin(group);
  std::string bytes;
  group.serialize(&bytes);
  std::string out;
  std::optional<FiltersGroup> made;
  NullBuffer nowhere;
  std::ostream os(&nowhere);

#ifdef BENCHMARKS_WITH_INSPECT
  const std::string lossy = withLosses(bytes);
#endif

  const auto nothing = [] {};
  const auto forget = [&] {
    made.reset();
    std::string().swap(out);
  };
  const auto isOk = [](filtersErr_t result) { require(result == FILTERS_OK, "refused"); };
  const Work works[] = {
      {"serialize", [&] { group.serialize(&out); }, forget},
      {"write", [&] { writeWithMessages(rules, policer, &out); }, forget},
      {"rebuild", [&] { made.emplace(bytes); }, forget},
      {"destroy", [&] { made.reset(); }, [&] { made.emplace(bytes); }},
      {"read", [&] { readWithMessages(bytes); }, nothing},
      {"copy", [&] { made.emplace(group); }, forget},
      {"compare", [&] { require(group == twin, "a copy differs"); }, nothing},
      {"print", [&] { os << group; }, nothing},
      {"setType", [&] { isOk(group.setType(group.getType())); }, nothing},
      {"insert",
       [&] {
         for (const auto& [id, rule] : group.getEntriesRef()) isOk(made->insertEntry(rule));
       },
       [&] { made.emplace(makeEmptyGroup()); }},
#ifdef BENCHMARKS_WITH_INSPECT
      {"decode", [&] { require(FiltersInspect::decodeGroup(bytes).report.empty(), "a loss"); },
       nothing},
      {"decode_losses",
       [&] { require(!FiltersInspect::decodeGroup(lossy).report.empty(), "no loss"); }, nothing},
#endif
  };
  for (const Work& work : works) {
    bool wanted = argc == 2;
    for (int i = 2; i < argc; ++i) wanted = wanted || std::strcmp(argv[i], work.name) == 0;
    if (!wanted) continue;
    work.before();
    work.run();
    work.before();
    CALLGRIND_START_INSTRUMENTATION;
    CALLGRIND_ZERO_STATS;
    work.run();
    CALLGRIND_DUMP_STATS_AT(work.name);
    CALLGRIND_STOP_INSTRUMENTATION;
  }
}

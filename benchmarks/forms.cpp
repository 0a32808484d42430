// Measures the CPU time of writing and reading text and JSON. Takes the fastest of five runs. Fails
// if 10,000 rules take longer than a second.

#include <filter_inspect/filter_text.h>

#include <vector>

#include "workload.h"

namespace {

using namespace benchmarks;
using FiltersInspect::ParsedGroups;
using Groups = std::vector<FiltersGroup>;

void show(const char* form, const char* operation, unsigned rules, std::size_t size,
          double seconds) {
  std::printf("%-5s %-6s %7u rules %9.1f ms %8.0f ns a rule %6.0f bytes a rule\n", form, operation,
              rules, seconds * 1e3, seconds * 1e9 / rules, static_cast<double>(size) / rules);
  require(rules > 10000 || seconds < 1, "10,000 rules take longer than a second");
}

void measure(const char* form, unsigned rules, std::string (*write)(const Groups&),
             ParsedGroups (*read)(std::string_view)) {
  const Groups groups{makeGroup(rules)};
  std::string text;
  const double writing = secondsOf([&] { text = write(groups); });
  ParsedGroups parsed;
  const double reading = secondsOf([&] { parsed = read(text); });
  require(parsed.groups == groups, "other groups are read");
  show(form, "write", rules, text.size(), writing);
  show(form, "read", rules, text.size(), reading);
}

}  // namespace

int main() {
  for (unsigned rules : {100, 1000, 10000, 100000}) {
    measure("text", rules, FiltersInspect::toText, FiltersInspect::groupsFromText);
    measure("JSON", rules, FiltersInspect::toJson, FiltersInspect::groupsFromJson);
  }
}

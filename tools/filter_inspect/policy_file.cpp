#include "policy_file.h"

#include <algorithm>

#include "analysis.h"
#include "input.h"

namespace FilterInspectTool {

using namespace FiltersInspect;

std::optional<Policy> readPolicy(const Options& options, Console* console) {
  const std::string& file = options.policy;
  if (file == "-" && std::count(options.files.begin(), options.files.end(), "-") != 0) {
    console->trouble(Code::kUsage, "-", "standard input is read once");
    return std::nullopt;
  }
  std::string content;
  if (!readFile(file, options, &content, console)) return std::nullopt;
  Report faults;
  std::optional<Policy> policy =
      Policy::parse(content, &faults, std::max(options.max_findings, std::size_t{1}));
  if (policy) return policy;
  for (const Finding& fault : faults.findings) console->trouble(file, fault, content);
  faults.findings.clear();
  console->aside(file, faults);
  console->refuse(file);
  return std::nullopt;
}

std::optional<Order> orderOf(const Policy& policy, const Options& options, Console* console) {
  std::optional<Order> order;
  if (!options.order.empty()) order = orderOf(options);
  for (const PolicyGroup& group : policy.groups()) {
    if (!isAskedFor(group.group, options)) continue;
    if (!order) order = group.order;
    if (*order == group.order) continue;
    std::string why = "group " + std::to_string(group.group) + " has the order " +
                      std::string(nameOf(group.order)) + ", and not " + std::string(nameOf(*order));
    if (options.order.empty()) why += ": choose groups of one order by --group";
    Finding other = findingOf(Code::kUsage, why);
    other.path = std::to_string(group.line) + ":1";
    console->trouble(options.policy, other);
    return std::nullopt;
  }
  return order.value_or(Order::kUnspecified);
}

bool isAskedFor(FiltersCommon::filtersGroupId_t group, const Options& options) {
  return options.groups.empty() ||
         std::count(options.groups.begin(), options.groups.end(), group) != 0;
}

}  // namespace FilterInspectTool

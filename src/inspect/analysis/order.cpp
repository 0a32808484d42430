#include <filter_inspect/filter_analysis.h>

namespace FiltersInspect {

using namespace FiltersCommon;

std::string_view nameOf(Order order) {
  switch (order) {
    case Order::kUnspecified:
      return "unspecified";
    case Order::kHighestPriority:
      return "highest-priority";
    case Order::kLowestPriority:
      return "lowest-priority";
    case Order::kAscendingId:
      return "ascending-id";
    case Order::kHighestPriorityAscendingId:
      return "highest-priority,ascending-id";
    case Order::kHighestPriorityDescendingId:
      return "highest-priority,descending-id";
    case Order::kLowestPriorityAscendingId:
      return "lowest-priority,ascending-id";
    case Order::kLowestPriorityDescendingId:
      return "lowest-priority,descending-id";
  }
  return {};
}

std::optional<Order> orderFromName(std::string_view name) {
  for (Order order : kAllOrders) {
    if (nameOf(order) == name) return order;
  }
  return std::nullopt;
}

std::uint64_t rankOf(Order order, filtersEntryId_t id, filtersEntryPriority_t priority) {
  const auto then = [](std::uint32_t first, std::uint32_t second) {
    return std::uint64_t{first} << 32 | second;
  };
  switch (order) {
    case Order::kUnspecified:
      break;
    case Order::kHighestPriority:
      return ~priority;
    case Order::kLowestPriority:
      return priority;
    case Order::kAscendingId:
      return id;
    case Order::kHighestPriorityAscendingId:
      return then(~priority, id);
    case Order::kHighestPriorityDescendingId:
      return then(~priority, ~id);
    case Order::kLowestPriorityAscendingId:
      return then(priority, id);
    case Order::kLowestPriorityDescendingId:
      return then(priority, ~id);
  }
  return 0;
}

}  // namespace FiltersInspect

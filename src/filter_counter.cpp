#include <filter_common/filter_counter.h>

#include <ostream>

#include <filter_common/filter_counter.pb.h>

#include "wire_fields.h"

namespace FiltersCommon {
namespace {

const char* typeName(counter_type_t type) {
  switch (type) {
    case FILTERS_COUNTER_TYPE_INVALID:
      return "Invalid";
    case FILTERS_COUNTER_TYPE_PACKETS:
      return "Packets";
    case FILTERS_COUNTER_TYPE_OCTETS:
      return "Octets";
    case FILTERS_COUNTER_TYPE_RED_OCTETS:
      return "Red Octets";
    case FILTERS_COUNTER_TYPE_NOT_RED_OCTETS:
      return "Not Red Octets";
    case FILTERS_COUNTER_TYPE_YELLOW_OCTETS:
      return "Yellow Octets";
    case FILTERS_COUNTER_TYPE_NOT_YELLOW_OCTETS:
      return "Not Yellow Octets";
    case FILTERS_COUNTER_TYPE_GREEN_OCTETS:
      return "Green Octets";
    case FILTERS_COUNTER_TYPE_NOT_GREEN_OCTETS:
      return "Not Green Octets";
  }
  return "Unknown";
}

}  // namespace

Counter::Counter(const CounterPB& message) { takeFields(message, this); }

void Counter::Serialize(CounterPB* message) const { putFields(message, *this); }

std::ostream& operator<<(std::ostream& os, const Counter& counter) {
  return os << "ID: " << counter.GetId() << "\nType: " << typeName(counter.GetType()) << '\n';
}

}  // namespace FiltersCommon

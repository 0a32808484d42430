#ifndef FILTER_INSPECT_SRC_CATALOGUE_NAME_OR_NUMBER_H_
#define FILTER_INSPECT_SRC_CATALOGUE_NAME_OR_NUMBER_H_

#include <string>
#include <type_traits>

#include <filter_inspect/filter_names.h>

namespace FiltersInspect {

// The name of an enumeration's value, or its number if it has no name.
template <class Enum>
std::string nameOrNumber(Enum value) {
  const std::string_view name = nameOf(value);
  const auto number = static_cast<std::underlying_type_t<Enum>>(value);
  return name.empty() ? std::to_string(number) : std::string(name);
}

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_CATALOGUE_NAME_OR_NUMBER_H_

#include "interface_ids.h"

#include <algorithm>
#include <cstddef>

#include "shared/limid_number.h"

namespace FiltersInspect {

using FiltersCommon::limidFromWire;
using FiltersCommon::limidToWire;

std::string interfaceName(std::uint32_t limid) {
  constexpr std::size_t kSize = 100;
  char text[kSize + 1] = {};  // the last zero stays, even if the platform fills the rest
  limid_to_intfname(limidFromWire(limid), text, kSize);
  std::string name = text;
  std::replace_if(
      name.begin(), name.end(), [](char c) { return c <= ' ' || c > '~'; }, '?');
  return name;
}

std::uint32_t limidToField(const FormRow& row, std::uint32_t limid) {
  if (row.form != ValueForm::kMplsPorts) return limid;
  std::uint32_t index = 0;
  limid_to_ifindex(limidFromWire(limid), &index);
  return index;
}

std::uint32_t limidFromField(const FormRow& row, std::uint32_t value) {
  if (row.form != ValueForm::kMplsPorts) return value;
  limid_t id{};
  limid_from_ifindex(&id, value);
  return limidToWire(id);
}

}  // namespace FiltersInspect

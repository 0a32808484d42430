// Any bytes mean what their message means, as an entry and as a group, or throw the one exception
// that is documented.

#include "../tests/meaning.h"
#include "fuzz.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  FUZZ_NO_FAULT(catalogue::faultIn<FiltersCommon::FiltersEntry>(bytes));
  FUZZ_NO_FAULT(catalogue::faultIn<FiltersCommon::FiltersGroup>(bytes));
  return 0;
}

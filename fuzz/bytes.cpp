// Checks the reading of any bytes. The entry or group must be the same as one converted from the
// message that the runtime parses from these bytes. If converting throws, reading must throw the
// same exception, which must be the documented one.

#include "../tests/meaning.h"
#include "fuzz.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  FUZZ_NO_FAULT(catalogue::faultIn<FiltersCommon::FiltersEntry>(bytes));
  FUZZ_NO_FAULT(catalogue::faultIn<FiltersCommon::FiltersGroup>(bytes));
  return 0;
}

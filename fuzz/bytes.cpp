// Checks that reading any bytes makes the same entry and group as converting the message that the
// runtime parses from them. If converting throws, reading must throw the same exception, and it
// must be the documented one.

#include "../tests/meaning.h"
#include "fuzz.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  FUZZ_NO_FAULT(catalogue::faultIn<FiltersCommon::FiltersEntry>(bytes));
  FUZZ_NO_FAULT(catalogue::faultIn<FiltersCommon::FiltersGroup>(bytes));
  return 0;
}

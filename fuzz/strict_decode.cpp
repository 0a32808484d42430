// Checks the promises of strict decoding for any bytes. The bytes are decoded as an entry and as a
// group.

#include "../tests/inspect/decode/decoding.h"
#include "fuzz.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  FUZZ_NO_FAULT(catalogue::faultInDecoding<FiltersCommon::FiltersEntry>(bytes));
  FUZZ_NO_FAULT(catalogue::faultInDecoding<FiltersCommon::FiltersGroup>(bytes));
  return 0;
}

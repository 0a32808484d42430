// Checks that reading any JSON gives groups or findings, and that groups that were read can be
// written and read again without a change.

#include "../tests/inspect/forms/form_samples.h"
#include "fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  FUZZ_NO_FAULT(catalogue::faultIn(catalogue::kJson, input));
  return 0;
}

// Checks that reading any text gives groups or findings. Groups that were read must be the same
// after they are written and read again.

#include "../tests/inspect/forms/form_samples.h"
#include "fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  FUZZ_NO_FAULT(catalogue::faultIn(catalogue::kText, input));
  return 0;
}

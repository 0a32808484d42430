// Any bytes become an entry, or throw the one exception that is documented.

#include <filter_common/filter_entries.h>
#include <filter_common/filter_entries.pb.h>

#include "fuzz.h"

using namespace FiltersCommon;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  fuzz::checkBytes<FiltersEntry, FiltersEntryPB>(bytes, [](const FiltersEntryPB& message) {
    auto entry = std::make_unique<FiltersEntry>();
    entry->convertFromFiltersEntryPB(&message);
    return entry;
  });
  return 0;
}

// Any bytes become a group, or throw the one exception that is documented.

#include <filter_common/filter_groups.h>
#include <filter_common/filter_groups.pb.h>

#include "fuzz.h"

using namespace FiltersCommon;

namespace {

// The meaning of a whole message: what stands before and behind the entries counts for all of them,
// and each goes in as a caller would insert it.
std::unique_ptr<FiltersGroup> groupOf(FiltersGroupPB head) {
  google::protobuf::RepeatedPtrField<FiltersEntryPB> entries;
  entries.Swap(head.mutable_entries_());
  auto group = std::make_unique<FiltersGroup>(0);
  group->convertFromFiltersGroupPB(&head);
  for (const FiltersEntryPB& message : entries) {
    FiltersEntry entry;
    entry.convertFromFiltersEntryPB(&message);
    static_cast<void>(group->insertEntry(entry));  // left out when it is refused
  }
  return group;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  fuzz::checkBytes<FiltersGroup, FiltersGroupPB>(bytes, groupOf);
  return 0;
}

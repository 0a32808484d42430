// Handles a group's message itself: reads what send_group sends, raises every priority and sends it
// on. Few programs need this; those that do link filter_common::messages, or with pkg-config
// filter_common_messages, and never compile the schemas again.
//
//   send_group | change_message | receive_group

#include <arpa/inet.h>
#include <filter_common/filter_groups.h>
#include <filter_common/filter_groups.pb.h>

#include <algorithm>
#include <iostream>
#include <string>

namespace fc = FiltersCommon;

// More than any table of this device: a length beyond it is not worth allocating.
constexpr std::uint32_t kMaxLength = 64u << 20;

int main() {
  std::string bytes;
  std::uint32_t length = 0;
  while (std::cin.read(reinterpret_cast<char*>(&length), sizeof length)) {
    length = ntohl(length);
    bytes.resize(std::min(length, kMaxLength));
    fc::FiltersGroupPB message;
    if (length > kMaxLength || !std::cin.read(bytes.data(), length) ||
        !message.ParseFromString(bytes)) {
      std::cerr << "change_message: this is no group\n";
      return 1;
    }
    for (fc::FiltersEntryPB& entry : *message.mutable_entries_()) {
      entry.set_priority_(entry.priority_() + 1000);
    }
    // The library takes messages as it takes bytes, and leaves out what its checks refuse.
    fc::FiltersGroup group(0);
    group.convertFromFiltersGroupPB(&message);
    group.serialize(&bytes);
    length = htonl(static_cast<std::uint32_t>(bytes.size()));
    std::cout.write(reinterpret_cast<const char*>(&length), sizeof length) << bytes;
  }
  return std::cout.flush() ? 0 : 1;
}

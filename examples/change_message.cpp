// Handles the message of a group: reads the output of send_group, raises every priority and sends
// the message on. Few programs need this. Such a program links filter_common::messages (with
// pkg-config: filter_common_messages) and never compiles the schemas again.
//
//   send_group | change_message | receive_group

#include <arpa/inet.h>
#include <filter_common/filter_groups.h>
#include <filter_common/filter_groups.pb.h>

#include <algorithm>
#include <iostream>
#include <string>

namespace fc = FiltersCommon;

// No group of a device is as large as this. A greater length is a fault, and no memory is allocated
// for it.
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
    // The library reads a message as it reads bytes, and leaves out entries that its checks refuse.
    fc::FiltersGroup group(0);
    group.convertFromFiltersGroupPB(&message);
    group.serialize(&bytes);
    length = htonl(static_cast<std::uint32_t>(bytes.size()));
    std::cout.write(reinterpret_cast<const char*>(&length), sizeof length) << bytes;
  }
  return std::cout.flush() ? 0 : 1;
}

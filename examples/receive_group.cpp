// The tutorial, second half (send_group.cpp is the first): reads filter groups that another process
// sent, rebuilds and prints them.
//
//   send_group | receive_group [FILE]
//
// Building a group from bytes never reports what was left out. So the receiver checks: a group that
// arrived complete serializes to the bytes that were received. If a FILE is given, the printed text
// must equal the file's content. The program exits with 1 if there is any difference.

#include <arpa/inet.h>
#include <filter_common/filter_groups.h>

#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>

namespace fc = FiltersCommon;

namespace {

// No group of a device is as large as this. A greater length is a fault, and no memory is allocated
// for it.
constexpr std::uint32_t kMaxLength = 64u << 20;

enum class Frame { kGroup, kEnd, kBroken };

// Reads a length in four bytes, the most significant first, and then that many bytes.
Frame receive(std::istream& is, std::string* bytes) {
  std::uint32_t length = 0;
  is.read(reinterpret_cast<char*>(&length), sizeof length);
  if (is.gcount() == 0) return Frame::kEnd;
  length = ntohl(length);
  if (!is || length > kMaxLength) return Frame::kBroken;
  bytes->resize(length);
  is.read(bytes->data(), length);
  return is ? Frame::kGroup : Frame::kBroken;
}

int fail(const std::string& why) {
  std::cerr << "receive_group: " << why << '\n';
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  std::ostringstream printed;
  std::string bytes;
  Frame frame;
  int groups = 0;
  while ((frame = receive(std::cin, &bytes)) == Frame::kGroup) {
    ++groups;
    try {
      const fc::FiltersGroup group(bytes);
      printed << group;
      std::string again;
      group.serialize(&again);
      if (again != bytes) {
        std::cout << printed.str();
        return fail("group " + std::to_string(group.getId()) + " differs from what was sent");
      }
    } catch (const std::invalid_argument& refusal) {  // the only error that a constructor reports
      return fail(refusal.what());
    }
  }
  std::cout << printed.str();
  if (frame == Frame::kBroken) return fail("the input ends inside a group");
  if (groups == 0) return fail("no group was received");
  if (argc > 1) {
    std::ifstream file(argv[1], std::ios::binary);
    const std::string expected{std::istreambuf_iterator<char>(file), {}};
    if (printed.str() != expected) return fail("the print differs from what was expected");
  }
  return 0;
}

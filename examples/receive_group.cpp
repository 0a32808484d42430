// Reads filter groups that another process sent, rebuilds and prints them. The library's tutorial,
// second half; send_group.cpp is the first.
//
//   send_group | receive_group [FILE]
//
// Building a group from bytes never reports what it had to leave out, so the receiver looks for
// itself: a group that came in whole serializes to the very bytes that were received. With a FILE,
// what is printed must be the file's content too. Exits with 1 on any difference.

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

// More than any table of this device: a length beyond it is not worth allocating.
constexpr std::uint32_t kMaxLength = 64u << 20;

enum class Frame { kGroup, kEnd, kBroken };

// Reads the length in four bytes, most significant first, and that many bytes.
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
    } catch (const std::invalid_argument& refusal) {  // the one thing that a constructor reports
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

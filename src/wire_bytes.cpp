#include "wire_bytes.h"

#include <algorithm>

namespace FiltersCommon {

void WireWriter::grow(std::size_t count) {
  const std::size_t used = size();
  const std::size_t room = std::max(used + count, 2 * static_cast<std::size_t>(end_ - begin_));
  std::unique_ptr<std::uint8_t[]> larger(new std::uint8_t[room]);
  std::memcpy(larger.get(), begin_, used);
  larger_ = std::move(larger);
  begin_ = larger_.get();
  at_ = begin_ + used;
  end_ = begin_ + room;
}

// Moves the content behind its length, for which there is one byte.
void WireWriter::putLongLength(std::size_t start, std::size_t length) {
  std::size_t more = 0;
  for (std::size_t left = length >> 7; left != 0; left >>= 7) ++more;
  makeRoom(more);
  std::memmove(begin_ + start + more, begin_ + start, length);
  at_ = begin_ + start - 1;
  putVarint(length);
  at_ += length;
}

std::uint32_t WireReader::longVarint() {
  std::uint32_t value = 0;
  for (int shift = 0; at_ != end_; shift += 7) {
    const std::uint8_t byte = *at_++;
    value |= static_cast<std::uint32_t>(byte & 0x7f) << shift;
    if (byte >= 0x80 && shift < 28) continue;
    const std::uint8_t largest = shift < 28 ? 0x7f : 0x0f;  // the last byte has four of 32 bits
    if (byte != 0 && byte <= largest) return value;
    break;
  }
  fail();
  return 0;
}

}  // namespace FiltersCommon

#include "wire_bytes.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace FiltersCommon {

// --- WireWriter ----------------------------------------------------------------------------------

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

void WireWriter::putLongVarint(std::uint64_t value) {
  for (; value >= 0x80; value >>= 7) *at_++ = static_cast<std::uint8_t>(value | 0x80);
  *at_++ = static_cast<std::uint8_t>(value);
}

void WireWriter::putBytes(WireTag tag, const void* data, std::size_t size) {
  makeRoom(kMaxTag + kMaxVarint + size);
  putTag(tag);
  putVarint(size);
  if (size != 0) std::memcpy(at_, data, size);
  at_ += size;
}

// One byte was kept for the length. If the length needs more bytes, moves the content.
void WireWriter::putLongLength(std::size_t start, std::size_t length) {
  std::size_t more = 0;
  for (std::size_t left = length >> 7; left != 0; left >>= 7) ++more;
  makeRoom(more);
  std::memmove(begin_ + start + more, begin_ + start, length);
  at_ = begin_ + start - 1;
  putLongVarint(length);
  at_ += length;
}

// --- WireReader ----------------------------------------------------------------------------------

const std::uint8_t* WireReader::skipLongVarint(const std::uint8_t* at, const std::uint8_t* end) {
  const std::uint8_t* last = at;
  while (last != end && *last >= 0x80) ++last;
  // A number that ends in a zero byte is longer than needed. The fifth byte has the highest four of
  // 32 bits.
  if (last == end || *last == 0 || last - at > 4 || (last - at == 4 && *last > 0x0f))
    return nullptr;
  return last + 1;
}

std::uint32_t WireReader::takeLongVarint() {
  if (skipLongVarint(at_, end_) != nullptr) return takeKnownVarint();
  fail();
  return 0;
}

}  // namespace FiltersCommon

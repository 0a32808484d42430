#include "wire_scanner.h"

#include <google/protobuf/io/coded_stream.h>

#include <algorithm>
#include <limits>

namespace FiltersInspect {
namespace {

constexpr std::size_t kMaxVarint = 10;
// The largest tags and lengths that all releases of the runtime accept.
constexpr std::size_t kMaxVarint32 = 5;
constexpr std::uint64_t kMaxLength = std::numeric_limits<std::int32_t>::max() - 16;

}  // namespace

bool WireScanner::readVarint(std::uint64_t* value, bool* plain) {
  *value = 0;
  std::uint64_t lost = 0;
  for (std::size_t i = 0; i < kMaxVarint && position_ + i < end_; ++i) {
    const auto byte = static_cast<std::uint8_t>(bytes_[position_ + i]);
    const std::uint64_t part = byte & 127;
    *value |= part << (7 * i);
    if (7 * i + 7 > 64) lost = part >> (64 - 7 * i);
    if (byte > 127) continue;
    position_ += i + 1;
    const std::size_t least = google::protobuf::io::CodedOutputStream::VarintSize64(*value);
    if (lost != 0 || least != i + 1) *plain = false;
    return true;
  }
  return false;
}

bool WireScanner::readTag(WireField* field) {
  const std::size_t begin = position_;
  std::uint64_t tag = 0;
  if (!readVarint(&tag, &field->plain)) return false;
  if (!lenient_ && position_ - begin > kMaxVarint32) return false;
  if (tag > std::numeric_limits<std::uint32_t>::max()) field->plain = false;
  field->number = static_cast<std::uint32_t>(tag) >> 3;
  field->wire_type = static_cast<std::uint32_t>(tag) & 7;
  return field->number != 0;
}

bool WireScanner::readLength(std::size_t* length, bool* plain) {
  const std::size_t begin = position_;
  std::uint64_t value = 0;
  if (!readVarint(&value, plain)) return false;
  if (!lenient_ && (position_ - begin > kMaxVarint32 || value > kMaxLength)) return false;
  *length = static_cast<std::uint32_t>(value);
  return true;
}

bool WireScanner::skip(std::size_t count) {
  if (count > end_ - position_) return false;
  position_ += count;
  return true;
}

// The messages of the library have no groups, so a group is an unknown field. Groups may be nested.
bool WireScanner::skipGroup(std::uint32_t number) {
  std::uint32_t open[kDepth];
  int count = 0;
  WireField inner{number, kGroupStart};
  for (;;) {
    if (inner.wire_type == kGroupStart) {
      if (count == std::min(depth_, kDepth)) return false;
      open[count++] = inner.number;
    } else if (inner.wire_type == kGroupEnd) {
      if (open[--count] != inner.number) return false;
      if (count == 0) return true;
    } else if (!readValue(&inner)) {
      return false;
    }
    if (!readTag(&inner)) return false;
  }
}

bool WireScanner::readValue(WireField* field) {
  field->value = position_;
  switch (field->wire_type) {
    case kVarint:
      return readVarint(&field->varint, &field->plain);
    case kFixed64:
      return skip(8);
    case kFixed32:
      return skip(4);
    case kGroupStart:
      return skipGroup(field->number);
    case kLength: {
      std::size_t length = 0;
      field->value = end_;
      if (!readLength(&length, &field->plain)) return false;
      field->value = position_;
      if (skip(length)) return true;
      if (lenient_) position_ = end_;
      field->plain = false;
      return lenient_;
    }
    default:
      return false;
  }
}

bool WireScanner::next(WireField* field) {
  if (broken_ || position_ == end_) return false;
  *field = WireField();
  field->plain = true;
  field->begin = position_;
  if (readTag(field) && readValue(field)) {
    field->end = position_;
    return true;
  }
  // The field breaks off, but the runtime has kept the part of it that could be read.
  broken_ = true;
  field->end = end_;
  position_ = field->begin;
  return field->number != 0 && field->wire_type == kLength;
}

}  // namespace FiltersInspect

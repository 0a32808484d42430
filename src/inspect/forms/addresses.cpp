#include "addresses.h"

#include <arpa/inet.h>

#include <algorithm>

#include "report/hex.h"

namespace FiltersInspect {
namespace {

bool isOne(const AddressBytes& bytes, unsigned bit) {
  return (bytes[bit / 8] >> (7 - bit % 8) & 1) != 0;
}

}  // namespace

unsigned leadingOnes(const AddressBytes& bytes, std::size_t size) {
  unsigned length = 0;
  while (length < 8 * size && bytes[length / 8] == 0xff) length += 8;
  while (length < 8 * size && isOne(bytes, length)) ++length;
  return length;
}

unsigned bitsToLastOne(const AddressBytes& bytes, std::size_t size) {
  auto length = static_cast<unsigned>(8 * size);
  while (length > 0 && bytes[length / 8 - 1] == 0) length -= 8;
  while (length > 0 && !isOne(bytes, length - 1)) --length;
  return length;
}

AddressBytes prefixMask(unsigned length) {
  AddressBytes mask = {};
  std::fill_n(mask.begin(), length / 8, static_cast<unsigned char>(0xff));
  if (length % 8 != 0) mask[length / 8] = static_cast<unsigned char>(0xff00 >> length % 8);
  return mask;
}

std::optional<AddressBytes> parseAddress(ValueForm form, std::string_view text) {
  AddressBytes bytes = {};
  if (form == ValueForm::kMac) {
    if (text.size() != sizeof "00:00:00:00:00:00" - 1) return std::nullopt;
    for (std::size_t i = 0; i < sizeOf(form); ++i) {
      const char* digits = &text[3 * i];
      const auto byte = parseHexByte(digits);
      if (!byte || (i != 0 && digits[-1] != ':')) return std::nullopt;
      bytes[i] = *byte;
    }
    return bytes;
  }
  char copy[INET6_ADDRSTRLEN] = {};
  if (text.size() >= sizeof copy || text.find('\0') != text.npos) return std::nullopt;
  text.copy(copy, text.size());
  if (inet_pton(form == ValueForm::kIPv4 ? AF_INET : AF_INET6, copy, bytes.data()) != 1) {
    return std::nullopt;
  }
  return bytes;
}

void appendAddress(ValueForm form, const AddressBytes& bytes, std::string* out) {
  char text[INET6_ADDRSTRLEN] = {};
  if (form == ValueForm::kMac) {
    char* end = text;
    for (std::size_t i = 0; i < sizeOf(form); ++i) {
      end = writeHexByte(bytes[i], end);
      *end++ = ':';
    }
    out->append(text, end - 1);
    return;
  }
  inet_ntop(form == ValueForm::kIPv4 ? AF_INET : AF_INET6, bytes.data(), text, sizeof text);
  *out += text;
}

}  // namespace FiltersInspect

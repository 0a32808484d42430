#include "masked.h"

#include "report/hex.h"
#include "shared/arena.h"

namespace FiltersInspect {
namespace {

std::uint32_t portIn(const AddressBytes& bytes) { return std::uint32_t{bytes[0]} << 8 | bytes[1]; }

AddressBytes bytesOf(std::uint32_t port) {
  return {static_cast<unsigned char>(port >> 8), static_cast<unsigned char>(port)};
}

AddressBytes common(const AddressBytes& a, const AddressBytes& b) {
  AddressBytes bytes;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<unsigned char>(a[i] & b[i]);
  }
  return bytes;
}

bool isPrefixMask(const AddressBytes& mask, std::size_t size) {
  return leadingOnes(mask, size) == bitsToLastOne(mask, size);
}

std::string maskText(ValueForm form, const AddressBytes& mask) {
  std::string text;
  if (form == ValueForm::kPortMask) {
    appendHexNumber(portIn(mask), 1, &text);
  } else {
    appendAddress(form, mask, &text);
  }
  return text;
}

}  // namespace

AddressBytes Masked::taken() const { return common(value, mask); }

bool Masked::isOf(unsigned char first, unsigned length) const {
  const AddressBytes prefix = prefixMask(length);
  return common(mask, prefix) == prefix && common(value, prefix) == AddressBytes{first};
}

bool Masked::hasHole() const {
  if (isPrefixMask(mask, size)) return false;
  if (form == ValueForm::kMac) {
    AddressBytes rest = mask;
    rest[0] = static_cast<unsigned char>(mask[0] & ~3u);
    if (rest == AddressBytes()) return false;
    rest[0] = static_cast<unsigned char>(mask[0] | 3u);
    return !isPrefixMask(rest, size);
  }
  static constexpr AddressBytes kIdentifier = {0,   0,   0,   0,   0,   0,   0,   0,
                                               255, 255, 255, 255, 255, 255, 255, 255};
  return form != ValueForm::kIPv6 || mask != kIdentifier;
}

unsigned Masked::lengthForAll() const {
  if (form == ValueForm::kMac) return bits();
  const unsigned length = bitsToLastOne(value, size);
  unsigned unit = 1;
  if (form == ValueForm::kIPv4 && length <= 24) unit = 8;
  if (form == ValueForm::kIPv6 && length <= 64) unit = 16;
  return (length + unit - 1) / unit * unit;
}

// If the complement of the mask is a prefix (a wildcard mask), the complement was meant. Otherwise
// a mask without the hole was meant. If the value is the lowest address of a larger block, the mask
// of that block is named first.
std::string Masked::meantMasks() const {
  AddressBytes wildcard = prefixMask(bits());
  for (std::size_t i = 0; i < size; ++i) wildcard[i] = static_cast<unsigned char>(~mask[i]);
  if (isPrefixMask(wildcard, size)) return maskText(form, wildcard);
  const unsigned filled = bitsToLastOne(mask, size);
  const unsigned block = bitsToLastOne(taken(), size);
  const std::string text = maskText(form, prefixMask(filled));
  if (block == 0 || block < leadingOnes(mask, size) || block >= filled) return text;
  return maskText(form, prefixMask(block)) + " or " + text;
}

bool hasMask(const FormRow& row) {
  return row.form == ValueForm::kPortMask || (row.fields[1] && isAddress(row.form));
}

Masked maskedIn(const MatchPB& match, const FormRow& row) {
  if (row.form == ValueForm::kPortMask) {
    return {row.form, 2, bytesOf(numberIn(match, row.fields[0])),
            bytesOf(numberIn(match, row.fields[1]))};
  }
  return {row.form, sizeOf(row.form), addressIn(match, row.fields[0], row.form),
          addressIn(match, row.fields[1], row.form)};
}

std::string maskedText(const FormRow& row, const AddressBytes& value, const AddressBytes& mask) {
  FiltersCommon::MessageArena arena;
  auto* match = arena.make<MatchPB>();
  if (row.form == ValueForm::kPortMask) {
    setNumber(match, row.fields[0], portIn(value));
    setNumber(match, row.fields[1], portIn(mask));
  } else {
    setAddress(match, row.fields[0], row.form, value);
    setAddress(match, row.fields[1], row.form, mask);
  }
  return valueText(row, *match);
}

}  // namespace FiltersInspect

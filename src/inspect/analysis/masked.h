#ifndef FILTER_INSPECT_SRC_ANALYSIS_MASKED_H_
#define FILTER_INSPECT_SRC_ANALYSIS_MASKED_H_

// Addresses and ports under masks: which packets they take, and what the sender probably meant.

#include <cstddef>
#include <string>

#include "forms/value_text.h"

namespace FiltersInspect {

struct Masked {
  ValueForm form;
  std::size_t size;  // in bytes
  AddressBytes value, mask;

  unsigned bits() const { return static_cast<unsigned>(8 * size); }
  // The value with all bits outside of the mask cleared.
  AddressBytes taken() const;
  bool isOne() const { return leadingOnes(mask, size) == bits(); }
  // True if every address that the mask lets through begins with the first `length` bits of
  // `first`.
  bool isOf(unsigned char first, unsigned length) const;
  // True if the mask has a hole (a 0 before a 1) and is not one of the usual masks with holes. Two
  // kinds of these are usual: masks of the group bit and the local bit of MAC addresses (IEEE 802),
  // and masks of IPv6 interface identifiers after any prefix.
  bool hasHole() const;
  // The length of the shortest prefix whose mask has a 1 for every 1 of the value. Only lengths
  // that are usual count.
  unsigned lengthForAll() const;
  // The masks that the sender probably meant by a mask with a hole: "255.255.255.240 or
  // 255.255.255.248".
  std::string meantMasks() const;
};

bool hasMask(const FormRow& row);
// The value and the mask of a match. hasMask() must be true for the row.
Masked maskedIn(const MatchPB& match, const FormRow& row);
// The text of the match with this value and mask, but without the name of the match.
std::string maskedText(const FormRow& row, const AddressBytes& value, const AddressBytes& mask);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_MASKED_H_

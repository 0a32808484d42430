#ifndef FILTER_INSPECT_SRC_ANALYSIS_MASKED_H_
#define FILTER_INSPECT_SRC_ANALYSIS_MASKED_H_

// Addresses and ports under masks: what they take, and what may have been meant.

#include <cstddef>
#include <string>

#include "forms/value_text.h"

namespace FiltersInspect {

struct Masked {
  ValueForm form;
  std::size_t size;  // in bytes
  AddressBytes value, mask;

  unsigned bits() const { return static_cast<unsigned>(8 * size); }
  // The bits of the value that count.
  AddressBytes taken() const;
  bool isOne() const { return leadingOnes(mask, size) == bits(); }
  // Whether all that is taken begins with so many bits of the address that this byte begins, and
  // goes on in zeros.
  bool isOf(unsigned char first, unsigned length) const;
  // Whether a 0 stands in front of a 1 of the mask, and that is not usual: the group bit and the
  // local bit of MAC addresses count or not by themselves (IEEE 802), and interface identifiers of
  // IPv6 are asked for under any prefix.
  bool hasHole() const;
  // The length of a mask under which all of the value counts, as people write it.
  unsigned lengthForAll() const;
  // What may have been meant by a mask with a hole: "255.255.255.240 or 255.255.255.248".
  std::string meantMasks() const;
};

bool hasMask(const FormRow& row);
// The value and mask of such a row.
Masked maskedIn(const MatchPB& match, const FormRow& row);
// The match with this value and mask, as text without its name.
std::string maskedText(const FormRow& row, const AddressBytes& value, const AddressBytes& mask);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_MASKED_H_

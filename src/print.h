#ifndef FILTER_COMMON_SRC_PRINT_H_
#define FILTER_COMMON_SRC_PRINT_H_

// Texts that others make, in buffers on the stack.

#include <limid/limid.h>
#include <net/ethernet.h>

#include <cstddef>

namespace FiltersCommon {

// The name of an interface as the platform gives it, in a buffer of the given size; empty when the
// platform gives none.
template <std::size_t Size>
struct InterfaceName {
  explicit InterfaceName(limid_t limid) { limid_to_intfname(limid, text, Size); }
  char text[Size + 1] = {};  // ends in a zero even if the platform fills all it is offered
};

// A MAC address as ether_ntoa_r() writes it, at a tenth of its cost: in lower case, and without
// leading zeros.
struct MacText {
  explicit MacText(const ether_addr& mac) {
    char* end = text;
    for (const unsigned byte : mac.ether_addr_octet) {
      if (byte > 0xf) *end++ = "0123456789abcdef"[byte >> 4];
      *end++ = "0123456789abcdef"[byte & 0xf];
      *end++ = ':';
    }
    end[-1] = '\0';
  }
  char text[sizeof "ff:ff:ff:ff:ff:ff"];
};

}  // namespace FiltersCommon

#endif  // FILTER_COMMON_SRC_PRINT_H_

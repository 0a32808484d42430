#ifndef FILTER_COMMON_SRC_PRINT_H_
#define FILTER_COMMON_SRC_PRINT_H_

// Names of interfaces and MAC addresses as text, in buffers on the stack.

#include <limid/limid.h>
#include <net/ethernet.h>

#include <cstddef>

namespace FiltersCommon {

// The name that the platform gives an interface, in a buffer of the given size. The text is empty
// if the platform gives no name.
template <std::size_t Size>
struct InterfaceName {
  explicit InterfaceName(limid_t limid) { limid_to_intfname(limid, text, Size); }
  char text[Size + 1] = {};  // ends in a zero even if the platform fills `Size` bytes
};

// A MAC address in the form of ether_ntoa_r(): lower case, without leading zeros. This takes a
// tenth of the time of that function.
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

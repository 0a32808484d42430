#ifndef FILTER_COMMON_SRC_PRINT_H_
#define FILTER_COMMON_SRC_PRINT_H_

// Texts that others make, in buffers on the stack.

#include <limid/limid.h>
#include <net/ethernet.h>
#include <netinet/ether.h>

#include <cstddef>

namespace FiltersCommon {

// The name of an interface as the platform gives it, in a buffer of the given size; empty when the
// platform gives none.
template <std::size_t Size>
struct InterfaceName {
  explicit InterfaceName(limid_t limid) { limid_to_intfname(limid, text, Size); }
  char text[Size + 1] = {};  // ends in a zero even if the platform fills all it is offered
};

// A MAC address as the C library writes it; null when it cannot.
struct MacText {
  explicit MacText(const ether_addr& mac) : text(ether_ntoa_r(&mac, buffer)) {}
  char buffer[18] = "00:00:00:00:00:00";
  const char* text;
};

}  // namespace FiltersCommon

#endif  // FILTER_COMMON_SRC_PRINT_H_

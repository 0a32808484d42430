#ifndef FILTER_INSPECT_SRC_FORMS_INTERFACE_IDS_H_
#define FILTER_INSPECT_SRC_FORMS_INTERFACE_IDS_H_

// Interface ids (limids) as numbers. An id is opaque and belongs to the platform. Text and JSON
// write its four bytes as one number, in the byte order of this machine.

#include <cstdint>
#include <string>

#include "form_rows.h"

namespace FiltersInspect {

// The name that the platform gives an interface. Each character that is not printable ASCII becomes
// '?'.
std::string interfaceName(std::uint32_t limid);

// Converts between an interface id and the number in the field of a row's message. They are the
// same number except for MPLS ports, whose fields hold interface indexes. An id that the platform
// cannot convert gives 0.
std::uint32_t limidToField(const FormRow& row, std::uint32_t limid);
std::uint32_t limidFromField(const FormRow& row, std::uint32_t value);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_FORMS_INTERFACE_IDS_H_

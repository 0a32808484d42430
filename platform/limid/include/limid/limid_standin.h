/* The functions that the stand-in has in addition to <limid/limid.h>: they make ids.
 *
 * Tests, examples and tools include this header. A library that must also run on the device does
 * not include it: there, ids come from the device's configuration.
 *
 * How this stand-in packs an id (nothing outside it may rely on it):
 *
 *   bits 31-24   type: 1 Ethernet, limid_type_lag, limid_type_mpls_vpws, limid_type_bridgedomain;
 *                an id with any other type, 0 among them, is valid but of no known kind
 *   bits 23-0    number of an Ethernet port, a LAG or a VPWS
 *   bits 23-16   type of a bridge domain, bits 15-0 its number
 *
 * The interface index of an id is the id plus a constant, modulo 2^32. So no id is its own index.
 * If the index of a port is used as an id, that id does not name a port.
 *
 * Names: "eth-3", "lag-1", "vpws-7", "vpls-9" for a bridge domain of type VPLS, "bd-9" for one of
 * any other type, and "limid-" with the id in eight hexadecimal digits for every other id. Every
 * name fits into 16 bytes.
 *
 * Valid C11 and C++. */
#ifndef LIMID_LIMID_STANDIN_H_
#define LIMID_LIMID_STANDIN_H_

#include <stdint.h>

#include "limid/limid.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The id of the Ethernet port, LAG or VPWS with the given number. */
LIMID_API limid_t limid_make_ethernet(uint16_t number);
LIMID_API limid_t limid_make_lag(uint16_t number);
LIMID_API limid_t limid_make_mpls_vpws(uint16_t number);

/* The id of the bridge domain with the given type and number. The id has one byte for the type.
 * limid_to_bridgedomain_components returns the types 0 to 254 (limid_bridgedomain_type_vpls is one
 * of them) unchanged, and any larger type as 255. A type other than VPLS therefore never turns into
 * VPLS. The number is returned unchanged. */
LIMID_API limid_t limid_make_bridgedomain(uint32_t type, uint16_t id);

#ifdef __cplusplus
}
#endif

#endif /* LIMID_LIMID_STANDIN_H_ */

/* Interface ids of another device. They differ from the ids of the stand-in: an id is a struct, so
 * C and C++ have no operators for it; it is aligned to one byte; its types have other numbers.
 *
 * Valid C11 and C++. */
#ifndef DEVICE_LIMID_LIMID_H_
#define DEVICE_LIMID_LIMID_H_

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Byte 0 is the type of the id. Byte 1 is the type of a bridge domain, or 0 for other ids. Bytes 2
 * and 3 are the number, high byte first. */
typedef struct limid_t {
  uint8_t bytes[4];
} limid_t;

static const uint8_t limid_type_ethernet = 0x11;
static const uint8_t limid_type_lag = 0x22;
static const uint8_t limid_type_mpls_vpws = 0x33;
static const uint8_t limid_type_bridgedomain = 0x44;
static const uint32_t limid_bridgedomain_type_vpls = 0x55;

int limid_is_from_type(limid_t limid, uint8_t type);
int limid_is_from_type_ethernet(limid_t limid);
int limid_to_bridgedomain_components(limid_t limid, uint32_t* type, uint32_t* id);
int limid_compare(limid_t a, limid_t b);
int limid_to_ifindex(limid_t limid, uint32_t* ifindex);
int limid_from_ifindex(limid_t* limid, uint32_t ifindex);
int limid_to_intfname(limid_t limid, char* name, size_t size);

/* Makes an id; for tests and benchmarks. */
limid_t limid_make(uint8_t type, uint8_t bridge_domain_type, uint16_t number);

#ifdef __cplusplus
}
#endif

#endif /* DEVICE_LIMID_LIMID_H_ */

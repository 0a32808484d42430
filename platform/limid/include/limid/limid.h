/* Logical interface ids: one 32-bit number names a port, a LAG, an MPLS service or a bridge domain.
 *
 * A limid_t is opaque. Keep it by value, compare its four bytes and pass it to the functions below.
 * Never take it apart, and never mistake it for an interface index, which is a different number for
 * the same interface.
 *
 * Every build of this library has the functions in this header, on the device too. The stand-in's
 * functions that make ids are in <limid/limid_standin.h>.
 *
 * Results: a predicate returns non-zero for yes and 0 for no. Every other function that returns
 * int, except limid_compare, returns 0 on success and non-zero on failure. On failure it writes
 * nothing.
 *
 * Threads: the functions keep no state and may be called from any thread at any time.
 *
 * Valid C11 and C++. */
#ifndef LIMID_LIMID_H_
#define LIMID_LIMID_H_

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define LIMID_API __attribute__((visibility("default")))
#else
#define LIMID_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* An id. Every one of the 2^32 values may be passed to every function. For a value of unknown type,
 * limid_is_from_type() returns 0 for every type below. */
typedef uint32_t limid_t;

/* Types of id, for limid_is_from_type. Ethernet ports come in several types on some devices, so
 * they have a predicate instead of a constant. */
static const uint8_t limid_type_lag = 2;
static const uint8_t limid_type_mpls_vpws = 3;
static const uint8_t limid_type_bridgedomain = 4;

/* The only type of bridge domain that has a name: the domain of a VPLS service. */
static const uint32_t limid_bridgedomain_type_vpls = 5;

/* Non-zero if `limid` has the given type. */
LIMID_API int limid_is_from_type(limid_t limid, uint8_t type);

/* Non-zero if `limid` is an Ethernet port. */
LIMID_API int limid_is_from_type_ethernet(limid_t limid);

/* Splits the id of a bridge domain into the domain's type, such as limid_bridgedomain_type_vpls,
 * and its number among the domains. Fails if `limid` is not a bridge domain, or if `type` or `id`
 * is null. */
LIMID_API int limid_to_bridgedomain_components(limid_t limid, uint32_t* type, uint32_t* id);

/* 0 when the ids are equal, less than 0 when `a` comes before `b`, more than 0 when it comes after.
 * The order is the same on every machine and has no meaning beyond that. */
LIMID_API int limid_compare(limid_t a, limid_t b);

/* Stores the interface index of `limid` in `*ifindex`. Different ids have different indexes. Fails
 * when `ifindex` is null. */
LIMID_API int limid_to_ifindex(limid_t limid, uint32_t* ifindex);

/* Stores in `*limid` the id whose interface index is `ifindex`. Fails when `limid` is null. */
LIMID_API int limid_from_ifindex(limid_t* limid, uint32_t ifindex);

/* Writes the name of the interface for operators, such as "eth-3", and a terminating zero, into the
 * `size` bytes at `name`. Every id has a name, and every name fits into 64 bytes. Fails when `name`
 * is null or when `size` is too small for the name and its zero. */
LIMID_API int limid_to_intfname(limid_t limid, char* name, size_t size);

#ifdef __cplusplus
}
#endif

#endif /* LIMID_LIMID_H_ */

#include "limid/limid.h"

#include <stdio.h>
#include <string.h>

limid_t limid_make(uint8_t type, uint8_t bridge_domain_type, uint16_t number) {
  const limid_t limid = {{type, bridge_domain_type, (uint8_t)(number >> 8), (uint8_t)number}};
  return limid;
}

static unsigned number_of(limid_t limid) { return limid.bytes[2] * 256u + limid.bytes[3]; }

int limid_is_from_type(limid_t limid, uint8_t type) { return limid.bytes[0] == type; }

int limid_is_from_type_ethernet(limid_t limid) { return limid.bytes[0] == limid_type_ethernet; }

int limid_to_bridgedomain_components(limid_t limid, uint32_t* type, uint32_t* id) {
  *type = limid.bytes[1];
  *id = number_of(limid);
  return limid.bytes[0] != limid_type_bridgedomain;
}

int limid_compare(limid_t a, limid_t b) { return memcmp(a.bytes, b.bytes, sizeof a.bytes); }

/* An interface index is the number whose bytes are those of the id, read from last to first. */
int limid_to_ifindex(limid_t limid, uint32_t* ifindex) {
  *ifindex = limid.bytes[3] * 0x1000000u + limid.bytes[2] * 0x10000u + limid.bytes[1] * 0x100u +
             limid.bytes[0];
  return 0;
}

int limid_from_ifindex(limid_t* limid, uint32_t ifindex) {
  for (int i = 0; i < 4; ++i) limid->bytes[i] = (uint8_t)(ifindex >> 8 * i);
  return 0;
}

int limid_to_intfname(limid_t limid, char* name, size_t size) {
  const char* kind = limid.bytes[0] == limid_type_ethernet ? "ge-0/0/" : "ae";
  return snprintf(name, size, "%s%u", kind, number_of(limid)) >= (int)size;
}

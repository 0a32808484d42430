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
  if (limid.bytes[0] != limid_type_bridgedomain) return -1;
  *type = limid.bytes[1];
  *id = number_of(limid);
  return 0;
}

int limid_compare(limid_t a, limid_t b) { return memcmp(a.bytes, b.bytes, sizeof a.bytes); }

/* An index is the id's bytes from last to first. */
int limid_to_ifindex(limid_t limid, uint32_t* ifindex) {
  *ifindex = (uint32_t)limid.bytes[3] << 24 | (uint32_t)limid.bytes[2] << 16 |
             (uint32_t)limid.bytes[1] << 8 | limid.bytes[0];
  return 0;
}

int limid_from_ifindex(limid_t* limid, uint32_t ifindex) {
  const limid_t found = {{(uint8_t)ifindex, (uint8_t)(ifindex >> 8), (uint8_t)(ifindex >> 16),
                          (uint8_t)(ifindex >> 24)}};
  *limid = found;
  return 0;
}

int limid_to_intfname(limid_t limid, char* name, size_t size) {
  const char* kind = limid.bytes[0] == limid_type_ethernet       ? "ge-0/0/"
                     : limid.bytes[0] == limid_type_lag          ? "ae"
                     : limid.bytes[0] == limid_type_mpls_vpws    ? "pw"
                     : limid.bytes[0] == limid_type_bridgedomain ? "bridge"
                                                                 : "unknown";
  const int length = snprintf(name, size, "%s%u", kind, number_of(limid));
  return length < 0 || (size_t)length >= size;
}

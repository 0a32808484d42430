#include "limid/limid.h"

#include <cinttypes>
#include <cstdio>
#include <cstring>

#include "limid/limid_standin.h"

namespace {

constexpr int kSuccess = 0;
constexpr int kFailure = -1;

constexpr std::uint8_t kTypeEthernet = 1;
constexpr std::uint32_t kLargestBridgedomainType = 255;

// This offset moves the type out of the known range and also changes the number. So tests notice an
// index that is passed in place of an id.
constexpr std::uint32_t kIfindexOffset = 0x400003e8;

// The size of "limid-" or "vpws-" with the widest number, and the terminating zero.
constexpr std::size_t kNameSize = 16;

constexpr limid_t Pack(std::uint8_t type, std::uint32_t number) {
  return static_cast<limid_t>(type) << 24 | number;
}

constexpr std::uint8_t TypeOf(limid_t limid) { return static_cast<std::uint8_t>(limid >> 24); }
constexpr std::uint32_t NumberOf(limid_t limid) { return limid & 0xffffff; }

constexpr std::uint32_t BridgedomainTypeOf(limid_t limid) { return limid >> 16 & 0xff; }
constexpr std::uint32_t BridgedomainNumberOf(limid_t limid) { return limid & 0xffff; }

static_assert(limid_bridgedomain_type_vpls < kLargestBridgedomainType,
              "the VPLS type must fit the byte that an id has for it");

// Returns the length of the name without its zero.
int FormatName(limid_t limid, char (&name)[kNameSize]) {
  const auto numbered = [&name](const char* prefix, std::uint32_t number) {
    return std::snprintf(name, sizeof name, "%s-%" PRIu32, prefix, number);
  };
  switch (TypeOf(limid)) {
    case kTypeEthernet:
      return numbered("eth", NumberOf(limid));
    case limid_type_lag:
      return numbered("lag", NumberOf(limid));
    case limid_type_mpls_vpws:
      return numbered("vpws", NumberOf(limid));
    case limid_type_bridgedomain: {
      const bool vpls = BridgedomainTypeOf(limid) == limid_bridgedomain_type_vpls;
      return numbered(vpls ? "vpls" : "bd", BridgedomainNumberOf(limid));
    }
    default:
      return std::snprintf(name, sizeof name, "limid-%08" PRIx32, limid);
  }
}

}  // namespace

int limid_is_from_type(limid_t limid, uint8_t type) { return TypeOf(limid) == type; }

int limid_is_from_type_ethernet(limid_t limid) { return TypeOf(limid) == kTypeEthernet; }

int limid_to_bridgedomain_components(limid_t limid, uint32_t* type, uint32_t* id) {
  if (TypeOf(limid) != limid_type_bridgedomain || type == nullptr || id == nullptr) {
    return kFailure;
  }
  *type = BridgedomainTypeOf(limid);
  *id = BridgedomainNumberOf(limid);
  return kSuccess;
}

int limid_compare(limid_t a, limid_t b) { return (a > b) - (a < b); }

int limid_to_ifindex(limid_t limid, uint32_t* ifindex) {
  if (ifindex == nullptr) {
    return kFailure;
  }
  *ifindex = limid + kIfindexOffset;
  return kSuccess;
}

int limid_from_ifindex(limid_t* limid, uint32_t ifindex) {
  if (limid == nullptr) {
    return kFailure;
  }
  *limid = ifindex - kIfindexOffset;
  return kSuccess;
}

int limid_to_intfname(limid_t limid, char* name, size_t size) {
  if (name == nullptr) {
    return kFailure;
  }
  char text[kNameSize];
  const auto needed = static_cast<std::size_t>(FormatName(limid, text)) + 1;
  if (needed > size) {
    return kFailure;
  }
  std::memcpy(name, text, needed);
  return kSuccess;
}

limid_t limid_make_ethernet(uint16_t number) { return Pack(kTypeEthernet, number); }

limid_t limid_make_lag(uint16_t number) { return Pack(limid_type_lag, number); }

limid_t limid_make_mpls_vpws(uint16_t number) { return Pack(limid_type_mpls_vpws, number); }

limid_t limid_make_bridgedomain(uint32_t type, uint16_t id) {
  const std::uint32_t kept = type < kLargestBridgedomainType ? type : kLargestBridgedomainType;
  return Pack(limid_type_bridgedomain, kept << 16 | id);
}

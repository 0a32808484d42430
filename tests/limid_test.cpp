// The stand-in for interface ids.

#include "limid/limid.h"

#include <gtest/gtest.h>

#include <string>

#include "limid/limid_standin.h"

namespace {

constexpr std::uint32_t kVpls = limid_bridgedomain_type_vpls;
enum Kind { Other, Ethernet, Lag, Vpws, BridgeDomain };

const struct {
  limid_t limid;
  int kind;
  std::string name;
} kSamples[] = {
    {limid_make_ethernet(65535), Ethernet, "eth-65535"},
    {limid_make_lag(1), Lag, "lag-1"},
    {limid_make_mpls_vpws(65535), Vpws, "vpws-65535"},
    {limid_make_bridgedomain(kVpls, 65535), BridgeDomain, "vpls-65535"},
    {limid_make_bridgedomain(0, 9), BridgeDomain, "bd-9"},
    {limid_make_bridgedomain(kVpls + 256, 9), BridgeDomain, "bd-9"},
    {0, Other, "limid-00000000"},
    {0xffffffff, Other, "limid-ffffffff"},
};

int kindOf(limid_t limid) {
  if (limid_is_from_type_ethernet(limid)) return Ethernet;
  if (limid_is_from_type(limid, limid_type_lag)) return Lag;
  if (limid_is_from_type(limid, limid_type_mpls_vpws)) return Vpws;
  return limid_is_from_type(limid, limid_type_bridgedomain) ? BridgeDomain : Other;
}

TEST(Limid, HasAKindANameAndAnIndexThatIsNoPort) {
  for (const auto& [limid, kind, name] : kSamples) {
    EXPECT_EQ(kindOf(limid), kind) << name;
    std::string buffer(64, '#');
    EXPECT_NE(limid_to_intfname(limid, buffer.data(), name.size()), 0);
    EXPECT_EQ(buffer, std::string(64, '#')) << name;
    EXPECT_EQ(limid_to_intfname(limid, buffer.data(), name.size() + 1), 0);
    EXPECT_EQ(buffer, name + '\0' + std::string(63 - name.size(), '#'));
    limid_t index = 0, back = 0;
    EXPECT_TRUE(limid_to_ifindex(limid, &index) == 0 && limid_from_ifindex(&back, index) == 0);
    EXPECT_TRUE(back == limid && kindOf(index) == Other) << name;
  }
}

TEST(Limid, SplitsBridgeDomainsAlone) {
  std::uint32_t type = 77, number = 78;
  EXPECT_NE(limid_to_bridgedomain_components(limid_make_lag(1), &type, &number), 0);
  EXPECT_TRUE(type == 77 && number == 78);
  for (const std::uint32_t made : {0u, kVpls, 254u, 255u, kVpls + 256, UINT32_MAX}) {
    const limid_t domain = limid_make_bridgedomain(made, 65535);
    EXPECT_EQ(limid_to_bridgedomain_components(domain, &type, &number), 0);
    EXPECT_TRUE(type == std::min(made, 255u) && number == 65535) << made;
  }
}

TEST(Limid, ComparesAsUnsignedNumbers) {
  EXPECT_TRUE(limid_compare(1, 0x80000000) < 0 && limid_compare(0x80000000, 1) > 0);
  EXPECT_EQ(limid_compare(7, 7), 0);
}

}  // namespace

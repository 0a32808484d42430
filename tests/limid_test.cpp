#include "limid/limid.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "limid/limid_standin.h"

namespace {

static_assert(sizeof(limid_t) == 4 && std::is_trivially_copyable_v<limid_t>);
static_assert(sizeof limid_type_lag == 1 && sizeof limid_type_mpls_vpws == 1 &&
              sizeof limid_type_bridgedomain == 1 && sizeof limid_bridgedomain_type_vpls == 4);

constexpr std::uint32_t kVpls = limid_bridgedomain_type_vpls;
constexpr char kUntouched = '#';

enum class Kind { kOther, kEthernet, kLag, kVpws, kBridgedomain };

struct Sample {
  limid_t limid;
  Kind kind;
  std::string name;
};

std::vector<Sample> Samples() {
  return {
      {limid_make_ethernet(0), Kind::kEthernet, "eth-0"},
      {limid_make_ethernet(3), Kind::kEthernet, "eth-3"},
      {limid_make_ethernet(65535), Kind::kEthernet, "eth-65535"},
      {limid_make_lag(1), Kind::kLag, "lag-1"},
      {limid_make_lag(65535), Kind::kLag, "lag-65535"},
      {limid_make_mpls_vpws(7), Kind::kVpws, "vpws-7"},
      {limid_make_mpls_vpws(65535), Kind::kVpws, "vpws-65535"},
      {limid_make_bridgedomain(kVpls, 9), Kind::kBridgedomain, "vpls-9"},
      {limid_make_bridgedomain(kVpls, 65535), Kind::kBridgedomain, "vpls-65535"},
      {limid_make_bridgedomain(0, 9), Kind::kBridgedomain, "bd-9"},
      {limid_make_bridgedomain(kVpls + 256, 65535), Kind::kBridgedomain, "bd-65535"},
      {0, Kind::kOther, "limid-00000000"},
      {0xffffffff, Kind::kOther, "limid-ffffffff"},
  };
}

std::vector<limid_t> AnyIds() {
  std::vector<limid_t> ids = {0, 1, 0x7fffffff, 0x80000000, 0xffffffff};
  for (const Sample& sample : Samples()) {
    ids.push_back(sample.limid);
  }
  std::mt19937 random(1);
  for (int i = 0; i < 100000; ++i) {
    ids.push_back(static_cast<limid_t>(random()));
  }
  return ids;
}

TEST(LimidTest, AnIdIsOfItsOwnTypeAlone) {
  for (const auto& [limid, kind, name] : Samples()) {
    SCOPED_TRACE(name);
    EXPECT_EQ(limid_is_from_type_ethernet(limid) != 0, kind == Kind::kEthernet);
    EXPECT_EQ(limid_is_from_type(limid, limid_type_lag) != 0, kind == Kind::kLag);
    EXPECT_EQ(limid_is_from_type(limid, limid_type_mpls_vpws) != 0, kind == Kind::kVpws);
    EXPECT_EQ(limid_is_from_type(limid, limid_type_bridgedomain) != 0, kind == Kind::kBridgedomain);
  }
}

TEST(LimidTest, NamesFillExactlyTheBytesTheyNeed) {
  for (const Sample& sample : Samples()) {
    SCOPED_TRACE(sample.name);
    std::array<char, 64> buffer;
    const std::size_t needed = sample.name.size() + 1;
    for (std::size_t size = 0; size < needed; ++size) {
      buffer.fill(kUntouched);
      EXPECT_NE(limid_to_intfname(sample.limid, buffer.data(), size), 0);
      EXPECT_THAT(buffer, testing::Each(kUntouched)) << "given " << size << " bytes";
    }
    for (const std::size_t size : {needed, buffer.size()}) {
      buffer.fill(kUntouched);
      ASSERT_EQ(limid_to_intfname(sample.limid, buffer.data(), size), 0);
      EXPECT_EQ(std::string(buffer.data(), needed), sample.name + '\0');
      EXPECT_EQ(buffer[needed], kUntouched);
    }
  }
}

TEST(LimidTest, SixteenBytesHoldTheNameOfAnyId) {
  for (const limid_t limid : AnyIds()) {
    std::array<char, 16> buffer;
    buffer.fill(kUntouched);
    ASSERT_EQ(limid_to_intfname(limid, buffer.data(), buffer.size()), 0) << limid;
    ASSERT_NE(std::memchr(buffer.data(), '\0', buffer.size()), nullptr) << limid;
    ASSERT_GT(std::strlen(buffer.data()), 0U) << limid;
  }
}

TEST(LimidTest, BridgeDomainsKeepTheirNumberAndTheTypesThatFitAByte) {
  const struct {
    std::uint32_t type;
    std::uint32_t kept;
  } cases[] = {{0, 0},
               {1, 1},
               {kVpls, kVpls},
               {254, 254},
               {255, 255},
               {256, 255},
               {kVpls + 256, 255},
               {kVpls + 65536, 255},
               {kVpls << 8, 255},
               {kVpls << 24, 255},
               {UINT32_MAX, 255}};
  for (const auto& [type, kept] : cases) {
    for (const auto number : std::array<std::uint16_t, 3>{0, 9, 65535}) {
      std::uint32_t read_type = 77;
      std::uint32_t read_number = 77777;
      const limid_t limid = limid_make_bridgedomain(type, number);
      ASSERT_EQ(limid_to_bridgedomain_components(limid, &read_type, &read_number), 0);
      EXPECT_EQ(read_type, kept) << type;
      EXPECT_EQ(read_number, number) << type;
      EXPECT_NE(limid_is_from_type(limid, limid_type_bridgedomain), 0) << type;
    }
  }
}

TEST(LimidTest, SplitsNothingButBridgeDomains) {
  for (const Sample& sample : Samples()) {
    if (sample.kind == Kind::kBridgedomain) {
      continue;
    }
    std::uint32_t type = 77;
    std::uint32_t number = 78;
    EXPECT_NE(limid_to_bridgedomain_components(sample.limid, &type, &number), 0) << sample.name;
    EXPECT_EQ(type, 77U) << sample.name;
    EXPECT_EQ(number, 78U) << sample.name;
  }
}

TEST(LimidTest, InterfaceIndexesLeadBackToTheirIdsAndAreNoIds) {
  for (const limid_t value : AnyIds()) {
    std::uint32_t ifindex = value;
    limid_t limid = ~value;
    ASSERT_EQ(limid_to_ifindex(value, &ifindex), 0);
    ASSERT_EQ(limid_from_ifindex(&limid, ifindex), 0);
    ASSERT_EQ(limid, value);
    ASSERT_NE(ifindex, value);

    ASSERT_EQ(limid_from_ifindex(&limid, value), 0);
    ASSERT_EQ(limid_to_ifindex(limid, &ifindex), 0);
    ASSERT_EQ(ifindex, value);
    ASSERT_NE(limid, value);
  }
}

TEST(LimidTest, TheIndexOfAPortTakenForAnIdIsNoPort) {
  for (const Sample& sample : Samples()) {
    if (sample.kind == Kind::kOther) {
      continue;
    }
    std::uint32_t ifindex = 0;
    ASSERT_EQ(limid_to_ifindex(sample.limid, &ifindex), 0);
    EXPECT_EQ(limid_is_from_type_ethernet(ifindex), 0) << sample.name;
    for (const auto type : {limid_type_lag, limid_type_mpls_vpws, limid_type_bridgedomain}) {
      EXPECT_EQ(limid_is_from_type(ifindex, type), 0) << sample.name;
    }
  }
}

TEST(LimidTest, RefusesNullOutputsWithoutWritingTheOther) {
  const limid_t domain = limid_make_bridgedomain(kVpls, 9);
  std::uint32_t output = 77;
  EXPECT_NE(limid_to_bridgedomain_components(domain, nullptr, &output), 0);
  EXPECT_NE(limid_to_bridgedomain_components(domain, &output, nullptr), 0);
  EXPECT_EQ(output, 77U);
  EXPECT_NE(limid_to_ifindex(domain, nullptr), 0);
  EXPECT_NE(limid_from_ifindex(nullptr, 1), 0);
  EXPECT_NE(limid_to_intfname(domain, nullptr, 64), 0);
}

TEST(LimidTest, ComparesAsUnsignedNumbers) {
  const limid_t ascending[] = {0, 1, 0x100, 0x7fffffff, 0x80000000, 0xffffffff};
  for (const limid_t& a : ascending) {
    for (const limid_t& b : ascending) {
      const int order = limid_compare(a, b);
      EXPECT_EQ(order < 0, &a < &b) << a << ' ' << b;
      EXPECT_EQ(order == 0, &a == &b) << a << ' ' << b;
    }
  }
}

}  // namespace

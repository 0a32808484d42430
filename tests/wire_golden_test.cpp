// Objects against bytes written down by hand, in both directions: what other releases and other
// processes send and expect.

#include <filter_common/filter_groups.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

#include "entry_samples.h"

namespace {

using namespace FiltersCommon;
using namespace catalogue;

const policer::Policer kOwn = policerAt(policer::Stage::Ingress);
const policer::Policer kParent = policerAt(policer::Stage::Egress, 301);

std::string withLength(const std::string& bytes) {
  return fromHex(varint(static_cast<std::uint32_t>(bytes.size()))) + bytes;
}

// The bytes that a file describes, up to the end or a closing parenthesis.
std::string assemble(std::istream& in) {
  static const std::map<std::string, std::string> kPlatform = {
      {"@policer", withLength(kOwn.Serialize())},
      {"@parent", withLength(kParent.Serialize())},
      {"@eth-3", fromHex(varint(kEth3))},
      {"@lag-1", fromHex(varint(kLag1))},
      {"@index-of-eth-3", fromHex(varint(interfaceIndex(kEth3)))},
      {"@index-of-vpws-7", fromHex(varint(interfaceIndex(kVpws7)))},
  };
  std::string bytes;
  for (std::string word; in >> word && word != ")";) {
    if (word[0] == '#') {
      std::getline(in, word);
    } else if (word == "(") {
      bytes += withLength(assemble(in));
    } else {
      bytes += word[0] == '@' ? kPlatform.at(word) : fromHex(word);
    }
  }
  return bytes;
}

template <class T>
void expectGolden(const std::string& name, const T& object) {
  std::ifstream file(FILTERS_GOLDEN_DIR "/" + name);
  const std::string bytes = assemble(file);
  ASSERT_NE(bytes, "") << name;
  EXPECT_EQ(toHex(bytesOf(object)), toHex(bytes));
  EXPECT_TRUE(T(bytes) == object);
}

TEST(WireGolden, HoldsAnEntryOfEveryFieldButIPv6) { expectGolden("entry.hex", fullEntry()); }

TEST(WireGolden, HoldsAnEntryOfIPv6AndAPortRange) {
  FiltersEntry entry = entryOf({14, 15, 34}, {}, policer::Stage::Ingress);
  entry.setId(4294967295);
  entry.setMatch(MatchIngressPorts(PortTypes{FILTERS_PORT_TYPE_CPU, port_type_t(7)}));
  entry.setMatch(MatchDSCP(46));
  entry.setAction(redirectTo({kEth3, kLag1}));
  expectGolden("entry_ipv6.hex", entry);
}

TEST(WireGolden, HoldsAGroupOfTwoEntries) {
  FiltersGroup group(65535);
  group.setPriority(300);
  group.setStage(FILTERS_GROUP_STAGE_INGRESS);
  group.setType(FILTERS_GROUP_TYPE_11);
  FiltersEntry entry = entryOf({34}, {1}, policer::Stage::Ingress);
  entry.setId(0);
  EXPECT_EQ(group.insertEntry(entry), FILTERS_OK);
  entry.setId(128);
  entry.setPriority(1);
  entry.setMatches(matchesOf({0}));
  entry.deleteAction(FILTERS_ACTION_DENY);
  entry.setCounter({1, FILTERS_COUNTER_TYPE_OCTETS});
  entry.setPolicerParent(kParent);
  EXPECT_EQ(group.insertEntry(entry), FILTERS_OK);
  expectGolden("group.hex", group);
}

}  // namespace

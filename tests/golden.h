#ifndef FILTER_COMMON_TESTS_GOLDEN_H_
#define FILTER_COMMON_TESTS_GOLDEN_H_

// Reads the files in golden/, which describe bytes.

#include <fstream>

#include "entry_samples.h"

namespace catalogue {

inline std::string withLength(const std::string& bytes) {
  return fromHex(varint(static_cast<std::uint32_t>(bytes.size()))) + bytes;
}

// Reads up to the end or a closing parenthesis.
inline std::string assemble(std::istream& in) {
  static const std::map<std::string, std::string> kPlatform = {
      {"@policer", withLength(policerAt(policer::Stage::Ingress).Serialize())},
      {"@policer-none", withLength(policerAt(policer::Stage::None).Serialize())},
      {"@parent", withLength(policerAt(policer::Stage::Egress, 301).Serialize())},
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

inline std::string golden(const std::string& name) {
  std::ifstream file(FILTERS_GOLDEN_DIR "/" + name);
  EXPECT_TRUE(file) << name;
  return assemble(file);
}

}  // namespace catalogue

#endif  // FILTER_COMMON_TESTS_GOLDEN_H_

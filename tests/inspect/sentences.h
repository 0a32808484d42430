#ifndef FILTER_COMMON_TESTS_INSPECT_SENTENCES_H_
#define FILTER_COMMON_TESTS_INSPECT_SENTENCES_H_

// Compares the sentences of findings with files, character by character.

#include <gtest/gtest.h>

#include <filter_inspect/filter_report.h>

#include <fstream>
#include <iterator>
#include <set>
#include <string>

namespace catalogue {

inline std::string textOfFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file) << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

// Collects sentences, each once. A file in golden/ must have the same sentences in the same order.
// A test run also writes its sentences into its working folder.
class Sentences {
 public:
  void add(const std::string& sentence) { lines_.insert(sentence + '\n'); }
  void add(const FiltersInspect::Report& report) {
    for (const auto& finding : report.findings) {
      add(std::string(nameOf(finding.code)) + ": " + finding.message);
    }
  }
  void expectGolden(const std::string& name) const {
    std::string all;
    for (const std::string& line : lines_) all += line;
    std::ofstream(name, std::ios::binary) << all;
    EXPECT_EQ(all, textOfFile(FILTERS_GOLDEN_DIR "/" + name)) << name;
  }
 private:
  std::set<std::string> lines_;
};

}  // namespace catalogue

#endif  // FILTER_COMMON_TESTS_INSPECT_SENTENCES_H_

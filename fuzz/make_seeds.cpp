// Writes the seeds of fuzzing, a folder of inputs for each harness:
//   make_seeds FOLDER
// The seeds are the same on every machine.

#include <filesystem>
#include <fstream>
#include <random>

#include "../tests/meaning.h"

namespace {

using namespace catalogue;

struct Folder {
  std::filesystem::path path;
  int count = 0;
  void add(const std::string& bytes) {
    std::ofstream(path / std::to_string(count++), std::ios::binary) << bytes;
  }
};

// An entry for each sample.
template <class... T>
void addEntries(testing::Types<T...>, Folder* folder) {
  const auto add = [folder](const auto& samples) {
    for (const auto& object : samples) {
      FiltersEntry entry(7);
      EXPECT_EQ(put(entry, object), FILTERS_OK);
      folder->add(bytesOf(entry));
    }
  };
  (add(samples<T>()), ...);
  folder->add(bytesOf(fullEntry()));
}

void addNoise(Folder* folder) {
  std::mt19937 noise(1);
  for (int i = 0; i < 1024; ++i) {
    std::string bytes(static_cast<std::size_t>(16 << i % 6), '\0');
    for (char& byte : bytes) byte = static_cast<char>(noise());
    folder->add(bytes);
  }
}

}  // namespace

int main(int, char** argv) {
  const std::filesystem::path path = argv[1];
  std::filesystem::remove_all(path);  // an earlier run may have left files
  Folder bytes{path / "bytes"}, calls{path / "calls"}, strictDecode{path / "strict_decode"},
      analysis{path / "analysis"};
  for (const Folder& folder : {bytes, calls, strictDecode, analysis}) {
    std::filesystem::create_directories(folder.path);
  }
  for (Folder* folder : {&bytes, &strictDecode}) {
    addEntries(EveryClass(), folder);
    for (const std::string& group : oddGroups()) folder->add(group);
  }
  addNoise(&calls);
  addNoise(&analysis);
  for (const std::string& group : oddGroups()) analysis.add('\0' + group);
  return testing::UnitTest::GetInstance()->Failed() ? 1 : 0;
}

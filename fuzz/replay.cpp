// Runs a harness over a folder of inputs and over single files, without libFuzzer:
//   replay FOLDER FILE...

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <vector>

#include "fuzz.h"

namespace fs = std::filesystem;

int main(int argc, char** argv) {
  std::set<fs::path> files(argv + 2, argv + argc);
  for (const auto& file : fs::directory_iterator(argv[1])) files.insert(file.path());
  for (const fs::path& file : files) {
    // The name of each input is printed before its run, so the last name belongs to the input that
    // failed.
    std::printf("%s\n", file.c_str());
    std::fflush(stdout);
    std::ifstream in(file, std::ios::binary);
    if (!in) fuzz::fail(__FILE__, __LINE__, "cannot be read");
    const std::vector<char> input((std::istreambuf_iterator<char>(in)), {});
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
  }
  std::printf("%zu inputs\n", files.size());
  return files.empty() ? 1 : 0;
}

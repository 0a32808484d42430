// Runs a harness over files and folders of inputs, without libFuzzer: replay INPUT...

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <vector>

#include "fuzz.h"

namespace fs = std::filesystem;

int main(int argc, char** argv) {
  std::set<fs::path> files;
  for (const fs::path& path : std::vector<fs::path>(argv + 1, argv + argc)) {
    if (fs::is_directory(path)) {
      for (const auto& file : fs::directory_iterator(path)) files.insert(file.path());
    } else {
      files.insert(path);
    }
  }
  for (const fs::path& file : files) {
    // Named before it runs: the last name is that of the input that failed.
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

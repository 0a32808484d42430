// Runs a harness over files and folders of inputs, without libFuzzer: replay INPUT...

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <vector>

#include "fuzz.h"

namespace {

namespace fs = std::filesystem;

int replay(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  const std::vector<char> input((std::istreambuf_iterator<char>(in)),
                                std::istreambuf_iterator<char>());
  if (!in) {
    std::fprintf(stderr, "%s: cannot be read\n", file.c_str());
    std::exit(1);
  }
  // Named before it runs: the last name is that of the input that failed.
  std::printf("%s: %zu bytes\n", file.c_str(), input.size());
  std::fflush(stdout);
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  int inputs = 0;
  for (int i = 1; i < argc; ++i) {
    if (!fs::is_directory(argv[i])) {
      inputs += replay(argv[i]);
      continue;
    }
    std::set<fs::path> files;
    for (const auto& file : fs::directory_iterator(argv[i])) files.insert(file.path());
    for (const fs::path& file : files) inputs += replay(file);
  }
  std::printf("%d inputs\n", inputs);
  return inputs > 0 ? 0 : 1;
}

// The C++ part of interop_test.py. Writes a line for each sample and each file of golden/, with the
// name of the message and its bytes in hexadecimal.

#include <filesystem>
#include <iostream>

#include "../golden.h"

namespace {

using namespace catalogue;

void write(const char* message, const std::string& hex) {
  std::cout << message << ' ' << hex << '\n';
}

template <class... T>
void writeSamples(::testing::Types<T...>) {
  const auto writeAll = [](const auto& row, const char* message) {
    for (const auto& object : row.objects) write(message, wireOf(object));
  };
  (writeAll(rowOf<T>(), std::is_base_of_v<Match, T> ? "MatchPB" : "ActionPB"), ...);
}

}  // namespace

int main() {
  writeSamples(EveryClass());
  for (const auto& file : std::filesystem::directory_iterator(FILTERS_GOLDEN_DIR)) {
    if (file.path().extension() != ".hex") continue;  // skips the files groups.txt and groups.json
    const std::string name = file.path().filename();
    write(name[0] == 'e' ? "FiltersEntryPB" : "FiltersGroupPB", toHex(golden(name)));
  }
  return ::testing::Test::HasFailure() ? 1 : 0;
}

// The C++ side of interop_test.py. Frames go in by standard input and come out by standard output:
// four bytes of length, the most significant first, and as many bytes.
//   peer samples   writes the first sample of each match class, then of each action class
//   peer check     reads such frames and fails unless each gives the sample of its class again
//   peer policers  writes the bytes of a default policer and of one policer a stage
//   peer groups    for each frame, the bytes of a group, writes two: a byte that tells whether the
//                  protocol-buffer library could read all of it followed by what it read, and then
//                  the bytes of the group that was built; an empty frame when building throws

#include <filter_common/filter_groups.h>
#include <filter_common/filter_groups.pb.h>

#include <cstdio>
#include <optional>
#include <stdexcept>
#include <string>

#include "../entry_samples.h"

namespace {

using namespace catalogue;

void write(const std::string& bytes) {
  for (int shift : {24, 16, 8, 0}) std::putchar(static_cast<int>(bytes.size() >> shift & 255));
  std::fwrite(bytes.data(), 1, bytes.size(), stdout);
}

std::optional<std::string> read() {
  std::size_t size = 0;
  for (int i = 0; i < 4; ++i) {
    const int byte = std::getchar();
    if (byte == EOF) return std::nullopt;
    size = size << 8 | static_cast<std::size_t>(byte);
  }
  std::string bytes(size, '\0');
  if (std::fread(bytes.data(), 1, size, stdin) != size) return std::nullopt;
  return bytes;
}

template <class... T>
void writeSamples(const std::tuple<RowMaker<T>...>&) {
  (write(fromHex(wireOf(samples<T>().front()))), ...);
}

template <class T>
bool isSample(const std::string& bytes) {
  T object = samples<T>().back();
  readInto(&object, toHex(bytes));
  return object == samples<T>().front();
}

template <class... T>
int countWrong(const std::tuple<RowMaker<T>...>&) {
  const auto isWrong = [](const char* name, bool right) {
    if (!right) std::fprintf(stderr, "%s is not read as it was written\n", name);
    return right ? 0 : 1;
  };
  return (isWrong(typeid(T).name(), isSample<T>(read().value())) + ...);
}

void readGroup(const std::string& bytes) {
  FiltersGroupPB message;
  const bool whole = message.ParsePartialFromString(bytes);
  message.DiscardUnknownFields();
  write(std::string(1, whole ? '\1' : '\0') + message.SerializePartialAsString());
  try {
    write(bytesOf(FiltersGroup(bytes)));
  } catch (const std::invalid_argument&) {
    write("");
  }
}

}  // namespace

int main(int argc, char** argv) {
  const std::string mode = argc == 2 ? argv[1] : "";
  if (mode == "samples") {
    writeSamples(kMatchRows);
    writeSamples(kActionRows);
  } else if (mode == "check") {
    return countWrong(kMatchRows) + countWrong(kActionRows) == 0 ? 0 : 1;
  } else if (mode == "policers") {
    write(policer::Policer().Serialize());
    for (auto stage : {policer::Stage::Ingress, policer::Stage::Egress, policer::Stage::None}) {
      write(policerAt(stage).Serialize());
    }
  } else if (mode == "groups") {
    while (const auto bytes = read()) readGroup(*bytes);
  } else {
    return 2;
  }
  return 0;
}

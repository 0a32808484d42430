// Writes the seeds of the harnesses of text, JSON and frames, in addition to those of make_seeds:
//   make_form_seeds FOLDER
// The seeds are the same on every machine.

#include <filesystem>
#include <fstream>

#include "../tests/inspect/forms/form_samples.h"
#include "../tests/inspect/traffic/frame_samples.h"

int main(int, char** argv) {
  using namespace catalogue;
  const std::pair<const char*, FormOfGroups> forms[] = {{"text_groups", kText},
                                                        {"json_groups", kJson}};
  for (const auto& [name, form] : forms) {
    const std::filesystem::path path = std::filesystem::path(argv[1]) / name;
    std::filesystem::create_directories(path);
    int count = 0;
    const auto add = [&](const std::string& text) {
      std::ofstream(path / std::to_string(count++), std::ios::binary) << text;
    };
    for (const FiltersGroup& group : goldenGroups()) add(form.write({group}));
    std::mt19937 random(1);
    for (int i = 0; i < 300; ++i) {
      std::string text = form.write({randomGroup(random)});
      add(text);
      text[random() % text.size()] = "0x9 =,:\"{[/-\n"[random() % 13];
      add(text);
    }
  }
  const std::filesystem::path path = std::filesystem::path(argv[1]) / "frames";
  std::filesystem::create_directories(path);
  int count = 0;
  for (const frames::Sample& sample : frames::samples()) {
    const char head[] = {static_cast<char>(sample.link), static_cast<char>(sample.beyond >> 8),
                         static_cast<char>(sample.beyond)};
    std::ofstream(path / std::to_string(count++), std::ios::binary)
        << std::string(head, sizeof head) << frames::bytesOf(sample.frame);
  }
  return testing::UnitTest::GetInstance()->Failed() ? 1 : 0;
}

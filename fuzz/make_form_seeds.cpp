// Writes the seeds of the harnesses of text, JSON, packet sets and frames, in addition to those of
// make_seeds:
//   make_form_seeds FOLDER
// The seeds are the same on every machine.

#include <filter_inspect/filter_analysis.h>

#include <filesystem>
#include <fstream>

#include "../tests/inspect/forms/form_samples.h"
#include "../tests/inspect/traffic/frame_samples.h"

namespace {

// Seeds of policies: text of a policy, and bytes from which the harness makes tiny groups.
void writePolicies(const std::filesystem::path& path) {
  const std::string policy =
      "filter-policy 1\n"
      "group 1 order=highest-priority\n"
      "never permit if tos=9 external_vlan_id={7,8}  # a tie and a reading\n"
      "always deny set_pcp if src_ipv4=10.0.0.0-10.0.3.255 internal_pcp=none\n"
      "never taken\n"
      "accept entries-tie entry 20\n"
      "group 2 order=unspecified\n"
      "always taken if dst_l4_port=1/0x1\n";
  std::filesystem::create_directories(path);
  std::mt19937 random(1);
  for (int i = 0; i < 200; ++i) {
    std::string seed = policy;
    if (i % 2 == 0) {
      for (char& c : seed) c = static_cast<char>(random());
      seed[0] = static_cast<char>(0x80 | random());
    } else if (i > 1) {
      seed[random() % seed.size()] = "0x9 =,{/-\n#"[random() % 11];
    }
    std::ofstream(path / std::to_string(i), std::ios::binary) << seed;
  }
}

}  // namespace

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
  const std::filesystem::path path = std::filesystem::path(argv[1]) / "packet_sets";
  std::filesystem::create_directories(path);
  int count = 0;
  const char* const values[] = {"1",
                                "1-3",
                                "{1,3-5}",
                                "1/0x1",
                                "none",
                                "true",
                                "tcp",
                                "0x01000003",
                                "::1/64",
                                "::5-::1:0:0:0:3",
                                "tagged",
                                "ef-cs7",
                                "10.0.0.0/8",
                                "10.0.0.1/255.0.0.255",
                                "10.0.0.1-10.0.1.2",
                                "01:00:00:00:00:00/01:00:00:00:00:00"};
  for (const std::string_view name : FiltersInspect::packetFieldNames()) {
    for (const char* value : values) {
      std::ofstream(path / std::to_string(count++)) << name << '=' << value << " ttl=1-9 dscp=46";
    }
  }
  std::ofstream(path / std::to_string(count++)) << "permit set_pcp=5 set_dscp=ef";
  writePolicies(std::filesystem::path(argv[1]) / "policies");
  const std::filesystem::path folder = std::filesystem::path(argv[1]) / "frames";
  std::filesystem::create_directories(folder);
  for (const frames::Sample& sample : frames::samples()) {
    const char head[] = {static_cast<char>(sample.link), static_cast<char>(sample.beyond >> 8),
                         static_cast<char>(sample.beyond)};
    std::ofstream(folder / std::to_string(count++), std::ios::binary)
        << std::string(head, sizeof head) << frames::bytesOf(sample.frame);
  }
  return testing::UnitTest::GetInstance()->Failed() ? 1 : 0;
}

#include <fcntl.h>
#include <filter_inspect/filter_text.h>
#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include "input.h"

namespace FilterInspectTool {
namespace {

// A file that is there whole or not at all: it is written under another name beside its own. What
// is no file, as a terminal or a pipe, is written as it is.
class OutputFile {
 public:
  explicit OutputFile(const std::string& name) : name_(name) {
    struct stat status = {};
    const bool exists = ::stat(name.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode)) {
      handle_ = ::open(name.c_str(), O_WRONLY | O_CLOEXEC);
      error_ = errno;
      return;
    }
    char resolved[PATH_MAX];  // a link stays one
    if (exists && ::realpath(name.c_str(), resolved) != nullptr) name_ = resolved;
    temporary_ = name_ + ".XXXXXX";
    handle_ = ::mkstemp(temporary_.data());
    error_ = errno;
    if (handle_ < 0) temporary_.clear();
    const mode_t mask = ::umask(0);
    ::umask(mask);
    mode_ = exists ? status.st_mode & 07777 : 0666 & ~mask;
  }
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile() {
    if (handle_ >= 0) ::close(handle_);
    if (!temporary_.empty()) ::unlink(temporary_.c_str());
  }

  // 0, or why the system refuses.
  int write(std::string_view content) {
    if (handle_ < 0) return error_;
    if (const int error = writeAll(handle_, content)) return error;
    if (!temporary_.empty() && ::fchmod(handle_, mode_) != 0) return errno;
    if (::close(std::exchange(handle_, -1)) != 0) return errno;
    if (temporary_.empty()) return 0;
    if (std::rename(temporary_.c_str(), name_.c_str()) != 0) return errno;
    temporary_.clear();
    return 0;
  }
 private:
  std::string name_;
  std::string temporary_;
  mode_t mode_ = 0;
  int handle_ = -1;
  int error_ = 0;  // of opening it, where that failed
};

void writeTo(const std::string& name, std::string_view content, Console* console) {
  if (name == "-") return console->write(content);
  if (const int error = OutputFile(name).write(content)) {
    console->systemTrouble(Code::kOutputFailed, name.empty() ? "''" : name, error);
  }
}

// With --framing as told; else as the input has it; else lengths where there are several groups.
std::string framingOf(const Options& options, const Input& input) {
  if (input.form == Form::kBytes) return input.framing;
  if (options.framing != "auto") return options.framing;
  return input.groups.size() == 1 ? "none" : "be32";
}

// The bytes of no group would be read as one.
const char* whyNotBytes(std::size_t groups, const std::string& framing) {
  if (groups == 0) return "there is no group, and no bytes are a group of zeros";
  if (groups > 1 && framing == "none")
    return "bytes of several groups need --framing=be32 or varint";
  return nullptr;
}

}  // namespace

void declareConvert(CLI::App* command, Options* options) {
  declareFiles(command, options, 1, 1);
  declareChoice(command, "--to", &options->to, {"text", "json", "bytes"}, "The form to write")
      ->required();
  command->add_option("-o,--output", options->output, "The file to write; - is standard output")
      ->take_last()
      ->option_text("OUT");
}

Exit runConvert(const Options& options, Console* console) {
  const auto inputs = readWholeInputs(options, console);
  if (!inputs) return kExitTrouble;
  const Input& input = inputs->front();
  for (const InputGroup& group : input.groups) {
    if (group.report.empty()) continue;
    console->hint(input.file + ": not converted, since that would lose something");
    return kExitFound;
  }
  const std::vector<FiltersGroup> groups = groupsOf(*inputs);
  if (options.to == "text") {
    writeTo(options.output, FiltersInspect::toText(groups), console);
  } else if (options.to == "json") {
    writeTo(options.output, FiltersInspect::toJson(groups), console);
  } else {
    const std::string framing = framingOf(options, input);
    if (const char* why = whyNotBytes(groups.size(), framing)) {
      console->trouble(Code::kUsage, input.file, why);
      return kExitTrouble;
    }
    writeTo(options.output, framed(groups, framing), console);
  }
  return kExitFine;
}

}  // namespace FilterInspectTool

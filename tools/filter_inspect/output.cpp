#include "output.h"

#include <fcntl.h>
#include <filter_inspect/filter_text.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <utility>

namespace FilterInspectTool {
namespace {

// Blocks the signals that end the program until the object is destroyed.
class Uninterrupted {
 public:
  Uninterrupted() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) sigaddset(&signals, signal);
    ::sigprocmask(SIG_BLOCK, &signals, &before_);
  }
  Uninterrupted(const Uninterrupted&) = delete;
  Uninterrupted& operator=(const Uninterrupted&) = delete;
  ~Uninterrupted() { ::sigprocmask(SIG_SETMASK, &before_, nullptr); }
 private:
  sigset_t before_;
};

// Writes a file completely or not at all. The text goes into a temporary file in the same folder.
// At the end, the temporary file replaces the old file. A terminal or a pipe is written directly.
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
    char resolved[PATH_MAX];  // a symbolic link stays one
    if (exists && ::realpath(name.c_str(), resolved) != nullptr) name_ = resolved;
    temporary_ = name_ + ".XXXXXX";
    uninterrupted_.emplace();
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

  // Returns 0 or the system's error.
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
  std::optional<Uninterrupted> uninterrupted_;  // while there may be a temporary file
  std::string name_;
  std::string temporary_;
  mode_t mode_ = 0;
  int handle_ = -1;
  int error_ = 0;  // the error of opening it, if that failed
};

}  // namespace

void writeTo(const std::string& name, std::string_view content, Console* console) {
  if (name == "-") return console->write(content);
  if (const int error = OutputFile(name).write(content)) {
    console->systemTrouble(Code::kOutputFailed, name.empty() ? "''" : name, error);
  }
}

bool isCompactForJson(const Options& options, std::string_view form, Console* console) {
  if (!options.compact || form == "json") return true;
  console->trouble(Code::kUsage, "--compact", "only JSON is written without blanks");
  return false;
}

std::string jsonOf(const std::vector<FiltersCommon::FiltersGroup>& groups, const Options& options) {
  using FiltersInspect::JsonLayout;
  return FiltersInspect::toJson(groups,
                                options.compact ? JsonLayout::kCompact : JsonLayout::kIndented);
}

}  // namespace FilterInspectTool

#include "output.h"

#include <fcntl.h>
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

// Who interrupts the program waits until this ends.
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

// A file that is there whole or not at all: it is written under another name beside its own, which
// does not stay behind. What is no file, as a terminal or a pipe, is written as it is.
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
  std::optional<Uninterrupted> uninterrupted_;  // as long as there may be a temporary file
  std::string name_;
  std::string temporary_;
  mode_t mode_ = 0;
  int handle_ = -1;
  int error_ = 0;  // of opening it, where that failed
};

}  // namespace

void writeTo(const std::string& name, std::string_view content, Console* console) {
  if (name == "-") return console->write(content);
  if (const int error = OutputFile(name).write(content)) {
    console->systemTrouble(Code::kOutputFailed, name.empty() ? "''" : name, error);
  }
}

}  // namespace FilterInspectTool

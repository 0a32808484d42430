#ifndef FILTER_INSPECT_TOOLS_INPUT_FILE_H_
#define FILTER_INSPECT_TOOLS_INPUT_FILE_H_

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string>

namespace FilterInspectTool {

// A file that is read, or standard input under the name "-".
class InputFile {
 public:
  explicit InputFile(const std::string& name)
      : handle_(name == "-" ? STDIN_FILENO : ::open(name.c_str(), O_RDONLY | O_CLOEXEC)),
        error_(handle_ < 0 ? errno : 0),
        is_own_(name != "-") {}
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
  ~InputFile() {
    if (is_own_ && handle_ >= 0) ::close(handle_);
  }

  // Reads the bytes that are available now, but at most `size`. Returns 0 at the end of the file
  // and after an error.
  std::size_t read(char* bytes, std::size_t size) {
    while (error_ == 0) {
      const ssize_t count = ::read(handle_, bytes, size);
      if (count >= 0) return static_cast<std::size_t>(count);
      if (errno != EINTR) error_ = errno;
    }
    return 0;
  }
  // The errno from opening or reading the file, or 0.
  int error() const { return error_; }
 private:
  const int handle_;
  int error_;
  const bool is_own_;
};

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_INPUT_FILE_H_

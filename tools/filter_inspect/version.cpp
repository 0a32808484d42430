#include <dlfcn.h>
#include <filter_common/filter_groups.h>
#include <filter_inspect/filter_names.h>
#include <google/protobuf/stubs/common.h>

#include <climits>
#include <cstdlib>
#include <string>
#include <string_view>

#include "capture.h"
#include "commands.h"

namespace FilterInspectTool {
namespace {

// The name of the file from which a function was loaded: "libfilter_common.so.1.0.0".
template <class Function>
std::string fileOf(Function* function) {
  Dl_info info = {};
  char path[PATH_MAX];
  if (::dladdr(reinterpret_cast<void*>(function), &info) == 0 ||
      ::realpath(info.dli_fname, path) == nullptr) {
    return "an unknown file";
  }
  const std::string_view name = path;
  return std::string(name.substr(name.rfind('/') + 1));
}

// Makes "libfilter_common 1.0.0" from the name of a library's file, which ends in the release.
std::string releaseOf(std::string file) {
  constexpr std::string_view kSuffix = ".so.";
  const std::size_t at = file.find(kSuffix);
  return at == file.npos ? file : file.replace(at, kSuffix.size(), " ");
}

}  // namespace

std::string versions() {
  using Describe = std::string_view(FiltersCommon::filtersErr_t);
  using Print = std::ostream&(std::ostream&, const FiltersCommon::FiltersGroup&);
  constexpr int kBuiltWith = GOOGLE_PROTOBUF_VERSION;  // nothing tells the loaded release
  const std::string builtWith = std::to_string(kBuiltWith / 1000000) + '.' +
                                std::to_string(kBuiltWith / 1000 % 1000) + '.' +
                                std::to_string(kBuiltWith % 1000);
  const std::string captures = captureVersion();
  return "filter-inspect " FILTER_INSPECT_VERSION "\n" +
         releaseOf(fileOf(static_cast<Describe*>(FiltersInspect::describe))) + '\n' +
         releaseOf(fileOf(static_cast<Print*>(FiltersCommon::operator<<))) + '\n' +
         "protocol buffers: built with " + builtWith + ", runs with " +
         fileOf(google::protobuf::internal::VerifyVersion) +
         (captures.empty() ? "" : '\n' + captures);
}

}  // namespace FilterInspectTool

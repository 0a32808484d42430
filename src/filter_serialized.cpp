#include <filter_common/filter_serialized.h>

#include <cstring>

#include "assertion.h"

namespace FiltersCommon {

FiltersSerialized::FiltersSerialized(const std::string& bytes) { copyData(bytes); }

FiltersSerialized::~FiltersSerialized() { delete[] data_; }

std::size_t FiltersSerialized::size() const { return size_; }

void FiltersSerialized::setData(const std::string& bytes) {
  FILTERS_ASSERT(data_ == nullptr,
                 "virtual void FiltersCommon::FiltersSerialized::setData(const string&)");
  copyData(bytes);
}

void FiltersSerialized::copyData(const std::string& bytes) {
  char* copy = new char[bytes.size() + 1];
  std::memcpy(copy, bytes.c_str(), bytes.size() + 1);
  data_ = copy;
  size_ = bytes.size() + 1;
}

}  // namespace FiltersCommon

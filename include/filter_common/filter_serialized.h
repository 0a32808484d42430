#ifndef FILTER_COMMON_FILTER_SERIALIZED_H_
#define FILTER_COMMON_FILTER_SERIALIZED_H_

#include <cstddef>
#include <string>

#include <filter_common/filter_types.h>

namespace FiltersCommon {

// A buffer that owns the bytes of a serialized entry or group, for callers who do not keep them in
// a string.
//
// A buffer is empty (size() 0, data() null) or filled. It is filled once, by a constructor, by
// serialize() of an entry or a group, or by setData(), and never emptied. size() includes one zero
// byte after the bytes: n bytes give size() n + 1. Rebuilding an entry or a group from a buffer
// reads all size() bytes. After a complete message the zero changes nothing. If the message was cut
// off, the parser may read the zero as its next byte. Rebuilding from the buffer then gives a
// different object than rebuilding from a string of the n bytes without the zero.
//
// A derived class overrides size() and setData() together. Rebuilding reads data(), which is not
// virtual. If a derived class keeps the bytes only in other memory, rebuilding from it throws
// std::logic_error. Call copyData() in setData() too, or rebuild from a string of the bytes.
//
// Any number of threads may read a buffer at once. A thread that fills it must be the only one to
// use it.
class FILTERS_API FiltersSerialized {
 public:
  FiltersSerialized() = default;
  explicit FiltersSerialized(const std::string& bytes);
  FiltersSerialized(const FiltersSerialized&) = delete;
  FiltersSerialized& operator=(const FiltersSerialized&) = delete;
  virtual ~FiltersSerialized();

  virtual std::size_t size() const;

  // Fills an empty buffer; asserts that it is empty, in every kind of build. If it throws
  // std::bad_alloc, the buffer is still empty.
  virtual void setData(const std::string& bytes);

  // The first byte, or null if the buffer is empty. The pointer is valid until the buffer is
  // destroyed.
  const char* data() const { return data_; }

  // Fills the buffer. Derived classes can call this function. Deliberate: an array that the buffer
  // already holds is not freed. A caller who kept the pointer from data() frees that array with
  // delete[].
  void copyData(const std::string& bytes);
 private:
  std::size_t size_ = 0;
  char* data_ = nullptr;
};

}  // namespace FiltersCommon

#endif  // FILTER_COMMON_FILTER_SERIALIZED_H_

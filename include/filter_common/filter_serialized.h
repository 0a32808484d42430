#ifndef FILTER_COMMON_FILTER_SERIALIZED_H_
#define FILTER_COMMON_FILTER_SERIALIZED_H_

#include <cstddef>
#include <string>

#include <filter_common/filter_types.h>

namespace FiltersCommon {

// The owned bytes of a serialized entry or group, for callers who do not hold them in a string.
//
// A buffer is empty (size() 0, data() null) or filled. It is filled once, by a constructor, by
// serialize() of an entry or a group, or by setData(), and never emptied. size() counts one zero
// byte behind the bytes: n bytes give size() n + 1. Rebuilding an entry or a group from a buffer
// takes all size() bytes. Behind a whole message the zero changes nothing; behind one that was cut
// off it can pass for the next byte, and a string of the same bytes then gives another object.
//
// Derived classes override size() and setData() together. Rebuilding reads data(), which is not
// virtual: with the bytes kept elsewhere alone, a buffer can be filled, but rebuilding from it
// throws std::logic_error. Call copyData() in setData() too, or rebuild from a string of the bytes.
//
// Any number of threads may read a buffer at a time; filling it needs it alone.
class FILTERS_API FiltersSerialized {
 public:
  FiltersSerialized() = default;
  explicit FiltersSerialized(const std::string& bytes);
  FiltersSerialized(const FiltersSerialized&) = delete;
  FiltersSerialized& operator=(const FiltersSerialized&) = delete;
  virtual ~FiltersSerialized();

  virtual std::size_t size() const;

  // Fills an empty buffer; asserts that it is empty, in every kind of build. Throws std::bad_alloc,
  // and the buffer is then still empty.
  virtual void setData(const std::string& bytes);

  // The first byte, null when empty; valid as long as the buffer lives.
  const char* data() const { return data_; }

  // The filling step by itself, for derived classes. Deliberate: an array that the buffer already
  // holds is not freed; it passes to whoever kept its data(), to be freed with delete[].
  void copyData(const std::string& bytes);
 private:
  std::size_t size_ = 0;
  char* data_ = nullptr;
};

}  // namespace FiltersCommon

#endif  // FILTER_COMMON_FILTER_SERIALIZED_H_

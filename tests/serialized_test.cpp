#include <filter_common/filter_serialized.h>

#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <string>
#include <type_traits>

namespace {

using namespace FiltersCommon;
using namespace std::string_literals;

static_assert(!std::is_copy_constructible_v<FiltersSerialized> &&
              !std::is_copy_assignable_v<FiltersSerialized> &&
              std::has_virtual_destructor_v<FiltersSerialized>);

std::string contentOf(const FiltersSerialized& buffer) { return {buffer.data(), buffer.size()}; }

void expectEmpty(const FiltersSerialized& buffer) {
  EXPECT_EQ(buffer.size(), 0u);
  EXPECT_EQ(buffer.data(), nullptr);
}

TEST(Serialized, CountsOneZeroBehindTheBytes) {
  for (const std::string& bytes : {""s, "ab"s, "a\0\0b"s, std::string(100000, '\xff')}) {
    EXPECT_EQ(contentOf(FiltersSerialized(bytes)), bytes + '\0');
    FiltersSerialized buffer;
    expectEmpty(buffer);
    buffer.setData(bytes);
    EXPECT_EQ(contentOf(buffer), bytes + '\0');
  }
}

TEST(SerializedDeathTest, AsksForAnEmptyBufferToFill) {
  FiltersSerialized buffer(""s);
  EXPECT_EXIT(buffer.setData("a"), testing::KilledBySignal(SIGABRT),
              ": filter_serialized\\.cpp:[0-9]+: "
              "virtual void FiltersCommon::FiltersSerialized::setData\\(const string&\\): "
              "Assertion `data_ == nullptr' failed\\.\n");
}

// Deliberate: the array held before is not freed.
TEST(Serialized, CopyDataLeavesTheOldArrayToWhoKeptIt) {
  FiltersSerialized buffer("old"s);
  const std::unique_ptr<const char[]> old(buffer.data());
  buffer.copyData("new one");
  EXPECT_EQ(contentOf(buffer), "new one\0"s);
  EXPECT_STREQ(old.get(), "old");
}

// Keeps a mark in front of the bytes and answers its own size.
class MarkedBuffer : public FiltersSerialized {
 public:
  std::size_t size() const override { return FiltersSerialized::size() - 1; }
  void setData(const std::string& bytes) override { copyData("#" + bytes); }
};

TEST(Serialized, CanBeFilledAndMeasuredByADerivedClass) {
  const std::unique_ptr<FiltersSerialized> buffer = std::make_unique<MarkedBuffer>();
  buffer->setData("ab");
  EXPECT_EQ(contentOf(*buffer), "#ab");
}

}  // namespace

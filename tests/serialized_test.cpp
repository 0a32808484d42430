#include <filter_common/filter_serialized.h>

#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <string>

namespace {

using namespace FiltersCommon;
using namespace std::string_literals;

std::string contentOf(const FiltersSerialized& buffer) { return {buffer.data(), buffer.size()}; }

TEST(Serialized, CountsOneZeroBehindTheBytes) {
  for (const std::string& bytes : {""s, "ab"s, "a\0\0b"s, std::string(100000, '\xff')}) {
    FiltersSerialized buffer;
    EXPECT_TRUE(buffer.size() == 0 && buffer.data() == nullptr);
    buffer.setData(bytes);
    EXPECT_EQ(contentOf(buffer), bytes + '\0');
    EXPECT_EQ(contentOf(FiltersSerialized(bytes)), bytes + '\0');
  }
}

TEST(SerializedDeathTest, AsksForAnEmptyBufferToFill) {
  FiltersSerialized buffer(""s);
  EXPECT_EXIT(buffer.setData("a"), testing::KilledBySignal(SIGABRT),
              ": filter_serialized\\.cpp:[0-9]+: "
              "virtual void FiltersCommon::FiltersSerialized::setData\\(const string&\\): "
              "Assertion `data_ == nullptr' failed\\.\n");
}

// Keeps a mark in front of the bytes and answers its own size.
class MarkedBuffer : public FiltersSerialized {
 public:
  std::size_t size() const override { return FiltersSerialized::size() - 1; }
  void setData(const std::string& bytes) override { copyData("#" + bytes); }
};

// Deliberate: copyData() does not free the array held before.
TEST(Serialized, CopyDataOfADerivedClassLeavesTheOldArrayToWhoKeptIt) {
  const std::unique_ptr<FiltersSerialized> buffer = std::make_unique<MarkedBuffer>();
  buffer->setData("old");
  const std::unique_ptr<const char[]> old(buffer->data());
  buffer->setData("new one");
  EXPECT_EQ(contentOf(*buffer), "#new one");
  EXPECT_STREQ(old.get(), "#old");
}

}  // namespace

// Tests which fields of a packet a frame shows, with frames written by hand.

#include <filter_inspect/filter_traffic.h>
#include <gtest/gtest.h>

#include <random>

#include "../../cases.h"
#include "frame_checks.h"
#include "frame_samples.h"

using namespace FiltersInspect;
using namespace frames;

namespace {

TEST(FramesTest, TellsWhatStandsInThem) {
  for (const Sample& row : samples()) {
    const std::string frame = bytesOf(row.frame);
    const std::size_t length = frame.size() + row.beyond;
    const Told its = told(frame, frame.size(), length, row.link);
    const auto expected = Packet::parse(row.told, nullptr);
    ASSERT_TRUE(expected.has_value()) << row.what;
    EXPECT_EQ(its.words, wordsOf(expected->toText())) << row.what;
    EXPECT_EQ(nameOf(its.fault), nameOf(row.fault)) << row.what;
    EXPECT_FALSE(describe(its.fault).empty());
    EXPECT_EQ(faultOfPrefixes(frame, length, row.link), "") << row.what;
  }
}

// Deliberate: if a capture claims more bytes than the frame had, only the bytes of the frame are
// read.
TEST(FramesTest, ReadsNoMoreThanTheFrame) {
  const std::string frame = bytesOf(ipv4(17, 8) + kUdp);
  FrameFault fault = FrameFault::kNone;
  EXPECT_EQ(packetOf(frame.data(), frame.size(), 20, Link::kRaw, &fault).toText(), "");
  EXPECT_EQ(fault, FrameFault::kWrongLength);
  EXPECT_EQ(packetOf(nullptr, 0, 0, static_cast<Link>(9), &fault).toText(), "");
  EXPECT_EQ(fault, FrameFault::kUnknownLink);
  EXPECT_TRUE(nameOf(static_cast<Link>(9)).empty());
}

TEST(FramesTest, KeepsWhatItToldOfBrokenFrames) {
  std::mt19937 random(1);
  const std::vector<Sample> all = samples();
  for (RandomCases i(4000); i.more(); ++i) {
    const Sample& row = all[random() % all.size()];
    std::string frame = bytesOf(row.frame);
    for (unsigned changes = random() % 4; changes != 0 && !frame.empty(); --changes) {
      frame[random() % frame.size()] ^= static_cast<char>(1U << random() % 8);
    }
    frame.resize(frame.size() - (frame.empty() ? 0 : random() % 2 * (random() % frame.size())));
    const std::size_t length = frame.size() + random() % 2 * row.beyond;
    ASSERT_EQ(faultOfPrefixes(frame, length, row.link), "") << row.what << ' ' << i.done();
  }
}

}  // namespace

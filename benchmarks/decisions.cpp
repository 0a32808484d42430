// Counts the decisions of Tracer::decide() in a second, for groups like real filters. Measures a
// plain loop over the rules for comparison. The loop compares each rule with the packet until a
// rule takes the packet. The hits of a million frames are counted too. Fails if a figure misses its
// limit. For a slow machine, `decisions FACTOR` relaxes all limits by FACTOR.

#include <filter_inspect/filter_traffic.h>

#include <malloc.h>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include "packets.h"

namespace benchmarks {
namespace {

using namespace FiltersInspect;

double factor = 1;
bool good = true;

double now() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

// The memory that is allocated now, in MiB.
double memory() {
  const struct mallinfo2 info = mallinfo2();
  return static_cast<double>(info.uordblks + info.hblkhd) / (1 << 20);
}

void report(const std::string& name, double reached, double limit, const char* unit, bool atMost) {
  limit = atMost ? limit * factor : limit / factor;
  const bool met = limit == 0 || (atMost ? reached <= limit : reached >= limit);
  good = good && met;
  std::printf("%-40s %12.3f %s%s\n", name.c_str(), reached, unit, met ? "" : "  MISSED");
}

// The id of the first rule that takes the packet. The last rule takes every packet.
std::uint32_t firstHit(const std::vector<RuleSet::Tuple>& tuples, const Values& values) {
  std::uint32_t id = 1;
  for (const RuleSet::Tuple& tuple : tuples) {
    bool takes = true;
    for (std::size_t i = 0; takes && i < values.size(); ++i) {
      takes = ((values[i] ^ tuple[i].value) & tuple[i].mask) == 0;
    }
    if (takes) return id;
    ++id;
  }
  return id;
}

void measure(const Shape& shape, unsigned rules) {
  const std::string name = std::string(shape.name) + ' ' + std::to_string(rules);
  const bool isLarge = rules > 10000;
  RuleSet set(shape, rules);
  const FiltersGroup group = set.make(rules);
  const double memory_before = memory();
  double start = now();
  const Tracer tracer(group, Order::kHighestPriority);
  report(name + ", made ready", now() - start, isLarge ? 0 : 0.5, "s", true);
  report(name + ", memory", memory() - memory_before, isLarge ? 0 : 128, "MiB", true);

  constexpr std::size_t kPackets = 200000, kPlain = 2000, kTrain = 16;
  const std::vector<Values> values = makeValues(set.tuples(), kPackets);
  std::vector<Packet> packets;
  for (const Values& one : values) packets.push_back(packetOf(one));
  const auto decide = [&](std::size_t times) {
    std::size_t right = 0;
    for (const Packet& packet : packets) {
      for (std::size_t i = 0; i < times; ++i) right += tracer.decide(packet).entry ? 1 : 0;
    }
    require(right == times * kPackets, "a packet is not decided");
  };
  decide(1);
  start = now();
  decide(1);
  report(name + ", no two alike", kPackets / (now() - start) / 1e6,
         isLarge        ? 0
         : rules > 1000 ? 1
                        : 2,
         "M/s", false);
  start = now();
  decide(kTrain);
  report(name + ", in trains of 16", kTrain * kPackets / (now() - start) / 1e6, isLarge ? 0 : 5,
         "M/s", false);

  std::vector<std::uint32_t> hits;
  start = now();
  for (std::size_t i = 0; i < kPlain; ++i) hits.push_back(firstHit(set.tuples(), values[i]));
  report(name + ", a plain loop", kPlain / (now() - start) / 1e6, 0, "M/s", false);
  for (std::size_t i = 0; i < kPlain; ++i) {
    require(tracer.decide(packets[i]).entry == hits[i], "another rule takes a packet");
  }
}

// An Ethernet frame with an IPv4 packet.
std::vector<unsigned char> frameOf(const Values& values) {
  std::vector<unsigned char> frame(54);
  const auto write = [&frame](std::size_t at, std::uint32_t value, unsigned bytes) {
    for (; bytes != 0; value >>= 8) frame[at + --bytes] = static_cast<unsigned char>(value);
  };
  write(12, 0x0800, 2);
  write(14, 0x4500, 2);
  write(16, 40, 2);  // the total length
  write(23, values[4], 1);
  write(26, values[0], 4);
  write(30, values[1], 4);
  write(34, values[2], 2);
  write(36, values[3], 2);
  return frame;
}

// Counts the hits of a million frames, as filter-inspect does after it has read a file.
void measureHits(const Shape& shape, unsigned rules) {
  constexpr std::size_t kPackets = 200000, kFrames = 1000000;
  RuleSet set(shape, rules);
  const FiltersGroup group = set.make(rules);
  std::vector<std::vector<unsigned char>> frames;
  for (const Values& one : makeValues(set.tuples(), kPackets)) frames.push_back(frameOf(one));
  double start = now();
  for (std::size_t i = 0; i < kFrames; ++i) {
    const auto& frame = frames[i % kPackets];
    static_cast<void>(
        FiltersInspect::packetOf(frame.data(), frame.size(), frame.size(), Link::kEthernet));
  }
  report("a million frames read", now() - start, 1, "s", true);
  start = now();
  HitCounter counter(group, Order::kHighestPriority);
  for (std::size_t i = 0; i < kFrames; ++i) {
    const auto& frame = frames[i % kPackets];
    counter.count(frame.data(), frame.size(), frame.size(), Link::kEthernet);
  }
  const std::string name = std::string(shape.name) + ' ' + std::to_string(rules);
  report(name + ", a million frames counted", now() - start, 3, "s", true);
  require(counter.hits().undecided.frames == 0, "a frame is not decided");
}

}  // namespace
}  // namespace benchmarks

int main(int argc, char** argv) {
  using namespace benchmarks;
  if (argc > 1) factor = std::atof(argv[1]);
  for (const Shape& shape : kShapes) {
    for (const unsigned rules : {1000U, 10000U}) measure(shape, rules);
    measureHits(shape, 10000);
  }
  measure(kShapes[0], 100000);
  return good ? 0 : 1;
}

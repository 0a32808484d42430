// Counts how the library uses the heap: allocations, bytes held and peaks. These counts are the
// same in every run. Prints the name and value of one figure on each line. report.py has the limits
// of the figures.
#include <cstdlib>
#include <new>
#include <ostream>

#include "workload.h"

namespace {

// Counts the requested bytes. Each block stores its size in front of its first byte.
constexpr std::size_t kHeader = alignof(std::max_align_t);
long long allocations = 0;
long long held = 0;
long long peak = 0;

}  // namespace

void* operator new(std::size_t size) {
  auto* block = static_cast<char*>(std::malloc(kHeader + size));
  if (block == nullptr) throw std::bad_alloc();
  *reinterpret_cast<std::size_t*>(block) = size;
  ++allocations;
  held += static_cast<long long>(size);
  if (held > peak) peak = held;
  return block + kHeader;
}

void operator delete(void* memory) noexcept {
  if (memory == nullptr) return;
  char* block = static_cast<char*>(memory) - kHeader;
  held -= static_cast<long long>(*reinterpret_cast<std::size_t*>(block));
  std::free(block);
}

void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }

namespace benchmarks {
namespace {

constexpr unsigned kRules = 10000;

// Counts the allocations from the construction of this object to the call of a getter.
struct Meter {
  Meter() { peak = held; }
  double allocationsARule() const {
    return static_cast<double>(allocations - allocations_) / kRules;
  }
  double heldBytes() const { return static_cast<double>(held - held_); }
  double peakBytes() const { return static_cast<double>(peak - held_); }
 private:
  long long allocations_ = allocations;
  long long held_ = held;
};

void print(const char* name, double value) { std::printf("%s %.4f\n", name, value); }

}  // namespace
}  // namespace benchmarks

int main() {
  using namespace benchmarks;
  requireSameBytes(kRules);
  std::printf("bits %zu\n", 8 * sizeof(void*));
  const FiltersGroup group = makeGroup(kRules);
  {
    FiltersGroup filled = makeEmptyGroup();
    Meter meter;
    for (const auto& [id, rule] : group.getEntriesRef()) {
      require(filled.insertEntry(rule) == FILTERS_OK, "a rule is refused");
    }
    print("insert.allocations", meter.allocationsARule());
    print("held", meter.heldBytes() / kRules);
  }
  {
    Meter meter;
    const FiltersGroup copy(group);
    print("copy.allocations", meter.allocationsARule());
    Meter comparing;
    require(copy == group, "a copy differs");
    print("compare.allocations", comparing.allocationsARule());
  }
  std::string bytes;
  {
    Meter meter;
    group.serialize(&bytes);
    print("serialize.allocations", meter.allocationsARule());
    print("serialize.peak", meter.peakBytes() / static_cast<double>(bytes.size()));
    print("wire", static_cast<double>(bytes.size()) / kRules);
    FiltersGroup changed = makeEmptyGroup();
    require(changed.insertEntry(group.getEntriesRef().rbegin()->second) == FILTERS_OK, "refused");
    std::string change;
    changed.serialize(&change);
    print("change.wire", static_cast<double>(change.size()));
  }
  {
    Meter meter;
    const FiltersGroup rebuilt(bytes);
    print("rebuild.allocations", meter.allocationsARule());
    print("rebuild.peak", meter.peakBytes() / meter.heldBytes());
  }
  {
    NullBuffer nowhere;
    std::ostream os(&nowhere);
    Meter meter;
    os << group;
    print("print.allocations", meter.allocationsARule());
  }
}

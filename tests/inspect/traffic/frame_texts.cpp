// Reads frames, and writes one line for each frame: the fault, a tab and the packet. The frames
// come from standard input: the link in one byte, the captured length and the length on the wire in
// four bytes each, the most significant byte first, and the captured bytes.

#include <filter_inspect/filter_traffic.h>

#include <iostream>

using namespace FiltersInspect;

int main() {
  const auto number = [] {
    std::size_t value = 0;
    for (int i = 0; i < 4; ++i) value = value << 8 | static_cast<unsigned char>(std::cin.get());
    return value;
  };
  for (int link = std::cin.get(); link != EOF; link = std::cin.get()) {
    const std::size_t captured = number(), length = number();
    std::vector<char> frame(captured);  // of this size, so that a sanitizer sees reads behind it
    std::cin.read(frame.data(), static_cast<std::streamsize>(captured));
    FrameFault fault = FrameFault::kNone;
    const Packet packet = packetOf(frame.data(), captured, length, static_cast<Link>(link), &fault);
    std::cout << nameOf(fault) << '\t' << packet.toText() << '\n';
  }
}

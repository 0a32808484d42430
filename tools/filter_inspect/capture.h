#ifndef FILTER_INSPECT_TOOLS_CAPTURE_H_
#define FILTER_INSPECT_TOOLS_CAPTURE_H_

// Reads the frames of captured traffic, by libpcap. Only this part of the program knows it.

#include <filter_inspect/filter_traffic.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "console.h"

namespace FilterInspectTool {

// What one frame tells.
struct SeenFrame {
  FiltersInspect::Packet packet;
  FiltersInspect::FrameFault fault;
  std::int64_t time;  // nanoseconds since 1970, or the nearest time that can be written so
};

// Visits each frame of --capture. Reports trouble when the file cannot be read any further, and
// returns the number of frames before that; nothing if it is no capture that can be read at all.
std::optional<std::uint64_t> readCapture(const Options& options, Console* console,
                                         const std::function<void(const SeenFrame&)>& visit);

// The packet of --assume, which has no field without this option. Returns nothing if the packet
// cannot be read, which is then reported.
std::optional<FiltersInspect::Packet> assumedOf(const Options& options, Console* console);

// Returns false, and reports it, if standard input is to be read twice.
bool readsInputOnce(const Options& options, Console* console);

// For findings.
FiltersInspect::SeenFrames seenOf(const FiltersInspect::FrameCount& count);
// "2026-11-22T09:30:00.123456Z", with nine digits behind the point where they are needed.
std::string timeText(std::int64_t time);

// Adds a finding about each reason why fields of frames are not told, with its frames.
void addFaults(const FiltersInspect::FrameCounts& faults, Report* report);

// The release of libpcap, or empty if the program was built without it.
std::string captureVersion();

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_CAPTURE_H_

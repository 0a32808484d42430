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

// "12 frames surely and 3 perhaps".
std::string countsText(const FiltersInspect::HitCounts& hits);
// "; the first is frame 7, 2026-11-22T09:30:00.123456Z"
std::string firstText(const FiltersInspect::HitCounts& hits);
const FiltersInspect::FrameCount& firstOf(const FiltersInspect::HitCounts& hits);
std::string placeText(const FiltersInspect::FrameCount& count);
Finding findingOf(Code code, std::string message, const FiltersInspect::HitCounts& hits);

// What is said about the capture itself: how many frames it has, and for each reason why fields are
// not told, how many frames lack some.
ReportInput aboutCapture(const std::string& file, std::uint64_t frames,
                         const FiltersInspect::FrameCounts& faults);

// The release of libpcap, or empty if the program was built without it.
std::string captureVersion();

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_CAPTURE_H_

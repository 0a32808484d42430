#ifndef FILTER_INSPECT_TOOLS_CAPTURE_H_
#define FILTER_INSPECT_TOOLS_CAPTURE_H_

// Reads the frames of captured traffic with libpcap. Only this part of the program uses libpcap.

#include <filter_inspect/filter_traffic.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "console.h"

namespace FilterInspectTool {

// What a frame shows.
struct SeenFrame {
  FiltersInspect::Packet packet;
  FiltersInspect::FrameFault fault;
  std::int64_t time;  // nanoseconds since 1970, or the nearest time that fits
};

// Visits each frame of --capture and returns their number. If the file has a fault, reports it and
// returns the number of frames before the fault. Returns nothing if the file cannot be read as a
// capture.
std::optional<std::uint64_t> readCapture(const Options& options, Console* console,
                                         const std::function<void(const SeenFrame&)>& visit);

// Returns the packet of --assume, or a packet without fields if the option is not given. If the
// packet cannot be read, reports why and returns nothing.
std::optional<FiltersInspect::Packet> assumedOf(const Options& options, Console* console);

// Returns false, and reports an error, if the options ask to read standard input twice.
bool readsInputOnce(const Options& options, Console* console);

// Converts the count of frames into the form that a finding has.
FiltersInspect::SeenFrames seenOf(const FiltersInspect::FrameCount& count);
// "2026-11-22T09:30:00.123456Z". The seconds have nine decimals instead of six if the time is not a
// whole number of microseconds.
std::string timeText(std::int64_t time);

// "12 frames surely and 3 perhaps".
std::string countsText(const FiltersInspect::HitCounts& hits);
// "; the first is frame 7, 2026-11-22T09:30:00.123456Z"
std::string firstText(const FiltersInspect::HitCounts& hits);
const FiltersInspect::FrameCount& firstOf(const FiltersInspect::HitCounts& hits);
std::string placeText(const FiltersInspect::FrameCount& count);
Finding findingOf(Code code, std::string message, const FiltersInspect::HitCounts& hits);

// Returns findings about the capture itself: the number of its frames, and for each reason why
// fields are unknown, the number of frames with this reason.
ReportInput aboutCapture(const std::string& file, std::uint64_t frames,
                         const FiltersInspect::FrameCounts& faults);

// The release of libpcap, or empty if the program was built without it.
std::string captureVersion();

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_CAPTURE_H_

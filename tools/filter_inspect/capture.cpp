#include "capture.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <limits>
#include <memory>

#ifdef FILTER_INSPECT_CAPTURES
#include <pcap/pcap.h>
#include <sys/stat.h>
#endif

namespace FilterInspectTool {

using namespace FiltersInspect;

#ifdef FILTER_INSPECT_CAPTURES
namespace {

// Says with which header the frames of a file begin. `type` is libpcap's number for this header.
std::optional<Link> linkOf(int type) {
  switch (type) {
    case DLT_EN10MB:
      return Link::kEthernet;
    case DLT_RAW:
    case DLT_IPV4:
    case DLT_IPV6:
      return Link::kRaw;
    case DLT_LINUX_SLL:
      return Link::kLinuxCooked;
    case DLT_LINUX_SLL2:
      return Link::kLinuxCooked2;
    case DLT_NULL:
    case DLT_LOOP:
      return Link::kLoopback;
    default:
      return std::nullopt;
  }
}

std::string nameOfLink(int type) {
  const char* name = pcap_datalink_val_to_name(type);
  return name != nullptr ? name : std::to_string(type);
}

// tv_usec holds nanoseconds, because the file was opened with that precision.
std::int64_t nanoseconds(const timeval& time) {
  constexpr std::int64_t kSecond = 1000000000;
  constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max() / kSecond - 1;
  const auto seconds = static_cast<std::int64_t>(time.tv_sec);
  return std::clamp(seconds, -kMost, kMost) * kSecond + time.tv_usec % kSecond;
}

struct Closed {
  void operator()(pcap_t* capture) const { pcap_close(capture); }
};

// The size of a file, or 0 if the size is unknown.
std::size_t sizeOf(std::FILE* file) {
  struct stat status = {};
  if (file == nullptr || ::fstat(::fileno(file), &status) != 0 || !S_ISREG(status.st_mode))
    return 0;
  return static_cast<std::size_t>(status.st_size);
}

}  // namespace

std::optional<std::uint64_t> readCapture(const Options& options, Console* console,
                                         const std::function<void(const SeenFrame&)>& visit) {
  constexpr std::uint64_t kFramesBetween = 1024;  // between two updates of the progress
  const std::string& file = *options.capture;
  char why[PCAP_ERRBUF_SIZE] = "";
  console->showProgress(file);  // libpcap waits for the first bytes
  const std::unique_ptr<pcap_t, Closed> capture(
      pcap_open_offline_with_tstamp_precision(file.c_str(), PCAP_TSTAMP_PRECISION_NANO, why));
  if (!capture) {
    const std::string its = file + ": ";  // libpcap begins some sentences with this
    std::string_view reason = why;
    if (reason.substr(0, its.size()) == its) reason.remove_prefix(its.size());
    std::string text(reason);
    if (reason == "unknown file format") text += "; a capture is a file in the form pcap or pcapng";
    console->trouble(Code::kFileUnreadable, file.empty() ? "''" : file, text);
    return std::nullopt;
  }
  const int type = pcap_datalink(capture.get());
  const std::optional<Link> link = linkOf(type);
  if (!link) {
    console->trouble(Code::kFileUnreadable, file,
                     "frames of the link type " + nameOfLink(type) +
                         " are not read; those of Ethernet, raw IP, Linux cooked and loopback are");
    return std::nullopt;
  }
  std::FILE* const its = pcap_file(capture.get());
  const std::size_t size = sizeOf(its);
  std::function<void(std::size_t, std::size_t)> progress;
  if (size != 0) {
    console->hideProgress();
    progress = console->progressOf("counting", file);
  }
  pcap_pkthdr* head = nullptr;
  const unsigned char* bytes = nullptr;
  std::uint64_t frames = 0;
  int status = 0;
  SeenFrame seen = {};
  while ((status = pcap_next_ex(capture.get(), &head, &bytes)) == 1) {
    seen.time = nanoseconds(head->ts);
    seen.packet = packetOf(bytes, head->caplen, head->len, *link, &seen.fault);
    visit(seen);
    if (++frames % kFramesBetween == 0 && progress) {
      const long at = std::ftell(its);
      progress(std::min(static_cast<std::size_t>(std::max(at, 0L)), size), size);
    }
  }
  console->hideProgress();
  if (status != PCAP_ERROR_BREAK) {
    console->trouble(Code::kFileUnreadable, file,
                     "frame " + std::to_string(frames + 1) + ": " + pcap_geterr(capture.get()));
  }
  return frames;
}

std::string captureVersion() { return pcap_lib_version(); }

#else

std::optional<std::uint64_t> readCapture(const Options& options, Console* console,
                                         const std::function<void(const SeenFrame&)>&) {
  console->trouble(Code::kFileUnreadable, *options.capture,
                   "this filter-inspect was built without libpcap, and reads no captures");
  return std::nullopt;
}

std::string captureVersion() { return {}; }

#endif

std::optional<Packet> assumedOf(const Options& options, Console* console) {
  constexpr char kPlace[] = "--assume";
  Report faults;
  std::optional<Packet> assumed =
      Packet::parse(options.assumed, &faults, std::max(options.max_findings, std::size_t{1}));
  for (const Finding& fault : faults.findings) console->trouble(kPlace, fault, options.assumed);
  faults.findings.clear();
  console->aside(kPlace, faults);
  return assumed;
}

bool readsInputOnce(const Options& options, Console* console) {
  const auto isInput = [](const std::string& file) { return file == "-"; };
  if (options.capture != "-" || std::none_of(options.files.begin(), options.files.end(), isInput))
    return true;
  console->trouble(Code::kUsage, "-", "standard input is read once");
  return false;
}

std::string timeText(std::int64_t time) {
  constexpr std::int64_t kSecond = 1000000000;
  std::int64_t seconds = time / kSecond, rest = time % kSecond;
  if (rest < 0) {
    --seconds;
    rest += kSecond;
  }
  const auto whole = static_cast<std::time_t>(seconds);
  std::tm date = {};
  ::gmtime_r(&whole, &date);
  char text[64], behind[32];
  const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &date);
  const bool isMicro = rest % 1000 == 0;
  std::snprintf(behind, sizeof behind, isMicro ? ".%06dZ" : ".%09dZ",
                static_cast<int>(isMicro ? rest / 1000 : rest));
  return std::string(text, length) + behind;
}

SeenFrames seenOf(const FrameCount& count) {
  return {count.frames, count.first, count.frames == 0 ? "" : timeText(count.first_time)};
}

const FrameCount& firstOf(const HitCounts& hits) {
  const bool isSure =
      hits.possible.first == 0 || (hits.sure.first != 0 && hits.sure.first < hits.possible.first);
  return isSure ? hits.sure : hits.possible;
}

std::string placeText(const FrameCount& count) {
  return "frame " + std::to_string(count.first) + ", " + timeText(count.first_time);
}

std::string countsText(const HitCounts& hits) {
  const std::uint64_t sure = hits.sure.frames, possible = hits.possible.frames;
  if (possible == 0) return counted(sure, "frame") + " surely";
  if (sure == 0) return counted(possible, "frame") + " perhaps";
  return counted(sure, "frame") + " surely and " + std::to_string(possible) + " perhaps";
}

std::string firstText(const HitCounts& hits) {
  return "; the first is " + placeText(firstOf(hits));
}

Finding findingOf(Code code, std::string message, const HitCounts& hits) {
  Finding finding = findingOf(code, std::move(message));
  finding.sure = seenOf(hits.sure);
  finding.possible = seenOf(hits.possible);
  return finding;
}

ReportInput aboutCapture(const std::string& file, std::uint64_t frames, const FrameCounts& faults) {
  Report report;
  report.findings.push_back(findingOf(Code::kFramesCounted, counted(frames, "frame")));
  report.findings.back().sure = {frames, 0, {}};
  for (const FrameFault fault : kAllFrameFaults) {
    const FrameCount& its = faults[static_cast<std::size_t>(fault)];
    if (fault == FrameFault::kNone || its.frames == 0) continue;
    Finding& finding = report.findings.emplace_back(findingOf(
        Code::kFramesNotRead,
        counted(its.frames, "frame") + " not read to the end: " + std::string(describe(fault))));
    finding.value = nameOf(fault);
    finding.sure = seenOf(its);
  }
  return {file, std::nullopt, std::move(report)};
}

}  // namespace FilterInspectTool

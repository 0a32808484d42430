#include "picture.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <utility>

#include "analysis.h"
#include "table.h"
#include "xml.h"

namespace FilterInspectTool {

// These types cannot be in an unnamed namespace, because a class that other files use has members
// of these types.
namespace pictures {

using namespace FiltersCommon;
using namespace FiltersInspect;

// If an entry has several findings, the finding that comes last in this list decides how the entry
// is drawn.
struct Look {
  Code code;
  const char* style;
  const char* meaning;
};
constexpr Look kLooks[] = {
    {Code::kValueUnusual, "noted", "unusual value"},
    {Code::kEntriesOverlap, "noted", "overlaps"},
    {Code::kNotDecided, "noted", "not decided"},
    {Code::kEntryRedundant, "redundant", "redundant"},
    {Code::kEntriesTie, "tie", "ties"},
    {Code::kEntryUnreachable, "unreachable", "never takes effect"},
};

struct Row {
  const FiltersEntry* entry;
  const Look* look = nullptr;
  std::string found, treatment, why;
  bool isNamed = false;     // a finding about another entry names it
  std::size_t skipped = 0;  // the number of rows before it that are not drawn
  HitCounts hits;

  explicit Row(const FiltersEntry* its) : entry(its) {}
};

}  // namespace pictures

using namespace pictures;

namespace {

using namespace FiltersCommon;
using namespace FiltersInspect;

// Sizes in units of the picture. A letter is seven units wide.
constexpr std::size_t kLetter = 7, kRow = 20, kGap = 14, kMargin = 16;
constexpr std::size_t kMostLetters = 36;  // in a cell; the pointer shows the whole text
constexpr std::size_t kMostRows = 60;     // in a group that is drawn whole
constexpr std::size_t kRowsAHead = 30;    // before the headings are repeated
constexpr std::size_t kLongestBar = 240;

std::string_view treatmentOf(const Finding& finding) {
  if (finding.before.empty() && finding.after.empty()) return {};
  return finding.before == finding.after ? "alike" : "differs";
}

void mark(const Report& report, std::vector<Row>* rows) {
  std::map<filtersEntryId_t, Row*> byId;
  for (Row& row : *rows) byId[row.entry->getId()] = &row;
  const auto set = [&byId](filtersEntryId_t id, const Look* look, const Finding& finding,
                           const std::vector<std::uint32_t>& others, const std::string& why) {
    const auto found = byId.find(id);
    if (found == byId.end()) return;
    Row& row = *found->second;
    if (row.look != nullptr && row.look > look) return;
    if (row.look != look) {
      row.look = look;
      row.found = look->meaning + std::string(others.empty() ? "" : ":");
      row.treatment = treatmentOf(finding);
      row.why = why;
    }
    for (std::uint32_t other : others) row.found += ' ' + std::to_string(other);
  };
  for (const Finding& finding : report.findings) {
    const Look* look = std::find_if(std::begin(kLooks), std::end(kLooks),
                                    [&](const Look& one) { return one.code == finding.code; });
    if (!finding.entry || look == std::end(kLooks)) continue;
    const bool isMatch = finding.subject == Subject::kMatch;  // then the others are matches too
    set(*finding.entry, look, finding, isMatch ? std::vector<std::uint32_t>() : finding.others,
        finding.message);
    if (isMatch) continue;
    for (std::uint32_t other : finding.others) {
      const auto named = byId.find(other);
      if (named != byId.end()) named->second->isNamed = true;
      if (finding.code != Code::kEntriesTie) continue;
      set(other, look, finding, {*finding.entry},
          "ties with entry " + std::to_string(*finding.entry));
    }
  }
}

// If there are many rows, keeps only the rows with a finding and the rows that such findings name.
// Returns the number of dropped rows after the last row that is kept.
std::size_t leaveOut(std::vector<Row>* rows) {
  if (rows->size() <= kMostRows) return 0;
  std::vector<Row> kept;
  std::size_t skipped = 0;
  for (Row& row : *rows) {
    if (row.look == nullptr && !row.isNamed) {
      ++skipped;
      continue;
    }
    row.skipped = std::exchange(skipped, 0);
    kept.push_back(std::move(row));
  }
  *rows = std::move(kept);
  return skipped;
}

std::size_t widthOf(const Column& column) {
  std::size_t letters = column.name.size();
  for (const std::string& cell : column.cells) letters = std::max(letters, cell.size());
  return std::min(letters, kMostLetters) * kLetter + kGap;
}

// The columns of a table of entries, and further columns for the findings about them.
std::vector<Column> tableOf(const std::vector<Row>& rows) {
  Entries entries;
  Column found{"found", Column::Holds::kTreatment, {}};
  Column treatment{"treatment", Column::Holds::kTreatment, {}};
  bool hasTreatment = false;
  for (const Row& row : rows) {
    entries.push_back(row.entry);
    found.cells.push_back(row.found);
    treatment.cells.push_back(row.treatment);
    hasTreatment = hasTreatment || !row.treatment.empty();
  }
  std::vector<Column> columns = columnsOf(entries, 0);
  columns.push_back(std::move(found));
  if (hasTreatment) columns.push_back(std::move(treatment));
  return columns;
}

std::vector<Row> rowsOf(const FiltersGroup& group, Order order) {
  std::vector<Row> rows;
  for (const FiltersEntry* entry : inOrder(group, order)) rows.emplace_back(entry);
  return rows;
}

constexpr char kStyle[] =
    "<style>\n"
    "text { font: 12px monospace; fill: #222 }\n"
    ".title { font-weight: bold; font-size: 14px }\n"
    ".head { fill: #666 }\n"
    "rect.plain { fill: #f6f6f6 } rect.noted { fill: #fbf7d2 } rect.redundant { fill: #dde6f0 }\n"
    "rect.tie { fill: #ffe3ad } rect.unreachable { fill: #f6c4c0 }\n"
    "rect.sure { fill: #7fa8d1 } rect.perhaps { fill: #c9d8e8 }\n"
    "</style>\n";

}  // namespace

void Picture::drawText(std::size_t x, const char* style, std::string_view text, std::size_t most) {
  if (text.empty()) return;
  const bool isCut = most != 0 && text.size() > most;
  body_ += "<text x=\"" + std::to_string(x) + "\" y=\"" + std::to_string(y_ + 14) + "\" class=\"" +
           style + "\">" + inXml(isCut ? text.substr(0, most - 2) : text) + (isCut ? ".." : "");
  if (isCut) body_ += "<title>" + inXml(text) + "</title>";
  body_ += "</text>\n";
  const std::size_t letters = isCut ? most : text.size();
  width_ = std::max(width_, x + letters * (kLetter + 2));
}

void Picture::drawRow(const char* style, const std::vector<std::string_view>& cells) {
  std::size_t x = kMargin;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    drawText(x, style, cells[i], kMostLetters);
    x += widths_[i];
  }
}

struct Picture::Table {
  std::vector<Row> rows;
  std::vector<Column> columns;
  std::size_t behind;         // the number of rows that are left out after the last one
  const char* of_left_out;    // what is said of entries that are left out
  std::uint64_t longest = 0;  // the number of frames that the longest bar stands for
};

void Picture::add(const std::string& title, const FiltersGroup& group, const Report& report) {
  std::vector<Row> rows = rowsOf(group, order_);
  mark(report, &rows);
  const std::size_t behind = leaveOut(&rows);
  Report rest = report;
  rest.findings.clear();
  left_out_.append(std::move(rest));
  std::vector<Column> columns = tableOf(rows);
  draw(title + " (id " + std::to_string(group.getId()) + ')',
       {std::move(rows), std::move(columns), behind, "of which nothing is said"});
}

void Picture::add(const std::string& title, const FiltersGroup& group, const Hits& hits) {
  std::map<filtersEntryId_t, const HitCounts*> byId;
  for (const EntryHits& one : hits.entries) byId[one.entry] = &one.hits;
  std::vector<Row> rows = rowsOf(group, order_);
  std::uint64_t longest = 0;
  for (Row& row : rows) {
    row.hits = *byId.at(row.entry->getId());
    row.isNamed = row.hits.sure.frames + row.hits.possible.frames != 0;
    longest = std::max(longest, row.hits.sure.frames + row.hits.possible.frames);
  }
  const std::size_t behind = leaveOut(&rows);
  Entries entries;
  Column counts{"frames", Column::Holds::kKey, {}};
  for (const Row& row : rows) {
    entries.push_back(row.entry);
    const std::uint64_t sure = row.hits.sure.frames, possible = row.hits.possible.frames;
    counts.cells.push_back(std::to_string(sure) +
                           (possible == 0 ? "" : " and perhaps " + std::to_string(possible)));
  }
  std::vector<Column> columns = columnsOf(entries, 0);
  // The bars of the frame counts stand beside the actions. They would be hard to see behind the
  // columns of policers and counters, which are wide.
  const auto actions = std::find_if(columns.begin(), columns.end(),
                                    [](const Column& one) { return one.name == "then"; });
  columns.erase(actions + 1, columns.end());
  columns.push_back(std::move(counts));
  draw(title + " (id " + std::to_string(group.getId()) + "): " + counted(hits.frames, "frame"),
       {std::move(rows), std::move(columns), behind, "that no frame hits", longest});
}

void Picture::drawBox(std::size_t x, std::size_t width, const char* style) {
  body_ += "<rect x=\"" + std::to_string(x) + "\" y=\"" + std::to_string(y_) + "\" width=\"" +
           std::to_string(width) + "\" height=\"" + std::to_string(kRow - 2) + "\" class=\"" +
           style + "\"/>\n";
}

void Picture::draw(const std::string& title, const Table& table) {
  std::vector<std::string_view> head;
  std::size_t wide = 0;
  widths_.clear();
  for (const Column& column : table.columns) {
    head.push_back(column.name);
    widths_.push_back(widthOf(column));
    wide += widths_.back();
  }
  const std::size_t bars = kMargin + wide;  // where they begin
  const auto lengthOf = [&table](std::uint64_t frames) {
    const double share = static_cast<double>(frames) / static_cast<double>(table.longest);
    return static_cast<std::size_t>(share * kLongestBar);
  };
  if (table.longest != 0) wide += kLongestBar + kGap;
  width_ = std::max(width_, wide);
  const auto drawGap = [&](std::size_t count) {
    if (count == 0) return;
    y_ += kRow;
    drawText(kMargin, "head", "... " + counted(count, "entry") + ' ' + table.of_left_out);
  };

  y_ += kMargin;
  drawText(kMargin, "title", title);
  y_ += 4;
  for (std::size_t i = 0; i < table.rows.size(); ++i) {
    const Row& row = table.rows[i];
    if (i % kRowsAHead == 0) {
      y_ += kRow;
      drawRow("head", head);
    }
    drawGap(row.skipped);
    y_ += kRow;
    const char* style = row.look == nullptr ? "plain" : row.look->style;
    body_ += "<g>";
    drawBox(kMargin - 6, wide, style);
    if (!row.why.empty()) body_ += "<title>" + inXml(row.why) + "</title>\n";
    std::vector<std::string_view> cells;
    for (const Column& column : table.columns) cells.push_back(column.cells[i]);
    drawRow(style, cells);
    const std::uint64_t sure = row.hits.sure.frames, possible = row.hits.possible.frames;
    if (sure != 0) drawBox(bars, std::max(lengthOf(sure), std::size_t{1}), "sure");
    if (possible != 0) {
      drawBox(bars + lengthOf(sure), std::max(lengthOf(possible), std::size_t{1}), "perhaps");
    }
    body_ += "</g>\n";
  }
  drawGap(table.behind);
  y_ += kRow;
}

std::string Picture::take() const {
  std::string foot = restsOn(order_);
  if (order_ == Order::kUnspecified) foot += "; rows by id";
  if (left_out_.left_out != 0) foot += "; " + leftOutText(left_out_);
  const std::size_t width = std::max(width_, foot.size() * kLetter + kMargin) + kMargin;
  const std::size_t height = y_ + kRow + 2 * kMargin;
  const std::string size = std::to_string(width) + ' ' + std::to_string(height);
  return "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " + size + "\" width=\"" +
         std::to_string(width) + "\" height=\"" + std::to_string(height) + "\">\n" + kStyle +
         "<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n" + body_ + "<text x=\"" +
         std::to_string(kMargin) + "\" y=\"" + std::to_string(y_ + kRow + kMargin) +
         "\" class=\"head\">" + foot + "</text>\n</svg>\n";
}

}  // namespace FilterInspectTool

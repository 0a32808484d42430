#include "picture.h"

#include <filter_inspect/filter_names.h>
#include <filter_inspect/filter_text.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <tuple>
#include <utility>

#include "analysis.h"

namespace FilterInspectTool {
namespace {

using namespace FiltersCommon;
using namespace FiltersInspect;

// Sizes in units of the picture; a letter is seven wide.
constexpr std::size_t kLetter = 7, kRow = 20, kGap = 14, kMargin = 16;
constexpr std::size_t kMostLetters = 36;  // in a cell; the pointer shows the whole text
constexpr std::size_t kMostRows = 60;     // in a group that is drawn whole
constexpr std::size_t kRowsAHead = 30;    // before the head is repeated

std::string escaped(std::string_view text) {
  std::string result;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '&' || c == '<' || c == '>' || c == '"') {
      result += "&#" + std::to_string(byte) + ';';
    } else {
      result += byte < ' ' || byte > '~' ? '?' : c;
    }
  }
  return result;
}

// If an entry has several findings, the one whose look is last in this list is drawn.
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
  filtersEntryId_t id;
  filtersEntryPriority_t priority;
  std::map<filtersMatch_t, std::string> values;
  std::string actions, policer, parent;
  const Look* look = nullptr;
  std::string found, treatment, why;
  bool isNamed = false;     // a finding about another entry names it
  std::size_t skipped = 0;  // the number of rows before it that are not drawn
};

std::string idText(const std::optional<std::uint32_t>& id) {
  return id ? std::to_string(*id) : std::string();
}

Row rowOf(const FiltersEntry& entry) {
  const EntryColumns columns = columnsOf(entry);
  Row row{};
  row.id = entry.getId();
  row.priority = entry.getPriority();
  for (const auto& [match, value] : columns.matches) {
    row.values[match] = value.empty() ? "yes" : value;
  }
  for (const std::string& action : columns.actions) {
    row.actions += (row.actions.empty() ? "" : " ") + action;
  }
  row.policer = idText(columns.policer);
  row.parent = idText(columns.parent);
  return row;
}

std::string_view treatmentOf(const Finding& finding) {
  if (finding.before.empty() && finding.after.empty()) return {};
  return finding.before == finding.after ? "alike" : "differs";
}

void mark(const Report& report, std::vector<Row>* rows) {
  std::map<filtersEntryId_t, Row*> byId;
  for (Row& row : *rows) byId[row.id] = &row;
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
// Returns the number of rows that are left out after the last row kept.
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

void sort(Order order, std::vector<Row>* rows) {
  const auto keyOf = [order](const Row& row) {
    const std::int64_t priority = order == Order::kHighestPriority  ? -std::int64_t{row.priority}
                                  : order == Order::kLowestPriority ? std::int64_t{row.priority}
                                                                    : 0;
    return std::tuple(priority, row.id);
  };
  std::sort(rows->begin(), rows->end(),
            [&](const Row& a, const Row& b) { return keyOf(a) < keyOf(b); });
}

struct Column {
  std::string name;
  std::vector<std::string> cells;

  std::size_t width() const {
    std::size_t letters = name.size();
    for (const std::string& cell : cells) letters = std::max(letters, cell.size());
    return std::min(letters, kMostLetters) * kLetter + kGap;
  }
};

std::vector<Column> tableOf(const std::vector<Row>& rows) {
  std::vector<Column> columns = {{"entry", {}}, {"priority", {}}};
  std::map<filtersMatch_t, Column> fields;
  Column actions{"then", {}}, policer{"policer", {}}, parent{"parent", {}};
  Column found{"found", {}}, treatment{"treatment", {}};
  for (const Row& row : rows) {
    for (const auto& [match, value] : row.values) fields[match].name = nameOf(match);
  }
  for (const Row& row : rows) {
    columns[0].cells.push_back(std::to_string(row.id));
    columns[1].cells.push_back(std::to_string(row.priority));
    for (auto& [match, column] : fields) {
      const auto value = row.values.find(match);
      column.cells.push_back(value == row.values.end() ? "" : value->second);
    }
    actions.cells.push_back(row.actions);
    policer.cells.push_back(row.policer);
    parent.cells.push_back(row.parent);
    found.cells.push_back(row.found);
    treatment.cells.push_back(row.treatment);
  }
  for (auto& [match, column] : fields) columns.push_back(std::move(column));
  columns.push_back(std::move(actions));
  for (Column* column : {&policer, &parent, &found, &treatment}) {
    const auto isSet = [](const std::string& cell) { return !cell.empty(); };
    if (column == &found || std::any_of(column->cells.begin(), column->cells.end(), isSet)) {
      columns.push_back(std::move(*column));
    }
  }
  return columns;
}

constexpr char kStyle[] =
    "<style>\n"
    "text { font: 12px monospace; fill: #222 }\n"
    ".title { font-weight: bold; font-size: 14px }\n"
    ".head { fill: #666 }\n"
    "rect.plain { fill: #f6f6f6 } rect.noted { fill: #fbf7d2 } rect.redundant { fill: #dde6f0 }\n"
    "rect.tie { fill: #ffe3ad } rect.unreachable { fill: #f6c4c0 }\n"
    "</style>\n";

}  // namespace

void Picture::drawText(std::size_t x, const char* style, std::string_view text, std::size_t most) {
  if (text.empty()) return;
  const bool isCut = most != 0 && text.size() > most;
  body_ += "<text x=\"" + std::to_string(x) + "\" y=\"" + std::to_string(y_ + 14) + "\" class=\"" +
           style + "\">" + escaped(isCut ? text.substr(0, most - 2) : text) + (isCut ? ".." : "");
  if (isCut) body_ += "<title>" + escaped(text) + "</title>";
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

void Picture::add(const std::string& title, const FiltersGroup& group, const Report& report) {
  std::vector<Row> rows;
  for (const auto& [id, entry] : group.getEntriesRef()) rows.push_back(rowOf(entry));
  sort(order_, &rows);
  mark(report, &rows);
  const std::size_t behind = leaveOut(&rows);
  Report rest = report;
  rest.findings.clear();
  left_out_.append(std::move(rest));
  const std::vector<Column> columns = tableOf(rows);
  std::vector<std::string_view> head;
  std::size_t wide = 0;
  widths_.clear();
  for (const Column& column : columns) {
    head.push_back(column.name);
    widths_.push_back(column.width());
    wide += column.width();
  }
  width_ = std::max(width_, wide);
  const auto drawGap = [this](std::size_t count) {
    if (count == 0) return;
    y_ += kRow;
    drawText(kMargin, "head", "... " + counted(count, "entry") + " of which nothing is said");
  };

  y_ += kMargin;
  drawText(kMargin, "title", title + " (id " + std::to_string(group.getId()) + ')');
  y_ += 4;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (i % kRowsAHead == 0) {
      y_ += kRow;
      drawRow("head", head);
    }
    drawGap(rows[i].skipped);
    y_ += kRow;
    const char* style = rows[i].look == nullptr ? "plain" : rows[i].look->style;
    body_ += "<g><rect x=\"" + std::to_string(kMargin - 6) + "\" y=\"" + std::to_string(y_) +
             "\" width=\"" + std::to_string(wide) + "\" height=\"" + std::to_string(kRow - 2) +
             "\" class=\"" + style + "\"/>\n";
    if (!rows[i].why.empty()) body_ += "<title>" + escaped(rows[i].why) + "</title>\n";
    std::vector<std::string_view> cells;
    for (const Column& column : columns) cells.push_back(column.cells[i]);
    drawRow(style, cells);
    body_ += "</g>\n";
  }
  drawGap(behind);
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

#include "table.h"

#include <filter_inspect/filter_names.h>
#include <filter_inspect/filter_text.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

namespace FilterInspectTool {
namespace {

using namespace FiltersCommon;
using namespace FiltersInspect;

constexpr std::size_t kMostOfList = 24;  // letters of a list that is cut
constexpr std::size_t kBetween = 2;      // letters between two columns
constexpr std::size_t kIndent = 6;       // the indent of the lines below a row
constexpr std::size_t kHeading = 6;      // no heading is broken into lines narrower than this
constexpr std::ptrdiff_t kKeys = 2;      // the first columns: id and priority
constexpr std::size_t kCost = 1000;      // so that quotients keep three digits

// Appends a word to a cell.
void add(std::string_view word, std::string* cell) { (*cell += cell->empty() ? "" : " ") += word; }

bool isEmpty(const Column& column) {
  return std::all_of(column.cells.begin(), column.cells.end(),
                     [](const std::string& cell) { return cell.empty(); });
}

// Headings are short, so that many columns fit.
std::string headingOf(std::string_view field) {
  constexpr std::pair<std::string_view, std::string_view> kShort[] = {{"destination", "dst"},
                                                                      {"external", "ext"},
                                                                      {"forwarding", "fwd"},
                                                                      {"internal", "int"},
                                                                      {"protocol", "proto"}};
  std::string name(field);
  for (const auto& [word, its] : kShort) {
    const std::size_t at = name.find(word);
    if (at != name.npos) name.replace(at, word.size(), its);
  }
  return name;
}

// Cuts a list to kMostOfList letters, as in "{10,20,30 +17}". A list that is already cut is not cut
// again.
std::string cutList(const std::string& cell) {
  const std::size_t end = cell.find_last_of("}]");
  if (cell.size() <= kMostOfList || end == cell.npos || cell.find(" +") != cell.npos) return cell;
  const auto partsIn = [&cell, end](std::size_t from) {
    return static_cast<std::size_t>(std::count(cell.begin() + static_cast<std::ptrdiff_t>(from),
                                               cell.begin() + static_cast<std::ptrdiff_t>(end),
                                               ','));
  };
  const std::size_t last = cell.rfind(',', kMostOfList);
  const std::size_t at = last == cell.npos || last > end ? cell.find(',') : last;
  if (at == cell.npos || at > end) return cell;
  return cell.substr(0, at) + " +" + std::to_string(partsIn(at)) + cell.substr(end);
}

// Appends a word to a cell. If the word is longer than `width` letters, its list is cut. A `width`
// of 0 means any width.
void addCut(const std::string& word, std::size_t width, std::string* cell) {
  add(width != 0 && word.size() > width ? cutList(word) : word, cell);
}

// Joins words into a cell. Words beyond `width` letters are only counted, as in "1=packets +17".
std::string joined(const std::vector<std::string>& words, std::size_t width) {
  std::string cell;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (width != 0 && i != 0 && cell.size() + words[i].size() >= width) {
      return cell + " +" + std::to_string(words.size() - i);
    }
    add(words[i], &cell);
  }
  return cell;
}

constexpr char kInHeadings[] = "_", kInCells[] = " ,/-";  // a text may be broken behind these

// Breaks a text into lines of at most `width` letters. A line that cannot be broken may be longer.
std::vector<std::string_view> linesOf(std::string_view text, const char* breaks,
                                      std::size_t width) {
  std::vector<std::string_view> lines;
  // A blank or an underscore at the end of a line is not shown.
  const auto isShown = [&text](std::size_t i) { return text[i] != ' ' && text[i] != '_'; };
  const auto isDigit = [&text](std::size_t i) { return text[i] >= '0' && text[i] <= '9'; };
  const auto isBreak = [&](std::size_t i) {
    if (std::string_view(breaks).find(text[i]) == text.npos) return false;
    if (text[i] == '/') return text.size() - i > sizeof "/128" - 1;  // the length of a prefix stays
    // A range may be broken, but not a name such as "eth-3".
    return text[i] != '-' || (i != 0 && isDigit(i - 1) && isDigit(i + 1));
  };
  while (text.size() > width) {
    std::size_t at = text.npos;
    for (std::size_t i = 0; i + 1 < text.size() && (i <= width || at == text.npos); ++i) {
      if (isBreak(i) && (at == text.npos || i < width || !isShown(i))) at = i;
    }
    if (at == text.npos) break;
    lines.push_back(text.substr(0, at + (isShown(at) ? 1 : 0)));
    text.remove_prefix(at + 1);
  }
  lines.push_back(text);
  return lines;
}

std::size_t widestOf(const std::vector<std::string_view>& lines) {
  std::size_t width = 0;
  for (std::string_view line : lines) width = std::max(width, line.size());
  return width;
}

// A column as it is drawn, and the next smaller width that it can have if more of its cells are
// broken into lines.
struct Drawn {
  const Column* column;
  std::size_t width = 0, narrower = 0;  // `narrower` is 0 if there is none
  std::vector<std::size_t> heights;     // the number of lines of each cell
  std::vector<std::size_t> higher;      // the same if the column becomes narrower

  // `most` is the width of the table, or 0 for any width. A column that is wider than the table is
  // broken at once.
  Drawn(const Column* its, std::size_t most) : column(its), heights(its->cells.size(), 1) {
    for (const std::string& cell : its->cells) width = std::max(width, cell.size());
    width = std::max(width, widestOf(linesOf(its->name, kInHeadings, std::max(width, kHeading))));
    if (most == 0) return;
    plan(std::min(width - 1, most));
    if (width > most && narrower != 0) narrow();
  }

  std::vector<std::string_view> lines(std::size_t i) const {
    return linesOf(column->cells[i], kInCells, width);
  }
  void narrow() {
    width = narrower;
    heights.swap(higher);
    plan(width - 1);
  }
 private:
  void plan(std::size_t most) {
    narrower = std::min(kHeading, column->name.size());
    higher.clear();
    for (const std::string& cell : column->cells) {
      const auto broken = linesOf(cell, kInCells, most);
      narrower = std::max(narrower, widestOf(broken));
      higher.push_back(broken.size());
    }
    narrower = std::max(narrower, widestOf(linesOf(column->name, kInHeadings, narrower)));
    if (narrower >= width) narrower = 0;
  }
};

// A layout of the table: the columns that stand in the row of each entry, and the columns on lines
// of their own below the row.
struct Layout {
  std::vector<Drawn> in_row, below;

  std::size_t width() const {
    std::size_t width = 0;
    for (const Drawn& column : in_row) width += column.width + kBetween;
    return width - std::min(width, kBetween);
  }

  // The number of lines of each row, without the separate lines below it.
  std::vector<std::size_t> heights() const {
    std::vector<std::size_t> heights = in_row[0].heights;
    for (const Drawn& one : in_row) {
      for (std::size_t i = 0; i < heights.size(); ++i) {
        heights[i] = std::max(heights[i], one.heights[i]);
      }
    }
    return heights;
  }

  // The number of lines of the table.
  std::size_t height() const {
    std::size_t height = 0;
    for (const std::size_t lines : heights()) height += lines;
    for (const Drawn& one : below) {
      for (const std::string& cell : one.column->cells) height += cell.empty() ? 0 : 1;
    }
    return height;
  }

  // Makes columns narrower until the table fits. In each round, chooses the column for which the
  // fewest lines are added for each letter saved. Returns false if the table cannot fit.
  bool fit(std::size_t most) {
    while (width() > most) {
      const std::vector<std::size_t> rows = heights();
      const auto cost = [&rows](const Drawn& one) {
        if (one.narrower == 0) return SIZE_MAX;
        std::size_t added = 0;
        for (std::size_t i = 0; i < rows.size(); ++i) {
          added += std::max(one.higher[i], rows[i]) - rows[i];
        }
        return kCost * added / (one.width - one.narrower);
      };
      Drawn* best = nullptr;
      std::size_t least = SIZE_MAX;
      for (Drawn& one : in_row) {
        const std::size_t its = cost(one);
        if (its < least) best = &one;
        least = std::min(least, its);
      }
      if (best == nullptr) return false;
      best->narrow();
    }
    return true;
  }

  // Moves the widest column of actions, policers or counters below the rows, or, if none of these
  // is left, the widest column of fields. Returns false if only the columns of ids and priorities
  // are left.
  bool moveDown() {
    const auto rank = [](const Drawn& one) { return std::pair(one.column->holds, one.width); };
    const auto out =
        std::max_element(in_row.begin(), in_row.end(),
                         [&](const Drawn& a, const Drawn& b) { return rank(a) < rank(b); });
    if (out->column->holds == Column::Holds::kKey) return false;
    below.push_back(*out);
    in_row.erase(out);
    std::sort(below.begin(), below.end(),
              [](const Drawn& a, const Drawn& b) { return a.column < b.column; });
    return true;
  }
};

// The layout with the fewest lines. If several layouts have the same number of lines, returns the
// one with the most columns in the row.
Layout bestLayout(const std::vector<Column>& columns, std::size_t width) {
  Layout next;
  for (const Column& column : columns) next.in_row.emplace_back(&column, width);
  if (width == 0) return next;
  std::optional<Layout> best;
  std::size_t lines = SIZE_MAX;
  do {
    Layout tried = next;
    if (!tried.fit(width)) continue;
    const std::size_t its = tried.height();
    if (its >= lines) continue;
    best = std::move(tried);
    lines = its;
  } while (lines != columns[0].cells.size() && next.moveDown());
  return best ? *std::move(best) : next;
}

// Draws cells beside each other. Cells with fewer lines are aligned at the top or at the bottom.
void drawCells(const std::vector<Drawn>& columns,
               const std::vector<std::vector<std::string_view>>& cells, bool atBottom,
               std::string* out) {
  std::size_t height = 0;
  for (const auto& lines : cells) height = std::max(height, lines.size());
  for (std::size_t k = 0; k < height; ++k) {
    std::string line;
    std::size_t x = 0;
    for (std::size_t i = 0; i < columns.size(); ++i) {
      const std::size_t above = atBottom ? height - cells[i].size() : 0;
      if (k >= above && k - above < cells[i].size()) {
        line.append(x - line.size(), ' ').append(cells[i][k - above]);
      }
      x += columns[i].width + kBetween;
    }
    line.erase(line.find_last_not_of(' ') + 1);
    *out += line + '\n';
  }
}

}  // namespace

Entries inOrder(const FiltersGroup& group, Order order) {
  Entries entries;
  for (const auto& [id, entry] : group.getEntriesRef()) entries.push_back(&entry);
  const auto rank = [order](const FiltersEntry* entry) {
    return rankOf(order, entry->getId(), entry->getPriority());
  };
  std::stable_sort(entries.begin(), entries.end(),
                   [&](const auto* a, const auto* b) { return rank(a) < rank(b); });
  return entries;
}

std::vector<Column> columnsOf(const Entries& entries, std::size_t width) {
  using Cells = std::vector<std::string>;
  const std::size_t count = entries.size();
  Cells ids, priorities, actions(count), policers, parents, counters;
  std::vector<std::pair<filtersMatch_t, Column>> fields;  // by code
  for (std::size_t i = 0; i < count; ++i) {
    const EntryColumns its = FiltersInspect::columnsOf(*entries[i]);
    ids.push_back(std::to_string(entries[i]->getId()));
    priorities.push_back(std::to_string(entries[i]->getPriority()));
    for (std::size_t k = 0; k < its.matches.size(); ++k) {
      const filtersMatch_t code = its.matches[k].first;
      const std::string name = headingOf(its.fields[k]);
      auto field = std::find_if(fields.begin(), fields.end(),
                                [&](const auto& one) { return one.second.name == name; });
      if (field == fields.end()) {
        const auto behind = std::find_if(fields.begin(), fields.end(),
                                         [code](const auto& one) { return one.first > code; });
        field = fields.insert(behind, {code, {name, Column::Holds::kField, Cells(count)}});
      }
      addCut(its.shown[k], width, &field->second.cells[i]);
    }
    for (const std::string& action : its.actions) addCut(action, width, &actions[i]);
    counters.push_back(joined(its.counters, width));
    policers.push_back(its.policer_text);
    parents.push_back(its.parent_text);
  }
  std::vector<Column> columns = {{"entry", Column::Holds::kKey, std::move(ids)},
                                 {"prio", Column::Holds::kKey, std::move(priorities)}};
  for (auto& [code, column] : fields) columns.push_back(std::move(column));
  const auto addTreatment = [&columns](const char* name, Cells cells) {
    columns.push_back({name, Column::Holds::kTreatment, std::move(cells)});
  };
  addTreatment("then", std::move(actions));
  for (auto& [name, cells] :
       {std::pair("policer", &policers), {"parent", &parents}, {"count", &counters}}) {
    addTreatment(name, std::move(*cells));
    if (isEmpty(columns.back())) columns.pop_back();
  }
  return columns;
}

std::string wrapped(std::string_view text, std::size_t width, std::size_t indent) {
  std::string lines;
  std::size_t room = width;
  while (width != 0 && text.size() > room) {
    std::size_t end = text.rfind(' ', room);
    if (end == text.npos) end = text.find(' ');
    if (end == text.npos) break;
    lines.append(text.substr(0, end)).append(1, '\n').append(indent, ' ');
    text.remove_prefix(end + 1);
    room = std::max(width, indent + 1) - indent;
  }
  return lines.append(text);
}

std::string drawn(const Entries& entries, std::size_t width, const std::vector<Column>& more) {
  std::vector<Column> columns = columnsOf(entries, width);
  columns.insert(columns.begin() + kKeys, more.begin(), more.end());
  Layout layout = bestLayout(columns, width);
  if (width != 0 && !(layout.below.empty() && layout.height() == columns[0].cells.size())) {
    for (Column& column : columns) {
      if (column.holds != Column::Holds::kField) continue;
      for (std::string& cell : column.cells) cell = cutList(cell);
    }
    layout = bestLayout(columns, width);
  }
  std::string text;
  std::vector<std::vector<std::string_view>> cells;
  for (const Drawn& one : layout.in_row) {
    cells.push_back(linesOf(one.column->name, kInHeadings, one.width));
  }
  drawCells(layout.in_row, cells, true, &text);
  for (std::size_t i = 0; i < columns[0].cells.size(); ++i) {
    cells.clear();
    for (const Drawn& one : layout.in_row) cells.push_back(one.lines(i));
    drawCells(layout.in_row, cells, false, &text);
    for (const Drawn& one : layout.below) {
      const std::string& cell = one.column->cells[i];
      if (cell.empty()) continue;
      const std::string line = std::string(kIndent, ' ') + one.column->name + ' ' + cell;
      text += wrapped(line, width, kIndent + one.column->name.size() + 1) + '\n';
    }
  }
  return text;
}

}  // namespace FilterInspectTool

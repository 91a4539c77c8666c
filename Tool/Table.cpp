#include "Tool/Table.h"

#include "Base/Text.h"

#include <algorithm>
#include <numeric>

namespace korvell {

namespace {
constexpr int gap = 2;
}

Table::Cell::Cell(std::string text, Ink ink) : text(escapedControls(text)), ink(ink) {}

void Table::row(std::vector<Cell> cells) {
  cells.resize(columns_.size(), Cell(""));
  rows_.push_back(std::move(cells));
}

std::vector<int> Table::widths(int width) const {
  std::vector<int> widths;
  for (size_t column = 0; column < columns_.size(); ++column) {
    int widest = displayWidth(columns_[column].title);
    for (const auto& row : rows_) widest = std::max(widest, displayWidth(row[column].text));
    widths.push_back(widest);
  }
  const int room = width - gap * (int(columns_.size()) - 1);
  while (std::accumulate(widths.begin(), widths.end(), 0) > room) {
    int victim = -1;
    for (size_t column = 0; column < columns_.size(); ++column) {
      const bool gives = columns_[column].flexible && widths[column] > columns_[column].minimum;
      if (gives && (victim < 0 || widths[column] > widths[size_t(victim)])) victim = int(column);
    }
    if (victim < 0) break;
    --widths[size_t(victim)];
  }
  return widths;
}

int Table::narrowest() const {
  const auto widths = this->widths(0);
  return std::accumulate(widths.begin(), widths.end(), gap * (int(widths.size()) - 1));
}

std::vector<std::string> Table::lines(const Terminal& terminal, int width) const {
  const auto widths = this->widths(width);
  const auto format = [&](const std::vector<Cell>& cells) {
    std::string line;
    int pending = 0; // spaces are only written once something follows
    for (size_t column = 0; column < columns_.size(); ++column) {
      const auto text = truncatedToWidth(cells[column].text, widths[column]);
      const int padding = widths[column] - displayWidth(text);
      const bool right = columns_[column].align == Column::Align::right;
      pending += right ? padding : 0;
      if (!text.empty()) {
        line.append(size_t(pending), ' ');
        line += terminal.ink(cells[column].ink, text);
        pending = 0;
      }
      pending += (right ? 0 : padding) + gap;
    }
    return line;
  };

  std::vector<std::string> result;
  std::vector<Cell> titles;
  for (const auto& column : columns_) titles.emplace_back(column.title, Ink::dim);
  if (std::any_of(titles.begin(), titles.end(), [](const Cell& cell) { return !cell.text.empty(); }))
    result.push_back(format(titles));
  for (const auto& row : rows_) result.push_back(format(row));
  return result;
}

void Table::print(Terminal& terminal) const {
  for (const auto& line : lines(terminal, terminal.columns())) terminal.line(line);
}

void printLabelled(Terminal& out, const std::vector<std::pair<std::string, std::string>>& lines, int column) {
  for (const auto& [label, text] : lines) column = std::max(column, displayWidth(label) + 1);
  for (const auto& [label, text] : lines)
    out.line(out.ink(Ink::bold, label + std::string(std::size_t(column - displayWidth(label)), ' ')) + text);
}

} // namespace korvell

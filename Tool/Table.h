#pragma once
// Aligned columns that fit the terminal. Cells are escaped (no control character of a name reaches the
// terminal) and measured in terminal columns, so that wide characters line up too.

#include "Tool/Terminal.h"

#include <string>
#include <utility>
#include <vector>

namespace korvell {

struct Column {
  std::string title;
  enum class Align { left, right } align = Align::left;
  /// Gives way when the table is wider than the terminal: cells are cut to what is left, the widest column
  /// first, down to `minimum`.
  bool flexible = false;
  int minimum = 8;
};

class Table {
public:
  struct Cell {
    std::string text;
    Ink ink = Ink::plain;
    Cell(std::string text, Ink ink = Ink::plain);
    Cell(const char* text) : Cell(std::string(text)) {}
  };

  explicit Table(std::vector<Column> columns) : columns_(std::move(columns)) {}
  void row(std::vector<Cell> cells);
  bool empty() const { return rows_.empty(); }
  /// The lines, the titles first (none when every title is empty), each at most `width` columns.
  std::vector<std::string> lines(const Terminal& terminal, int width) const;
  void print(Terminal& terminal) const;
  /// The columns that the lines take when those that give way have done so.
  int narrowest() const;

private:
  std::vector<int> widths(int width) const;
  std::vector<Column> columns_;
  std::vector<std::vector<Cell>> rows_;
};

/// Lines of a bold label and a text, the texts below each other from this column on, or from where the widest
/// label allows.
void printLabelled(Terminal& out, const std::vector<std::pair<std::string, std::string>>& lines, int column);

} // namespace korvell

#pragma once
// Where a command prints: a terminal, a pipe or, in tests, a string.
//
// Commands print UTF-8 and ask for inks; what the other end cannot show is left out here: colours only on a
// terminal and never with NO_COLOR, and where the locale is not UTF-8 every character that has a plain
// equivalent of the same width is replaced by it.

#include "Base/UserFolders.h"

#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

namespace korvell {

enum class Ink { plain, dim, bold, good, warning, critical, accent };

class Terminal {
public:
  /// Prints to an open file, whose abilities are asked of the system and the environment.
  Terminal(std::FILE* file, const Environment& environment);
  /// Prints into a string.
  Terminal(std::string& sink, int columns, bool unicode = true, bool colors = false);

  void write(std::string_view text);
  /// Bytes as they are, for what is read by programs.
  void writeRaw(std::string_view bytes);
  void line(std::string_view text = {}) {
    write(text);
    write("\n");
  }
  void flush();
  /// True once anything was written.
  bool isUsed() const { return isUsed_; }
  /// Why something that was written did not arrive; nothing when all did, or when the reader had enough.
  std::optional<std::string> loss() const;

  bool isTerminal() const { return isTerminal_; }
  bool unicode() const { return unicode_; }
  bool colors() const { return colors_; }
  /// The width to print for: the terminal's own at this moment, else COLUMNS, else 80.
  int columns() const;

  /// The text in that ink; unchanged without colours.
  std::string ink(Ink ink, std::string_view text) const;

private:
  std::FILE* file_ = nullptr;
  std::string* sink_ = nullptr;
  int fixedColumns_ = 80;
  bool isTerminal_ = false;
  bool unicode_ = true;
  bool colors_ = false;
  bool isUsed_ = false;
  int lossError_ = 0; ///< of the system; 0 for none
};

/// The text with everything outside ASCII replaced, column for column: "–" by "-", "█" by "#", other
/// characters by as many "?" as they are wide.
std::string plainText(std::string_view utf8);

/// Columns that a line takes on the terminal, escape sequences for inks not counted.
int inkedWidth(std::string_view line);

/// The line cut to `columns`; what is cut ends in "…".
std::string fitted(std::string_view inkedLine, int columns);

/// A horizontal bar of `width` columns, filled by eighths.
std::string bar(double fraction, int width);
/// One column that shows a fraction by its height, for rows of bars.
std::string columnBar(double fraction);

} // namespace korvell

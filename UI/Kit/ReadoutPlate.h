#pragma once
// The plate in the lane above a plot that says what is pointed at: words and figures in one row.

#include "UI/Kit/Theme.h"
#include "UI/Kit/Type.h"

#include <QFont>
#include <QPainter>

#include <string_view>
#include <vector>

namespace korvell {

class ReadoutPlate {
public:
  explicit ReadoutPlate(const Theme& theme) : theme_(theme) {}

  void add(TextStyle style, Token ink, std::string_view words);
  /// A stroke of a line's colour.
  void addSwatch(Token token);

  double width() const;
  /// Centred on a place, but inside from one end to the other: where it is too long for both, it begins at
  /// the first.
  void draw(QPainter& painter, double middle, double from, double to) const;

private:
  struct Piece {
    QString words; ///< empty: a swatch
    QFont font;
    QColor ink;
    double width;
  };
  const Theme& theme_;
  std::vector<Piece> pieces_;
};

} // namespace korvell

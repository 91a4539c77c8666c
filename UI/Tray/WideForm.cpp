#include "UI/Tray/WideForm.h"

#include "UI/Kit/FigureText.h"
#include "UI/Kit/Icons.h"
#include "UI/Kit/Text.h"
#include "UI/Kit/Type.h"

#include <cmath>

namespace korvell {

namespace {

constexpr double symbolSize = 20, symbolMargin = 2; ///< the margin belongs to the icon's grid
constexpr double gap = 4;

/// The drawing's origin is at the lower left.
void drawDrawing(QPainter& painter, const QPointF& corner, const Drawing& drawing, const QColor& ink) {
  for (const auto& command : drawing.commands) {
    const auto& from = command.rectangle;
    const QRectF box(corner.x() + from.x, corner.y() + drawing.height - from.y - from.height, from.width,
                     from.height);
    const bool isFilled = command.kind == DrawingCommand::Kind::fill;
    painter.setPen(isFilled ? QPen(Qt::NoPen) : QPen(ink, 1));
    painter.setBrush(isFilled ? QBrush(ink) : QBrush(Qt::NoBrush));
    painter.drawRoundedRect(box, command.cornerRadius, command.cornerRadius);
  }
}

/// Its parts from the left, in logical pixels.
struct Parts {
  Parts(const Theme& theme, const MenuBarLabel& label)
      : font(fontOf(theme, TextStyle::strong)), words(text(label.text.value_or(""))),
        symbol(label.symbol ? symbolSize - 2 * symbolMargin : 0),
        between(label.symbol && label.text ? gap : 0), writing(label.text ? figureWidth(font, words) : 0),
        graph(label.drawing ? label.drawing->width : 0) {}

  double width() const { return symbol + between + writing + graph; }

  QFont font;
  QString words;
  double symbol, between, writing, graph;
};

} // namespace

double wideFormWidth(const Theme& theme, const MenuBarLabel& label) { return Parts(theme, label).width(); }

void drawWideForm(QPainter& painter, const QRectF& box, const Theme& theme, const MenuBarLabel& label,
                  const QColor& ink) {
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  const Parts parts(theme, label);
  double left = std::round(box.center().x() - parts.width() / 2);
  const double middle = box.center().y();
  if (label.symbol) {
    const bool isFilled = label.symbol == MenuBarLabel::Symbol::filledHeart;
    drawIcon(painter, isFilled ? Icon::heartFilled : Icon::heart,
             {left - symbolMargin, middle - symbolSize / 2, symbolSize, symbolSize}, ink);
    left += parts.symbol + parts.between;
  }
  if (label.text) {
    painter.setPen(ink);
    drawFigures(painter, QRectF(left, box.top(), parts.writing, box.height()), Qt::AlignLeft, parts.font,
                parts.words);
  }
  if (label.drawing)
    drawDrawing(painter, {left, std::round(middle - label.drawing->height / 2)}, *label.drawing, ink);
  painter.restore();
}

} // namespace korvell

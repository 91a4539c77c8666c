#pragma once
// Changing and columned figures: every digit is centred in the advance of the widest one, so that nothing
// beside a figure moves when it changes; all else is set naturally. Prose is set by the toolkit. Digits run
// left to right in every language.

#include "UI/Kit/Figure.h"
#include "UI/Kit/Painted.h"
#include "UI/Kit/Type.h"

#include <QPointF>

namespace korvell {

/// The advance of a text set so.
double figureWidth(const QFont& font, const QString& text);
void drawFigures(QPainter& painter, const QPointF& baseline, const QFont& font, const QString& text);
/// Inside a box, on its vertical middle; nothing is ever elided.
void drawFigures(QPainter& painter, const QRectF& box, Qt::Alignment horizontal, const QFont& font,
                 const QString& text);

/// A number and its unit behind it, one step smaller, 0.13 em apart; "%" follows at once.
class FigureText {
public:
  FigureText(const Theme& theme, TextStyle number, const Figure& figure);

  double width() const;
  double numberWidth() const;
  void draw(QPainter& painter, const QPointF& baseline, const QColor& number, const QColor& unit) const;

private:
  QFont numberFont_;
  QFont unitFont_;
  QString number_;
  QString unit_;
  double gap_;
};

/// A figure as a widget: one line high, as wide as it needs to be.
class FigureLabel : public Painted, public Whole {
public:
  FigureLabel(const Theme& theme, TextStyle style, QWidget* parent);

  void setFigure(Figure figure);
  const Figure& figure() const { return figure_; }
  /// Set before the number in the unit's size and `text3`: an arrow that says which way.
  void setLead(std::string_view lead);
  void setTokens(Token number, Token unit);
  /// Left, right or centre of the widget; left and right change sides in right-to-left layouts.
  void setAlignment(Qt::Alignment horizontal);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }
  QAccessible::Role role() const override { return QAccessible::StaticText; }
  std::optional<std::string> cutText() const override;

protected:
  void draw(QPainter& painter) override;

private:
  double wholeWidth() const;
  double leadWidth() const;
  QString spoken() const;

  TextStyle style_;
  Figure figure_;
  QString lead_;
  Token number_ = Token::text1;
  Token unit_ = Token::text2;
  Qt::Alignment alignment_ = Qt::AlignLeft;
};

} // namespace korvell

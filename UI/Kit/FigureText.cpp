#include "UI/Kit/FigureText.h"

#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"

#include <QCoreApplication>
#include <QFontMetricsF>
#include <QGlyphRun>
#include <QHash>
#include <QRawFont>
#include <QStyle>

#include <algorithm>
#include <utility>
#include <vector>

namespace korvell {

namespace {

constexpr double unitGap = 0.13; // of the number's size

bool isDigit(QChar letter) { return letter >= '0' && letter <= '9'; }

/// A font's ten digits: measured once, and drawn without being shaped again.
struct Digits {
  QRawFont font;
  quint32 glyphs[10] = {};
  double inset[10] = {}; ///< from the cell's left to the digit's
  double cell = 0;       ///< the widest one's advance
};

/// Touched by the main thread alone, as painting is; the toolkit's fonts end before the program's statics do.
QHash<QFont, Digits> known;
constexpr qsizetype mostKnown = 64; // styles, times the scales that were used

const Digits& digitsOf(const QFont& font) {
  if (auto found = known.constFind(font); found != known.constEnd()) return *found;
  if (known.size() >= mostKnown) known.clear();
  if (known.isEmpty()) qAddPostRoutine([] { known.clear(); });
  QFontMetricsF metrics(font);
  Digits digits{.font = QRawFont::fromFont(font)};
  double advances[10];
  for (int i = 0; i < 10; ++i) {
    QChar letter('0' + i);
    auto count = 1;
    digits.font.glyphIndexesForChars(&letter, 1, &digits.glyphs[i], &count);
    advances[i] = metrics.horizontalAdvance(letter);
    digits.cell = std::max(digits.cell, advances[i]);
  }
  for (int i = 0; i < 10; ++i) digits.inset[i] = (digits.cell - advances[i]) / 2;
  return *known.insert(font, digits);
}

/// A figure taken apart: its digits, each in a cell of one width, and all else between them.
struct Setting {
  QList<quint32> glyphs{};
  QList<QPointF> positions{};
  std::vector<std::pair<QString, double>> others{}; ///< text and where it begins
  double width = 0;

  Setting(const Digits& digits, const QFont& font, const QString& text) {
    for (qsizetype from = 0; from < text.size();) {
      if (isDigit(text[from])) {
        auto digit = text[from++].unicode() - '0';
        glyphs << digits.glyphs[digit];
        positions << QPointF(width + digits.inset[digit], 0);
        width += digits.cell;
        continue;
      }
      auto to = std::find_if(text.begin() + from, text.end(), isDigit) - text.begin();
      others.emplace_back(text.mid(from, to - from), width);
      width += QFontMetricsF(font).horizontalAdvance(others.back().first);
      from = to;
    }
  }
};

void draw(QPainter& painter, const QPointF& baseline, const Digits& digits, const QFont& font,
          const Setting& setting) {
  if (!setting.glyphs.isEmpty()) {
    QGlyphRun run;
    run.setRawFont(digits.font);
    run.setGlyphIndexes(setting.glyphs);
    run.setPositions(setting.positions);
    painter.drawGlyphRun(baseline, run);
  }
  if (setting.others.empty()) return;
  painter.save();
  painter.setLayoutDirection(Qt::LeftToRight);
  painter.setFont(font);
  for (const auto& [text, x] : setting.others)
    painter.drawText(QPointF(baseline.x() + x, baseline.y()), text);
  painter.restore();
}

} // namespace

double figureWidth(const QFont& font, const QString& text) {
  return Setting(digitsOf(font), font, text).width;
}

void drawFigures(QPainter& painter, const QPointF& baseline, const QFont& font, const QString& text) {
  const auto& digits = digitsOf(font);
  draw(painter, baseline, digits, font, Setting(digits, font, text));
}

void drawFigures(QPainter& painter, const QRectF& box, Qt::Alignment horizontal, const QFont& font,
                 const QString& text) {
  const auto& digits = digitsOf(font);
  Setting setting(digits, font, text);
  auto spare = box.width() - setting.width;
  auto left = box.left();
  if (horizontal & Qt::AlignRight) left += spare;
  if (horizontal & Qt::AlignHCenter) left += spare / 2;
  QFontMetricsF metrics(font);
  auto base = box.top() + (box.height() + metrics.ascent() - metrics.descent()) / 2;
  draw(painter, QPointF(left, base), digits, font, setting);
}

FigureText::FigureText(const Theme& theme, TextStyle number, const Figure& figure)
    : numberFont_(fontOf(theme, number)), unitFont_(fontOf(theme, unitStyle(number))),
      number_(text(figure.number)), unit_(text(figure.unit)),
      gap_(gapBefore(figure.unit).empty() ? 0 : unitGap * numberFont_.pixelSize()) {}

double FigureText::numberWidth() const { return figureWidth(numberFont_, number_); }

double FigureText::width() const { return numberWidth() + gap_ + figureWidth(unitFont_, unit_); }

void FigureText::draw(QPainter& painter, const QPointF& baseline, const QColor& number,
                      const QColor& unit) const {
  painter.setPen(number);
  drawFigures(painter, baseline, numberFont_, number_);
  painter.setPen(unit);
  drawFigures(painter, baseline + QPointF(numberWidth() + gap_, 0), unitFont_, unit_);
}

FigureLabel::FigureLabel(const Theme& theme, TextStyle style, QWidget* parent)
    : Painted(theme, parent), style_(style) {
  setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
}

void FigureLabel::setFigure(Figure figure) {
  if (figure == figure_) return;
  auto before = sizeHint();
  figure_ = std::move(figure);
  setAccessibleName(spoken());
  if (sizeHint() != before) updateGeometry();
  update();
}

void FigureLabel::setLead(std::string_view lead) {
  lead_ = text(lead);
  setAccessibleName(spoken());
  updateGeometry();
  update();
}

void FigureLabel::setTokens(Token number, Token unit) {
  number_ = number;
  unit_ = unit;
  update();
}

void FigureLabel::setAlignment(Qt::Alignment horizontal) {
  alignment_ = horizontal;
  update();
}

QString FigureLabel::spoken() const { return text(textOf(figure_)); }

double FigureLabel::leadWidth() const {
  if (lead_.isEmpty()) return 0;
  auto set = fontOf(theme(), unitStyle(style_));
  return figureWidth(set, lead_) + unitGap * fontOf(theme(), style_).pixelSize();
}

double FigureLabel::wholeWidth() const { return leadWidth() + FigureText(theme(), style_, figure_).width(); }

QSize FigureLabel::sizeHint() const { return {qCeil(wholeWidth()), lineHeight(theme(), style_)}; }

std::optional<std::string> FigureLabel::cutText() const {
  if (wholeWidth() <= width() + 0.5) return std::nullopt;
  return utf8(spoken());
}

void FigureLabel::draw(QPainter& painter) {
  auto alignment = QStyle::visualAlignment(layoutDirection(), alignment_);
  auto spare = width() - wholeWidth();
  double left = 0;
  if (alignment & Qt::AlignRight) left = spare;
  if (alignment & Qt::AlignHCenter) left = spare / 2;
  auto base = baseline(theme(), style_, (height() - lineHeight(theme(), style_)) / 2.0);
  if (!lead_.isEmpty()) {
    painter.setPen(theme().color(Token::text3));
    drawFigures(painter, QPointF(left, base), fontOf(theme(), unitStyle(style_)), lead_);
  }
  FigureText(theme(), style_, figure_)
      .draw(painter, QPointF(left + leadWidth(), base), theme().color(number_), theme().color(unit_));
}

} // namespace korvell

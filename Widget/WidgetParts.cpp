#include "Widget/WidgetParts.h"

#include "Base/Localization.h"
#include "UI/Kit/FigureText.h"
#include "UI/Kit/Labels.h"
#include "UI/Kit/Meters.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/RingArcs.h"
#include "UI/Kit/Text.h"

#include <QApplication>
#include <QFontMetricsF>
#include <QMouseEvent>
#include <QPainterPath>
#include <QStyle>
#include <QWindow>

namespace korvell {

namespace {

constexpr double restShare = 0.34;
constexpr double dotRadius = 3;
constexpr int chevronSize = 14, markSize = 14;

/// A box on the other side in right-to-left layouts.
QRectF mirrored(const QWidget& widget, const QRectF& box) {
  if (widget.layoutDirection() == Qt::LeftToRight) return box;
  return {widget.width() - box.right(), box.top(), box.width(), box.height()};
}

} // namespace

bool isDrag(const QMouseEvent& event, const std::optional<QPoint>& pressedAt) {
  return pressedAt && event.buttons().testFlag(Qt::LeftButton) &&
         (event.position().toPoint() - *pressedAt).manhattanLength() >= QApplication::startDragDistance();
}

WidgetPart::WidgetPart(const Theme& theme, Open open, QWidget* parent)
    : Control(theme, parent), open_(std::move(open)) {
  setCursor(Qt::PointingHandCursor);
}

void WidgetPart::pressed() {
  if (open_) open_(link_);
}

void WidgetPart::mousePressEvent(QMouseEvent* event) {
  pressedAt_ = event->position().toPoint();
  Control::mousePressEvent(event);
}

void WidgetPart::mouseMoveEvent(QMouseEvent* event) {
  if (!pressedAt_) return; // dragged away already
  if (!isDrag(*event, pressedAt_) || !window()->windowHandle()) return Control::mouseMoveEvent(event);
  pressedAt_.reset(); // what moves on the way here must not begin another drag
  // A drag is no click: let go outside first.
  QMouseEvent away(QEvent::MouseMove, QPointF(-1, -1), event->globalPosition(), Qt::NoButton, Qt::LeftButton,
                   event->modifiers());
  Control::mouseMoveEvent(&away);
  window()->windowHandle()->startSystemMove();
}

void WidgetPart::drawHover(QPainter& painter, const QRectF& box) {
  if (isHovered()) fillRounded(painter, box, corner(), theme().color(Token::hover));
}

RingPart::RingPart(const Theme& theme, Open open, QWidget* parent)
    : WidgetPart(theme, std::move(open), parent) {}

void RingPart::setForm(Form form) {
  form_ = form;
  update();
}

void RingPart::setScore(std::optional<int> score) {
  score_ = score;
  update();
}

void RingPart::setLabel(std::string_view label, Token token) {
  label_ = text(label);
  labelToken_ = token;
  update();
}

void RingPart::draw(QPainter& painter) {
  const auto scale = theme().look().textScale;
  const double below = label_.isEmpty() ? 0 : 26 * scale;
  painter.save();
  painter.translate(width() / 2.0, (height() - below) / 2.0);
  painter.scale(scale, scale);
  drawRing(painter);
  painter.restore();
  if (!label_.isEmpty())
    drawText(painter, QRectF(0, height() - 24 * scale, width(), 16 * scale), theme(), TextStyle::smallMedium,
             labelToken_, label_, Qt::AlignHCenter);
}

void RingPart::drawRing(QPainter& painter) const {
  const auto radius = (form_.diameter - form_.weight) / 2;
  const QRectF circle(-radius, -radius, 2 * radius, 2 * radius);
  const auto stroke = [&](const RingArc& arc, double weight, Token token) {
    if (arc.sweep <= 0) return;
    painter.setPen(QPen(theme().color(token), weight, Qt::SolidLine, Qt::FlatCap));
    painter.setBrush(Qt::NoBrush);
    QPainterPath path;
    path.arcMoveTo(circle, 90 - arc.from);
    path.arcTo(circle, 90 - arc.from, -arc.sweep);
    painter.drawPath(path);
  };
  if (score_) {
    const auto arcs = ringArcs(*score_, {100.0 - *score_}, radius);
    stroke(arcs.score, form_.weight, Token::accent);
    for (const auto& rest : arcs.lost) stroke(rest, form_.weight * restShare, Token::axis);
  } else {
    stroke({0, 360}, form_.weight, Token::sunken);
  }
  QFont digits(theme().family());
  digits.setPixelSize(qRound(form_.number));
  digits.setWeight(QFont::DemiBold);
  digits.setHintingPreference(QFont::PreferNoHinting);
  digits.setLetterSpacing(QFont::AbsoluteSpacing, -0.02 * form_.number);
  const auto number = score_ ? QString::number(*score_) : QString(u'–');
  painter.setPen(theme().color(Token::text1));
  drawFigures(painter, QPointF(-figureWidth(digits, number) / 2, QFontMetricsF(digits).capHeight() / 2),
              digits, number);
}

FixPart::FixPart(const Theme& theme, Open open, QWidget* parent)
    : WidgetPart(theme, std::move(open), parent) {}

void FixPart::setFix(const WidgetPage::Fix& fix, bool hasDetail) {
  fix_ = fix;
  hasDetail_ = hasDetail;
  setLink(fix.link);
  setName(fix.critical ? localized("Critical: {title}", {{"title", fix.title}}) : fix.title);
  setToolTip(text(fix.detail));
  update();
}

void FixPart::draw(QPainter& painter) {
  drawHover(painter, rect());
  const auto scale = theme().look().textScale;
  const double middle = hasDetail_ ? 9 * scale : height() / 2.0;
  const auto mark = mirrored(*this, QRectF(2 * scale, middle - markSize / 2.0, markSize, markSize));
  if (fix_.critical)
    drawIcon(painter, Icon::critical, mark, theme().color(Token::critical));
  else {
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme().color(Token::gray));
    painter.drawEllipse(mark.center(), dotRadius, dotRadius);
  }
  const double left = 22 * scale, end = hasDetail_ ? 4 : 4 + chevronSize;
  const auto line = [&](double top, double height) {
    return mirrored(*this, QRectF(left, top, width() - left - end, height));
  };
  const auto titleHeight = lineHeight(theme(), TextStyle::small);
  drawText(painter, line(middle - titleHeight / 2.0, titleHeight), theme(), TextStyle::small, Token::text1,
           text(fix_.title));
  if (hasDetail_) {
    drawText(painter, line(middle + titleHeight / 2.0, lineHeight(theme(), TextStyle::caption)), theme(),
             TextStyle::caption, Token::text3, text(fix_.detail));
  } else {
    drawIcon(painter, Icon::chevron,
             mirrored(*this, QRectF(width() - 2 - chevronSize, middle - chevronSize / 2.0, chevronSize,
                                    chevronSize)),
             theme().color(Token::text3), layoutDirection());
  }
}

TilePart::TilePart(const Theme& theme, Open open, QWidget* parent)
    : WidgetPart(theme, std::move(open), parent) {}

void TilePart::setTile(const WidgetPage::Tile& tile) {
  tile_ = tile;
  setLink(tile.link);
  setName(tile.spoken);
  update();
}

void TilePart::draw(QPainter& painter) {
  fillRounded(painter, rect(), corner(), theme().color(isHovered() ? Token::sunken : Token::hover));
  const auto scale = theme().look().textScale;
  const double edge = 10 * scale, inner = width() - 2 * edge;
  const double titleHeight = lineHeight(theme(), TextStyle::small);
  const auto titleTop = 8 * scale;
  const auto title = text(tile_.title);
  const auto titleWidth = std::min(inner, textWidth(theme(), TextStyle::small, title) + 2);
  drawText(painter, mirrored(*this, QRectF(edge, titleTop, titleWidth, titleHeight)), theme(),
           TextStyle::small, Token::text2, title);
  drawText(painter,
           mirrored(*this, QRectF(edge + titleWidth + 6, titleTop, inner - titleWidth - 6, titleHeight)),
           theme(), TextStyle::caption, Token::text3, text(tile_.detail), Qt::AlignRight);

  const FigureText figure(theme(), TextStyle::figureMedium, tile_.figure);
  const auto lead = text(tile_.lead);
  const auto leadWidth = lead.isEmpty() ? 0 : textWidth(theme(), TextStyle::strong, lead) + 3;
  const auto whole = leadWidth + figure.width();
  // Figures read from left to right everywhere; only where they stand is mirrored.
  const auto box = mirrored(*this, QRectF(edge, 0, whole, height()));
  const double base = 44 * scale;
  if (!lead.isEmpty()) {
    painter.setPen(theme().color(Token::text3));
    painter.setFont(fontOf(theme(), TextStyle::strong));
    painter.drawText(QPointF(box.left(), base), lead);
  }
  figure.draw(painter, QPointF(box.left() + leadWidth, base), theme().color(Token::text1),
              theme().color(Token::text2));
  drawLine(painter, edge + whole + 8);
}

/// At the end of the tile; time runs to the right in every language.
void TilePart::drawLine(QPainter& painter, double left) const {
  const auto scale = theme().look().textScale;
  const double least = 24, right = width() - 8 * scale;
  const double begin = std::max(left, right - 44 * scale);
  if (tile_.points.size() < 2 || right - begin < least) return;
  // As many points as the line of five minutes has, by interpolation.
  std::vector<std::optional<double>> values;
  const auto last = double(tile_.points.size() - 1);
  for (std::size_t i = 0; i < Sparkline::points; ++i) {
    const double at = last * double(i) / double(Sparkline::points - 1);
    const auto index = std::min(std::size_t(at), tile_.points.size() - 2);
    const double share = at - double(index);
    values.emplace_back(tile_.points[index] * (1 - share) + tile_.points[index + 1] * share);
  }
  drawSparkline(painter, mirrored(*this, QRectF(begin, 26 * scale, right - begin, 22 * scale)), theme(),
                tile_.line, values, tile_.top);
}

AppPart::AppPart(const Theme& theme, Open open, QWidget* parent)
    : WidgetPart(theme, std::move(open), parent) {}

void AppPart::setApp(const WidgetPage::App& app) {
  app_ = app;
  setName(app.name + ", " + app.memory);
  update();
}

void AppPart::draw(QPainter& painter) {
  drawHover(painter, rect());
  const auto scale = theme().look().textScale;
  const double middle = height() / 2.0, picture = 18 * scale, inset = 4;
  const double barLeft = 138 * scale, barWidth = 96 * scale;
  drawMonogram(painter, mirrored(*this, QRectF(inset, middle - picture / 2, picture, picture)), theme(),
               monogramHue(app_.id), app_.name);
  const double nameLeft = inset + picture + 8;
  drawText(painter, mirrored(*this, QRectF(nameLeft, 0, barLeft - nameLeft - 8, height())), theme(),
           TextStyle::small, Token::text1, text(app_.name));
  drawBar(painter, mirrored(*this, QRectF(barLeft, middle - 2, barWidth, 4)), theme(), Token::memory,
          app_.fraction, layoutDirection());
  const auto font = fontOf(theme(), TextStyle::small);
  const auto memory = text(app_.memory);
  const auto width = figureWidth(font, memory);
  painter.setPen(theme().color(Token::text1));
  drawFigures(painter, mirrored(*this, QRectF(this->width() - inset - width, 0, width, height())),
              Qt::AlignLeft, font, memory);
}

OpenPart::OpenPart(const Theme& theme, Open open, QWidget* parent)
    : WidgetPart(theme, std::move(open), parent), words_(text(localized("Open Korvell"))) {
  setName(utf8(words_));
}

QSize OpenPart::sizeHint() const {
  return {qCeil(textWidth(theme(), TextStyle::strong, words_)) + chevronSize + 14, theme().scaled(26)};
}

void OpenPart::draw(QPainter& painter) {
  if (isHovered()) fillRounded(painter, rect(), corner(), theme().color(Token::accentWash));
  const auto wide = textWidth(theme(), TextStyle::strong, words_);
  drawText(painter, mirrored(*this, QRectF(6, 0, wide + 1, height())), theme(), TextStyle::strong,
           Token::accent, words_);
  drawIcon(painter, Icon::chevron,
           mirrored(*this, QRectF(6 + wide + 1, (height() - chevronSize) / 2.0, chevronSize, chevronSize)),
           theme().color(Token::accent), layoutDirection());
}

} // namespace korvell

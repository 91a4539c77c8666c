#include "UI/Parts/PartViews.h"

#include "Base/Localization.h"
#include "UI/Kit/FigureText.h"
#include "UI/Kit/Icons.h"
#include "UI/Kit/Meters.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"
#include "UI/Kit/Tone.h"
#include "UI/Parts/PageLayout.h"

#include <QScrollArea>
#include <algorithm>

namespace korvell {

namespace {

QRect placedRect(const QWidget& widget, int from, int top, int width, int height) {
  return fromStart(widget, from, top, width, height).toRect();
}

struct FindingMeasures {
  int height, top, mark, penaltyRight, textLeft, buttonGap;

  FindingMeasures at(const Theme& theme) const {
    return {theme.scaled(height), top, mark, theme.scaled(penaltyRight), theme.scaled(textLeft), buttonGap};
  }
};
constexpr FindingMeasures findings[] = {
    {47, 0, 18, 48, 62, 16}, {46, 0, 16, 45, 54, 16}, {0, 8, 16, 46, 54, 10}};
constexpr int quietPadding = 6; ///< of a quiet button, which is to end where the text above it does

FindingMeasures findingMeasures(PartForm form, const Theme& theme) {
  return findings[std::size_t(form)].at(theme);
}

void drawPenalty(QPainter& painter, const QRectF& box, const Theme& theme, const FindingRow& row) {
  painter.setPen(theme.color(lookOf(row.tone).text));
  const auto alignment = painter.layoutDirection() == Qt::RightToLeft ? Qt::AlignLeft : Qt::AlignRight;
  drawFigures(painter, box, alignment, fontOf(theme, TextStyle::head), "−" + QString::number(row.penalty));
}

} // namespace

FindingView::FindingView(const Theme& theme, PartForm form, QWidget* parent)
    : Painted(theme, parent), form_(form),
      title_(new TextLabel(theme, TextStyle::strong, Token::text1, "", this)),
      detail_(new TextLabel(theme, TextStyle::small, Token::text2, "", this)),
      button_(
          new Button(theme, form == PartForm::panel ? Button::Kind::quiet : Button::Kind::plain, "", this)) {
  detail_->setWrapped(2);
  if (isPanel()) button_->setHeight(Button::Height::compact);
  button_->onPress([this] {
    if (row_.fix && step_) step_(*row_.fix);
  });
  QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Maximum);
  policy.setHeightForWidth(true);
  setSizePolicy(policy);
}

void FindingView::show(const FindingRow& row, bool isPrimary) {
  row_ = row;
  setName(row.name);
  title_->setWords(row.title);
  detail_->setWords(row.detail);
  button_->setVisible(row.fix.has_value());
  if (row.fix) {
    button_->setWords(row.fix->words);
    if (isPanel())
      button_->setMark(row.fix->leadsOn() ? Button::Mark::chevron : Button::Mark::none);
    else
      button_->setKind(isPrimary ? Button::Kind::primary : Button::Kind::plain);
  }
  updateGeometry();
  arrange();
  update();
}

void FindingView::setForm(PartForm form) {
  if (std::exchange(form_, form) == form) return;
  updateGeometry();
  arrange();
}

void FindingView::setPointedAt(bool isPointedAt) {
  if (std::exchange(isPointedAt_, isPointedAt) != isPointedAt) update();
}

int FindingView::detailWidth(int width) const {
  const auto m = findingMeasures(form_, theme());
  const bool sharesLine = !isPanel() && row_.fix;
  return width - 2 * rowOutset - m.textLeft - (sharesLine ? button_->sizeHint().width() + m.buttonGap : 0);
}

int FindingView::heightForWidth(int width) const {
  const auto m = findingMeasures(form_, theme());
  const int title = lineHeight(theme(), TextStyle::strong);
  const int detail = detail_->heightForWidth(std::max(40, detailWidth(width)));
  if (!isPanel()) return m.height + detail - lineHeight(theme(), TextStyle::small);
  return 2 * m.top + title + detail;
}

// Between the words in one line and those in as many as there may be; the width at hand decides.
QSize FindingView::sizeHint() const { return {320, heightForWidth(200)}; }

QSize FindingView::minimumSizeHint() const { return {200, heightForWidth(QWIDGETSIZE_MAX)}; }

void FindingView::resizeEvent(QResizeEvent*) { arrange(); }

void FindingView::arrange() {
  const auto m = findingMeasures(form_, theme());
  const auto button = button_->sizeHint();
  const int title = lineHeight(theme(), TextStyle::strong);
  const int detailRoom = std::max(40, detailWidth(width()));
  const int detail = detail_->heightForWidth(detailRoom);
  const int top = isPanel() ? m.top : (height() - title - detail + 1) / 2;
  const int left = rowOutset + m.textLeft;
  const int buttonRight = width() - rowOutset + (isPanel() ? quietPadding : 0);
  const int titleEnd = row_.fix ? buttonRight - button.width() - (isPanel() ? 4 : m.buttonGap) : buttonRight;
  title_->setGeometry(placedRect(*this, left, top, std::max(1, titleEnd - left), title));
  detail_->setGeometry(placedRect(*this, left, top + title, detailRoom, detail));
  const int buttonTop =
      isPanel() ? top + (title - button.height()) / 2 : (height() - button.height() + 1) / 2;
  button_->setGeometry(
      placedRect(*this, buttonRight - button.width(), buttonTop, button.width(), button.height()));
}

void FindingView::draw(QPainter& painter) {
  const auto m = findingMeasures(form_, theme());
  drawHairline(painter, {double(rowOutset), 0}, width() - 2 * rowOutset, theme().color(Token::hairline));
  if (isPointedAt_)
    fillRounded(painter, QRectF(rect()).adjusted(2, 3, -2, -2), 6, theme().color(Token::hover));
  const auto& look = lookOf(row_.tone);
  const double middle = title_->geometry().center().y() + 0.5;
  drawIcon(painter, look.icon, fromStart(*this, rowOutset, middle - m.mark / 2.0, m.mark, m.mark),
           theme().color(look.mark), layoutDirection());
  painter.setLayoutDirection(layoutDirection());
  drawPenalty(painter, fromStart(*this, rowOutset + m.mark, middle - 9, m.penaltyRight - m.mark, 18), theme(),
              row_);
}

void FindingView::enterEvent(QEnterEvent*) {
  if (hover_) hover_(true);
}

void FindingView::leaveEvent(QEvent*) {
  if (hover_) hover_(false);
}

namespace {

struct TileMeasures {
  QSize size;
  double padding, titleTop, figureBase, captionTop, icon, pictureTop;
  QSizeF picture;
};
constexpr TileMeasures tiles[] = {{{160, 88}, 12, 9, 54, 61, 18, 16, {110, 36}},
                                  {{160, 80}, 10, 7, 48, 54, 17, 18, {72, 32}},
                                  {{150, 62}, 10, 6, 46, 6, 0, 26, {54, 26}}};

const TileMeasures& tileMeasures(PartForm form) { return tiles[std::size_t(form)]; }

} // namespace

TileView::TileView(const Theme& theme, PartForm form, QWidget* parent) : Control(theme, parent), form_(form) {
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  setMinimumHeight(0); // its own is more than a control's, to which a layout would go down in a crowd
}

void TileView::setForm(PartForm form) {
  if (std::exchange(form_, form) == form) return;
  updateGeometry();
  update();
}

QSize TileView::sizeHint() const {
  const auto& m = tileMeasures(form_);
  return {m.size.width(), theme().scaled(m.size.height())};
}

void TileView::show(const Tile& tile) {
  if (tile == tile_) return;
  tile_ = tile;
  setName(tile.name);
  setReason(tile.reason);
  update();
}

double TileView::figureWidth() const {
  const double lead = tile_.lead.empty() ? 0 : textWidth(theme(), TextStyle::body, text(tile_.lead)) + 4;
  return lead + FigureText(theme(), TextStyle::figureMedium, tile_.figure).width();
}

std::optional<std::string> TileView::cutText() const {
  const auto& m = tileMeasures(form_);
  if (figureWidth() + 2 * m.padding <= width()) return std::nullopt;
  return tile_.figure.number + tile_.figure.unit;
}

void TileView::draw(QPainter& painter) {
  const auto& m = tileMeasures(form_);
  fillRounded(painter, QRectF(rect()), corner(), theme().color(isHovered() ? Token::sunken : Token::hover));
  const double scale = double(height()) / m.size.height();
  painter.setLayoutDirection(layoutDirection());
  drawHead(painter, scale);
  drawFigure(painter, m.figureBase * scale);
  drawPicture(painter, scale);
}

void TileView::drawHead(QPainter& painter, double scale) {
  const auto& m = tileMeasures(form_);
  const double line = 18 * scale, right = width() - m.padding;
  double left = m.padding;
  if (m.icon > 0) {
    drawIcon(painter, tile_.icon,
             fromStart(*this, left, (m.titleTop + 9) * scale - m.icon / 2, m.icon, m.icon),
             theme().color(tile_.line), layoutDirection());
    left += m.icon + 6;
  }
  const bool isPanel = form_ == PartForm::panel;
  const auto caption = text(isPanel ? tile_.shortCaption : tile_.caption);
  const double rest = right - left - textWidth(theme(), TextStyle::smallMedium, text(tile_.title)) - 2;
  const double beside = isPanel ? std::min(textWidth(theme(), TextStyle::small, caption) + 8, rest) : 0;
  drawText(painter, fromStart(*this, left, m.titleTop * scale, right - left - beside, line), theme(),
           TextStyle::smallMedium, Token::text2, text(tile_.title));
  const auto box = isPanel ? fromStart(*this, right - beside, m.titleTop * scale, beside, line)
                           : fromStart(*this, m.padding, m.captionTop * scale, width() - 2 * m.padding, line);
  drawText(painter, box, theme(), TextStyle::small, Token::text3, caption,
           isPanel ? Qt::AlignRight : Qt::AlignLeft);
}

void TileView::drawFigure(QPainter& painter, double base) {
  const double left =
      isRightToLeft() ? width() - tileMeasures(form_).padding - figureWidth() : tileMeasures(form_).padding;
  FigureText(theme(), TextStyle::figureMedium, tile_.figure)
      .draw(painter, {drawLead(painter, left, base), base}, theme().color(Token::text1),
            theme().color(Token::text2));
}

void TileView::drawPicture(QPainter& painter, double scale) {
  const auto& m = tileMeasures(form_);
  const double room = width() - 2 * m.padding - figureWidth() - 10;
  const double wide = std::min(room, m.picture.width());
  if (wide < std::min(40.0, m.picture.width())) return;
  const auto box =
      fromStart(*this, width() - m.padding - wide, m.pictureTop * scale, wide, m.picture.height() * scale);
  if (std::ranges::none_of(tile_.values, [](const auto& value) { return value.has_value(); }))
    return drawHairline(painter, {box.left(), box.bottom() - 1}, wide, theme().color(Token::axis));
  drawSparkline(painter, box, theme(), tile_.line, tile_.values, tile_.top);
}

double TileView::drawLead(QPainter& painter, double left, double base) {
  if (tile_.lead.empty()) return left;
  painter.setPen(theme().color(Token::text3));
  painter.setFont(fontOf(theme(), TextStyle::strong));
  painter.drawText(QPointF(left, base - 1), text(tile_.lead));
  return left + textWidth(theme(), TextStyle::body, text(tile_.lead)) + 4;
}

QMargins besideBar(QMargins margins, const QScrollArea& area) {
  const int lane = area.width() - area.viewport()->width();
  if (area.isRightToLeft())
    margins.setLeft(std::max(0, margins.left() - lane));
  else
    margins.setRight(std::max(0, margins.right() - lane));
  return margins;
}

} // namespace korvell

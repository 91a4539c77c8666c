#include "UI/Parts/PartViews.h"

#include "Base/Localization.h"
#include "UI/Kit/FigureText.h"
#include "UI/Kit/Icons.h"
#include "UI/Kit/Meters.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"
#include "UI/Kit/Tone.h"

#include <algorithm>

namespace korvell {

namespace {

/// A box given from the side where reading begins.
QRectF placed(const QWidget& widget, double from, double top, double width, double height) {
  const double x = widget.layoutDirection() == Qt::RightToLeft ? widget.width() - from - width : from;
  return {x, top, width, height};
}

QRect placedRect(const QWidget& widget, int from, int top, int width, int height) {
  return placed(widget, from, top, width, height).toRect();
}

struct FindingMeasures {
  int height, top, penaltyRight, textLeft, buttonGap;
};
constexpr FindingMeasures pageFinding{47, 7, 48, 62, 16}, panelFinding{0, 9, 42, 54, 8};
constexpr int markSize = 16;

const FindingMeasures& measures(PartForm form) { return form == PartForm::page ? pageFinding : panelFinding; }

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
          new Button(theme, form == PartForm::page ? Button::Kind::plain : Button::Kind::quiet, "", this)) {
  detail_->setWrapped(form == PartForm::page ? 1 : 2);
  if (form == PartForm::panel) button_->setHeight(Button::Height::compact);
  button_->onPress([this] {
    if (row_.fix && step_) step_(*row_.fix);
  });
  QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Fixed);
  policy.setHeightForWidth(true);
  setSizePolicy(policy);
}

void FindingView::show(const FindingRow& row, bool isFirst) {
  row_ = row;
  setName(row.name);
  title_->setWords(row.title);
  detail_->setWords(row.detail);
  button_->setVisible(row.fix.has_value());
  if (row.fix) {
    button_->setWords(row.fix->words);
    if (form_ == PartForm::panel)
      button_->setMark(row.fix->leadsOn() ? Button::Mark::chevron : Button::Mark::none);
    else
      button_->setKind(isFirst ? Button::Kind::primary : Button::Kind::plain);
  }
  updateGeometry();
  arrange();
  update();
}

void FindingView::setPointedAt(bool isPointedAt) {
  if (std::exchange(isPointedAt_, isPointedAt) != isPointedAt) update();
}

int FindingView::detailWidth(int width) const {
  const auto& m = measures(form_);
  const bool sharesLine = form_ == PartForm::page && row_.fix;
  return width - m.textLeft - (sharesLine ? button_->sizeHint().width() + m.buttonGap : 0);
}

int FindingView::heightForWidth(int width) const {
  const auto& m = measures(form_);
  const int title = lineHeight(theme(), TextStyle::strong);
  const int detail = detail_->heightForWidth(std::max(40, detailWidth(width)));
  return std::max(theme().scaled(m.height), 2 * m.top + title + detail);
}

QSize FindingView::sizeHint() const { return {320, heightForWidth(320)}; }

QSize FindingView::minimumSizeHint() const { return {200, heightForWidth(200)}; }

void FindingView::resizeEvent(QResizeEvent*) { arrange(); }

void FindingView::arrange() {
  const auto& m = measures(form_);
  const auto button = button_->sizeHint();
  const int title = lineHeight(theme(), TextStyle::strong);
  const int detailRoom = std::max(40, detailWidth(width()));
  const int detail = detail_->heightForWidth(detailRoom);
  const int top = form_ == PartForm::page ? (height() - title - detail) / 2 : m.top;
  const int taken = row_.fix ? button.width() + m.buttonGap : 0;
  title_->setGeometry(placedRect(*this, m.textLeft, top, std::max(0, width() - m.textLeft - taken), title));
  detail_->setGeometry(placedRect(*this, m.textLeft, top + title, detailRoom, detail));
  const int buttonTop =
      form_ == PartForm::page ? (height() - button.height()) / 2 : top + (title - button.height()) / 2;
  button_->setGeometry(
      placedRect(*this, width() - button.width(), buttonTop, button.width(), button.height()));
}

void FindingView::draw(QPainter& painter) {
  const auto& m = measures(form_);
  if (isPointedAt_)
    fillRounded(painter, QRectF(rect()).adjusted(-8, 1, 8, -1), 6, theme().color(Token::hover));
  const auto& look = lookOf(row_.tone);
  const double middle =
      form_ == PartForm::page ? title_->geometry().center().y() + 0.5 : title_->geometry().center().y() + 0.5;
  drawIcon(painter, look.icon, placed(*this, 0, middle - markSize / 2.0, markSize, markSize),
           theme().color(look.mark), layoutDirection());
  painter.setLayoutDirection(layoutDirection());
  drawPenalty(painter, placed(*this, markSize, middle - 9, m.penaltyRight - markSize, 18), theme(), row_);
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
  double padding, figureBase;
  QSizeF picture;
};
constexpr TileMeasures pageTile{{180, 88}, 13, 54, {112, 40}}, panelTile{{160, 62}, 10, 46, {54, 24}};

const TileMeasures& tileMeasures(PartForm form) { return form == PartForm::page ? pageTile : panelTile; }

} // namespace

TileView::TileView(const Theme& theme, PartForm form, QWidget* parent) : Control(theme, parent), form_(form) {
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize TileView::sizeHint() const {
  const auto& m = tileMeasures(form_);
  return {m.size.width(), theme().scaled(m.size.height())};
}

void TileView::show(const Tile& tile) {
  if (tile == tile_) return;
  tile_ = tile;
  setName(tile.name);
  setToolTip(text(tile.reason));
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
  const bool isPage = form_ == PartForm::page;
  fillRounded(painter, QRectF(rect()), corner(), theme().color(isHovered() ? Token::sunken : Token::hover));
  const double scale = double(height()) / m.size.height();
  const double line = 18 * scale, right = width() - m.padding;
  double left = m.padding;
  if (isPage) {
    drawIcon(painter, tile_.icon, placed(*this, left, 18 * scale - 8, 16, 16), theme().color(tile_.line),
             layoutDirection());
    left += 23;
  }
  painter.setLayoutDirection(layoutDirection());
  const double titleTop = isPage ? 9 * scale : 6 * scale;
  const auto caption = text(isPage ? tile_.caption : tile_.shortCaption);
  const double captionRoom = isPage ? 0 : textWidth(theme(), TextStyle::small, caption) + 8;
  drawText(painter, placed(*this, left, titleTop, right - left - captionRoom, line), theme(),
           isPage ? TextStyle::small : TextStyle::smallMedium, Token::text2, text(tile_.title));
  const auto captionBox = isPage ? placed(*this, m.padding, 61 * scale, width() - 2 * m.padding, line)
                                 : placed(*this, right - captionRoom, titleTop, captionRoom, line);
  drawText(painter, captionBox, theme(), TextStyle::small, isPage ? Token::text2 : Token::text3, caption,
           isPage ? Qt::AlignLeft : Qt::AlignRight);
  const double figure = figureWidth();
  const double figureLeft = isRightToLeft() ? width() - m.padding - figure : m.padding;
  const double base = m.figureBase * scale;
  const double number = drawLead(painter, figureLeft, base);
  FigureText(theme(), TextStyle::figureMedium, tile_.figure)
      .draw(painter, {number, base}, theme().color(Token::text1), theme().color(Token::text2));
  const double room = width() - 2 * m.padding - figure - 8;
  if (room >= m.picture.width() / 2) {
    const double wide = std::min(room, m.picture.width());
    const double top = isPage ? 16 * scale : height() - m.padding - m.picture.height();
    drawSparkline(painter, placed(*this, right - wide, top, wide, m.picture.height()), theme(), tile_.line,
                  tile_.values, tile_.top);
  }
}

double TileView::drawLead(QPainter& painter, double left, double base) {
  if (tile_.lead.empty()) return left;
  painter.setPen(theme().color(Token::text2));
  painter.setFont(fontOf(theme(), TextStyle::body));
  painter.drawText(QPointF(left, base - 1), text(tile_.lead));
  return left + textWidth(theme(), TextStyle::body, text(tile_.lead)) + 4;
}

namespace {

constexpr double monogram = 20, nameLeft = 30, panelFigure = 66, panelBar = 88;

struct Column {
  UsageKey key;
  double width; ///< at the end of the row, from the last one
  Figure AppRow::*figure;
};
constexpr Column columns[] = {{UsageKey::cpu, 86, &AppRow::cpu},
                              {UsageKey::memory, 106, &AppRow::memory},
                              {UsageKey::disk, 114, &AppRow::disk},
                              {UsageKey::network, 118, &AppRow::network}};
constexpr double leastName = 120;

/// How many columns fit beside a name, the first ones first.
std::size_t columnsWithin(double width) {
  std::size_t count = std::size(columns);
  const auto taken = [&] {
    double sum = 0;
    for (std::size_t i = 0; i < count; ++i) sum += columns[i].width;
    return sum;
  };
  while (count > 2 && taken() + leastName > width) --count;
  return count;
}

/// Calls with each shown column and its box, from the last.
template <class F>
void eachColumn(const QWidget& widget, F call) {
  double end = widget.width();
  for (auto i = columnsWithin(widget.width()); i-- > 0; end -= columns[i].width)
    call(columns[i], placed(widget, end - columns[i].width, 0, columns[i].width, widget.height()));
}

} // namespace

AppRowView::AppRowView(const Theme& theme, PartForm form, QWidget* parent)
    : Control(theme, parent), form_(form) {
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize AppRowView::sizeHint() const { return {200, theme().scaled(form_ == PartForm::page ? 30 : 26)}; }

void AppRowView::show(const AppRow& row, UsageKey sortedBy) {
  if (row == row_ && sortedBy == sortedBy_) return;
  row_ = row;
  sortedBy_ = sortedBy;
  setName(row.spoken);
  update();
}

void AppRowView::drawName(QPainter& painter, double end) {
  drawMonogram(painter, placed(*this, 0, (height() - monogram) / 2, monogram, monogram), theme(),
               monogramHue(row_.id), row_.name);
  painter.setLayoutDirection(layoutDirection());
  const auto count = row_.processes > 1 ? QString::number(row_.processes) : QString();
  const double countRoom = count.isEmpty() ? 0 : textWidth(theme(), TextStyle::small, count) + 8;
  const auto name = text(row_.name);
  const double room = end - nameLeft - countRoom - 8;
  const double taken = std::min(textWidth(theme(), TextStyle::body, name) + 1, room);
  drawText(painter, placed(*this, nameLeft, 0, room, height()), theme(), TextStyle::body, Token::text1, name);
  if (!count.isEmpty())
    drawText(painter, placed(*this, nameLeft + taken + 8, 0, countRoom, height()), theme(), TextStyle::small,
             Token::text3, count);
}

void AppRowView::draw(QPainter& painter) {
  if (isHovered() && open_)
    fillRounded(painter, QRectF(rect()).adjusted(-6, 0, 6, 0), 6, theme().color(Token::hover));
  const auto figureFont = fontOf(theme(), TextStyle::body);
  const auto side = isRightToLeft() ? Qt::AlignLeft : Qt::AlignRight;
  const auto draw = [&](const Figure& figure, const QRectF& box, Token token) {
    painter.setPen(theme().color(token));
    const auto gap = figure.unit.empty() || figure.unit == "%" ? "" : " ";
    drawFigures(painter, box, side, figureFont, text(figure.number + gap + figure.unit));
  };
  if (form_ == PartForm::panel) {
    const auto isMemory = sortedBy_ == UsageKey::memory;
    draw(isMemory ? row_.memory : row_.cpu, placed(*this, width() - panelFigure, 0, panelFigure, height()),
         Token::text1);
    const double barLeft = width() - panelFigure - panelBar;
    drawBar(painter, placed(*this, barLeft, height() / 2.0 - 2, panelBar, 4), theme(),
            isMemory ? Token::memory : Token::cpu, row_.level, layoutDirection());
    return drawName(painter, barLeft - 8);
  }
  double end = width();
  eachColumn(*this, [&](const Column& column, const QRectF& box) {
    draw(row_.*column.figure, box,
         column.key == sortedBy_ || column.key == UsageKey::memory ? Token::text1 : Token::text2);
    end -= column.width;
  });
  drawName(painter, end);
}

void AppHeads::setSortedBy(UsageKey key) {
  sortedBy_ = key;
  update();
}

void AppHeads::draw(QPainter& painter) {
  painter.setLayoutDirection(layoutDirection());
  drawText(painter, QRectF(rect()), theme(), TextStyle::caption, Token::text3, text(localized("Name")));
  eachColumn(*this, [&](const Column& column, const QRectF& box) {
    const bool isSorted = column.key == sortedBy_;
    auto words = text(title(column.key));
    if (isSorted) words += " ↓";
    drawText(painter, box, theme(), TextStyle::caption, isSorted ? Token::text1 : Token::text3, words,
             Qt::AlignRight);
  });
  drawHairline(painter, {0, height() - 1.0}, width(), theme().color(Token::hairline));
}

} // namespace korvell

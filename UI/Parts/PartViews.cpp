#include "UI/Parts/PartViews.h"

#include "Base/Localization.h"
#include "UI/Kit/FigureText.h"
#include "UI/Kit/Icons.h"
#include "UI/Kit/Meters.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"
#include "UI/Kit/Tone.h"

#include <QBoxLayout>
#include <QKeyEvent>
#include <QScrollArea>
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
  QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Fixed);
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

QSize FindingView::sizeHint() const { return {320, heightForWidth(320)}; }

QSize FindingView::minimumSizeHint() const { return {200, heightForWidth(200)}; }

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
  drawIcon(painter, look.icon, placed(*this, rowOutset, middle - m.mark / 2.0, m.mark, m.mark),
           theme().color(look.mark), layoutDirection());
  painter.setLayoutDirection(layoutDirection());
  drawPenalty(painter, placed(*this, rowOutset + m.mark, middle - 9, m.penaltyRight - m.mark, 18), theme(),
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
    drawIcon(painter, tile_.icon, placed(*this, left, (m.titleTop + 9) * scale - m.icon / 2, m.icon, m.icon),
             theme().color(tile_.line), layoutDirection());
    left += m.icon + 6;
  }
  const bool isPanel = form_ == PartForm::panel;
  const auto caption = text(isPanel ? tile_.shortCaption : tile_.caption);
  const double rest = right - left - textWidth(theme(), TextStyle::smallMedium, text(tile_.title)) - 2;
  const double beside = isPanel ? std::min(textWidth(theme(), TextStyle::small, caption) + 8, rest) : 0;
  drawText(painter, placed(*this, left, m.titleTop * scale, right - left - beside, line), theme(),
           TextStyle::smallMedium, Token::text2, text(tile_.title));
  const auto box = isPanel ? placed(*this, right - beside, m.titleTop * scale, beside, line)
                           : placed(*this, m.padding, m.captionTop * scale, width() - 2 * m.padding, line);
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
      placed(*this, width() - m.padding - wide, m.pictureTop * scale, wide, m.picture.height() * scale);
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

namespace {

constexpr double monogram = 20, nameLeft = 30, panelFigure = 62, panelBar = 88, narrowBar = 140;

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
/// The first column's figures leave room beside them for long names.
constexpr double lentToName = 26;

double shownWidth(const QWidget& row) { return row.width() - 2 * rowOutset; }

/// Where not all columns fit, a bar stands for what is left out.
std::size_t columnCount(const QWidget& row, const Theme& theme, PartForm form) {
  if (form == PartForm::narrow) return 2;
  double taken = leastName;
  for (const auto& column : columns) taken += theme.scaled(column.width);
  return taken <= shownWidth(row) ? std::size(columns) : 2;
}

/// Calls with each shown column and its box, from the last; where they begin.
template <class F>
double eachColumn(const QWidget& row, const Theme& theme, PartForm form, F call) {
  double end = row.width() - rowOutset;
  for (auto i = columnCount(row, theme, form); i-- > 0;) {
    const double width = theme.scaled(columns[i].width);
    call(columns[i], placed(row, end - width, 0, width, row.height()));
    end -= width;
  }
  return end;
}

void drawFigure(QPainter& painter, const QRectF& box, const QWidget& row, const Theme& theme,
                const Figure& figure, Token token) {
  painter.setPen(theme.color(figure.unit.empty() ? Token::text3 : token));
  drawFigures(painter, box, row.isRightToLeft() ? Qt::AlignLeft : Qt::AlignRight,
              fontOf(theme, TextStyle::body), text(textOf(figure)));
}

} // namespace

AppRowView::AppRowView(const Theme& theme, PartForm form, QWidget* parent)
    : Control(theme, parent), form_(form) {
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize AppRowView::sizeHint() const { return {200, theme().scaled(form_ == PartForm::panel ? 26 : 30)}; }

QRectF AppRowView::shape() const { return QRectF(rect()).adjusted(4, 2, -4, -2); }

void AppRowView::show(const AppRow& row, UsageKey sortedBy) {
  if (row == row_ && sortedBy == sortedBy_) return;
  row_ = row;
  sortedBy_ = sortedBy;
  setName(row.spoken);
  setToolTip(text(row.note));
  update();
}

void AppRowView::setForm(PartForm form) {
  if (std::exchange(form_, form) != form) update();
}

void AppRowView::keyPressEvent(QKeyEvent* event) {
  constexpr int all = 1'000'000;
  switch (move_ ? event->key() : 0) {
  case Qt::Key_Down:
    return move_(1);
  case Qt::Key_Up:
    return move_(-1);
  case Qt::Key_End:
    return move_(all);
  case Qt::Key_Home:
    return move_(-all);
  default:
    Control::keyPressEvent(event);
  }
}

void AppRowView::setPictures(Pictures* pictures) {
  pictures_ = pictures;
  update();
}

void AppRowView::drawPictureIn(QPainter& painter, const QRectF& box) const {
  if (row_.isKorvell) return drawMark(painter, box, theme(), Icon::heart);
  const auto found = pictures_ && row_.icon
                         ? pictures_->find(*row_.icon, qRound(box.width()), devicePixelRatioF())
                         : QPixmap();
  if (!found.isNull()) return painter.drawPixmap(box, found, QRectF(found.rect()));
  drawMonogram(painter, box, theme(), row_.isSystem ? Token::gray : monogramHue(row_.id), row_.name);
}

void AppRowView::drawName(QPainter& painter, double end) {
  drawPictureIn(painter, placed(*this, rowOutset, (height() - monogram) / 2, monogram, monogram));
  painter.setLayoutDirection(layoutDirection());
  const auto count = row_.processes > 1 ? QString::number(row_.processes) : QString();
  const double countRoom = count.isEmpty() ? 0 : textWidth(theme(), TextStyle::small, count) + 8;
  const auto name = text(row_.name);
  const double left = rowOutset + nameLeft, room = end - left - countRoom - 8;
  const double taken = std::min(textWidth(theme(), TextStyle::body, name) + 1, room);
  drawText(painter, placed(*this, left, 0, room, height()), theme(), TextStyle::body, Token::text1, name);
  if (!count.isEmpty())
    drawText(painter, placed(*this, left + taken + 8, 0, countRoom, height()), theme(), TextStyle::small,
             Token::text3, count);
}

void AppRowView::draw(QPainter& painter) {
  if (isHovered() && open_)
    fillRounded(painter, QRectF(rect()).adjusted(2, 0, -2, 0), 6, theme().color(Token::hover));
  if (form_ == PartForm::panel)
    drawPanelFigures(painter);
  else
    drawColumns(painter);
}

void AppRowView::drawPanelFigures(QPainter& painter) {
  const bool isMemory = sortedBy_ == UsageKey::memory;
  const double figure = theme().scaled(panelFigure), end = width() - rowOutset;
  drawFigure(painter, placed(*this, end - figure, 0, figure, height()), *this, theme(),
             isMemory ? row_.memory : row_.cpu, Token::text1);
  const double bar = end - figure - panelBar;
  drawBar(painter, placed(*this, bar, height() / 2.0 - 2, panelBar, 4), theme(),
          isMemory ? Token::memory : Token::cpu, row_.level, layoutDirection());
  drawName(painter, bar - 8);
}

void AppRowView::drawColumns(QPainter& painter) {
  const bool isWhole = columnCount(*this, theme(), form_) == std::size(columns);
  double end = eachColumn(*this, theme(), form_, [&](const Column& column, const QRectF& box) {
    const bool isLoud = column.key == sortedBy_ || (isWhole && column.key == UsageKey::memory);
    drawFigure(painter, box, *this, theme(), row_.*column.figure, isLoud ? Token::text1 : Token::text2);
  });
  if (isWhole) {
    end += lentToName;
  } else {
    const double bar = std::min(narrowBar, shownWidth(*this) / 4), rest = end - bar - 8;
    if (rest > theme().scaled(leastName)) {
      drawBar(painter, placed(*this, end - bar, height() / 2.0 - 2.5, bar, 5), theme(), Token::cpu,
              row_.level, layoutDirection());
      end = rest;
    }
  }
  drawName(painter, end);
}

void AppHeads::setSortedBy(UsageKey key) {
  if (std::exchange(sortedBy_, key) != key) update();
}

void AppHeads::setForm(PartForm form) {
  if (std::exchange(form_, form) != form) update();
}

void AppHeads::draw(QPainter& painter) {
  painter.setLayoutDirection(layoutDirection());
  drawText(painter, QRectF(rect()).adjusted(rowOutset, 0, -rowOutset, 0), theme(), TextStyle::caption,
           Token::text3, text(localized("Name")));
  eachColumn(*this, theme(), form_, [&](const Column& column, const QRectF& box) {
    const bool isSorted = column.key == sortedBy_;
    auto words = text(title(column.key));
    if (isSorted) words += " ↓";
    drawText(painter, box, theme(), TextStyle::caption, isSorted ? Token::text1 : Token::text3, words,
             Qt::AlignRight);
  });
  drawHairline(painter, {double(rowOutset), height() - 1.0}, shownWidth(*this),
               theme().color(Token::hairline));
}

AppRows::AppRows(const Theme& theme, PartForm form, QWidget* parent)
    : Painted(theme, parent), form_(form), column_(new QVBoxLayout(this)) {
  setName(localized("Top applications"));
  column_->setContentsMargins(0, 0, 0, 0);
  column_->setSpacing(0);
}

void AppRows::show(const std::vector<AppRow>& rows, UsageKey sortedBy) {
  const bool hasGrown = rows.size() != rows_.size();
  fitRows(rows_, rows.size(), [this] { return makeRow(); });
  if (hasGrown) {
    // At once: the panel asks for its height in the same breath.
    column_->activate();
    updateGeometry();
  }
  for (std::size_t i = 0; i < rows.size(); ++i) rows_[i]->show(rows[i], sortedBy);
  // The one that Tab comes to: the last that had the focus, else the first.
  const auto isStop = [](const AppRowView* row) { return row->focusPolicy() == Qt::StrongFocus; };
  if (!rows_.empty() && std::ranges::none_of(rows_, isStop)) rows_.front()->setFocusPolicy(Qt::StrongFocus);
}

void AppRows::setForm(PartForm form) {
  form_ = form;
  for (auto* row : rows_) row->setForm(form);
}

void AppRows::setPictures(Pictures* pictures) {
  pictures_ = pictures;
  const auto tell = [this] {
    for (auto* row : rows_) row->setPictures(pictures_);
  };
  arrivals_ = pictures ? pictures->observe(tell) : nullptr;
  tell();
}

AppRowView* AppRows::makeRow() {
  auto* row = new AppRowView(theme(), form_, this);
  row->setPictures(pictures_);
  row->setFocusPolicy(Qt::ClickFocus);
  row->onOpen([this] {
    if (open_) open_();
  });
  row->onMove([this, row](int by) { move(*row, by); });
  column_->addWidget(row);
  row->QWidget::show();
  return row;
}

void AppRows::move(const AppRowView& from, int by) {
  const auto at = std::ptrdiff_t(std::ranges::find(rows_, &from) - rows_.begin());
  const auto next = std::clamp<std::ptrdiff_t>(at + by, 0, std::ptrdiff_t(rows_.size()) - 1);
  for (auto* row : rows_) row->setFocusPolicy(Qt::ClickFocus);
  rows_[std::size_t(next)]->setFocusPolicy(Qt::StrongFocus);
  rows_[std::size_t(next)]->setFocus(Qt::TabFocusReason);
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

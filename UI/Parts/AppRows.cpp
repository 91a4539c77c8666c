#include "UI/Parts/AppRows.h"

#include "Base/Localization.h"
#include "UI/Kit/FigureText.h"
#include "UI/Kit/Meters.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"
#include "UI/Parts/PageLayout.h"

#include <QKeyEvent>
#include <algorithm>

namespace korvell {

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
    call(columns[i], fromStart(row, end - width, 0, width, row.height()));
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
  setReason(row.note);
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
  drawPictureIn(painter, fromStart(*this, rowOutset, (height() - monogram) / 2, monogram, monogram));
  painter.setLayoutDirection(layoutDirection());
  const auto count = row_.processes > 1 ? QString::number(row_.processes) : QString();
  const double countRoom = count.isEmpty() ? 0 : textWidth(theme(), TextStyle::small, count) + 8;
  const auto name = text(row_.name);
  const double left = rowOutset + nameLeft, room = end - left - countRoom - 8;
  const double taken = std::min(textWidth(theme(), TextStyle::body, name) + 1, room);
  drawText(painter, fromStart(*this, left, 0, room, height()), theme(), TextStyle::body, Token::text1, name);
  if (!count.isEmpty())
    drawText(painter, fromStart(*this, left + taken + 8, 0, countRoom, height()), theme(), TextStyle::small,
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
  drawFigure(painter, fromStart(*this, end - figure, 0, figure, height()), *this, theme(),
             isMemory ? row_.memory : row_.cpu, Token::text1);
  const double bar = end - figure - panelBar;
  drawBar(painter, fromStart(*this, bar, height() / 2.0 - 2, panelBar, 4), theme(),
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
      drawBar(painter, fromStart(*this, end - bar, height() / 2.0 - 2.5, bar, 5), theme(), Token::cpu,
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

void AppRows::show(std::vector<AppRow> rows, UsageKey sortedBy) {
  if (std::exchange(sortedBy_, sortedBy) == sortedBy && underMouse()) rows = settled(std::move(rows), shown_);
  const bool hasGrown = rows.size() != rows_.size();
  fitRows(rows_, rows.size(), [this] { return makeRow(); });
  if (hasGrown) {
    // At once: the panel asks for its height in the same breath.
    column_->activate();
    updateGeometry();
  }
  for (std::size_t i = 0; i < rows.size(); ++i) rows_[i]->show(rows[i], sortedBy);
  shown_ = std::move(rows);
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

} // namespace korvell

#include "UI/Kit/BarTable.h"

#include "Base/Localization.h"
#include "UI/Kit/FigureText.h"
#include "UI/Kit/Focus.h"
#include "UI/Kit/Icons.h"
#include "UI/Kit/Labels.h"
#include "UI/Kit/Meters.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMouseEvent>

#include <algorithm>

namespace korvell {

namespace {

using Column = BarTableData::Column;

constexpr double headHeight = 24, rowHeight = 30, partHeight = 26, afterHeads = 1;
constexpr double chevronSize = 14, pictureFrom = 18, pictureSize = 20, nameFrom = 30;
constexpr double nameGap = 7, barGap = 16, dotsSize = 28;
constexpr double wide = 640; // from here on a row has room for its button
constexpr int pageOfRows = 10;

} // namespace

/// A column's head: its name, and an arrow where the rows are sorted by it.
class BarTable::Head final : public Control {
public:
  Head(const Theme& theme, BarTable& table, Column column)
      : Control(theme, &table), table_(table), column_(column) {}

  void show(const std::string& words, bool sorts, std::optional<bool> ascending) {
    words_ = text(words);
    ascending_ = ascending;
    setEnabled(sorts);
    setFocusPolicy(sorts ? Qt::StrongFocus : Qt::NoFocus);
    setName(words);
    setAccessibleDescription(!ascending   ? QString()
                             : *ascending ? text(localized("Sorted ascending"))
                                          : text(localized("Sorted descending")));
    setVisible(!words.empty());
    update();
  }
  double wordsWidth() const {
    return textWidth(theme(), TextStyle::caption, words_) + (ascending_ ? arrowSize + 2 : 0);
  }
  QAccessible::Role role() const override { return QAccessible::ColumnHeader; }
  std::string spokenValue() const override { return {}; }

protected:
  void pressed() override {
    if (table_.sort_) table_.sort_(column_);
  }
  void enterEvent(QEnterEvent* event) override {
    table_.light(std::nullopt); // the table is not told that its rows were left
    Control::enterEvent(event);
  }
  QRectF shape() const override { return QRectF(rect()).adjusted(0, 3, 0, -3); }
  double corner() const override { return 4; }
  void draw(QPainter& painter) override {
    const auto token = ascending_ || isHovered() ? Token::text1 : Token::text3;
    const auto width = textWidth(theme(), TextStyle::caption, words_);
    // The name stands where reading begins, figures at their column's end.
    const bool fromLeft = (column_ == Column::name) != isRightToLeft();
    double left = fromLeft ? pad : this->width() - pad - wordsWidth();
    const auto arrow = [&] {
      drawIcon(painter, *ascending_ ? Icon::up : Icon::down,
               QRectF(left, (height() - arrowSize) / 2, arrowSize, arrowSize), theme().color(token));
      left += arrowSize + 2;
    };
    if (ascending_ && isRightToLeft()) arrow();
    drawText(painter, QRectF(left, 0, width, height()), fontOf(theme(), TextStyle::caption),
             theme().color(token), words_);
    left += width + 2;
    if (ascending_ && !isRightToLeft()) arrow();
  }

private:
  static constexpr double arrowSize = 12;
  static constexpr double pad = 0;
  BarTable& table_;
  Column column_;
  QString words_;
  std::optional<bool> ascending_;
};

BarTable::BarTable(const Theme& theme, QWidget* parent)
    : Painted(theme, parent), tops_{0}, name_(new Head(theme, *this, Column::name)),
      figure_(new Head(theme, *this, Column::figure)), second_(new Head(theme, *this, Column::second)) {
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  setFocusPolicy(Qt::StrongFocus);
  setMouseTracking(true);
}

void BarTable::onQuit(std::string_view words, std::function<void(const std::string&)> handler) {
  quitWords_ = text(words);
  quit_ = std::move(handler);
}

void BarTable::setPictures(Pictures* pictures) {
  pictures_ = pictures;
  arrivals_ = pictures ? pictures->observe([this] { update(); }) : nullptr;
  update();
}

void BarTable::setData(BarTableData data) {
  if (data == data_) return;
  const auto before = tops_.back();
  data_ = std::move(data);
  tops_ = {0};
  for (const auto& row : data_.rows) tops_.push_back(tops_.back() + heightOf(row));
  if (hovered_ && *hovered_ >= data_.rows.size()) hovered_.reset();
  const auto ascending = [&](Column column) {
    return data_.sorts && data_.sorted == column ? std::optional(data_.isAscending) : std::nullopt;
  };
  name_->show(data_.nameHead, data_.sorts, ascending(Column::name));
  figure_->show(data_.figureHead, data_.sorts, ascending(Column::figure));
  second_->show(data_.secondHead, data_.sorts, ascending(Column::second));
  setName(data_.title);
  setToolTip(text(data_.reason));
  setFocusPolicy(data_.rows.empty() ? Qt::NoFocus : Qt::StrongFocus);
  arrangeHeads();
  if (tops_.back() != before) updateGeometry();
  update();
}

double BarTable::heightOf(const BarRow& row) const {
  return theme().scaled(row.isPart ? partHeight : rowHeight);
}

double BarTable::top() const { return theme().scaled(headHeight) + afterHeads; }

QSize BarTable::sizeHint() const { return {480, qCeil(top() + tops_.back()) + 4}; }

QSize BarTable::minimumSizeHint() const { return {280, sizeHint().height()}; }

std::string BarTable::spokenValue() const {
  const auto index = currentRow();
  return index ? data_.rows[*index].spoken : "";
}

Spoken::Row BarTable::spokenRow(std::size_t index) const {
  return {
      .name = data_.rows[index].spoken, .place = rowBox(index).toRect(), .isCurrent = currentRow() == index};
}

BarTable::Columns BarTable::columns() const {
  const double end = width() - overhang;
  const bool isWide = width() >= theme().scaled(wide);
  const bool acts =
      std::any_of(data_.rows.begin(), data_.rows.end(), [](const auto& row) { return row.hasActions; });
  const double column = theme().scaled(isWide ? 94 : 78);
  Columns at{};
  const bool unfolds =
      std::any_of(data_.rows.begin(), data_.rows.end(), [](const auto& row) { return row.unfolds; });
  at.picture = overhang + (unfolds ? pictureFrom : 0);
  at.name = at.picture + nameFrom;
  at.part = at.name + 10;
  at.dots = end - dotsSize;
  at.quit = at.dots - theme().scaled(60);
  at.secondEnd = end - (!acts ? 0 : isWide ? theme().scaled(96) : dotsSize + 4);
  at.figureEnd = data_.secondHead.empty() ? at.secondEnd : at.secondEnd - column;
  const double barEnd = at.figureEnd - column + (isWide ? 12 : 4);
  const double room = barEnd - at.name;
  at.barWidth = std::clamp(room * 0.36, 40.0, 220.0);
  at.bar = barEnd - at.barWidth;
  return at;
}

/// Laid out from left to right and mirrored as a whole.
QRectF BarTable::place(double from, double wideness, const QRectF& row) const {
  return {isRightToLeft() ? width() - from - wideness : from, row.top(), wideness, row.height()};
}

void BarTable::arrangeHeads() {
  const auto at = columns();
  const QRectF row(0, 0, width(), theme().scaled(headHeight));
  const auto put = [&](Head& head, double end) {
    const auto hit = std::max<double>(Control::leastHit, qCeil(head.wordsWidth()));
    head.setGeometry(place(end - hit, hit, row).toAlignedRect());
  };
  put(*name_, overhang + std::max<double>(Control::leastHit, qCeil(name_->wordsWidth())));
  put(*figure_, at.figureEnd);
  put(*second_, at.secondEnd);
}

void BarTable::resizeEvent(QResizeEvent*) { arrangeHeads(); }

void BarTable::changeEvent(QEvent* event) {
  if (event->type() == QEvent::LayoutDirectionChange) arrangeHeads();
  Painted::changeEvent(event);
}

void BarTable::themeChanged() {
  tops_ = {0};
  for (const auto& row : data_.rows) tops_.push_back(tops_.back() + heightOf(row));
  arrangeHeads();
  Painted::themeChanged();
}

QRectF BarTable::rowBox(std::size_t index) const {
  return {0, top() + tops_[index], double(width()), tops_[index + 1] - tops_[index]};
}

std::optional<std::size_t> BarTable::rowAt(const QPointF& position) const {
  const auto below = std::upper_bound(tops_.begin(), tops_.end(), position.y() - top());
  if (below == tops_.begin() || below == tops_.end()) return std::nullopt;
  return std::size_t(below - tops_.begin()) - 1;
}

std::optional<std::size_t> BarTable::currentRow() const {
  if (current_.empty()) return std::nullopt;
  const auto found = std::find_if(data_.rows.begin(), data_.rows.end(),
                                  [&](const auto& row) { return row.key == current_; });
  return found == data_.rows.end() ? std::nullopt : std::optional(std::size_t(found - data_.rows.begin()));
}

// Painting

void BarTable::paintEvent(QPaintEvent* event) {
  exposed_ = event->rect();
  Painted::paintEvent(event);
}

void BarTable::draw(QPainter& painter) {
  drawHairline(painter, QPointF(overhang, theme().scaled(headHeight)), width() - 2 * overhang,
               theme().color(Token::hairline));
  const auto current = currentRow();
  for (std::size_t i = 0; i < data_.rows.size(); ++i) {
    const auto box = rowBox(i);
    if (!box.intersects(exposed_)) continue;
    const bool isCurrent = i == current && hasFocus();
    const bool isHovered = i == hovered_;
    if (isCurrent || isHovered)
      fillRounded(painter, box, 6, theme().color(isCurrent ? Token::accentWash : Token::hover));
    drawRow(painter, data_.rows[i], box, isCurrent || isHovered);
    if (isCurrent && hasRing_) drawOutline(painter, box, 6, theme().color(Token::accent), 2);
  }
}

void BarTable::drawPicture(QPainter& painter, const BarRow& row, const QRectF& box) const {
  if (row.mark) return drawMark(painter, box, theme(), *row.mark);
  const auto found = pictures_ && row.icon
                         ? pictures_->find(*row.icon, qRound(box.width()), devicePixelRatioF())
                         : QPixmap();
  if (found.isNull())
    drawMonogram(painter, box, theme(), row.identifier.empty() ? Token::gray : monogramHue(row.identifier),
                 row.name);
  else
    painter.drawPixmap(box, found, QRectF(found.rect()));
}

void BarTable::drawRow(QPainter& painter, const BarRow& row, const QRectF& box, bool isLit) const {
  const auto at = columns();
  const auto middle = [&](double from, double size) {
    auto cell = place(from, size, box);
    return QRectF(cell.left(), box.center().y() - size / 2, size, size);
  };
  if (row.unfolds)
    drawIcon(painter, row.isUnfolded ? Icon::chevronDown : Icon::chevron, middle(overhang, chevronSize),
             theme().color(Token::text3), layoutDirection());
  if (!row.isPart) drawPicture(painter, row, middle(at.picture, pictureSize));
  const double from = row.isPart ? at.part : at.name;
  const auto style = row.isPart ? TextStyle::small : TextStyle::strong;
  const auto name = text(row.name), count = text(row.count);
  const auto small = fontOf(theme(), TextStyle::small);
  const double countRoom = count.isEmpty() ? 0 : figureWidth(small, count) + nameGap;
  const double nameWidth = std::min(textWidth(theme(), style, name), at.bar - barGap - from - countRoom);
  drawText(painter, place(from, nameWidth, box), theme(), style, row.isPart ? Token::text2 : Token::text1,
           name);
  painter.setPen(theme().color(Token::text3));
  if (!count.isEmpty())
    drawFigures(painter, place(from + nameWidth + nameGap, countRoom - nameGap, box), Qt::AlignLeft, small,
                count);
  if (row.level) {
    const double thick = row.isPart ? 3 : 5;
    const auto bar = place(at.bar, at.barWidth, box);
    drawBar(painter, QRectF(bar.left(), bar.center().y() - thick / 2, bar.width(), thick), theme(),
            data_.token, *row.level, layoutDirection());
  }
  const auto figure = [&](double end, Token token, const std::string& words) {
    const auto font = row.isPart ? small : fontOf(theme(), TextStyle::body);
    const auto shown = text(words);
    const auto size = figureWidth(font, shown);
    painter.setPen(theme().color(token));
    drawFigures(painter, place(end - size, size, box), Qt::AlignLeft, font, shown);
  };
  figure(at.figureEnd, row.isPart ? Token::text2 : Token::text1, row.figure);
  if (!data_.secondHead.empty()) figure(at.secondEnd, row.isPart ? Token::text3 : Token::text2, row.second);
  if (isLit && row.hasActions) drawActions(painter, box);
}

void BarTable::drawActions(QPainter& painter, const QRectF& box) const {
  const auto at = columns();
  if (width() >= theme().scaled(wide))
    drawText(painter, place(at.quit, at.dots - at.quit, box), theme(), TextStyle::strong, Token::accent,
             quitWords_, Qt::AlignHCenter);
  auto dots = place(at.dots + 5, 18, box);
  dots = QRectF(dots.left(), box.center().y() - 9, 18, 18);
  drawIcon(painter, Icon::dots, dots, theme().color(Token::text2));
}

// Pointer and keyboard

void BarTable::light(std::optional<std::size_t> row) {
  const auto before = std::exchange(hovered_, row);
  if (before == row) return;
  for (const auto& each : {before, row})
    if (each && *each < data_.rows.size()) update(rowBox(*each).toAlignedRect());
}

void BarTable::mouseMoveEvent(QMouseEvent* event) { light(rowAt(event->position())); }

void BarTable::enterEvent(QEnterEvent*) {
  if (hover_) hover_(true);
}

void BarTable::leaveEvent(QEvent*) {
  light(std::nullopt);
  if (hover_) hover_(false);
}

void BarTable::mousePressEvent(QMouseEvent* event) {
  const auto index = rowAt(event->position());
  if (event->button() != Qt::LeftButton || !index) return event->ignore();
  hasRing_ = false;
  const auto row = data_.rows[*index]; // a copy: what follows may bring new data
  current_ = row.key;
  update();
  const auto at = columns();
  const auto from = isRightToLeft() ? width() - event->position().x() : event->position().x();
  if (row.hasActions && from >= at.dots) {
    if (menu_) menu_(row.key, event->globalPosition().toPoint());
  } else if (row.hasActions && from >= at.quit && width() >= theme().scaled(wide)) {
    if (quit_) quit_(row.key);
  } else if (row.unfolds && from < at.name && unfold_) {
    unfold_(row.key);
  }
}

void BarTable::contextMenuEvent(QContextMenuEvent* event) {
  const bool byKey = event->reason() == QContextMenuEvent::Keyboard;
  const auto index = byKey ? currentRow() : rowAt(QPointF(event->pos()));
  if (!index || !menu_) return event->ignore();
  const auto key = data_.rows[*index].key;
  current_ = key;
  menu_(key, byKey ? mapToGlobal(rowBox(*index).center().toPoint()) : event->globalPos());
}

void BarTable::keyPressEvent(QKeyEvent* event) {
  if (data_.rows.empty() || (event->modifiers() & ~Qt::KeypadModifier)) return event->ignore();
  switch (event->key()) {
  case Qt::Key_Up:
    return step(-1);
  case Qt::Key_Down:
    return step(1);
  case Qt::Key_PageUp:
    return step(-pageOfRows);
  case Qt::Key_PageDown:
    return step(pageOfRows);
  case Qt::Key_Home:
    return moveTo(0);
  case Qt::Key_End:
    return moveTo(data_.rows.size() - 1);
  case Qt::Key_Left:
  case Qt::Key_Right:
    if (!fold((event->key() == Qt::Key_Right) != isRightToLeft())) event->ignore();
    return;
  default:
    break;
  }
  const auto index = currentRow();
  if (!index) return event->ignore();
  const auto row = data_.rows[*index];
  const bool enters = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (enters && row.unfolds && unfold_) return unfold_(row.key);
  if (event->key() == Qt::Key_Delete && row.hasActions && quit_) return quit_(row.key);
  event->ignore();
}

/// Unfolds the row with the focus, or folds it; in a part, folds the row that it belongs to.
bool BarTable::fold(bool unfolded) {
  auto index = currentRow();
  if (!index) return false;
  if (!unfolded && data_.rows[*index].isPart) {
    while (*index > 0 && data_.rows[*index].isPart) --*index;
    moveTo(*index);
  }
  const auto row = data_.rows[*index];
  if (!row.unfolds || row.isUnfolded == unfolded || !unfold_) return false;
  unfold_(row.key);
  return true;
}

void BarTable::step(int by) {
  const auto last = std::ptrdiff_t(data_.rows.size()) - 1;
  const auto from = currentRow();
  const auto next = from ? std::ptrdiff_t(*from) + by : (by < 0 ? last : 0);
  moveTo(std::size_t(std::clamp<std::ptrdiff_t>(next, 0, last)));
}

void BarTable::moveTo(std::size_t index) {
  current_ = data_.rows[index].key;
  hasRing_ = true;
  update();
  if (reveal_) reveal_(rowBox(index).toAlignedRect());
  QAccessibleValueChangeEvent changed(this, text(spokenValue()));
  QAccessible::updateAccessibility(&changed);
  tellRowFocused(*this, index);
}

void BarTable::focusInEvent(QFocusEvent* event) {
  // What becomes active again keeps what it had.
  if (event->reason() != Qt::ActiveWindowFocusReason && event->reason() != Qt::PopupFocusReason)
    hasRing_ = isKeyboard(event->reason());
  if (!currentRow() && hasRing_ && !data_.rows.empty()) moveTo(0);
  update();
  Painted::focusInEvent(event);
}

void BarTable::focusOutEvent(QFocusEvent* event) {
  update();
  Painted::focusOutEvent(event);
}

} // namespace korvell

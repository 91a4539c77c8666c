#pragma once
// A table of bars. One tab stop for the rows, one for each head that sorts. It is as high as its rows and
// scrolls with the page around it; only rows that show are painted. The row that has the focus stays the same
// one when the data changes.
//
// Arrow keys, Home, End, Page Up and Page Down move; Right and Left unfold and fold (mirrored with the
// layout), Enter does either; Delete quits, the Menu key opens the menu.

#include "UI/Kit/BarTableData.h"
#include "UI/Kit/Control.h"
#include "UI/Kit/Pictures.h"

#include <functional>

namespace korvell {

class BarTable : public Painted {
public:
  static constexpr int overhang = 8; ///< of a row's wash on both sides of its content

  BarTable(const Theme& theme, QWidget* parent);

  void setData(BarTableData data);
  const BarTableData& data() const { return data_; }
  /// Where the rows' pictures come from; null for nowhere. They outlive the table.
  void setPictures(Pictures* pictures);

  void onSort(std::function<void(BarTableData::Column)> handler) { sort_ = std::move(handler); }
  void onUnfold(std::function<void(const std::string& key)> handler) { unfold_ = std::move(handler); }
  /// What the button in a row is called and does; asked about rows with actions only.
  void onQuit(std::string_view words, std::function<void(const std::string& key)> handler);
  void onMenu(std::function<void(const std::string& key, QPoint where)> handler) {
    menu_ = std::move(handler);
  }
  /// The row with the focus came to this place.
  void onReveal(std::function<void(QRect)> handler) { reveal_ = std::move(handler); }
  /// The pointer is over the table, its heads too, or left.
  void onHover(std::function<void(bool)> handler) { hover_ = std::move(handler); }
  /// Key of the row with the focus; empty without one.
  const std::string& current() const { return current_; }

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;
  QAccessible::Role role() const override { return QAccessible::List; }
  std::string spokenValue() const override;
  std::size_t spokenRows() const override { return data_.rows.size(); }
  Row spokenRow(std::size_t index) const override;

protected:
  void draw(QPainter& painter) override;
  void paintEvent(QPaintEvent*) override;
  void resizeEvent(QResizeEvent*) override;
  void changeEvent(QEvent*) override;
  void themeChanged() override;
  void mouseMoveEvent(QMouseEvent*) override;
  void mousePressEvent(QMouseEvent*) override;
  void enterEvent(QEnterEvent*) override;
  void leaveEvent(QEvent*) override;
  void keyPressEvent(QKeyEvent*) override;
  void contextMenuEvent(QContextMenuEvent*) override;
  void focusInEvent(QFocusEvent*) override;
  void focusOutEvent(QFocusEvent*) override;

private:
  class Head;
  /// Where a row's pieces stand, from the side where reading begins.
  struct Columns {
    double picture, name, part, bar, barWidth, figureEnd, secondEnd, quit, dots;
  };
  Columns columns() const;
  QRectF place(double from, double width, const QRectF& row) const;
  double top() const;
  double heightOf(const BarRow& row) const;
  QRectF rowBox(std::size_t index) const;
  std::optional<std::size_t> rowAt(const QPointF& position) const;
  std::optional<std::size_t> currentRow() const;
  void arrangeHeads();
  void light(std::optional<std::size_t> row);
  void drawRow(QPainter& painter, const BarRow& row, const QRectF& box, bool isLit) const;
  void drawPicture(QPainter& painter, const BarRow& row, const QRectF& box) const;
  void drawActions(QPainter& painter, const QRectF& box) const;
  void moveTo(std::size_t index);
  void step(int by);
  bool fold(bool unfolded);

  BarTableData data_;
  std::vector<double> tops_; ///< of the rows, and the end of the last
  Head *name_, *figure_, *second_;
  std::string current_;
  std::optional<std::size_t> hovered_;
  QRectF exposed_;
  bool hasRing_ = false;
  QString quitWords_;
  Pictures* pictures_ = nullptr;
  Subscription arrivals_;
  std::function<void(BarTableData::Column)> sort_;
  std::function<void(const std::string&)> unfold_, quit_;
  std::function<void(const std::string&, QPoint)> menu_;
  std::function<void(QRect)> reveal_;
  std::function<void(bool)> hover_;
};

} // namespace korvell

#pragma once
// What was found as a list of rows with boxes: groups, their categories, the items of an unfolded one, its
// note. One tab stop; every row is a check box to screen readers. A row stays the same widget, with its
// focus, for as long as what it stands for is there.
//
// Arrow keys, Home, End, Page Up and Page Down move; Space ticks; Right and Left unfold and fold (mirrored
// with the layout); Enter unfolds a category and shows an item in the file manager; the Menu key opens its
// menu.

#include "UI/Kit/Painted.h"
#include "UI/Storage/StoragePage.h"

#include <QRect>

#include <functional>
#include <map>
#include <string>
#include <vector>

class QBoxLayout;

namespace korvell {

class StorageList : public Painted {
public:
  static constexpr int overhang = 8; ///< of a row's wash on both sides of its content

  struct Actions {
    std::function<void(StorageKind)> tickKind, unfold;
    std::function<void(const std::string& id)> tickItem;
    std::function<void(const std::string& path)> reveal; ///< absent where nothing shows files
    std::function<void(QWidget& row)> moved;             ///< the keyboard came to this row
    std::function<void(QWidget& row)> stops;             ///< Tab comes to this row from now on
  };

  StorageList(const Theme& theme, Actions actions, QWidget* parent);

  void setGroups(const std::vector<StorageRows>& groups);

  /// To the row that Tab comes to.
  void takeFocus();

  QAccessible::Role role() const override { return QAccessible::List; }

  /// The rows with boxes, from the top: what the keyboard goes through.
  std::vector<QWidget*> rows() const;

protected:
  void draw(QPainter&) override {}
  void keyPressEvent(QKeyEvent*) override;

private:
  class Row;
  class CategoryRow;
  class ItemRow;
  class GroupHead;
  class Note;

  template <class W>
  W& widget(const std::string& key);
  void place(QWidget& widget);
  void addCategory(const StorageRow& row, bool isFirst);
  void become(Row& row);
  void moveTo(std::ptrdiff_t index);
  std::ptrdiff_t indexOf(const Row* row) const;
  void foldUnder(Row& row);

  Actions actions_;
  QBoxLayout* column_;
  std::map<std::string, QWidget*> kept_, old_; ///< by what they stand for; old: not yet found again
  std::vector<QWidget*> order_;
  std::vector<Row*> rows_;
  Row* current_ = nullptr; ///< the one that Tab comes to
};

} // namespace korvell

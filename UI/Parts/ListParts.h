#pragma once
// What pages of rows share: a scrolled column whose rows reach a little beyond the text on both sides, arrow
// keys from row to row, a notice above, and what stands there instead when there are no rows.

#include "UI/Kit/Button.h"
#include "UI/Kit/Labels.h"
#include "UI/Kit/Scroll.h"
#include "UI/Parts/PageLayout.h"
#include "UI/Window/Page.h"

#include "Core/Machine/Models.h"

#include <QPointer>

#include <functional>
#include <optional>
#include <vector>

namespace korvell {

/// So far rows reach beyond the text: room for the wash under a pointer, a focus ring, a mark before the row.
inline constexpr int rowInset = 16;

class Menu;

class ListRow : public Painted {
public:
  ListRow(const Theme& theme, QWidget* parent);

  /// What arrow keys move to; null for none.
  virtual Control* action() const { return nullptr; }
  /// The Delete key.
  virtual void remove() {}
  /// Everything that can be done with it, for the Menu key and a right click; nothing: it has no menu.
  virtual void fillMenu(Menu& menu) { (void)menu; }
  /// Below its button that opens the menu, or where it was asked for. False: it has none.
  bool openMenu(QPoint where);
  /// A separator at its top.
  void setRuled(bool isRuled);

  QAccessible::Role role() const override { return QAccessible::ListItem; }

protected:
  void draw(QPainter& painter) override;
  void enterEvent(QEnterEvent*) override;
  void leaveEvent(QEvent*) override;
  void contextMenuEvent(QContextMenuEvent*) override;

private:
  bool isRuled_ = false;
  bool isPointedAt_ = false;
};

/// A dot or an icon, and a word that says the same.
struct StateLook {
  std::optional<Icon> icon{}; ///< without one a dot, where there is a mark
  Token mark = Token::good, words = Token::text1;
};
void drawState(QPainter& painter, const QRectF& box, const Theme& theme, const StateLook& look,
               const QString& words);
double stateWidth(const Theme& theme, const QString& words);

class StateLabel : public Painted {
public:
  StateLabel(const Theme& theme, QWidget* parent);
  void show(const StateLook& look, std::string_view words);
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }
  QAccessible::Role role() const override { return QAccessible::StaticText; }

protected:
  void draw(QPainter& painter) override;

private:
  StateLook look_;
  QString words_;
};

/// A heading over rows.
class GroupHead : public QWidget {
public:
  static constexpr int gap = 14; ///< from the rows above

  GroupHead(const Theme& theme, QWidget* parent);
  void setTitle(std::string_view title);
  /// For all of its rows, at its end.
  void addButton(Button* button);

private:
  TextLabel* title_;
  QHBoxLayout* line_;
};

/// A heading over rows that are parted by hairlines.
class RowGroup : public QWidget {
public:
  RowGroup(const Theme& theme, QWidget* parent);

  void setTitle(std::string_view title) { head_->setTitle(title); }
  void addButton(Button* button) { head_->addButton(button); }
  /// Brings it to that length; new ones come from `make`, as children of the group.
  void fit(std::size_t count, const std::function<ListRow*(QWidget* parent)>& make);
  /// Those in that order, children of the group; a row that is not among them goes.
  void setRows(std::vector<ListRow*> rows);
  const std::vector<ListRow*>& rows() const { return rows_; }

private:
  GroupHead* head_;
  QVBoxLayout* column_;
  std::vector<ListRow*> rows_;
};

/// Puts a widget into a column where the rows' text begins and ends.
void addInset(QWidget* widget, QBoxLayout& column, int above = 0, int below = 0);
/// Brings groups that stand in a column to that length.
void fitGroups(std::vector<RowGroup*>& groups, std::size_t count, QVBoxLayout& column, const Theme& theme,
               QWidget* parent);

/// Something worth doing, over the list that it is about. It follows the measurements without being spoken
/// at each of them, as a banner would be.
class Notice : public Plate {
public:
  Notice(const Theme& theme, Icon icon, std::string_view action, QWidget* parent);
  void show(std::string_view sentence, std::string_view detail);
  Button& button() { return *button_; }

private:
  TextLabel *sentence_, *detail_;
  Button* button_;
};

/// In the middle of a page that has no rows.
class EmptyState : public QWidget {
public:
  EmptyState(const Theme& theme, Icon icon, std::string_view title, std::string_view sentence,
             QWidget* parent);
};

class ListPage : public Page {
public:
  /// Of the page at the usual size of text: below it there is no room beside the rows.
  static constexpr int narrow = 760;

  std::string title() const override;
  QWidget* control() override { return summary_; }

protected:
  ListPage(const Theme& theme, SidebarItem section, QWidget* parent);

  ScrollArea* scrolled() const override { return scroll_; }
  /// Every row that arrow keys reach, from top to bottom.
  virtual std::vector<ListRow*> rows() const = 0;
  /// The page's width has changed.
  virtual void arrange(bool isNarrow) { (void)isNarrow; }

  void say(const std::string& summary);
  /// Nothing may move: a pointer or the focus is in the list.
  bool isInUse() const;

  void resizeEvent(QResizeEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

  const Theme& theme_;
  ScrollArea* scroll_;
  Ground* content_;
  QVBoxLayout* column_; ///< of the content; its rows begin `rowInset` before the text

private:
  class Content;
  /// False for a key that means nothing here.
  bool takeKey(int key);
  ListRow* focusedRow() const;
  bool step(const ListRow* from, int by);

  const SidebarItem section_;
  QPointer<TextLabel> summary_;
};

} // namespace korvell

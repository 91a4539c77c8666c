#pragma once
// One of several: segments and radio tiles. The whole is one tab stop; arrow keys, Home and End move the
// choice, mirrored in right-to-left layouts.

#include "UI/Kit/Control.h"

#include <functional>
#include <vector>

namespace korvell {

/// Any choice: keeps which one is chosen, and hands the focus from one to the next.
class Choices : public Painted {
public:
  std::size_t chosen() const { return chosen_; }
  /// Without telling.
  void choose(std::size_t index);
  /// Told when the user has chosen another one.
  void onChoose(std::function<void(std::size_t)> handler) { handler_ = std::move(handler); }
  std::size_t count() const { return items_.size(); }
  /// To the chosen one.
  void takeFocus(Qt::FocusReason reason);

protected:
  class Item;
  friend class Item;
  Choices(const Theme& theme, QWidget* parent);
  void add(Item& item);
  Item& item(std::size_t index) const { return *items_[index]; }

private:
  void pick(std::size_t index, Qt::FocusReason reason);
  bool key(std::size_t from, int key);

  std::vector<Item*> items_;
  std::size_t chosen_ = 0;
  std::function<void(std::size_t)> handler_;
};

/// Texts side by side on a sunken ground, the chosen one on a plate. 28 high, 26 in the panel.
class Segments : public Choices {
public:
  /// The name says what is chosen among: "Range", "Appearance".
  Segments(const Theme& theme, std::string_view name, const std::vector<std::string>& words, QWidget* parent);

  void setHeight(int height);
  /// In the language of the moment; as many as there are.
  void setWords(const std::vector<std::string>& words);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }
  QAccessible::Role role() const override { return QAccessible::PageTabList; }

protected:
  void draw(QPainter& painter) override;
  void resizeEvent(QResizeEvent*) override;
  void themeChanged() override;
  void changeEvent(QEvent*) override;

private:
  class Segment;
  void arrange();
  std::vector<Segment*> segments_;
  int height_ = 28;
};

/// Pictures side by side with their names below: the chosen one on a wash with an accent outline.
class RadioTiles : public Choices {
public:
  /// Paints a tile's picture into its box, in the ink given.
  using Picture = std::function<void(QPainter&, const QRectF&, const QColor& ink)>;
  struct Tile {
    std::string words;
    Picture picture;
  };
  RadioTiles(const Theme& theme, std::string_view name, std::vector<Tile> tiles, QWidget* parent);

  void setWords(const std::vector<std::string>& words);
  /// The pictures show live values: to be called when those change.
  void updatePictures();

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;
  QAccessible::Role role() const override { return QAccessible::Grouping; }

protected:
  void draw(QPainter&) override {}
  void resizeEvent(QResizeEvent*) override;
  void themeChanged() override;
  void changeEvent(QEvent*) override;

private:
  class RadioTile;
  void arrange();
  std::vector<RadioTile*> tiles_;
};

} // namespace korvell

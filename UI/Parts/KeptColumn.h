#pragma once
// Rows and what stands between them, one below the other. What an entry is shown by stays the same widget for
// as long as the entry is there, wherever it moves to: who points at it, holds its button or has come to it
// with the keys keeps it. When the entry with the focus goes, the row that was below it takes the focus, else
// the one above. Tab and screen readers go from top to bottom, whoever has come last.

#include "UI/Parts/ListParts.h"

#include <functional>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

namespace korvell {

class KeptColumn : public QWidget {
public:
  explicit KeptColumn(QWidget* parent);

  /// Shows what `fill` puts into it, in that order, and nothing else. True: something came, went or moved,
  /// and the page has to tell where Tab comes from.
  bool refill(const std::function<void()>& fill);

  /// While it is filled: the widget that stands for the key, made by `make(parent)` where there is none yet,
  /// so far below the one before. A key tells the kind of widget too: one kind of key, one class.
  template <class Make>
  auto& put(const std::string& key, int gap, Make make) {
    using View = std::remove_pointer_t<decltype(make(this))>;
    const auto own = unused(key);
    auto* known = taken(own);
    auto* widget = known ? static_cast<View*>(known) : make(this);
    place(own, gap, *widget);
    return *widget;
  }

  /// From top to bottom.
  const std::vector<ListRow*>& rows() const { return rows_; }

private:
  struct Place {
    QWidget* widget;
    int gap; ///< above it
    bool operator==(const Place&) const = default;
  };

  std::string unused(std::string key) const;
  QWidget* taken(const std::string& key);
  void place(const std::string& key, int gap, QWidget& widget);
  void layOut();
  void moveFocus(const std::vector<ListRow*>& before);

  QVBoxLayout* column_;
  std::map<std::string, QWidget*> kept_, old_; ///< old: not put again so far
  std::vector<Place> order_;
  std::vector<ListRow*> rows_;
};

} // namespace korvell

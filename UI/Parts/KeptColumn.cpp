#include "UI/Parts/KeptColumn.h"

#include "UI/Kit/Focus.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace korvell {

KeptColumn::KeptColumn(QWidget* parent) : QWidget(parent), column_(bare<QVBoxLayout>(this)) { hide(); }

bool KeptColumn::refill(const std::function<void()>& fill) {
  const auto before = std::exchange(order_, {});
  const auto rowsBefore = std::exchange(rows_, {});
  old_ = std::exchange(kept_, {});
  fill();
  if (!old_.empty()) moveFocus(rowsBefore);
  // Not at once: one of them may be what asked for this.
  for (const auto& [key, widget] : std::exchange(old_, {})) {
    widget->hide();
    widget->deleteLater();
  }
  if (order_ == before) return false;
  layOut();
  return true;
}

/// Two entries of one key are two rows all the same.
std::string KeptColumn::unused(std::string key) const {
  while (kept_.contains(key)) key += '\'';
  return key;
}

/// The widget that has stood for it; null for a new entry.
QWidget* KeptColumn::taken(const std::string& key) {
  const auto found = old_.find(key);
  if (found == old_.end()) return nullptr;
  auto* widget = found->second;
  old_.erase(found);
  return widget;
}

void KeptColumn::place(const std::string& key, int gap, QWidget& widget) {
  kept_.emplace(key, &widget);
  order_.push_back({&widget, gap});
  if (auto* row = dynamic_cast<ListRow*>(&widget)) rows_.push_back(row);
}

void KeptColumn::layOut() {
  column_->setEnabled(false); // it would be laid out anew with each of hundreds of rows
  while (column_->count() > 0) delete column_->takeAt(0);
  for (const auto& [widget, gap] : order_) {
    if (gap > 0) column_->addSpacing(gap);
    column_->addWidget(widget);
    widget->setVisible(true);
    widget->raise(); // the order of the children is that of Tab and of screen readers
  }
  for (auto* child : findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
    if (auto* ring = dynamic_cast<FocusRing*>(child)) ring->raise();
  column_->setEnabled(true);
  column_->invalidate();
  setVisible(!order_.empty());
}

void KeptColumn::moveFocus(const std::vector<ListRow*>& before) {
  auto* focused = window()->focusWidget();
  const auto gone = std::ranges::find_if(before, [&](const ListRow* row) {
    return focused && row->isAncestorOf(focused) && std::ranges::find(rows_, row) == rows_.end();
  });
  if (gone == before.end()) return;
  const auto takes = [&](const ListRow* row) {
    return std::ranges::find(rows_, row) != rows_.end() && row->action() && row->action()->isVisible();
  };
  auto next = std::find_if(gone, before.end(), takes);
  if (next == before.end()) {
    const auto above = std::find_if(std::make_reverse_iterator(gone), before.rend(), takes);
    if (above == before.rend()) return;
    next = std::prev(above.base());
  }
  (*next)->action()->setFocus(FocusRing::isShown(*focused) ? Qt::TabFocusReason : Qt::OtherFocusReason);
}

} // namespace korvell

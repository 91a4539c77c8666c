#include "UI/Kit/Spoken.h"

#include "UI/Kit/Text.h"

#include <QAccessibleWidget>
#include <QScrollArea>
#include <QWidget>

#include <vector>

namespace korvell {

namespace {

/// While its widget is being destroyed the Spoken part is gone before the toolkit asks for the last time: it
/// is looked up whenever it is needed.
class SpokenWidget final : public QAccessibleWidget, public QAccessibleValueInterface {
public:
  using QAccessibleWidget::QAccessibleWidget;
  ~SpokenWidget() override {
    for (const auto id : rows_) QAccessible::deleteAccessibleInterface(id);
  }

  std::optional<Spoken::Row> row(int index) const {
    const bool isThere = spoken() && std::size_t(index) < spoken()->spokenRows();
    return isThere ? std::optional(spoken()->spokenRow(std::size_t(index))) : std::nullopt;
  }
  int childCount() const override { return rowCount() + QAccessibleWidget::childCount(); }
  QAccessibleInterface* child(int index) const override;
  int indexOfChild(const QAccessibleInterface* child) const override;
  QAccessibleInterface* childAt(int x, int y) const override {
    for (int i = 0; i < rowCount(); ++i)
      if (child(i)->rect().contains(x, y)) return child(i);
    return QAccessibleWidget::childAt(x, y);
  }

  QAccessible::Role role() const override { return spoken() ? spoken()->role() : QAccessibleWidget::role(); }

  QString text(QAccessible::Text kind) const override {
    if (kind == QAccessible::Value && spoken()) return korvell::text(spoken()->spokenValue());
    return QAccessibleWidget::text(kind);
  }

  QAccessible::State state() const override {
    auto state = QAccessibleWidget::state();
    if (spoken()) spoken()->addStates(state);
    return state;
  }

  void* interface_cast(QAccessible::InterfaceType type) override {
    if (type == QAccessible::ValueInterface)
      return meter() ? static_cast<QAccessibleValueInterface*>(this) : nullptr;
    return QAccessibleWidget::interface_cast(type);
  }

  QStringList actionNames() const override {
    auto names = QAccessibleWidget::actionNames();
    if (spoken() && spoken()->canPress()) names.prepend(pressAction());
    return names;
  }

  void doAction(const QString& action) override {
    if (action == pressAction() && spoken())
      spoken()->press();
    else
      QAccessibleWidget::doAction(action);
  }

  QVariant currentValue() const override { return meter().value_or(0); }
  void setCurrentValue(const QVariant& value) override {
    if (spoken()) spoken()->moveMeter(value.toDouble());
  }
  QVariant maximumValue() const override { return spoken() ? spoken()->meterTop() : 100.0; }
  QVariant minimumValue() const override { return 0.0; }
  QVariant minimumStepSize() const override { return 1.0; }

private:
  Spoken* spoken() const { return dynamic_cast<Spoken*>(object()); }
  std::optional<double> meter() const { return spoken() ? spoken()->meter() : std::nullopt; }
  int rowCount() const { return spoken() ? int(spoken()->spokenRows()) : 0; }

  mutable std::vector<QAccessible::Id> rows_; ///< of those that were asked for so far, by their place
};

/// A row that is painted: whatever stands at that place of its widget.
class SpokenRow final : public QAccessibleInterface {
public:
  SpokenRow(const SpokenWidget& table, int index) : table_(table), index_(index) {}

  int index() const { return index_; }
  bool isValid() const override { return table_.row(index_).has_value(); }
  QObject* object() const override { return nullptr; }
  QWindow* window() const override { return table_.window(); }
  QAccessibleInterface* parent() const override { return const_cast<SpokenWidget*>(&table_); }
  QAccessibleInterface* child(int) const override { return nullptr; }
  QAccessibleInterface* childAt(int, int) const override { return nullptr; }
  int childCount() const override { return 0; }
  int indexOfChild(const QAccessibleInterface*) const override { return -1; }
  QAccessible::Role role() const override { return QAccessible::ListItem; }
  void setText(QAccessible::Text, const QString&) override {}

  QString text(QAccessible::Text kind) const override {
    const auto row = table_.row(index_);
    return row && kind == QAccessible::Name ? korvell::text(row->name) : QString();
  }
  QRect rect() const override {
    const auto row = table_.row(index_);
    return row ? row->place.translated(table_.rect().topLeft()) : QRect();
  }
  QAccessible::State state() const override {
    auto state = table_.state();
    const auto row = table_.row(index_);
    state.focused = state.focused && row && row->isCurrent;
    state.selected = row && row->isCurrent;
    state.selectable = state.focusable;
    state.invisible = state.invisible || !row;
    return state;
  }

private:
  const SpokenWidget& table_;
  const int index_;
};

QAccessibleInterface* SpokenWidget::child(int index) const {
  if (index >= rowCount()) return QAccessibleWidget::child(index - rowCount());
  while (int(rows_.size()) <= index)
    rows_.push_back(QAccessible::registerAccessibleInterface(new SpokenRow(*this, int(rows_.size()))));
  return QAccessible::accessibleInterface(rows_[std::size_t(index)]);
}

int SpokenWidget::indexOfChild(const QAccessibleInterface* child) const {
  if (const auto* row = dynamic_cast<const SpokenRow*>(child)) return row->index();
  const int place = QAccessibleWidget::indexOfChild(child);
  return place < 0 ? place : rowCount() + place;
}

/// The toolkit's own looks up a child without asking whether it is still there, and a scroll bar may be gone
/// by the time that a screen reader asks for it.
class SpokenScrollArea final : public QAccessibleWidget {
public:
  using QAccessibleWidget::QAccessibleWidget;
};

QAccessibleInterface* makeSpoken(const QString&, QObject* object) {
  if (auto* area = qobject_cast<QScrollArea*>(object)) return new SpokenScrollArea(area);
  auto* widget = qobject_cast<QWidget*>(object);
  return widget && dynamic_cast<Spoken*>(object) ? new SpokenWidget(widget) : nullptr;
}

} // namespace

void installSpoken() {
  QAccessible::removeFactory(makeSpoken);
  QAccessible::installFactory(makeSpoken);
}

void forgetSpoken(QWidget& widget) {
  if (!QAccessible::isActive()) return;
  if (auto* asked = QAccessible::queryAccessibleInterface(&widget))
    QAccessible::deleteAccessibleInterface(QAccessible::uniqueId(asked));
}

void tellRowFocused(QWidget& widget, std::size_t row) {
  QAccessibleEvent event(&widget, QAccessible::Focus);
  event.setChild(int(row));
  QAccessible::updateAccessibility(&event);
}

void tellMeterMoved(QWidget& widget, double value) {
  QAccessibleValueChangeEvent event(&widget, value);
  QAccessible::updateAccessibility(&event);
}

void tellStateChanged(QWidget& widget, const QAccessible::State& changed) {
  QAccessibleStateChangeEvent event(&widget, changed);
  QAccessible::updateAccessibility(&event);
}

} // namespace korvell

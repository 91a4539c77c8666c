#include "UI/Kit/Spoken.h"

#include "UI/Kit/Text.h"

#include <QAccessibleWidget>
#include <QWidget>

namespace korvell {

namespace {

/// While its widget is being destroyed the Spoken part is gone before the toolkit asks for the last time: it
/// is looked up whenever it is needed.
class SpokenWidget final : public QAccessibleWidget, public QAccessibleValueInterface {
public:
  using QAccessibleWidget::QAccessibleWidget;

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
  void setCurrentValue(const QVariant&) override {}
  QVariant maximumValue() const override { return 100.0; }
  QVariant minimumValue() const override { return 0.0; }
  QVariant minimumStepSize() const override { return 1.0; }

private:
  Spoken* spoken() const { return dynamic_cast<Spoken*>(object()); }
  std::optional<double> meter() const { return spoken() ? spoken()->meter() : std::nullopt; }
};

QAccessibleInterface* makeSpoken(const QString&, QObject* object) {
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

void tellStateChanged(QWidget& widget, const QAccessible::State& changed) {
  QAccessibleStateChangeEvent event(&widget, changed);
  QAccessible::updateAccessibility(&event);
}

} // namespace korvell

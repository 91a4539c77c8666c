#include "UI/Kit/Spoken.h"

#include "UI/Kit/Text.h"

#include <QAccessibleWidget>

namespace korvell {

namespace {

class SpokenWidget final : public QAccessibleWidget, public QAccessibleValueInterface {
public:
  SpokenWidget(QWidget& widget, Spoken& spoken)
      : QAccessibleWidget(&widget, spoken.role()), spoken_(spoken) {}

  QAccessible::Role role() const override { return spoken_.role(); }

  QString text(QAccessible::Text kind) const override {
    if (kind == QAccessible::Value) return korvell::text(spoken_.spokenValue());
    return QAccessibleWidget::text(kind);
  }

  QAccessible::State state() const override {
    auto state = QAccessibleWidget::state();
    spoken_.addStates(state);
    return state;
  }

  void* interface_cast(QAccessible::InterfaceType type) override {
    if (type == QAccessible::ValueInterface)
      return spoken_.meter() ? static_cast<QAccessibleValueInterface*>(this) : nullptr;
    return QAccessibleWidget::interface_cast(type);
  }

  QStringList actionNames() const override {
    auto names = QAccessibleWidget::actionNames();
    if (spoken_.canPress()) names.prepend(pressAction());
    return names;
  }

  void doAction(const QString& action) override {
    if (action == pressAction())
      spoken_.press();
    else
      QAccessibleWidget::doAction(action);
  }

  QVariant currentValue() const override { return spoken_.meter().value_or(0); }
  void setCurrentValue(const QVariant&) override {}
  QVariant maximumValue() const override { return 100.0; }
  QVariant minimumValue() const override { return 0.0; }
  QVariant minimumStepSize() const override { return 1.0; }

private:
  Spoken& spoken_;
};

QAccessibleInterface* makeSpoken(const QString&, QObject* object) {
  auto* widget = qobject_cast<QWidget*>(object);
  auto* spoken = dynamic_cast<Spoken*>(object);
  return widget && spoken ? new SpokenWidget(*widget, *spoken) : nullptr;
}

} // namespace

void installSpoken() {
  QAccessible::removeFactory(makeSpoken);
  QAccessible::installFactory(makeSpoken);
}

void tellStateChanged(QWidget& widget, const QAccessible::State& changed) {
  QAccessibleStateChangeEvent event(&widget, changed);
  QAccessible::updateAccessibility(&event);
}

} // namespace korvell

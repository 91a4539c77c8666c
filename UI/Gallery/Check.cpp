#include "UI/Gallery/Check.h"

#include "UI/Kit/Contrast.h"
#include "UI/Kit/Control.h"
#include "UI/Kit/Text.h"

#include <fmt/format.h>

#include <QAbstractScrollArea>
#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>

#include <algorithm>
#include <set>
#include <typeinfo>

namespace korvell {

namespace {

std::string nameOf(QWidget& widget) {
  auto* interface = QAccessible::queryAccessibleInterface(&widget);
  return interface ? utf8(interface->text(QAccessible::Name)) : std::string();
}

std::string described(QWidget& widget) {
  return fmt::format("{} \"{}\" of {} x {}", typeid(widget).name(), nameOf(widget), widget.width(),
                     widget.height());
}

bool isTabStop(const QWidget& widget) {
  return widget.isEnabled() && (widget.focusPolicy() & Qt::TabFocus) == Qt::TabFocus;
}

/// A page that scrolls may be larger than what shows of it.
bool scrolls(const QWidget& widget) {
  auto* above = widget.parentWidget() ? widget.parentWidget()->parentWidget() : nullptr;
  return dynamic_cast<QAbstractScrollArea*>(above) != nullptr;
}

/// Whether something between the widget and the view shows only part of it.
bool isClipped(const QWidget& widget) {
  for (const auto* inner = &widget; !inner->isWindow() && inner->parentWidget();
       inner = inner->parentWidget()) {
    if (scrolls(*inner)) return false;
    auto* parent = inner->parentWidget();
    if (!parent->rect().contains(QRect(inner->mapTo(parent, QPoint()), inner->size()))) return true;
  }
  return false;
}

std::vector<QWidget*> shownIn(QWidget& view) {
  std::vector<QWidget*> shown{&view};
  for (auto* widget : view.findChildren<QWidget*>())
    if (widget->isVisible() && !widget->isWindow()) shown.push_back(widget);
  return shown;
}

/// Those that Tab comes to, from where the focus is and round.
std::set<QWidget*> reached(QWidget& view) {
  std::set<QWidget*> found;
  view.activateWindow();
  QApplication::processEvents();
  for (auto* now = view.focusWidget(); !now || found.insert(now).second; now = view.focusWidget()) {
    // The toolkit hands Tab to whom has the focus, which may keep it: a question over the window does.
    QWidget* from = now ? now : &view;
    QKeyEvent press(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier);
    QApplication::sendEvent(from, &press);
    if (view.focusWidget() == now) break;
  }
  return found;
}

bool isBehindModal(QWidget& widget, const std::vector<QWidget*>& shown) {
  return std::any_of(shown.begin(), shown.end(), [&](QWidget* other) {
    auto* interface = QAccessible::queryAccessibleInterface(other);
    return interface && interface->state().modal && other != &widget && !other->isAncestorOf(&widget);
  });
}

} // namespace

std::vector<std::string> problemsOf(QWidget& view) {
  std::vector<std::string> problems;
  auto add = [&](const char* problem, QWidget& widget) {
    problems.push_back(fmt::format("{}: {}", problem, described(widget)));
  };
  auto byTab = reached(view); // first: focus rings come and go
  auto shown = shownIn(view);
  for (auto* widget : shown) {
    if (widget->size().isEmpty()) add("without a size", *widget);
    auto* control = dynamic_cast<Control*>(widget);
    if (control && (widget->width() < Control::leastHit || widget->height() < Control::leastHit))
      add("too small to hit", *widget);
    if (control && control->height() < control->minimumSizeHint().height()) add("squeezed", *widget);
    if (auto* whole = dynamic_cast<Whole*>(widget); whole && (whole->cutText() || isClipped(*widget)))
      add("cut off", *widget);
    if (!isTabStop(*widget) || isBehindModal(*widget, shown)) continue;
    if (nameOf(*widget).empty()) add("without a name", *widget);
    if (!byTab.contains(widget)) add("not reached by Tab", *widget);
  }
  return problems;
}

std::vector<std::string> contrastProblems(const Theme& theme) {
  std::vector<std::string> problems;
  for (const auto& demand : contrastDemands()) {
    auto found = contrast(theme.color(demand.ink), theme.color(demand.ground));
    if (found < demand.least)
      problems.push_back(fmt::format("{} on {} has a contrast of {:.2f}, not {}", nameOf(demand.ink),
                                     nameOf(demand.ground), found, demand.least));
  }
  return problems;
}

} // namespace korvell

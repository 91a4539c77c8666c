#include "UI/Tray/TrayItem.h"

#include "Base/Localization.h"

namespace korvell {

TrayItem::TrayItem(Model& model, const UserDefaults& defaults, Actions actions)
    : model_(model), defaults_(defaults), cycles_(model.cycle.observe([this](std::int64_t) { update(); })) {
  // First, for trays that show the menu on any click.
  addAction(localized("Open panel"), actions.openPanel);
  addAction(localized("Open Korvell"), actions.openKorvell);
  addAction(localized("Free Up Space"), actions.freeUpSpace);
  menu_.addSeparator();
  addAction(localized("Settings…"), actions.openSettings);
  addAction(localized("Quit Korvell"), actions.quit);
  icon_.setContextMenu(&menu_);
  QObject::connect(&icon_, &QSystemTrayIcon::activated,
                   [open = actions.openPanel](QSystemTrayIcon::ActivationReason reason) {
                     if (reason != QSystemTrayIcon::Context) open();
                   });
  update();
  icon_.show();
}

void TrayItem::addAction(const std::string& title, const Task& action) {
  QObject::connect(menu_.addAction(QString::fromStdString(title)), &QAction::triggered, action);
}

void TrayItem::setInk(TrayInk ink) {
  if (std::exchange(ink_, ink) == ink) return;
  shown_.reset();
  update();
}

void TrayItem::update() {
  auto form = trayForm(model_, menuBarStyle(defaults_));
  const auto tooltip = QString::fromStdString(trayTooltip(form, *model_.report));
  if (std::exchange(tooltip_, tooltip) != tooltip) icon_.setToolTip(tooltip);
  if (form == shown_) return;
  icon_.setIcon(trayIcon(form, ink_));
  shown_ = std::move(form);
}

} // namespace korvell

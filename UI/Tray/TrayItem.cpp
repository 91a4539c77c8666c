#include "UI/Tray/TrayItem.h"

#include "Base/Localization.h"
#include "UI/Tray/MenuBarIcon.h"

#include <QCursor>

namespace korvell {

TrayItem::TrayItem(Model& model, const UserDefaults& defaults, const Theme& theme, Actions actions)
    : model_(model), defaults_(defaults), theme_(theme),
      cycles_(model.cycle.observe([this](std::int64_t) { update(); })) {
  // The panel first, for trays that show the menu on any click.
  for (const auto& action :
       {actions.openPanel, actions.openKorvell, actions.freeUpSpace, actions.openSettings, actions.quit}) {
    entries_.push_back(menu_.addAction(QString()));
    QObject::connect(entries_.back(), &QAction::triggered, action);
  }
  menu_.insertSeparator(entries_[3]);
  // In a menu bar the toolkit would open it at every click, over the panel.
  if (!isMenuBar_) icon_.setContextMenu(&menu_);
  QObject::connect(
      &icon_, &QSystemTrayIcon::activated,
      [this, open = actions.openPanel](QSystemTrayIcon::ActivationReason reason) { clicked(reason, open); });
  speakAnew();
  icon_.show();
}

void TrayItem::clicked(QSystemTrayIcon::ActivationReason reason, const Task& openPanel) {
  if (reason != QSystemTrayIcon::Context) return openPanel();
  if (isMenuBar_) menu_.popup(QCursor::pos());
}

QIcon TrayItem::picture(const TrayForm& form) const {
  return isMenuBar_ ? menuBarIcon(menuBarLabel(form), theme_) : trayIcon(form, ink_);
}

void TrayItem::speakAnew() {
  const std::string titles[] = {localized("Open panel"), localized("Open Korvell"),
                                localized("Free Up Space"), localized("Settings…"),
                                localized("Quit Korvell")};
  for (std::size_t i = 0; i < entries_.size(); ++i) entries_[i]->setText(QString::fromStdString(titles[i]));
  update();
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
  icon_.setIcon(picture(form));
  shown_ = std::move(form);
}

} // namespace korvell

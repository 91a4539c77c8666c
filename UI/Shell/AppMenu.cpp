#include "UI/Shell/AppMenu.h"

#include "Base/Localization.h"
#include "UI/Kit/Text.h"

#include <QApplication>
#include <QMenu>

namespace korvell {

namespace {

constexpr std::size_t numbered = 9;

/// The one that the user works in.
void withWindow(const std::function<void(QWidget&)>& act) {
  if (auto* window = QApplication::activeWindow()) act(*window);
}

/// The panel has no place to go to.
void minimize(QWidget& window) {
  if (window.windowType() == Qt::Window) window.showMinimized();
}

} // namespace

AppMenu::AppMenu(Actions actions) {
  auto& view = menu([] { return localized("View"); });
  for (std::size_t i = 0; i < actions.sections.size(); ++i) {
    const auto section = actions.sections[i];
    entry(
        view, [section] { return title(section); },
        i < numbered ? QKeySequence(Qt::CTRL | Qt::Key(Qt::Key_1 + int(i))) : QKeySequence(),
        [open = actions.open, section] { open(section); });
  }
  // The desktop moves what has a role into the application's own menu.
  entry(
      view, [] { return localized("Settings…"); }, QKeySequence(Qt::CTRL | Qt::Key_Comma),
      actions.openSettings)
      .setMenuRole(QAction::PreferencesRole);
  entry(
      view, [] { return localized("Quit Korvell"); }, QKeySequence(Qt::CTRL | Qt::Key_Q), actions.quit)
      .setMenuRole(QAction::QuitRole);

  auto& window = menu([] { return localized("Window"); });
  entry(
      window, [] { return localized("Minimize"); }, QKeySequence(Qt::CTRL | Qt::Key_M),
      [] { withWindow(minimize); });
  entry(
      window, [] { return localized("Close"); }, QKeySequence(Qt::CTRL | Qt::Key_W),
      [] { withWindow([](QWidget& active) { active.close(); }); });

  if (actions.openHelp)
    entry(
        menu([] { return localized("Help"); }), [] { return localized("Korvell Help"); }, {},
        actions.openHelp);
  speakAnew();
}

QMenu& AppMenu::menu(std::function<std::string()> title) {
  auto* menu = bar_.addMenu(QString());
  titles_.emplace_back(menu->menuAction(), std::move(title));
  return *menu;
}

QAction& AppMenu::entry(QMenu& menu, std::function<std::string()> title, const QKeySequence& keys,
                        Task task) {
  auto* entry = menu.addAction(QString());
  entry->setShortcut(keys);
  // Shown, and known to the desktop; the toolkit leaves the keys to the windows, or they would be ambiguous.
  entry->setShortcutContext(Qt::WidgetShortcut);
  // The toolkit would guess a role from the words.
  entry->setMenuRole(QAction::NoRole);
  QObject::connect(entry, &QAction::triggered, std::move(task));
  titles_.emplace_back(entry, std::move(title));
  return *entry;
}

void AppMenu::speakAnew() {
  for (const auto& [action, title] : titles_) action->setText(text(title()));
}

} // namespace korvell

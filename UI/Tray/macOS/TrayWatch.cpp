#include "UI/Tray/TrayWatch.h"

#include <QTimer>

namespace korvell {

/// The menu bar is always there.
struct TrayWatch::Search {
  QTimer timer;
};

TrayWatch::TrayWatch(std::function<void(State)> changed) : search_(std::make_unique<Search>()) {
  search_->timer.setSingleShot(true);
  QObject::connect(&search_->timer, &QTimer::timeout,
                   [changed = std::move(changed)] { changed(State::present); });
  search_->timer.start(0);
}
TrayWatch::~TrayWatch() = default;

bool TrayWatch::isMenuBar() { return true; }

} // namespace korvell

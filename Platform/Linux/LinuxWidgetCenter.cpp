#include "Platform/Linux/LinuxWidgetCenter.h"

#include "Platform/Posix/PlacedWidget.h"

namespace korvell {

// A handful of files in the user's own folder: microseconds, so it is answered at once.
void LinuxWidgetCenter::currentConfigurations(std::function<void(std::optional<std::size_t>)> answer) {
  answer(PlacedWidget::count(folder_));
}

std::uint64_t LinuxWidgetCenter::stamp() const { return PlacedWidget::stamp(folder_); }

} // namespace korvell

#include "UI/Desktop/DesktopClock.h"

#include <QLocale>

namespace korvell {

HourCycle desktopHourCycle() {
  const auto format = QLocale::system().timeFormat(QLocale::ShortFormat); // "HH:mm", "h:mm AP"
  return format.contains("AP", Qt::CaseInsensitive) ? HourCycle::from1To12 : HourCycle::from0To23;
}

} // namespace korvell

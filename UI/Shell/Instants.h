#pragma once
// For measuring from outside: with KORVELL_TELL_INSTANTS=1 in the environment the application says on
// standard error when something happened, on the monotonic clock: "korvell: instant 12345.678901 painted
// 0x1400007 Korvell", with the window's number and title. Without it nothing of this costs anything. Main
// thread only.

#include <QObject>

#include <memory>
#include <string_view>

namespace korvell {

class Instants final : public QObject {
public:
  /// Whether they are wanted.
  static bool areWanted();
  static void tell(std::string_view what);

  /// From now on each window is told of whenever it was exposed and has painted itself.
  Instants();
  bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace korvell

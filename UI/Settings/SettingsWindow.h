#pragma once
// The window of the settings: as wide as the page, as high as its content and the screen allow. There is at
// most one; it is gone once it was closed. Esc and Ctrl+W (Cmd+W) close it. Main thread only.

#include "UI/Kit/Theme.h"
#include "UI/Settings/SettingsEditor.h"

#include <QPointer>
#include <QWidget>

#include <functional>

namespace korvell {

class SettingsWindow {
public:
  /// `services` is asked each time that the window is made; `closed` is told after it is gone.
  SettingsWindow(const Theme& theme, std::function<SettingsEditor::Services()> services, Task closed);
  ~SettingsWindow();
  SettingsWindow(const SettingsWindow&) = delete;
  SettingsWindow& operator=(const SettingsWindow&) = delete;

  /// Makes the window if need be and brings it to the front.
  void show();
  /// The language was changed: the same page at the same place.
  void speakAnew();
  /// At once, without telling.
  void close();
  /// Null while there is none.
  QWidget* widget() const;

private:
  class Frame;

  const Theme& theme_;
  const std::function<SettingsEditor::Services()> services_;
  const Task closed_;
  QPointer<Frame> frame_;
};

} // namespace korvell

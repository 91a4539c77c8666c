#pragma once
// The rows that settings stand in, wherever they can be changed.

#include "UI/Kit/Button.h"
#include "UI/Kit/Labels.h"
#include "UI/Kit/Switches.h"
#include "UI/Settings/SettingsPage.h"

#include <QBoxLayout>

#include <functional>
#include <optional>

namespace korvell {

/// A title with what is said about it below, and a control at the end. Its own widths decide its height.
class SettingRow : public QWidget {
public:
  SettingRow(const Theme& theme, std::string_view title, QWidget* parent);

  void addControl(QWidget& control);
  /// One of many of its kind.
  void setLow(const Theme& theme);
  void addWide(QWidget& control);

  void setTitle(std::string_view title);
  /// Below the title, each on lines of its own and absent when empty.
  void tell(std::string_view detail, std::string_view outcome, std::string_view trouble);
  void setQuiet(bool isQuiet);

private:
  QHBoxLayout* line_;
  TextLabel* title_;
  QWidget* more_;
  TextLabel *detail_, *outcome_;
  QWidget* warning_;
  TextLabel* trouble_;
};

class SettingSwitch : public SettingRow {
public:
  SettingSwitch(const Theme& theme, QWidget* parent, std::function<void(bool)> handler);
  void show(const SettingsPage::Switch& state);

private:
  Toggle* toggle_;
  std::optional<SettingsPage::Switch> shown_;
};

/// Before it is shown, a layout hears of what has changed only in the widget that it lays out, and no other:
/// tells all of them, from inside.
void tellLayouts(QWidget& widget);
/// As wide as its words again, where they have changed.
void setWords(Button& button, const std::string& words);

} // namespace korvell

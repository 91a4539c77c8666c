#pragma once
// The settings on one page: groups of rows, each with its control at the end. Shows what it is given, also
// after the user has moved a control: what could not be changed goes back.

#include "UI/Kit/Banner.h"
#include "UI/Kit/Choices.h"
#include "UI/Kit/Native.h"
#include "UI/Kit/Scroll.h"
#include "UI/Kit/Switches.h"
#include "UI/Settings/SettingRows.h"

#include <functional>
#include <vector>

class QVBoxLayout;

namespace korvell {

class SettingsView : public Ground {
public:
  static constexpr int naturalWidth = 600;

  struct Handlers {
    std::function<void(MenuBarStyle)> style;
    std::function<void(AppearanceChoice)> appearance;
    std::function<void(LanguageChoice)> language;
    std::function<void(TemperatureUnit)> temperatures;
    std::function<void(bool)> opensAtLogin, panelSound, weeklyReport;
    std::function<void(HealthAlert::Kind, bool)> alerts;
    std::function<void(bool on)> turnHelper;
    std::function<void()> openApproval, installTool;
    std::function<void(bool)> automaticallyChecks;
    std::function<void()> checkForUpdates;
    std::function<void()> help; ///< null where none is installed
  };

  SettingsView(const Theme& theme, Handlers handlers, QWidget* parent);

  void show(const SettingsPage& page);
  using QWidget::show;
  /// Hides what is said about all settings; false when nothing is.
  bool dismiss();

  /// The language's control gets the focus, on the page at that place.
  void focusLanguage(Qt::FocusReason reason, int top);
  int top() const;

  /// The height at which nothing is scrolled, in that width.
  int wholeHeight(int width) const;
  QSize sizeHint() const override;

private:
  class Content;
  struct Group;

  Group startGroup(std::string_view title);
  template <class Choice>
  Segments* addChoice(Group& group, const std::string& words, std::function<void(Choice)> chosen);
  void makeMenuBar();
  void makeGeneral();
  void makeHelper();
  void makeTool();
  SettingRow* addCopied(Group& group, const std::string& title, std::string SettingsPage::Agents::*words);
  void makeData();
  void makeUpdates();
  void makeAlerts();
  void makeHelp();

  void showTrouble(const SettingsPage& page);
  void showStyles(const SettingsPage& page);
  void showHelper(const SettingsPage::Helper& helper);
  void showUpdates(const SettingsPage::Updates& updates);

  const Theme& theme_;
  const Handlers handlers_;
  QWidget* above_; ///< the banner's room
  Banner* banner_;
  std::string told_; ///< by the banner
  int refusals_ = 0;
  ScrollArea* scroll_;
  QWidget* content_;
  QVBoxLayout* column_;

  std::vector<MenuBarLabel> labels_; ///< that the tiles paint
  RadioTiles* styles_;
  SettingSwitch *opensAtLogin_, *panelSound_;
  Segments *appearance_, *language_, *temperatures_;
  struct HelperParts {
    QWidget* head;
    Plate* plate;
    SettingRow* explanation;
    Hairline* rule;
    SettingRow* state;
    Button *action, *approval;
    bool turnsOn = false;
  } helper_{};
  SettingRow* tool_;
  Button* install_;
  SettingRow *agents_, *claude_, *clients_;
  SettingsPage::Agents copied_;
  TextField* history_;
  TextLabel* ownCost_;
  struct UpdateParts {
    SettingSwitch* automatically;
    Hairline* rule;
    SettingRow* manual;
    Button* check;
  } updates_{};
  std::vector<SettingSwitch*> alerts_;
  SettingSwitch* weeklyReport_;
};

} // namespace korvell

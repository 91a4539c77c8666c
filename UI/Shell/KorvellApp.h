#pragma once
// The running application: it measures and keeps, shows itself in the tray and, when it is asked for, in a
// panel and a window. Owns everything that lives as long as it does. Main thread only.

#include "Agents/MetricsFile.h"
#include "App/AppDelegate.h"
#include "App/Assembly.h"
#include "App/ConsentDesk.h"
#include "App/Keeper.h"
#include "App/KeeperTroubles.h"
#include "App/ModelActions.h"
#include "App/RunningApplication.h"
#include "App/SettingsStore.h"
#include "App/SoundServices.h"
#include "UI/Desktop/DesktopLook.h"
#include "UI/Kit/Pictures.h"
#include "UI/Kit/Theme.h"
#include "UI/Measures/LiveDirections.h"
#include "UI/Panel/PanelView.h"
#include "UI/Settings/SettingsWindow.h"
#include "UI/Shell/AppMenu.h"
#include "UI/Shell/CardSharing.h"
#include "UI/Shell/Errands.h"
#include "UI/Shell/LinkEvents.h"
#include "UI/Shell/MainLoop.h"
#include "UI/Shell/MainWindow.h"
#include "UI/Shell/PanelWindow.h"
#include "UI/Shell/Presence.h"
#include "UI/Tray/TrayItem.h"
#include "UI/Tray/TrayWatch.h"

#include <QElapsedTimer>

#include <optional>

namespace korvell {

class KorvellApp {
public:
  /// After the toolkit's application object and before its end; the launch has the lock.
  KorvellApp(Host& host, const Clock& clock, Launch launched, QueueCore::Run runTask);
  ~KorvellApp();
  KorvellApp(const KorvellApp&) = delete;
  KorvellApp& operator=(const KorvellApp&) = delete;

  /// Runs until the user quits or the session ends; the exit status.
  int run(const OpenRequest& request);

private:
  /// Looks at the windows: a visible one of the ordinary kind, or any that has the focus.
  struct WindowsAttention final : Attention {
    bool isWatched() const override;
  };

  void listen();
  void takeStep(const Step& step, QWidget& window, Banner& banner);
  void openBatterySettings();
  /// Shows why a process counts to its application.
  void explain(ProcessID pid, QWidget& window, Banner& banner);
  void showProgram(ProcessID pid, Banner& banner);
  void askWeekScore();
  void seeAlerts();
  std::unique_ptr<Page> makeHealthPage(QWidget& window, Banner& banner);
  /// At the first launch, once.
  bool welcomes();
  std::unique_ptr<Page> makeSoundPage(QWidget& window);
  std::unique_ptr<Page> makeMeasurePage(Metric metric, QWidget& window, Banner& banner);
  void showPanel();
  void wear(const DesktopWishes& wishes);
  void trayFound(TrayWatch::State state);
  /// In the language that the user picked.
  void speak();
  void show(std::optional<SidebarItem> item);
  void openPanel();
  void panelClosed();
  void windowClosed();
  void closeWindows();
  void openSettings();
  SettingsEditor::Services settingsServices();
  /// Null where no help is installed.
  std::function<void(SidebarItem)> openHelp() const;
  /// Where the desktop has a place for one.
  void makeMenu();
  /// For what may take seconds: opening programs, the login item, the helper.
  Queue& desktopQueue();
  void examine(const std::function<void(const std::vector<SourceReport>&)>& done);
  /// Asks over a window that is open, and quits at once without one.
  void askToQuit();
  std::set<SidebarItem> sections() const;
  SidebarFacts sidebarFacts() const;
  std::unique_ptr<Page> makePage(SidebarItem item, QWidget& window, Banner& banner);

  Host& host_;
  Launch launched_;
  MainLoop loop_;
  SettingsStore store_;
  Theme theme_;
  DesktopWishes wishes_;
  WindowsAttention attention_;
  Assembly assembly_;
  KeeperTroubles troubles_;
  std::unique_ptr<AppModel> model_;
  LiveDirections directions_{*model_};
  std::function<StorageScanner&()> storage_; ///< made by the first call
  StorageScanner* scanner_ = nullptr;        ///< once it was made
  std::optional<Date> moment_;               ///< for the measure's page that is opened next
  std::unique_ptr<ModelActions> actions_;
  Errands errands_;
  ConsentDesk consent_; ///< ends after the keeper
  CardSharing sharing_;
  bool hasWelcomed_ = false;
  std::optional<double> weekScore_;
  Date weekScoreAt_ = Date::distantPast(); ///< when it was asked for
  AIPeriod aiPeriod_ = AIPeriod::week;
  std::unique_ptr<Queue> desktop_, examining_; ///< null until the first
  Pictures pictures_;
  AppDelegate delegate_;
  LinkEvents links_{[this](const std::vector<std::string>& urls) { delegate_.applicationOpen(urls); }};
  Presence presence_{[this] { delegate_.applicationShouldHandleReopen(window_.isVisible()); }};
  std::optional<SoundMixer> sound_; ///< absent where no application's volume can be set
  std::optional<SoundAnswers> soundAnswers_;
  Keeper keeper_;
  std::optional<MetricsFile> metrics_; ///< ends before the model
  MainWindow window_;
  SettingsWindow settings_;
  PanelWindow* panel_ = nullptr;
  PanelView* panelView_ = nullptr;
  UsageKey panelOrder_ = UsageKey::memory;
  Subscription panelCycles_, panelSound_, panelSounds_; ///< its news; what is watched for it
  QElapsedTimer sincePanel_;                            ///< closed
  std::optional<AppMenu> menu_;
  std::optional<TrayItem> tray_;
  std::optional<DesktopLook> look_;
  std::optional<TrayWatch> trayWatch_;
};

} // namespace korvell

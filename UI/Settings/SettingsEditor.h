#pragma once
// Behind the settings page: carries out what the user changes and knows what to show. A change is stored at
// once, beside the main queue; whoever measures reads it there. What may take long (the login item, the
// helper, linking the tool) runs on the queue for work and is answered on the main queue. Main queue only.

#include "App/Assembly.h"
#include "App/Model.h"
#include "App/SettingsStore.h"
#include "Base/Cancellation.h"
#include "Platform/Host.h"
#include "UI/Settings/SettingsPage.h"

#include <functional>
#include <memory>

namespace korvell {

class SettingsEditor {
public:
  struct Services {
    Model& model;
    const UserDefaults& defaults;
    SettingsStore& store;
    LoginItem& loginItem;
    UsageHelperService* helper = nullptr; ///< null where there is none
    Updater* updater = nullptr;           ///< null where none is configured
    SettingsContext context;
    Queue& main;
    Queue& work; ///< outlives what it is asked here, which may last until the user has answered a question
    std::function<Outcome(bool on, const Cancellation&)> turnHelper;
    std::function<std::string(const Cancellation&)> installTool; ///< returns the outcome in words
    Task helperChanged;                                          ///< called on `work`
    Task styleChanged, appearanceChanged, languageChanged, temperaturesChanged;
    Task openHelp; ///< null where none is installed
  };
  /// Those of the running system, without the last five.
  static Services of(Host& host, Assembly& assembly, Model& model, SettingsStore& store, Queue& main,
                     Queue& work);

  /// `changed` is told when the page would show something else, each cycle of the model included.
  SettingsEditor(Services services, Task changed);
  /// What is under way is given up.
  ~SettingsEditor();
  SettingsEditor(const SettingsEditor&) = delete;
  SettingsEditor& operator=(const SettingsEditor&) = delete;

  SettingsPage page() const;
  /// Asks anew what may have been changed elsewhere: when the user comes back to the page.
  void refresh();
  /// The language was changed: outcomes of before, which were said in the other one, go.
  void speakAnew();

  void setStyle(MenuBarStyle style);
  void setAppearance(AppearanceChoice choice);
  void setLanguage(LanguageChoice choice);
  void setTemperatures(TemperatureUnit unit);
  void setAlerts(HealthAlert::Kind kind, bool on);
  void setWeeklyReport(bool on);
  void setPanelSound(bool on);
  // While one of these is under way, another wish of its kind is not heard.
  void setOpensAtLogin(bool on);
  void turnHelper(bool on);
  void installTool();
  void setAutomaticallyChecks(bool on);
  void checkForUpdates();
  /// Shows where the system lets the user approve the helper.
  void openApproval();

private:
  /// `stored` is called once it is, also when this is gone by then.
  void store(std::string_view key, Value value, const Task& stored = {});
  void askLogin();
  void askHelper();
  /// Runs `work` on its queue and `then` with the result on the main queue, unless this is gone by then.
  template <class Result>
  void runAside(std::function<Result()> work, std::function<void(Result)> then);

  const Services services_;
  const Task changed_;
  SettingsAnswers answers_;
  bool isSwitchingLogin_ = false;
  Cancellation cancellation_;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
  Subscription cycles_;
};

} // namespace korvell

#include "UI/Settings/SettingsEditor.h"

#include "App/CommandLineTool.h"
#include "App/HelperSwitch.h"
#include "App/PanelSoundChoice.h"
#include "Core/Health/WeeklyReport.h"
#include "Core/History/HistoryStore.h"

#include <unistd.h>

#include <string_view>
#include <utility>

namespace korvell {

namespace {

bool isPackaged(std::string_view program) {
  return program.starts_with("/usr/") && !program.starts_with("/usr/local/");
}

} // namespace

SettingsEditor::Services SettingsEditor::of(Host& host, Assembly& assembly, Model& model,
                                            SettingsStore& store, Queue& main, Queue& work) {
  const CommandLineTool tool(
      {host.system, host.program, host.folders.home, processEnvironment(), Shell::run});
  const auto turn = [&host, path = tool.toolPath()](bool on, const Cancellation& cancellation) {
    return HelperSwitch(
               {*host.usageHelper, host.system, host.user, path, HelperSwitch::systemAsker(), Shell::run})
        .turn(on, cancellation);
  };
  return {.model = model,
          .defaults = *host.defaults,
          .store = store,
          .loginItem = *host.loginItem,
          .helper = host.usageHelper.get(),
          .context = {host.system, host.folders.home,
                      host.folders.data + "/" + std::string(HistoryStore::fileName), getpid(),
                      tool.claudeCommand(), tool.clientSnippet(), nullptr, isPackaged(host.program)},
          .main = main,
          .work = work,
          .turnHelper = turn,
          .installTool = [tool](const Cancellation& cancellation) { return tool.install(cancellation); },
          .helperChanged = [&assembly] { assembly.helperChanged(); }};
}

SettingsEditor::SettingsEditor(Services services, Task changed)
    : services_(std::move(services)), changed_(std::move(changed)),
      cycles_(services_.model.cycle.observe([this](std::int64_t) { changed_(); })) {
  if (services_.updater) services_.updater->onChange([this] { changed_(); });
  refresh();
}

SettingsEditor::~SettingsEditor() {
  if (services_.updater) services_.updater->onChange({});
  cancellation_.cancel();
}

SettingsPage SettingsEditor::page() const {
  auto context = services_.context;
  context.updater = services_.updater;
  return settingsPage(services_.model, services_.defaults, context, answers_);
}

template <class Result>
void SettingsEditor::runAside(std::function<Result()> work, std::function<void(Result)> then) {
  services_.work.async([&main = services_.main, alive = std::weak_ptr(alive_), work = std::move(work),
                        then = std::move(then)] {
    auto result = std::make_shared<Result>(work());
    main.async([alive, then, result] {
      if (!alive.expired()) then(std::move(*result));
    });
  });
}

void SettingsEditor::refresh() {
  askLogin();
  askHelper();
}

void SettingsEditor::speakAnew() {
  for (auto* said : {&answers_.loginTrouble, &answers_.helperTrouble, &answers_.toolOutcome}) said->clear();
  refresh();
}

void SettingsEditor::askLogin() {
  runAside<bool>([&item = services_.loginItem] { return item.isEnabled(); },
                 [this](bool isEnabled) {
                   answers_.opensAtLogin = isEnabled;
                   changed_();
                 });
}

void SettingsEditor::askHelper() {
  using Helper = SettingsAnswers::Helper;
  runAside<Helper>(
      [helper = services_.helper, system = services_.context.system]() -> Helper {
        if (!helper) return {UsageHelperStatus::notFound, {}, false};
        return {helper->status(), helperExplanation(*helper, system), lacksSignature(*helper, system)};
      },
      [this](Helper helper) {
        answers_.helper = std::move(helper);
        changed_();
      });
}

void SettingsEditor::store(std::string_view key, Value value, const Task& stored) {
  const auto told = [this, alive = std::weak_ptr(alive_), stored](bool isStored) {
    if (isStored && stored) stored();
    if (alive.expired()) return;
    answers_.couldNotStore = !isStored;
    if (!isStored) ++answers_.refusals;
    changed_();
  };
  services_.store.set(std::string(key), std::move(value), told);
}

void SettingsEditor::setStyle(MenuBarStyle style) {
  store(menuBarStyleKey, std::string(rawValue(style)), services_.styleChanged);
}

void SettingsEditor::setAppearance(AppearanceChoice choice) {
  store(appearanceKey, std::string(rawValue(choice)), services_.appearanceChanged);
}

void SettingsEditor::setLanguage(LanguageChoice choice) {
  store(languageKey, std::string(rawValue(choice)), services_.languageChanged);
}

void SettingsEditor::setTemperatures(TemperatureUnit unit) {
  store(temperatureUnitKey, std::string(rawValue(unit)), services_.temperaturesChanged);
}

void SettingsEditor::setAlerts(HealthAlert::Kind kind, bool on) { store(defaultsKey(kind), on); }

void SettingsEditor::setWeeklyReport(bool on) { store(WeeklyReport::enabledKey, on); }

void SettingsEditor::setPanelSound(bool on) { store(panelSoundKey, on); }

void SettingsEditor::setOpensAtLogin(bool on) {
  if (std::exchange(isSwitchingLogin_, true)) return changed_();
  answers_.opensAtLogin = on; // until the answer is there
  answers_.loginTrouble.clear();
  runAside<Outcome>([&item = services_.loginItem, on] { return item.setEnabled(on); },
                    [this](Outcome outcome) {
                      isSwitchingLogin_ = false;
                      if (!outcome) answers_.loginTrouble = outcome.reason();
                      askLogin();
                    });
  changed_();
}

void SettingsEditor::turnHelper(bool on) {
  if (!services_.helper || std::exchange(answers_.isTurningHelper, true)) return;
  answers_.helperTrouble.clear();
  runAside<Outcome>(
      [turn = services_.turnHelper, changed = services_.helperChanged, on, cancellation = cancellation_] {
        auto outcome = turn(on, cancellation);
        if (changed) changed();
        return outcome;
      },
      [this](Outcome outcome) {
        answers_.isTurningHelper = false;
        if (!outcome) answers_.helperTrouble = outcome.reason();
        askHelper();
      });
  changed_();
}

void SettingsEditor::setAutomaticallyChecks(bool on) {
  if (services_.updater) services_.updater->setAutomaticallyChecks(on);
  changed_();
}

void SettingsEditor::checkForUpdates() {
  if (services_.updater && services_.updater->canCheck()) services_.updater->check();
  changed_();
}

void SettingsEditor::openApproval() {
  services_.work.async([helper = services_.helper] {
    if (helper) helper->openApprovalSettings();
  });
}

void SettingsEditor::installTool() {
  if (std::exchange(answers_.isInstalling, true)) return;
  answers_.toolOutcome.clear();
  runAside<std::string>(
      [install = services_.installTool, cancellation = cancellation_] { return install(cancellation); },
      [this](std::string outcome) {
        answers_.isInstalling = false;
        answers_.toolOutcome = std::move(outcome);
        changed_();
      });
  changed_();
}

} // namespace korvell

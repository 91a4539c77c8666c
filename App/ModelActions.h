#pragma once
// Carries out what is asked for by itself, over the model and the storage scanner of this process.
//
// Answers speak the language of the call; what the model does about it, and so this process's views, speak
// the process's own.
//
// Only servers and startup items that the model lists are touched, processes only while they still are those
// that were described, and items of the storage only as the present scan holds them.

#include "App/Actions.h"
#include "App/AppModel.h"
#include "App/SettingsStore.h"
#include "App/StorageActions.h"

#include <functional>

namespace korvell {

class ModelActions final : public Actions {
public:
  /// What it acts on. The functions make it when something first needs it; it all outlives this object.
  struct Parts {
    std::function<AppModel&()> model;
    std::function<StorageScanner&()> storage;
    UserDefaults& defaults;
    QueueFactory makeQueue; ///< for what waits for the disk
  };
  ModelActions(Queue& main, Parts parts);
  ~ModelActions() override;

  void describe(const ActionRequest& request, Described done) override;
  void perform(const ActionRequest& request, Performed done) override;

private:
  void tell(const QuitRequest& request, const Described& done);
  void tell(const StopServerRequest& request, const Described& done);
  void tell(const StopIdleServersRequest& request, const Described& done);
  void tell(const RescanStartupItemsRequest& request, const Described& done);
  void tell(const RemoveStartupItemRequest& request, const Described& done);
  void tell(const ScanStorageRequest& request, const Described& done);
  void tell(const CleanStorageRequest& request, const Described& done);
  void tell(const SwitchAlertsRequest& request, const Described& done);
  void tell(const ChangeSettingRequest& request, const Described& done);
  void act(const QuitRequest& request, const Performed& done);
  void act(const StopServerRequest& request, const Performed& done);
  void act(const StopIdleServersRequest& request, const Performed& done);
  void act(const RescanStartupItemsRequest& request, const Performed& done);
  void act(const RemoveStartupItemRequest& request, const Performed& done);
  void act(const ScanStorageRequest& request, const Performed& done);
  void act(const CleanStorageRequest& request, const Performed& done);
  void act(const SwitchAlertsRequest& request, const Performed& done);
  void act(const ChangeSettingRequest& request, const Performed& done);

  /// Once the model has looked at the machine.
  void whenMeasured(std::function<void(AppModel&)> then);
  /// Told with `json` once it is stored.
  void store(std::string key, Value value, std::function<Value()> json, const Performed& done);

  Queue& main_;
  Parts parts_;
  Lifeline<ModelActions> life_{*this};
  StorageActions storage_;
  SettingsStore settings_;
};

} // namespace korvell

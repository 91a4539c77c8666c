#pragma once
// Puts the sampling loop together from the operating system's answers: the same way for the keeper, the
// interface and commands that measure by themselves. Outlives the samplers that it makes.

#include "App/AppModel.h"
#include "App/ModelActions.h"
#include "Base/Queue.h"
#include "Core/AIUsage/AIUsageStore.h"
#include "Core/Loop/Sampler.h"
#include "Core/Machine/Owners.h"
#include "Core/Machine/PrivilegedHelper.h"
#include "Platform/Host.h"

#include <memory>
#include <string>

namespace korvell {

/// Where the widget of this system looks for its document.
std::string widgetDocument(const Host& host);

/// This system's, for one queue.
std::unique_ptr<OwnerRules> makeOwnerRules(Host& host);

class Assembly {
public:
  Assembly(Host& host, const Clock& clock);

  /// The model of a process that keeps: records, alerts, reports and accounts.
  /// `tellAlertTrouble` hears on `main` what goes wrong with the file of the alerts.
  std::unique_ptr<AppModel> makeKeepingModel(Queue& main, const Attention& attention,
                                             AlertLog::Tell tellAlertTrouble = {});
  /// The model of one that only shows: it records and notifies nothing, and reads the history.
  std::unique_ptr<AppModel> makeWatchingModel(Queue& main, const Attention& attention);
  /// A sampler on a queue of its own. Without a history nothing is recorded. One at a time.
  std::unique_ptr<Sampler> makeSampler(HistoryStore* history);
  /// For commands that need more of the processes than a snapshot has.
  std::unique_ptr<ProcessSampler> makeProcessSampler();
  /// For commands that look at the servers once.
  std::unique_ptr<DevServerScanner> makeDevServerScanner() const;
  /// The accounting of what AI coding tools used, which publishes on `main`. Null where logs can't be read.
  std::unique_ptr<AIUsageStore> makeAIUsageStore(Queue& main);
  /// The storage scanner of the process, with a work queue of low priority. Both are made by the first call
  /// and end with the last copy of the function, before `main`.
  std::function<StorageScanner&()> lateStorageScanner(Queue& main);
  /// Actions over a model and the storage scanner, which may be made when they are first needed. The model
  /// outlives them.
  std::unique_ptr<ModelActions> makeActions(Queue& main, std::function<AppModel&()> model,
                                            std::function<StorageScanner&()> storage);
  /// The privileged helper was turned on or off: it is asked anew at once. From any thread.
  void helperChanged();
  /// What ending processes takes.
  QuitServices quitServices() { return {*host_.processes, *host_.applications, *host_.processControl}; }

private:
  AppModel::Seams seams();

  Host& host_;
  const Clock& clock_;
  SilentNotifications silent_;
  std::unique_ptr<OwnerRules> owners_;       ///< this system's
  std::unique_ptr<PrivilegedHelper> helper_; ///< null where there is none
};

} // namespace korvell

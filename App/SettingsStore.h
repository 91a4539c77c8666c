#pragma once
// Stores settings beside the main queue: a change waits for the disk, and a window must not. Changes are made
// in the order in which they were asked for. Until one is stored, reading gives the earlier value. Main queue
// only.

#include "Base/Lifeline.h"
#include "Base/Queue.h"
#include "Platform/UserDefaults.h"

#include <functional>
#include <memory>
#include <string>

namespace korvell {

class SettingsStore {
public:
  /// Told on the main queue whether it could be stored; no more once the store has ended.
  using Stored = std::function<void(bool stored)>;

  /// The settings outlive the store.
  SettingsStore(UserDefaults& defaults, Queue& main, QueueFactory makeQueue);
  /// Waits until everything that was asked for is stored.
  ~SettingsStore();
  SettingsStore(const SettingsStore&) = delete;
  SettingsStore& operator=(const SettingsStore&) = delete;

  /// A null value removes the key.
  void set(std::string key, Value value, Stored then = {});
  /// Any other change: called beside the main queue with the settings, returns whether it could be stored.
  void change(std::function<bool(UserDefaults&)> change, Stored then = {});

private:
  UserDefaults& defaults_;
  Queue& main_;
  QueueFactory makeQueue_;
  Lifeline<SettingsStore> life_{*this};
  std::unique_ptr<Queue> queue_; ///< null until the first change
};

} // namespace korvell

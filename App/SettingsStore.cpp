#include "App/SettingsStore.h"

namespace korvell {

SettingsStore::SettingsStore(UserDefaults& defaults, Queue& main, QueueFactory makeQueue)
    : defaults_(defaults), main_(main), makeQueue_(std::move(makeQueue)) {}

SettingsStore::~SettingsStore() {
  life_.cut();
  if (queue_) queue_->sync([] {}); // the queue drops what it has not begun
}

void SettingsStore::set(std::string key, Value value, Stored then) {
  const auto store = [key = std::move(key), value = std::move(value)](UserDefaults& defaults) {
    return value.isNull() ? defaults.remove(key) : defaults.set(key, value);
  };
  change(store, std::move(then));
}

void SettingsStore::change(std::function<bool(UserDefaults&)> change, Stored then) {
  if (!queue_) queue_ = makeQueue_("Korvell.settings");
  queue_->async([&defaults = defaults_, &main = main_, watch = life_.watch(), change = std::move(change),
                 then = std::move(then)] {
    const bool stored = change(defaults);
    if (!then) return;
    main.async([watch, then, stored] {
      if (watch.get()) then(stored);
    });
  });
}

} // namespace korvell

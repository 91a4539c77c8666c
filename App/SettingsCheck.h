#pragma once
// What is wrong with the stored settings, in words: a file that can't be read, and each value of a kind that
// its setting does not take. Such a value is never interpreted; its setting is at its default.

#include "Base/Queue.h"
#include "Base/Trouble.h"
#include "Platform/UserDefaults.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace korvell {

/// The file into which the keeper writes metrics for a collector; absent: it writes none.
inline constexpr std::string_view metricsFileKey = "metrics.textfile";

/// A sentence or two for each trouble; empty while all is well. Reads the stored settings.
std::vector<Trouble> settingsTroubles(const UserDefaults& defaults);

/// What the user chose, in the settings' own words, with nothing that names something; in a fixed order, and
/// only what is stored.
std::vector<std::pair<std::string, std::string>> namelessSettings(const UserDefaults& defaults);

/// Why a setting is not stored as somebody wishes, localised; empty when it can be: a key that nobody knows,
/// one that Korvell keeps for itself, a value that it does not take. A null stands for the default.
std::string settingRefusal(std::string_view key, const Value& value);

/// Why a setting was not stored just now.
std::string storingTrouble(const UserDefaults& defaults);

/// Looks again every minute and tells what has become wrong since it was made, each trouble once. Lives on
/// the queue that it is given, where it also tells.
class SettingsWatch {
public:
  SettingsWatch(Queue& queue, const UserDefaults& defaults, std::function<void(const Trouble&)> tell);

private:
  void look();

  const UserDefaults& defaults_;
  const std::function<void(const Trouble&)> tell_;
  std::vector<Trouble> known_;
  std::unique_ptr<Timer> timer_;
};

} // namespace korvell

#pragma once
// The applications that use most, a row each.

#include "App/Model.h"
#include "Core/Machine/UsageOrder.h"
#include "UI/Kit/Figure.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace korvell {

struct AppRow {
  std::string id; ///< AppUsage::id
  std::string name;
  std::optional<std::string> icon; ///< where its picture is found
  bool isKorvell = false;
  int processes = 1;
  bool isSystem = false;             ///< the group of everything that belongs to the system itself
  Figure cpu, memory, disk, network; ///< "–" where nobody tells
  std::string note;                  ///< why something is "–"; empty where nothing is
  double level = 0;                  ///< of what it was sorted by, against the greatest; 0 to 1
  std::string spoken;                ///< "Firefox, 23 processes, 61.8 percent of one core, 3.12 gigabytes"

  bool operator==(const AppRow&) const = default;
};

/// Whether everything that counts to an application is a program of Korvell's.
bool isKorvell(const AppUsage& app);

/// Whether what an application reads, writes and moves over the network is hidden in part: the system counts
/// the processes of other users as 0 in the sums of its own group.
bool isHidden(const Model& model, const AppUsage& app);

/// At most `count`, the greatest first.
std::vector<AppRow> topApps(const Model& model, UsageKey key, std::size_t count);
/// The rows, each where it was before; those that are new take the places that became free. For while
/// somebody points at them.
std::vector<AppRow> settled(std::vector<AppRow> rows, const std::vector<AppRow>& before);

} // namespace korvell

#pragma once
// Applications and processes with their figures as aligned lines: what `top` prints once, `status` shows the
// head of and `watch` repeats.

#include "Core/Machine/UsageOrder.h"
#include "Tool/Terminal.h"

#include <string>
#include <string_view>
#include <vector>

namespace korvell {

/// Columns in the order of UsageKey, each as wide whatever the figures, so that a list that is drawn again
/// does not jump.
class UsageTable {
public:
  /// Without `energy` that column is left out: nothing on this machine tells it.
  UsageTable(const Terminal& terminal, int width, bool energy, bool energyIsEstimate)
      : terminal_(terminal), width_(width), energy_(energy), energyIsEstimate_(energyIsEstimate) {}

  /// The titles, that of the key that the list is sorted by marked.
  std::string titles(std::string_view first, UsageKey sortedBy) const;
  std::string line(const AppUsage& app, bool selected = false, std::string_view mark = {}) const;
  std::string line(const ProcessUsage& process, bool selected = false, std::string_view mark = {}) const;

private:
  struct Figures {
    double cpu, memory, disk, network, power;
  };
  std::string line(std::string_view name, const Figures& figures, bool selected) const;
  int nameWidth() const;

  const Terminal& terminal_;
  int width_;
  bool energy_;
  bool energyIsEstimate_;
};

/// True when any process has a power figure.
bool showsEnergy(const std::vector<AppUsage>& apps);

} // namespace korvell

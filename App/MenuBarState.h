#pragma once
// What the menu bar's item draws from. Publishes only what the chosen style shows, so that nothing is drawn
// again while nothing visible changed. Main thread only.

#include "App/MenuBarStyle.h"
#include "Base/Published.h"

#include <cstddef>
#include <vector>

namespace korvell {

class MenuBarState {
public:
  static constexpr std::size_t historyLength = 14;

  MenuBarState(const Queue& main, const UserDefaults& defaults)
      : score(main), cpu(main), memory(main), cpuHistory(main), defaults_(defaults) {}

  Published<int> score;
  Published<int> cpu;                        ///< whole percent
  Published<int> memory;                     ///< whole percent
  Published<std::vector<double>> cpuHistory; ///< percent, oldest first, at most historyLength

  /// Once for each cycle.
  void update(int score, int cpu, int memory, double cpuExact);
  /// Another style was chosen: what it shows is published as of the last cycle.
  void styleChanged() { publish(); }

private:
  void publish();

  const UserDefaults& defaults_;
  // Kept up whatever the style, so that another one begins with what is so.
  int pendingCPU_ = 0, pendingMemory_ = 0;
  std::vector<double> pendingHistory_;
};

} // namespace korvell

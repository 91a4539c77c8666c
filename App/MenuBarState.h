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

  /// Once for each cycle; a new style takes effect here.
  void update(int score, int cpu, int memory, double cpuExact);

private:
  const UserDefaults& defaults_;
  std::vector<double> pendingHistory_; ///< kept up whatever the style, so that graphs begin filled
};

} // namespace korvell

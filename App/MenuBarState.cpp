#include "App/MenuBarState.h"

namespace korvell {

void MenuBarState::update(int newScore, int newCPU, int newMemory, double cpuExact) {
  score.setIfChanged(newScore);
  pendingHistory_.push_back(cpuExact);
  if (pendingHistory_.size() > historyLength) pendingHistory_.erase(pendingHistory_.begin());
  pendingCPU_ = newCPU;
  pendingMemory_ = newMemory;
  publish();
}

void MenuBarState::publish() {
  const auto style = menuBarStyle(defaults_);
  if (style != MenuBarStyle::cpuAndMemory && style != MenuBarStyle::graphs) return;
  cpu.setIfChanged(pendingCPU_);
  memory.setIfChanged(pendingMemory_);
  if (style == MenuBarStyle::graphs) cpuHistory.set(pendingHistory_);
}

} // namespace korvell

#include "Audio/SystemSound.h"

#include "Audio/macOS/MacTap.h"
#include "Audio/macOS/MacTapSystem.h"
#include "Base/Shell.h"
#include "Platform/macOS/MacProcessTable.h"

#include <libproc.h>

namespace korvell {

namespace {

/// Processes here have one id only.
class MacStreamProcesses final : public StreamProcesses {
public:
  std::optional<ProcessFacts> facts(ProcessID pid) override { return table_.facts(pid); }
  ProcessID parent(ProcessID pid) override {
    proc_bsdshortinfo info{};
    const int size = proc_pidinfo(pid, PROC_PIDT_SHORTBSDINFO, 0, &info, sizeof info);
    return size == int(sizeof info) ? ProcessID(info.pbsi_ppid) : 0;
  }
  std::vector<ProcessID> insiders(ProcessID) override { return {}; }

private:
  MacProcessTable table_{Shell::run};
};

} // namespace

SoundSystemFactory systemSound(const Environment&) {
  if (!hasMacTaps()) return nullptr;
  return [](Queue& queue) { return std::make_unique<TapSound>(queue, makeMacTapSystem()); };
}

bool volumesOutliveProcess() { return false; } // taps end with it

std::unique_ptr<StreamProcesses> systemStreamProcesses() {
  return hasMacTaps() ? std::make_unique<MacStreamProcesses>() : nullptr;
}

} // namespace korvell

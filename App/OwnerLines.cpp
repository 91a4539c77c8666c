#include "App/OwnerLines.h"

#include "Base/Format.h"
#include "Base/Localization.h"
#include "Base/Text.h"

#include <fmt/format.h>

namespace korvell {

namespace {

std::string orDash(const std::string& text) { return text.empty() ? noFigure : escapedControls(text); }

} // namespace

std::vector<std::pair<std::string, std::string>> ownerLines(ProcessID pid,
                                                            const ProcessSampler::Identity& process) {
  const auto& [owner, rule] = process.owner;
  const auto& facts = process.facts;
  return {{localized("Process"), fmt::format("{} (PID {})", escapedControls(process.name()), pid)},
          {localized("Application"), escapedControls(owner->name)},
          {localized("Decided by"), localized(rule)},
          {localized("Key"), escapedControls(owner->key)},
          {localized("Program"), orDash(facts.path)},
          {localized("Control group"), orDash(facts.controlGroup)},
          {localized("Launched from"), orDash(facts.desktopFile)}};
}

} // namespace korvell

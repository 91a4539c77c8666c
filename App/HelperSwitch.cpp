#include "App/HelperSwitch.h"

#include "App/CommandLineTool.h"
#include "Base/Localization.h"

#include <unistd.h>

namespace korvell {

namespace {

constexpr const char* purpose = "macOS hides the memory and CPU of processes owned by the system unless an "
                                "administrator approves a helper. "
                                "It is read-only: it can only report those numbers.";
constexpr const char* unsignedCopy =
    "Needs a copy of Korvell signed with a Developer ID. Without one, anything that can change the app could "
    "change what runs as administrator, so the helper stays off.";

constexpr const char* polkitAsker = "/usr/bin/pkexec";
constexpr int dismissed = 126, notAuthorized = 127; ///< exit codes of the asker itself
constexpr Seconds patience{600};                    ///< somebody has to be fetched

} // namespace

std::string helperMissing() { return localized("Helper missing from this copy of Korvell"); }

bool lacksSignature(UsageHelperService& helper, SystemKind system) {
  return system == SystemKind::macOS && !helper.isOffered();
}

std::string helperExplanation(UsageHelperService& helper, SystemKind system) {
  return localized(lacksSignature(helper, system) ? unsignedCopy : purpose);
}

std::string HelperSwitch::systemAsker() { return access(polkitAsker, X_OK) == 0 ? polkitAsker : ""; }

Outcome HelperSwitch::turn(bool on, const Cancellation& cancellation) const {
  if (services_.system != SystemKind::macOS && services_.user != 0)
    return turnAsAdministrator(on ? "enable" : "disable", cancellation);
  return on ? services_.helper.enable() : services_.helper.disable();
}

Outcome HelperSwitch::turnAsAdministrator(const std::string& verb, const Cancellation& cancellation) const {
  const auto byHand = localized("This takes an administrator. In a terminal: {command}",
                                {{"command", "sudo " + shellQuoted(services_.tool) + " helper " + verb}});
  if (services_.asker.empty()) return Failure{byHand};
  const auto result =
      services_.run(services_.asker, {services_.tool, "helper", verb}, patience, cancellation);
  if (result && result->succeeded()) return success();
  if (result && (result->exitStatus == dismissed || result->interrupted))
    return Failure{localized("Nothing was changed: no administrator allowed it.")};
  if (!result || result->exitStatus == notAuthorized) return Failure{byHand}; // nobody there to ask either
  return Failure{localized("That did not work. {advice}", {{"advice", byHand}})};
}

} // namespace korvell

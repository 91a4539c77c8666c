// korvell helper status|enable|disable: the privileged helper, which tells what the system hides from this
// user.

#include "App/JSONDocuments.h"
#include "Tool/Commands.h"
#include "Tool/Wrap.h"

namespace korvell {

namespace {

constexpr const char* purpose = "macOS hides the memory and CPU of processes owned by the system unless an "
                                "administrator approves a helper. "
                                "It is read-only: it can only report those numbers.";
constexpr const char* unsignedCopy =
    "Needs a copy of Korvell signed with a Developer ID. Without one, anything that can change the app could "
    "change what runs as administrator, so the helper stays off.";

int printStatus(Context& context, const Arguments& arguments) {
  auto& helper = *context.host.usageHelper;
  const auto status = helper.status();
  const bool isOffered = helper.isOffered();
  if (arguments.flag("--json")) {
    printJSON(context.out, helperValue(status, isOffered));
    return exitOK;
  }
  context.out.line(
      context.out.ink(status == UsageHelperStatus::enabled ? Ink::good : Ink::bold, title(status)));
  const bool cannotBe = !isOffered && context.host.system == SystemKind::macOS;
  for (const auto& line :
       wrapped(localized(cannotBe ? unsignedCopy : purpose), std::min(context.out.columns(), widestSummary)))
    context.out.line(line);
  return exitOK;
}

int finish(Context& context, const Arguments& arguments, const Outcome& outcome) {
  if (!outcome) return fail(context, outcome.reason());
  return printStatus(context, arguments);
}

int runStatus(Context& context, const Arguments& arguments) {
  if (!context.host.usageHelper) return fail(context, localized("Helper missing from this copy of Korvell"));
  return printStatus(context, arguments);
}

int runEnable(Context& context, const Arguments& arguments) {
  auto* helper = context.host.usageHelper.get();
  if (!helper) return fail(context, localized("Helper missing from this copy of Korvell"));
  if (!helper->isOffered() && context.host.system == SystemKind::macOS)
    return fail(context, localized(unsignedCopy));
  return finish(context, arguments, helper->enable());
}

int runDisable(Context& context, const Arguments& arguments) {
  auto* helper = context.host.usageHelper.get();
  if (!helper) return fail(context, localized("Helper missing from this copy of Korvell"));
  return finish(context, arguments, helper->disable());
}

} // namespace

Command helperCommand() {
  return {"helper",
          "Turn the helper on or off that tells what the system hides",
          {},
          nullptr,
          {{"status", "Show whether the helper is enabled", {jsonOption()}, runStatus},
           {"enable", "Install and start it; takes an administrator", {jsonOption()}, runEnable},
           {"disable", "Stop and remove it; takes an administrator", {jsonOption()}, runDisable}}};
}

} // namespace korvell

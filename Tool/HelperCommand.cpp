// korvell helper status|enable|disable: the privileged helper, which tells what the system hides from this
// user.

#include "App/HelperSwitch.h"
#include "App/JSONDocuments.h"
#include "Tool/Commands.h"
#include "Tool/Wrap.h"

namespace korvell {

namespace {

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
  for (const auto& line : wrapped(helperExplanation(helper, context.host.system),
                                  std::min(context.out.columns(), widestSummary)))
    context.out.line(line);
  return exitOK;
}

int finish(Context& context, const Arguments& arguments, const Outcome& outcome) {
  if (!outcome) return fail(context, outcome.reason());
  return printStatus(context, arguments);
}

int runStatus(Context& context, const Arguments& arguments) {
  if (!context.host.usageHelper) return fail(context, helperMissing());
  return printStatus(context, arguments);
}

int runEnable(Context& context, const Arguments& arguments) {
  auto* helper = context.host.usageHelper.get();
  if (!helper) return fail(context, helperMissing());
  if (lacksSignature(*helper, context.host.system))
    return fail(context, helperExplanation(*helper, context.host.system));
  return finish(context, arguments, helper->enable());
}

int runDisable(Context& context, const Arguments& arguments) {
  auto* helper = context.host.usageHelper.get();
  if (!helper) return fail(context, helperMissing());
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

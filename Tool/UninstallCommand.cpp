// korvell uninstall: takes away what Korvell has put into the user's folders and into the system.

#include "App/Farewell.h"
#include "Base/Text.h"
#include "Tool/Commands.h"
#include "Tool/Confirmation.h"
#include "Tool/Wrap.h"

#include <thread>

namespace korvell {

namespace {

constexpr Seconds endingTime{5}; ///< for a unit that was stopped to write its last minute

Value listed(const Farewell& found) {
  Value steps = Value::array(), remarks = Value::array();
  for (const auto& step : found.steps) steps.append(step.description);
  for (const auto& remark : found.remarks) remarks.append(remark);
  return Value::object({{"steps", std::move(steps)}, {"remarks", std::move(remarks)}});
}

void print(Terminal& to, std::string_view text, std::string_view indent = "") {
  for (const auto& line :
       wrapped(escapedControls(text), std::min(to.columns(), widestSummary) - indent.size()))
    to.line(std::string(indent) + line);
}

std::string question(const Farewell& found) {
  auto text = localized("Take Korvell away?");
  for (const auto& step : found.steps) text += "\n  " + escapedControls(step.description);
  return text;
}

bool isGone(const UserFolders& folders) {
  for (Seconds waited{0}; waited < endingTime; waited += Seconds{0.1}) {
    if (stillRunning(folders).empty()) return true;
    std::this_thread::sleep_for(Seconds{0.1});
  }
  return false;
}

int runUninstall(Context& context, const Arguments& arguments) {
  auto& host = context.host;
  const CommandRunner run = Shell::run;
  const auto found = farewell(host, context.environment, run, host.user == 0, arguments.flag("--data"));
  const bool json = arguments.flag("--json");
  auto told = listed(found);
  if (arguments.flag("--dry-run")) {
    if (json) {
      printJSON(context.out, told.set("dryRun", true));
      return exitOK;
    }
    context.out.line(found.steps.empty() ? localized("There is nothing to take away.")
                                         : localized("Nothing was done. This is what would be:"));
    for (const auto& step : found.steps) print(context.out, step.description, "  ");
    for (const auto& remark : found.remarks) print(context.out, remark);
    return exitOK;
  }
  if (!found.steps.empty() && !confirmed(context, arguments, question(found))) return exitFailed;

  int exit = exitOK;
  auto step = found.steps.begin();
  if (step != found.steps.end() && found.stopsKeeper) {
    if (const auto stopped = step->perform(); !stopped) return fail(context, stopped.reason());
    ++step;
  }
  if (!isGone(host.folders)) return fail(context, stillRunning(host.folders));
  for (; step != found.steps.end(); ++step)
    if (const auto done = step->perform(); !done) exit = fail(context, escapedControls(done.reason()));
  if (json)
    printJSON(context.out, told);
  else
    for (const auto& remark : found.remarks) print(context.out, remark);
  return exit;
}

} // namespace

Command uninstallCommand() {
  using Kind = Option::Kind;
  return writing({"uninstall",
                  "Take away what Korvell has put into your folders and the system",
                  {{"--dry-run", Kind::flag, "Only say what would be done"},
                   {"--data", Kind::flag, "Databases and settings too, to the Trash"},
                   yesOption(),
                   jsonOption()},
                  runUninstall});
}

} // namespace korvell

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

using Sentences = std::vector<std::string>;

Sentences sentencesOf(const Farewell& found) {
  Sentences sentences;
  for (const auto& step : found.steps) sentences.push_back(step.description);
  return sentences;
}

Value listed(const Farewell& found) {
  return Value::object({{"steps", toValue(sentencesOf(found))}, {"remarks", toValue(found.remarks)}});
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

void print(Terminal& to, std::string_view title, const Sentences& steps, const Farewell& found) {
  if (!steps.empty() || found.steps.empty())
    to.line(found.steps.empty() ? localized("There is nothing to take away.") : std::string(title));
  for (const auto& step : steps) print(to, step, "  ");
  for (const auto& remark : found.remarks) print(to, remark);
}

int sayOnly(Context& context, const Arguments& arguments, const Farewell& found) {
  if (arguments.flag("--json")) {
    auto told = listed(found).set("dryRun", true);
    if (!found.running.empty()) told.set("running", found.running);
    printJSON(context.out, told);
    return exitOK;
  }
  if (!found.running.empty()) print(context.out, found.running);
  print(context.out, localized("Nothing was done. This is what would be:"), sentencesOf(found), found);
  return exitOK;
}

/// Tries every step; those that worked are returned, the others are named on standard error.
Sentences perform(Context& context, const Farewell& found) {
  Sentences done;
  auto step = found.steps.begin();
  const auto worked = [&] {
    const auto outcome = step->perform();
    if (outcome)
      done.push_back(step->description);
    else
      fail(context, escapedControls(outcome.reason()));
    return bool(outcome);
  };
  // What would go on to write is ended before anything is taken from it.
  if (found.stopsKeeper && !worked()) return done;
  if (found.stopsKeeper) ++step;
  if (!isGone(context.host.folders)) {
    fail(context, stillRunning(context.host.folders) + " " + localized("Nothing else was done."));
    return done;
  }
  for (; step != found.steps.end(); ++step) worked();
  return done;
}

int runUninstall(Context& context, const Arguments& arguments) {
  auto& host = context.host;
  const CommandRunner run = Shell::run;
  const auto found = farewell(host, context.environment, run, host.user == 0, arguments.flag("--data"));
  if (arguments.flag("--dry-run")) return sayOnly(context, arguments, found);
  if (!found.running.empty()) return fail(context, found.running + " " + localized("Nothing was done."));
  if (!found.steps.empty() && !confirmed(context, arguments, question(found))) return exitFailed;

  const auto done = perform(context, found);
  if (arguments.flag("--json")) {
    auto told = listed(found).set("done", toValue(done));
    if (context.failure) told.set("error", *context.failure);
    printJSON(context.out, told);
  } else {
    print(context.out, localized("This was done:"), done, found);
  }
  return context.failure ? exitFailed : exitOK;
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

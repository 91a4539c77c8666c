// korvell report: the weekly report as it would read now and as it was sent last, and its switch. Sends
// nothing.

#include "App/JSONDocuments.h"
#include "Base/LocalTime.h"
#include "Base/SystemQueue.h"
#include "Base/Text.h"
#include "Core/Health/WeeklyReport.h"
#include "Tool/CommandActions.h"
#include "Tool/Commands.h"
#include "Tool/UnreadableHistory.h"
#include "Tool/Wrap.h"

namespace korvell {

namespace {

void printText(Context& context, Ink ink, std::string_view text) {
  for (const auto& line : wrapped(text, context.out.columns())) context.out.line(context.out.ink(ink, line));
}

int printReport(Context& context, const Arguments& arguments) {
  HistoryStore history(systemQueueFactory(), context.clock, context.host.folders.data, HistoryAccess::reader);
  const auto& defaults = *context.host.defaults;
  const auto report = WeeklyReport::make(history, defaults, context.clock.now());
  if (!history.isReadable()) return failUnreadableHistory(context);
  if (arguments.flag("--json")) {
    printJSON(context.out, weeklyReportValue(WeeklyReport::isEnabled(defaults), report));
    return exitOK;
  }
  const auto print = [&](Ink ink, std::string_view text) { printText(context, ink, text); };
  if (report) {
    print(Ink::bold, report->title);
    print(Ink::plain, report->body);
  } else {
    print(Ink::plain, localized("No health score was recorded in the past seven days."));
    print(Ink::dim, localized("Korvell records while it runs: the application, or \"korvell run\"."));
  }
  if (!WeeklyReport::isEnabled(defaults)) print(Ink::dim, localized("The weekly report is switched off."));
  return exitOK;
}

int printLastReport(Context& context, const Arguments& arguments) {
  const auto report = WeeklyReport::last(*context.host.defaults);
  if (arguments.flag("--json")) {
    printJSON(context.out, lastReportValue(report));
    return exitOK;
  }
  if (!report) {
    context.out.line(localized("No weekly report has been sent yet."));
    return exitOK;
  }
  const auto day = shownDay(localDay(*context.host.zone, report->date));
  printText(context, Ink::bold, escapedControls(report->title));
  printText(context, Ink::plain, escapedControls(report->body));
  printText(context, Ink::dim, localized("Sent on {day}.", {{"day", day}}));
  return exitOK;
}

int setReport(Context& context, const Arguments& arguments, bool enabled) {
  const ChangeSettingRequest request{std::string(WeeklyReport::enabledKey), enabled};
  const auto answer = CommandActions(context, CommandActions::Where::keeperOrHere).perform(request);
  if (!answer.worked) return fail(context, answer.message);
  if (arguments.flag("--json")) {
    printJSON(context.out, weeklyReportValue(enabled));
    return exitOK;
  }
  context.out.line(enabled ? localized("The weekly report comes on Monday morning.")
                           : localized("The weekly report is switched off."));
  return exitOK;
}

} // namespace

Command reportCommand() {
  return {
      "report",
      "Print the weekly report as it would read now",
      {jsonOption()},
      printReport,
      {{"last", "Print the report that was sent last", {jsonOption()}, printLastReport},
       writing({"on",
                "Send a weekly report on Monday morning",
                {jsonOption()},
                [](Context& context, const Arguments& arguments) {
                  return setReport(context, arguments, true);
                }}),
       writing(
           {"off", "Send no weekly report", {jsonOption()}, [](Context& context, const Arguments& arguments) {
              return setReport(context, arguments, false);
            }})}};
}

} // namespace korvell

// korvell quit: ends an application or a process, after asking, and never another one that took over its id.

#include "Base/Text.h"
#include "Tool/CommandActions.h"
#include "Tool/Commands.h"
#include "Tool/Confirmation.h"
#include "Tool/Suggestions.h"

namespace korvell {

namespace {

int runQuit(Context& context, const Arguments& arguments) {
  CommandActions actions(context, CommandActions::Where::keeperOrHere);
  const auto described =
      actions.describe(QuitRequest{.app = *arguments.text("APP|PID"), .force = arguments.flag("--force")});
  if (!described) return failLines(context, described.reason());
  const auto& asked = described->description;
  if (!actions.isConfirmed(arguments, withDetails(asked, escapedControls(asked.message)))) return exitFailed;
  return tell(context, arguments, asked, actions.perform(described->request));
}

} // namespace

Command quitCommand() {
  return {"quit",
          "Quit an application or end a process, after asking",
          {{"APP|PID",
            Option::Kind::positional,
            "Its name, its key, or a process id",
            {},
            true,
            suggestedApplications},
           {"--force", Option::Kind::flag, "End it at once, with all its processes"},
           yesOption(),
           jsonOption()},
          runQuit};
}

} // namespace korvell

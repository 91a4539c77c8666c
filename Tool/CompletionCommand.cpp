// korvell completion SHELL: prints what makes a shell complete this tool's words.

#include "Tool/Commands.h"
#include "Tool/Completion.h"

namespace korvell {

namespace {

int runCompletion(Context& context, const Arguments& arguments) {
  const auto shell = fromRawValue<CompletedShell>(arguments.text("SHELL").value_or(""));
  context.out.writeRaw(completionScript(shell.value_or(CompletedShell::bash)));
  return exitOK;
}

} // namespace

Command completionCommand() {
  return {"completion",
          "Print what makes a shell complete Korvell's words",
          {{"SHELL", Option::Kind::positional, "Which shell", choicesOf<CompletedShell>(), true}},
          runCompletion};
}

} // namespace korvell

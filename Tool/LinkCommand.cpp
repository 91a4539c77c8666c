// korvell link: links this tool into the user's PATH, as the settings do.

#include "App/CommandLineTool.h"
#include "Base/Text.h"
#include "Tool/Commands.h"

namespace korvell {

namespace {

int runLink(Context& context, const Arguments& arguments) {
  const auto& host = context.host;
  const CommandLineTool tool({host.system, host.program, host.folders.home, context.environment, Shell::run});
  const auto linked = tool.link();
  if (arguments.flag("--json")) {
    Value told = Value::object({{"linked", linked.isLinked},
                                {"link", tool.linkPath()},
                                {"tool", tool.toolPath()},
                                {"message", linked.message}});
    if (linked.isOnPATH) told.set("onPATH", *linked.isOnPATH);
    printJSON(context.out, told);
  }
  const auto message = escapedControls(linked.message);
  if (!linked.isLinked) return fail(context, message);
  if (!arguments.flag("--json")) context.out.line(message);
  return exitOK;
}

} // namespace

Command linkCommand() {
  return writing({"link", "Link this tool into ~/.local/bin", {jsonOption()}, runLink});
}

} // namespace korvell

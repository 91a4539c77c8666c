// korvell mcp: serves agents over standard input and output, until its input ends.

#include "Agents/AgentServer.h"
#include "App/Measurement.h"
#include "Base/SystemQueue.h"
#include "Tool/Commands.h"
#include "Tool/LinePipe.h"
#include "Tool/SoundReading.h"
#include "Tool/Version.h"

#include <unistd.h>

namespace korvell {

namespace {

/// The descriptor to read from; somebody who sits at a terminal is told what this is.
std::optional<int> inputOf(Context& context) {
  const InLanguage people(context.language);
  if (!context.in) {
    fail(context, localized("There is no standard input to read from."));
    return std::nullopt;
  }
  const int in = fileno(context.in);
  if (isatty(in))
    context.err.line(localized("This speaks to agents' programs, not to people: see \"korvell mcp --help\". "
                               "Ctrl-D ends it."));
  return in;
}

int runMCP(Context& context, const Arguments&) {
  const auto in = inputOf(context);
  if (!in) return exitFailed;
  HeadlessLoop loop;
  std::unique_ptr<AgentServer> server;
  std::optional<LinePipe> pipe;
  const auto take = [&](std::optional<std::string_view> line) {
    line ? server->receive(*line) : server->refuseLongLine();
  };
  const auto ended = [&] { server->finish([&] { pipe->whenFetched([&loop] { loop.quit(); }); }); };
  pipe.emplace(*in, STDOUT_FILENO, MCPServer::longestMessage, take, ended);
  server = std::make_unique<AgentServer>(AgentServer::Services{
      context.host, context.clock, loop.main(), systemQueueFactory(),
      [&context] { return measureTwice(context.host, context.clock); }, context.keeperPatience, version,
      [&pipe](const std::string& line) { pipe->send(line); }, [&context] { return readSound(context); }});
  loop.invite(*pipe);
  loop.run();
  return exitOK;
}

} // namespace

Command mcpCommand() {
  return {"mcp", "Serve agents: the Model Context Protocol over standard input and output", {}, runMCP};
}

} // namespace korvell

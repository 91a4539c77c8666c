#include "Tool/Commands.h"

namespace korvell {

const std::vector<Command>& allCommands() {
  static const std::vector<Command> commands = {
      statusCommand(),     watchCommand(),   barCommand(),     topCommand(),     quitCommand(),
      historyCommand(),    serversCommand(), portCommand(),    soundCommand(),   sensorsCommand(),
      alertsCommand(),     reportCommand(),  storageCommand(), startupCommand(), aiCommand(),
      runCommand(),        widgetCommand(),  helperCommand(),  linkCommand(),    uninstallCommand(),
      completionCommand(), mcpCommand(),     metricsCommand(), doctorCommand()};
  return commands;
}

} // namespace korvell

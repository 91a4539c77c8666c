#pragma once
// Every command has a file of its own; this is the list of them.

#include "Tool/Command.h"

namespace korvell {

/// Lines of figures are not drawn out further than this.
inline constexpr int widestSummary = 120;

Command aiCommand();
Command helperCommand();
Command statusCommand();
Command watchCommand();
Command widgetCommand();
Command topCommand();
Command quitCommand();
Command alertsCommand();
Command reportCommand();
Command startupCommand();
Command doctorCommand();
Command historyCommand();
Command mcpCommand();
Command serversCommand();
Command portCommand();
Command linkCommand();
Command sensorsCommand();
Command soundCommand();
Command barCommand();
Command metricsCommand();
Command uninstallCommand();
Command runCommand();
Command completionCommand();
Command storageCommand();

} // namespace korvell

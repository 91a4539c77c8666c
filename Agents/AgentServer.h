#pragma once
// What stands behind "korvell mcp": the protocol's server with its tools, the queues that they run on and
// what they find things out from, all made when something first needs it. Main queue only.

#include "Agents/AgentActions.h"
#include "Agents/DesktopConsent.h"
#include "Agents/KeeperConsent.h"
#include "Agents/MCPServer.h"
#include "Agents/ReadingTools.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace korvell {

class AgentServer {
public:
  struct Services {
    Host& host;
    const Clock& clock;
    Queue& main;
    QueueFactory makeQueue;
    std::function<Tick()> measure; ///< two cycles of our own; blocks
    Seconds patience;              ///< how long a keeper may think
    std::string version;           ///< of this program
    std::function<void(std::string line)> send;
    std::function<SoundState()> readSound{}; ///< blocks; null where there is no sound
  };
  explicit AgentServer(Services services);
  ~AgentServer();

  void receive(std::string_view line) { server_->receive(line); }
  void refuseLongLine() { server_->refuseLongLine(); }
  /// Nobody sends any more: who waits for a person is told no; `idle` once the other calls are answered, or
  /// when they took too long.
  void finish(Task idle);

private:
  std::vector<Tool> tools();
  Tool readingTool(ReadingTool tool);
  Queue& queue(bool isSlow);
  /// Whoever sits at the desktop: the running application asks, or else a notification.
  std::shared_ptr<void> askDesktop(const AgentQuestion& question, std::function<void(Consent)> answered);

  Services services_;
  Handles handles_;
  Readings readings_, slowReadings_;    ///< of one queue each
  std::unique_ptr<Queue> slow_, tools_; ///< null until the first call
  std::unique_ptr<AgentActions> actions_;
  KeeperConsent application_;
  DesktopConsent desktop_;
  std::unique_ptr<MCPServer> server_;
  std::unique_ptr<Timer> timer_;
  Lifeline<AgentServer> life_{*this};
};

} // namespace korvell

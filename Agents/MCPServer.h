#pragma once
// A server of the Model Context Protocol over lines, for one client. It serves two eras side by side: clients
// that shake hands first (2024-10-07 to 2025-11-25), and those that say with each request which revision they
// speak (2026-07-28). A request that claims a revision is of the latter.
//
// Main queue only. Whatever comes is answered with the protocol's errors at once; nothing ends the server but
// the end of its input. It holds nothing but the calls that are under way.

#include "Agents/Handles.h"
#include "Agents/MCPTool.h"
#include "Agents/RPCMessages.h"
#include "Base/Lifeline.h"
#include "Base/Queue.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace korvell {

/// What a person reads; each part on lines of its own, so that no name can look like another part.
std::string questionText(const AgentQuestion& question);

class MCPServer {
public:
  /// Bytes of a message: all that a client has to say fits many times over.
  static constexpr std::size_t longestMessage = std::size_t{256} << 10;
  static constexpr std::size_t mostCalls = 16, mostInBatch = 32;
  /// How long a person may think.
  static constexpr Seconds patience{300};

  struct Services {
    Queue& main;
    const Seal& seal;
    std::string version; ///< of this program
    /// Takes a line without its end.
    std::function<void(std::string line)> send;
    /// Asks at the desktop, for a client that can't; null where that can't be done. The question stands for
    /// as long as what is handed back.
    std::function<std::shared_ptr<void>(const AgentQuestion&, std::function<void(Consent)>)> askDesktop = {};
  };

  MCPServer(Services services, std::vector<Tool> tools);
  ~MCPServer();

  void receive(std::string_view line);
  /// In place of a line that was longer than longestMessage.
  void refuseLongLine();
  /// Nobody sends any more: calls that wait for a person are dropped. `idle` is called when none is left.
  void finish(Task idle);

private:
  class Call;
  using Reply = std::function<void(Value message)>;
  struct Speaker; ///< of which era a request is, and what its client can do
  struct Asked {  ///< a person, by way of the client
    std::weak_ptr<Call> call;
    std::function<void(Consent)> answered;
    std::unique_ptr<Timer> timer;
  };

  void receiveBatch(const Value::Array& batch);
  void handle(const Value& message, const Reply& reply);
  void handle(const RPCRequest& request, const Reply& reply);
  void handle(const RPCNotification& notification);
  void handle(const RPCResponse& response);
  Value initialized(const Value& params);
  Value discovered() const;
  Value listed(const Speaker& speaker) const;
  void call(const RPCRequest& request, const Speaker& speaker, const Reply& reply);
  void end(const std::string& id);
  void askClient(const std::shared_ptr<Call>& call, const AgentQuestion& question,
                 std::function<void(Consent)> answered);
  void settle(const std::string& id, Consent consent);
  Value complete(const Speaker& speaker, Value result) const;

  Services services_;
  std::vector<Tool> tools_;
  std::string revision_;                               ///< that was agreed on; empty before
  bool canElicit_ = false;                             ///< the client that shook hands can ask its person
  std::map<std::string, std::shared_ptr<Call>> calls_; ///< by the id as JSON
  std::map<std::string, Asked> asked_;                 ///< by our id as JSON
  std::int64_t questions_ = 0;
  Task idle_; ///< null while there is somebody
  Lifeline<MCPServer> life_{*this};
};

} // namespace korvell

#pragma once
// A server of the protocol with time in the test's hand, and its client played line by line.

#include "Agents/MCPServer.h"
#include "Agents/Schema.h"
#include "Base/ManualQueue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {

struct ServerFixture : testing::Test {
  ManualScheduler time;
  std::unique_ptr<Queue> main = time.makeMainQueue();
  Handles handles{time.clock()};
  std::vector<std::string> sent; ///< since the last say()
  std::function<std::shared_ptr<void>(const AgentQuestion&, std::function<void(Consent)>)> desktop;
  std::unique_ptr<MCPServer> server;

  void start(std::vector<Tool> tools) {
    server = std::make_unique<MCPServer>(
        MCPServer::Services{*main, handles.seal(), "1.2.3",
                            [this](std::string line) { sent.push_back(line); },
                            [this](const AgentQuestion& question, std::function<void(Consent)> answered) {
                              return desktop ? desktop(question, std::move(answered)) : nullptr;
                            }},
        std::move(tools));
  }
  /// What comes back for a line, all of it.
  std::vector<std::string> say(std::string_view line) {
    sent.clear();
    server->receive(line);
    time.run();
    return sent;
  }
  /// The one answer; null for none or several.
  Value answer(std::string_view line) {
    const auto lines = say(line);
    return lines.size() == 1 ? *parseJSON(lines.front()) : Value();
  }
  void shakeHands(const std::string& revision = "2025-11-25", const std::string& capabilities = "{}") {
    say(R"({"jsonrpc":"2.0","id":"start","method":"initialize","params":{"protocolVersion":")" + revision +
        R"(","capabilities":)" + capabilities + R"(,"clientInfo":{"name":"t","version":"1"}}})");
    say(R"({"jsonrpc":"2.0","method":"notifications/initialized"})");
  }
  static std::string call(const std::string& id, const std::string& tool, const std::string& arguments = "{}",
                          const std::string& more = "") {
    return R"({"jsonrpc":"2.0","id":)" + id + R"(,"method":"tools/call","params":{"name":")" + tool +
           R"(","arguments":)" + arguments + more + "}}";
  }
  /// What a request of the stateless revision has beside its own parameters.
  static std::string claim(const std::string& capabilities = "{}") {
    return R"(,"_meta":{"io.modelcontextprotocol/protocolVersion":"2026-07-28",)"
           R"("io.modelcontextprotocol/clientCapabilities":)" +
           capabilities + "}";
  }
  /// A member by its path, "error/code", as JSON; empty where there is none.
  static std::string at(const Value& value, std::string_view path) {
    const Value* found = &value;
    while (found && !path.empty()) {
      const auto length = path.find('/');
      found = found->find(path.substr(0, length));
      path = length == std::string_view::npos ? "" : path.substr(length + 1);
    }
    return found ? dumpJSON(*found) : "";
  }
};

} // namespace korvell

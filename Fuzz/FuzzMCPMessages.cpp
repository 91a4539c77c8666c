// Any bytes as what a client sends: each line gets what the protocol owes it, no fewer answers than faults
// and requests that nobody can take back, no more than requests, and nothing is done without a yes to a
// question that was asked.

#include "Agents/MCPServer.h"
#include "Agents/Schema.h"
#include "Base/ManualQueue.h"
#include "Fuzz/Expect.h"

#include <algorithm>
#include <string>

using namespace korvell;

namespace {

/// What a client was sent, and what it may do for that.
struct Played {
  std::size_t answers = 0, questions = 0, done = 0;

  void sent(const std::string& line) {
    const auto message = parseJSON(line);
    expect(message.has_value() && line.find('\n') == std::string::npos);
    if (const auto* batch = message->asArray())
      answers += batch->size();
    else if (!message->find("method"))
      ++answers;
    else
      questions += message->find("id") != nullptr;
    const auto* result = message->find("result");
    questions += result && result->find("inputRequests");
  }
};

Tool echo() {
  return {.name = "echo",
          .input = schema::object({{"text", schema::text("")}}),
          .output = schema::object({}),
          .run = [](const std::shared_ptr<ToolCall>& call, Tool::Done done) { done({call->arguments()}); }};
}

Tool act(Played& played) {
  return {.name = "act",
          .input = schema::object({{"what", schema::text("")}}),
          .output = schema::object({}),
          .run = [&played](const std::shared_ptr<ToolCall>& call, Tool::Done done) {
            call->ask({"Do it?", "Really.", {}, "Do"}, "about", [&played, done](Consent consent) {
              played.done += consent == Consent::given;
              done({Value::object()});
            });
          }};
}

/// Whether it is answered whatever comes after it: a call of "act" can be cancelled while it asks.
bool mustBeAnswered(const Value& message) {
  const auto read = readMessage(message);
  if (std::holds_alternative<RPCFault>(read)) return true;
  const auto* request = std::get_if<RPCRequest>(&read);
  const auto* tool = request ? request->params.find("name") : nullptr;
  return request && !(request->method == "tools/call" && tool && *tool == Value("act"));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  constexpr std::size_t longest = 4096;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  Played played;
  ManualScheduler time;
  const auto main = time.makeMainQueue();
  const Seal seal;
  MCPServer server({*main, seal, "1", [&](const std::string& line) { played.sent(line); }},
                   {echo(), act(played)});
  LineBuffer lines(longest);
  std::size_t owed = 0, due = 0;
  const auto take = [&](std::optional<std::string_view> line) {
    const auto document = line ? parseJSON(*line) : std::nullopt;
    const auto* batch = document ? document->asArray() : nullptr;
    owed += batch ? std::max<std::size_t>(1, batch->size()) : 1;
    // One answer at least for a list, of whatever size it may be.
    due += !document ? 1
           : batch   ? batch->empty() || std::ranges::any_of(*batch, mustBeAnswered)
                     : mustBeAnswered(*document);
    line ? server.receive(*line) : server.refuseLongLine();
    time.run();
  };
  // In two parts, as pipes cut them.
  lines.add(bytes.substr(0, size / 2), take);
  lines.add(bytes.substr(size / 2), take);
  lines.end(take);
  server.finish([] {});
  time.run();
  expect(due <= played.answers && played.answers <= owed);
  expect(played.done <= played.questions);
  return 0;
}

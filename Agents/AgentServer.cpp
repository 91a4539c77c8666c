#include "Agents/AgentServer.h"

#include "Agents/ActingTools.h"
#include "Base/FreeMemory.h"
#include "Base/Localization.h"

namespace korvell {

namespace {

/// What is under way when the client goes may still be answered to whoever reads on.
constexpr Seconds lastPatience{5};

} // namespace

AgentServer::AgentServer(Services services)
    : services_(std::move(services)), handles_(services_.clock),
      readings_({services_.host, services_.clock, handles_, services_.makeQueue, services_.measure,
                 services_.patience, services_.readSound}),
      slowReadings_(readings_.services()),
      actions_(std::make_unique<AgentActions>(AgentActions::Services{services_.host, services_.clock,
                                                                     services_.main, services_.makeQueue,
                                                                     services_.patience},
                                              [this]() -> Queue& { return queue(false); })),
      application_({services_.main, services_.makeQueue, services_.host.folders, services_.patience}),
      desktop_(services_.main, *services_.host.notifications),
      server_(std::make_unique<MCPServer>(
          MCPServer::Services{services_.main, handles_.seal(), services_.version, services_.send,
                              [this](const AgentQuestion& question, std::function<void(Consent)> answered) {
                                return askDesktop(question, std::move(answered));
                              }},
          tools())) {}

AgentServer::~AgentServer() {
  life_.cut();
  server_.reset(); // cancels what the queues are at
  actions_.reset();
}

std::vector<Tool> AgentServer::tools() {
  std::vector<Tool> tools;
  for (auto& tool : readingTools()) tools.push_back(readingTool(std::move(tool)));
  for (auto& tool : actingTools(handles_, *actions_)) tools.push_back(std::move(tool));
  return tools;
}

Queue& AgentServer::queue(bool isSlow) {
  auto& queue = isSlow ? slow_ : tools_;
  if (!queue) queue = services_.makeQueue(isSlow ? "Korvell.scans" : "Korvell.tools");
  return *queue;
}

Tool AgentServer::readingTool(ReadingTool tool) {
  auto run = [this, read = tool.read, readTelling = tool.readTelling,
              isSlow = tool.isSlow](const std::shared_ptr<ToolCall>& call, Tool::Done done) {
    auto& readings = isSlow ? slowReadings_ : readings_;
    queue(isSlow).async([&main = services_.main, &readings, read, readTelling, call, done = std::move(done),
                         arguments = call->arguments(), cancellation = call->cancellation()] {
      auto answer = ToolAnswer::failed(localized("The call was cancelled."));
      if (!cancellation.isCancelled()) {
        const auto tell = [&](const Progress& progress) {
          main.async([call, progress] { call->tell(progress); });
        };
        const auto told = readTelling ? readTelling(readings, arguments, cancellation, tell)
                                      : read(readings, arguments, cancellation);
        answer = told ? ToolAnswer{.content = *told} : ToolAnswer::failed(told.reason());
      }
      main.async([call, done, answer = std::move(answer)] { done(answer); });
      giveFreeMemoryBack();
    });
  };
  return {.name = std::move(tool.name),
          .title = std::move(tool.title),
          .description = std::move(tool.description),
          .input = std::move(tool.input),
          .output = std::move(tool.output),
          .run = std::move(run)};
}

std::shared_ptr<void> AgentServer::askDesktop(const AgentQuestion& question,
                                              std::function<void(Consent)> answered) {
  if (!question.request) return desktop_.ask(question, std::move(answered));
  const auto way = std::make_shared<std::shared_ptr<void>>();
  *way = application_.ask(*question.request, [this, watch = std::weak_ptr(way), question,
                                              answered = std::move(answered)](Consent consent) {
    if (consent != Consent::impossible) return answered(consent);
    if (const auto still = watch.lock()) *still = desktop_.ask(question, answered);
  });
  return way;
}

void AgentServer::finish(Task idle) {
  const auto once = [watch = life_.watch(), idle = std::move(idle)] {
    if (watch.get()) idle();
  };
  timer_ = services_.main.timer(once);
  timer_->schedule(lastPatience, Seconds{0}, Seconds{1});
  server_->finish(once);
}

} // namespace korvell

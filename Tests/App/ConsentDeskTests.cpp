#include "App/ConsentDesk.h"

#include "App/Keeper.h"
#include "Base/ManualQueue.h"
#include "Tests/App/AppFixture.h"
#include "Tests/App/PlayedKeeper.h"

#include <csignal>
#include <gmock/gmock.h>
#include <thread>
#include <unistd.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// A screen with a person before it.
struct PlayedScreen {
  std::vector<std::string> titles;                ///< of what was shown, in order
  std::vector<std::string> standing;              ///< now
  std::vector<std::function<void(bool)>> answers; ///< to what was shown
  bool isThere = true;

  std::shared_ptr<void> show(const ActionDescription& description, std::function<void(bool)> answered) {
    if (!isThere) return nullptr;
    titles.push_back(description.title);
    standing.push_back(description.title);
    answers.push_back(std::move(answered));
    return {this, [title = description.title](PlayedScreen* screen) { std::erase(screen->standing, title); }};
  }
};

struct ConsentDeskTests : testing::Test {
  ManualScheduler time;
  std::unique_ptr<Queue> main = time.makeMainQueue();
  PlayedActions actions;
  PlayedScreen screen;
  ConsentDesk desk{*main, actions, [this](const ActionDescription& description, auto answered) {
                     return screen.show(description, std::move(answered));
                   }};
  std::vector<std::string> told;

  ConsentDeskTests() {
    actions.describing = [](const ActionRequest& request) -> Result<DescribedAction> {
      const auto* quit = std::get_if<QuitRequest>(&request);
      if (!quit || !quit->app) return Failure{"gone"};
      return DescribedAction{request, {.title = *quit->app}};
    };
  }
  std::shared_ptr<void> ask(const std::string& app) {
    return askLine(R"({"ask":"consent","of":{"do":"quit","app":")" + app + "\"}}");
  }
  std::shared_ptr<void> askLine(const std::string& line) {
    auto open = desk.ask(*parseJSON(line), [this](const Value& answer) { told.push_back(dumpJSON(answer)); });
    time.run();
    return open;
  }
  static std::string said(const char* consent) {
    return R"({"ok":true,"consent":")" + std::string(consent) + "\"}";
  }
};

TEST_F(ConsentDeskTests, onlyThePersonAtTheScreenAnswersAndOnce) {
  auto open = ask("Editor");
  EXPECT_THAT(told, IsEmpty());
  ASSERT_THAT(screen.titles, ElementsAre("Editor"));
  screen.answers[0](true);
  screen.answers[0](false);
  EXPECT_THAT(told, ElementsAre(said("given")));
  open.reset();
  open = ask("Mail");
  screen.answers[1](false);
  EXPECT_EQ(told.back(), said("declined"));
  open.reset();
  open = ask("Shop");
  time.advance(ConsentDesk::patience + Seconds{2});
  EXPECT_EQ(told.back(), said("unanswered"));
  screen.answers[2](true);
  EXPECT_THAT(told, SizeIs(3));
  open.reset();
  screen.isThere = false;
  open = ask("Dark");
  EXPECT_EQ(told.back(), said("impossible"));
}

TEST_F(ConsentDeskTests, oneQuestionStandsAtATimeAndFewWait) {
  std::vector<std::shared_ptr<void>> open{ask("a"), ask("b"), ask("c"), ask("d")};
  EXPECT_THAT(screen.standing, ElementsAre("a"));
  EXPECT_EQ(ask("e"), nullptr);
  EXPECT_EQ(told.back(), dumpJSON(refusal("too many questions are open")));
  open.erase(open.begin() + 1); // who asked has gone
  screen.answers[0](true);
  EXPECT_THAT(screen.standing, ElementsAre("a")) << "until whoever asked lets go";
  open.erase(open.begin());
  time.run();
  EXPECT_THAT(screen.standing, ElementsAre("c"));
  open.clear();
  time.run();
  EXPECT_THAT(screen.standing, IsEmpty()) << "a question that nobody waits for";
  EXPECT_THAT(screen.titles, ElementsAre("a", "c"));
}

TEST_F(ConsentDeskTests, whatCanNotBeAskedIsRefusedAtOnce) {
  const char* lines[] = {R"({"ask":"consent"})", R"({"ask":"consent","of":7})",
                         R"({"ask":"consent","of":{"do":"format"}})",
                         R"({"ask":"consent","of":{"do":"stopServer","pid":4}})"};
  for (const auto* line : lines) {
    told.clear();
    askLine(line);
    ASSERT_THAT(told, SizeIs(1)) << line;
    EXPECT_EQ(told[0].rfind(R"({"ok":false,"error":)", 0), 0u) << told[0];
  }
  EXPECT_THAT(screen.titles, IsEmpty());
}

/// Over the socket of a keeper.
struct AskedKeeperTests : AppFixture {
  const std::string path = folder / "run/keeper.sock";
  Keeper keeper{*main, *model, *actions};
  std::vector<Keeper::Answer> asked;
  int standing = 0;

  AskedKeeperTests() {
    std::signal(SIGPIPE, SIG_IGN); // as the application's main does
    keeper.setAskPerson([this](const Value&, Keeper::Answer answer) -> std::shared_ptr<void> {
      asked.push_back(std::move(answer));
      ++standing;
      return {this, [](AskedKeeperTests* test) { --test->standing; }};
    });
    keeper.listen(path);
  }
  static void send(const Descriptor& socket, std::string_view line) {
    ASSERT_EQ(write(socket.get(), line.data(), line.size()), ssize_t(line.size()));
  }
  /// Until the socket's thread has handed over what is needed.
  void await(const std::function<bool()>& done) {
    while (!done()) {
      time.run();
      std::this_thread::yield();
    }
  }
};

TEST_F(AskedKeeperTests, aQuestionGoesWithItsClientAndNobodyElseAnswersIt) {
  auto agent = connectLocal(path);
  const auto other = connectLocal(path);
  send(agent, "{\"ask\":\"consent\"}\n");
  await([this] { return asked.size() == 1; });
  EXPECT_EQ(standing, 1);
  send(other, "{\"do\":\"consent\",\"consent\":\"given\"}\n");
  char answer[200];
  ssize_t count = -1;
  await([&] { return (count = read(other.get(), answer, sizeof answer)) > 0; });
  EXPECT_EQ(std::string_view(answer, std::size_t(count)), dumpJSON(refusal(unknownRequest)) + "\n");
  EXPECT_EQ(standing, 1);
  agent = {};
  await([this] { return standing == 0; });
  asked[0](Value(true)); // too late: to nobody
  agent = connectLocal(path);
  send(agent, "{\"ask\":\"consent\"}\n");
  await([this] { return asked.size() == 2; });
  asked[1](Value(true));
  await([&] { return (count = read(agent.get(), answer, sizeof answer)) > 0; });
  EXPECT_EQ(std::string_view(answer, std::size_t(count)), "true\n");
  await([this] { return standing == 0; });
}

} // namespace
} // namespace korvell

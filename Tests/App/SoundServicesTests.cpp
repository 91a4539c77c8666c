#include "App/SoundServices.h"

#include "Core/Machine/LinuxOwners.h"
#include "Tests/App/AppFixture.h"
#include "Tests/Fakes/FakeDesktopFiles.h"
#include "Tests/Fakes/FakeSoundSystem.h"
#include "Tests/Fakes/FakeStreamProcesses.h"

#include <gmock/gmock.h>

namespace korvell {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

struct SoundAnswersTests : AppFixture {
  FakeDesktopFiles files;
  FakeSoundSystem::World world;
  SoundMixer mixer{*main,
                   {[this](Queue& queue) { return std::make_unique<FakeSoundSystem>(world, queue); },
                    [this] {
                      return std::make_unique<StreamOwners>(std::make_unique<LinuxOwners>(files, "", 1000),
                                                            std::make_unique<FakeStreamProcesses>());
                    },
                    defaults, time.factory()}};
  SoundAnswers answers{*main, mixer};
  Keeper keeper{*main, *model, *actions};

  SoundAnswersTests() {
    answers.teach(keeper);
    world.streams[1] = {.id = 1, .program = "Tune", .isPlaying = true};
  }
  std::string ask(const std::string& request) {
    // An answer may come after this has returned.
    const auto text = std::make_shared<std::string>("<none>");
    keeper.handle(*parseJSON(request), [text](const Value& answer) { *text = dumpJSON(answer); });
    time.run();
    return *text;
  }
};

TEST_F(SoundAnswersTests, connectsForAnAnswerAndStaysForWhatIsRemembered) {
  EXPECT_THAT(ask(R"({"do":"listSound"})"), HasSubstr(R"("name":"Tune","pids":[],"volume":1.0)"));
  EXPECT_THAT(world.calls, testing::ElementsAre("connect", "disconnect"));
  world.calls.clear();
  EXPECT_THAT(
      ask(R"({"do":"changeSound","app":"tune","volume":0.5,"muted":true})"),
      HasSubstr(R"("volume":0.5,"muted":true,"playing":true,"isAdjustable":true,"isRemembered":true)"));
  time.advance(Seconds(0.1)); // changes are paced
  EXPECT_THAT(world.calls, testing::ElementsAre("connect", "proc:Tune 1 0.50", "proc:Tune 1 true"));
  EXPECT_THAT(ask(R"({"do":"listSound"})"), HasSubstr(R"("volume":0.5)"));
  EXPECT_THAT(ask(R"({"do":"changeSound","app":"tune","reset":true})"), HasSubstr(R"("isRemembered":false)"));
  EXPECT_EQ(world.calls.back(), "disconnect");
}

TEST_F(SoundAnswersTests, whatCannotBeDoneIsRefusedInASentence) {
  for (const char* request : {R"({"do":"changeSound"})", R"({"do":"changeSound","app":7})",
                              R"({"do":"changeSound","app":"Nobody","volume":1})"})
    EXPECT_THAT(ask(request), StartsWith(R"({"ok":false)")) << request;
  world.streams[1].isAdjustable = false;
  EXPECT_THAT(ask(R"({"do":"changeSound","app":"Tune","volume":1})"), HasSubstr("lets nobody change"));
  world.answer = SoundConnection::noServer;
  EXPECT_THAT(ask(R"({"do":"listSound"})"), HasSubstr(R"("connection":"noServer")"));
  world.answer = SoundConnection::connecting; // it never comes to an end
  EXPECT_EQ(ask(R"({"do":"listSound"})"), "<none>");
  std::string late;
  keeper.handle(*parseJSON(R"({"do":"listSound"})"), [&](const Value& answer) { late = dumpJSON(answer); });
  time.advance(SoundAnswers::patience + Seconds(1));
  EXPECT_THAT(late, HasSubstr(R"("connection":"connecting")"));
}

} // namespace
} // namespace korvell

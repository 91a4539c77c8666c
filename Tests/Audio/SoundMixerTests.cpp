#include "Audio/SoundMixer.h"

#include "Audio/SoundEngine.h"
#include "Base/ManualQueue.h"
#include "Base/ThreadQueue.h"
#include "Core/Machine/LinuxOwners.h"
#include "Tests/Fakes/FakeDesktopFiles.h"
#include "Tests/Fakes/FakeSoundSystem.h"
#include "Tests/Fakes/FakeStreamProcesses.h"
#include "Tests/Fakes/FakeUserDefaults.h"

#include <gmock/gmock.h>

#include <future>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Calls = std::vector<std::string>;

SoundStream playing(StreamID id, const std::string& program, double volume = 1) {
  return {.id = id, .program = program, .volume = volume, .isPlaying = true};
}

struct SoundMixerTests : testing::Test {
  ManualScheduler time;
  std::unique_ptr<Queue> main = time.makeMainQueue();
  FakeUserDefaults defaults;
  SoundMemory memory{defaults};
  FakeDesktopFiles files;
  FakeSoundSystem::World world;
  std::optional<SoundMixer> mixer;
  Subscription watch;

  void start(SoundRole role = SoundRole::keeper) {
    mixer.emplace(*main,
                  SoundMixer::Services{
                      [this](Queue& queue) { return std::make_unique<FakeSoundSystem>(world, queue); },
                      [this] {
                        return std::make_unique<StreamOwners>(std::make_unique<LinuxOwners>(files, "", 1000),
                                                              std::make_unique<FakeStreamProcesses>());
                      },
                      defaults, time.factory(), role});
    time.run();
  }
  void look(SoundMixer::Interest interest = SoundMixer::Interest::list) {
    watch = mixer->watch(interest);
    time.run();
  }
  /// What was asked for since the last time.
  Calls calls() {
    time.run();
    return std::exchange(world.calls, {});
  }
  const AudioApp* app(const std::string& name) {
    time.run();
    const auto found = std::ranges::find(mixer->state->apps, name, &AudioApp::name);
    return found == mixer->state->apps.end() ? nullptr : &*found;
  }
  void remember(const std::string& program, double volume, bool muted = false) {
    memory.remember({{"proc:" + program, program, {}, volume, muted}});
  }
};

TEST_F(SoundMixerTests, connectsOnlyWhileSomebodyNeedsIt) {
  start();
  EXPECT_THAT(calls(), IsEmpty());
  EXPECT_EQ(mixer->state->connection, SoundConnection::idle);
  look();
  auto second = mixer->watch(SoundMixer::Interest::list);
  watch.reset();
  EXPECT_THAT(calls(), ElementsAre("connect"));
  EXPECT_EQ(mixer->state->connection, SoundConnection::connected);
  second.reset();
  EXPECT_THAT(calls(), ElementsAre("disconnect"));

  mixer.reset();
  remember("mpv", 0.5);
  start();
  EXPECT_THAT(calls(), ElementsAre("connect"));
  mixer->reset("proc:mpv");
  EXPECT_THAT(calls(), ElementsAre("disconnect"));
  mixer.reset();
  remember("mpv", 0.5);
  start(SoundRole::visitor);
  EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(SoundMixerTests, looksForALostServerAgainAndAgain) {
  world.answer = SoundConnection::noServer;
  start();
  look();
  EXPECT_EQ(mixer->state->connection, SoundConnection::noServer);
  EXPECT_EQ(calls().size(), 1U);
  for (const double pause : {1.0, 2.0, 5.0, 10.0, 30.0, 30.0}) {
    time.advance(Seconds(pause - 0.1));
    EXPECT_THAT(calls(), IsEmpty()) << pause;
    time.advance(Seconds(0.101));
    EXPECT_THAT(calls(), ElementsAre("connect")) << pause;
  }
  world.answer = SoundConnection::connected;
  world.streams[1] = playing(1, "mpv");
  time.advance(Seconds(40));
  ASSERT_TRUE(app("mpv"));
  world.die();
  EXPECT_FALSE(app("mpv")->playing);
  EXPECT_EQ(mixer->state->connection, SoundConnection::noServer);
  calls();
  world.answer = SoundConnection::connected;
  time.advance(Seconds(1.001)); // from the beginning
  EXPECT_THAT(calls(), ElementsAre("connect"));

  world.answer = SoundConnection::noLibrary;
  watch.reset();
  look();
  time.advance(Seconds(100)); // nobody installs it meanwhile
  EXPECT_THAT(calls(), ElementsAre("disconnect", "connect"));
}

TEST_F(SoundMixerTests, streamsOfOneApplicationAreOneRow) {
  start();
  look();
  world.output = OutputDevice{"Speakers", 0.5, false, true};
  world.listener->outputChanged(world.output);
  world.put(playing(1, "browser", 0.5));
  world.put(playing(2, "browser", 0.75));
  world.put({.id = 3, .program = "aplayer", .muted = true});
  world.put({.id = 4, .program = "locked", .isPlaying = true, .isAdjustable = false});
  world.put({.id = 5, .program = "idle", .isOpen = false});
  time.run();
  const auto& state = *mixer->state;
  EXPECT_EQ(state.output, world.output);
  ASSERT_EQ(state.apps.size(), 3U);
  EXPECT_EQ(state.apps[0].name, "browser");
  EXPECT_EQ(state.apps[0].volume, 0.75);
  EXPECT_EQ(state.apps[1].name, "locked");
  EXPECT_FALSE(state.apps[1].isAdjustable);
  EXPECT_EQ(state.apps[2].name, "aplayer");
  EXPECT_TRUE(state.apps[2].muted);
  EXPECT_FALSE(state.apps[2].playing);

  world.end(3); // never played
  EXPECT_FALSE(app("aplayer"));
  world.end(1);
  world.end(2);
  ASSERT_TRUE(app("browser"));
  EXPECT_FALSE(app("browser")->playing);
  EXPECT_EQ(app("browser")->volume, 0.75);
  time.advance(SoundEngine::recent - Seconds(1));
  EXPECT_TRUE(app("browser"));
  time.advance(Seconds(32));
  EXPECT_FALSE(app("browser"));
  world.put({.id = 5, .program = "idle", .isPlaying = true});
  world.put({.id = 5, .program = "idle", .isOpen = false});
  EXPECT_TRUE(app("idle"));
  time.advance(SoundEngine::recent + Seconds(32));
  EXPECT_FALSE(app("idle"));
}

TEST_F(SoundMixerTests, newStreamsOfARememberedApplicationAreSetAtOnce) {
  remember("mpv", 0.6, true);
  start();
  look();
  calls();
  auto early = playing(1, "mpv", 0);
  early.isSettled = early.isPlaying = false;
  world.put(early); // as a server tells it that has no volume for it yet
  world.put(playing(2, "other"));
  EXPECT_THAT(calls(), ElementsAre("proc:mpv 1 0.60", "proc:mpv 1 true"));
  EXPECT_EQ(app("mpv")->volume, 0.6);
  EXPECT_EQ(memory.all().front().volume, 0.6);

  // The server's own memory, or the player as it starts: for a second, three times.
  for (int i = 0; i < 3; ++i) {
    world.put(playing(1, "mpv", 0.9));
    EXPECT_EQ(calls().front(), "proc:mpv 1 0.60") << i;
  }
  world.put(playing(1, "mpv", 0.9));
  EXPECT_THAT(calls(), IsEmpty());
  EXPECT_EQ(app("mpv")->volume, 0.9);

  memory.remember({{"proc:late", "late", {}, 0.25, false}}); // by another process
  world.put(playing(3, "late"));
  EXPECT_THAT(calls(), ElementsAre("proc:late 3 0.25", "proc:late 3 false"));
}

TEST_F(SoundMixerTests, whatIsChangedElsewhereIsTakenOver) {
  remember("mpv", 0.6);
  start();
  look();
  world.put(playing(1, "mpv"));
  world.put(playing(2, "mpv"));
  world.put(playing(3, "other"));
  time.advance(Seconds(2));
  calls();
  const auto stored = [this] {
    time.advance(Seconds(1));
    return memory.all().front().volume;
  };
  world.put(playing(1, "mpv", 0.3));
  EXPECT_EQ(app("mpv")->volume, 0.6) << "the other one is that loud";
  EXPECT_EQ(stored(), 0.6);
  world.put(playing(2, "mpv", 0.2));
  EXPECT_EQ(app("mpv")->volume, 0.3);
  EXPECT_EQ(stored(), 0.3);
  auto stream = playing(2, "mpv", 0.9);
  stream.isPlaying = false;
  world.put(stream);
  EXPECT_EQ(app("mpv")->volume, 0.3) << "what is paused is not heard";
  world.end(2);
  stream = playing(1, "mpv", 2);
  stream.muted = true;
  world.put(stream);
  world.put(playing(3, "other", 0.4));
  EXPECT_EQ(app("other")->volume, 0.4);
  time.advance(Seconds(1));
  EXPECT_THAT(calls(), IsEmpty()); // nobody is fought
  EXPECT_EQ(memory.all(), (std::vector<RememberedApp>{{"proc:mpv", "mpv", {}, loudestApp, true}}));

  stream.isSettled = false; // on its way to another output
  stream.volume = 0;
  world.put(stream);
  EXPECT_EQ(app("mpv")->volume, loudestApp);
  time.advance(Seconds(1));
  EXPECT_EQ(memory.all().front().volume, loudestApp);
}

TEST_F(SoundMixerTests, ADragIsPacedAndItsEchoesAreNobodysWish) {
  start();
  look();
  world.put(playing(1, "mpv"));
  time.advance(Seconds(2));
  calls();
  defaults.changed.clear();
  for (int i = 1; i <= 100; ++i) { // a hundred positions in a second
    mixer->setVolume("proc:mpv", i / 100.0);
    time.advance(Seconds(0.01));
    EXPECT_EQ(app("mpv")->volume, i / 100.0);
  }
  mixer->setVolume("proc:mpv", 7);
  time.advance(Seconds(0.04));
  const auto sent = calls();
  EXPECT_LE(sent.size(), 32U);
  EXPECT_GE(sent.size(), 25U);
  EXPECT_EQ(sent.front(), "proc:mpv 1 0.01");
  EXPECT_EQ(sent.back(), "proc:mpv 1 1.50");
  time.advance(Seconds(1));
  EXPECT_EQ(app("mpv")->volume, loudestApp);
  EXPECT_EQ(defaults.changed.size(), 1U); // stored once it rests
  EXPECT_EQ(memory.all(), (std::vector<RememberedApp>{{"proc:mpv", "mpv", {}, loudestApp, false}}));

  // An echo that comes late, in the middle of the next drag.
  world.obeys = false;
  mixer->setVolume("proc:mpv", 0.2);
  time.advance(Seconds(0.1));
  mixer->setVolume("proc:mpv", 0.4);
  time.advance(Seconds(0.1));
  world.put(playing(1, "mpv", 0.2));
  EXPECT_EQ(app("mpv")->volume, 0.4);
  world.put(playing(1, "mpv", 0.4));
  EXPECT_EQ(app("mpv")->volume, 0.4);
}

TEST_F(SoundMixerTests, resetForgetsAndEndsCarryOutWhatWaits) {
  remember("mpv", 0.5, true);
  remember("gone", 0.5);
  start();
  look();
  world.put(playing(1, "mpv"));
  time.advance(Seconds(2));
  calls();
  mixer->reset("proc:mpv");
  EXPECT_THAT(calls(), ElementsAre("proc:mpv 1 1.00", "proc:mpv 1 false"));
  EXPECT_FALSE(app("mpv")->isRemembered);
  EXPECT_EQ(mixer->state->remembered.size(), 1U);
  mixer->setMuted("proc:gone", true); // it does not play, and is remembered
  mixer->setVolume("proc:unknown", 0.1);
  mixer->setOutputVolume(3);
  mixer->setOutputMuted(true);
  EXPECT_THAT(calls(), ElementsAre("output 1.00"));
  mixer->setVolume("proc:mpv", 0.5);
  mixer->setVolume("proc:mpv", 0.7);
  time.run();
  mixer.reset();
  EXPECT_THAT(calls(), ElementsAre("output true", "proc:mpv 1 0.70", "disconnect"));
  EXPECT_EQ(memory.all(), (std::vector<RememberedApp>{{"proc:gone", "gone", {}, 0.5, true},
                                                      {"proc:mpv", "mpv", {}, 0.7, false}}));
  watch.reset(); // outlives the mixer

  start();
  mixer->resetAll();
  time.run();
  EXPECT_TRUE(memory.all().empty());
  defaults.readOnly = true;
  look();
  mixer->setVolume("proc:mpv", 0.5);
  time.advance(Seconds(1));
  EXPECT_FALSE(mixer->state->isStored);
}

TEST_F(SoundMixerTests, aResetHoldsForWhatWillPlay) {
  start();
  look();
  auto stream = playing(1, "mpv", 0.4);
  stream.memory = "by-name:mpv";
  stream.muted = true;
  world.put(stream);
  mixer->setVolume("proc:mpv", 0.41);
  time.advance(Seconds(1));
  world.end(1);
  calls();
  mixer->reset("proc:mpv");
  EXPECT_THAT(calls(), ElementsAre("forget by-name:mpv")) << "the server gives its next stream what it had";
  EXPECT_EQ(app("mpv")->volume, 1);
  EXPECT_FALSE(app("mpv")->muted);

  // By somebody who never saw it play, and while the server is away.
  memory.remember({{"proc:old", "old", {}, 0.5, true, std::vector<std::string>{"by-name:old"}}});
  mixer.reset();
  start();
  look();
  world.die();
  time.run();
  calls();
  mixer->resetAll();
  EXPECT_THAT(calls(), IsEmpty());
  watch.reset();
  world.answer = SoundConnection::connected;
  time.advance(Seconds(2));
  EXPECT_THAT(calls(), ElementsAre("connect", "forget by-name:old", "disconnect"));
}

TEST_F(SoundMixerTests, whoLooksWaitsForNoPause) {
  world.answer = SoundConnection::noServer;
  start();
  look();
  time.advance(Seconds(20)); // the next look is half a minute away
  calls();
  world.answer = SoundConnection::connected;
  auto second = mixer->watch(SoundMixer::Interest::list);
  EXPECT_THAT(calls(), ElementsAre("connect"));
  EXPECT_EQ(mixer->state->connection, SoundConnection::connected);
}

TEST_F(SoundMixerTests, theOutputStaysWhereItsSliderIs) {
  start();
  look();
  const auto tell = [this](double volume, const char* name = "Speakers") {
    world.listener->outputChanged(OutputDevice{name, volume, false, true});
    time.run();
  };
  const auto shown = [this] {
    time.run();
    return mixer->state->output->volume;
  };
  tell(0.9);
  for (int i = 1; i <= 40; ++i) {
    mixer->setOutputVolume(i / 100.0);
    EXPECT_EQ(shown(), i / 100.0);
    time.advance(Seconds(0.01));
    if (i > 20) tell((i - 20) / 100.0); // as servers tell it, late
    EXPECT_EQ(shown(), i / 100.0);
  }
  time.advance(Seconds(0.1));
  EXPECT_EQ(calls().back(), "output 0.40");
  tell(0.4);
  tell(0.7); // by somebody else
  EXPECT_EQ(shown(), 0.7);
  mixer->setOutputVolume(0.2);
  EXPECT_EQ(shown(), 0.2);
  tell(0.5, "Headphones");
  EXPECT_EQ(shown(), 0.5);
  world.listener->outputChanged(std::nullopt);
  time.run();
  EXPECT_FALSE(mixer->state->output);
}

TEST_F(SoundMixerTests, levelsOnlyWhileTheyAreLookedAtAndSomethingPlays) {
  start();
  look(SoundMixer::Interest::levels);
  EXPECT_THAT(calls(), ElementsAre("connect"));
  world.put(playing(1, "mpv"));
  world.put(playing(2, "mpv"));
  EXPECT_THAT(calls(), ElementsAre("levels true"));
  world.levels = {{1, 0.25}, {2, 0.5}, {9, 1}};
  time.advance(Seconds(0.12));
  EXPECT_EQ(app("mpv")->level, 0.5);
  time.advance(Seconds(0.12));
  EXPECT_EQ(app("mpv")->level, 0.5); // nothing new came
  auto plain = mixer->watch(SoundMixer::Interest::list);
  watch.reset();
  EXPECT_THAT(calls(), ElementsAre("levels false"));
  EXPECT_FALSE(app("mpv")->level);
  look(SoundMixer::Interest::levels);
  world.end(1);
  world.end(2);
  EXPECT_THAT(calls(), ElementsAre("levels true", "levels false"));
}

TEST_F(SoundMixerTests, aVisitorShowsAndChangesNothingByItself) {
  remember("mpv", 0.5);
  start(SoundRole::visitor);
  look();
  world.put(playing(1, "mpv"));
  world.put(playing(1, "mpv", 0.8));
  time.advance(Seconds(2));
  EXPECT_THAT(calls(), ElementsAre("connect"));
  EXPECT_EQ(app("mpv")->volume, 0.8);
  EXPECT_TRUE(app("mpv")->isRemembered);
  EXPECT_EQ(memory.all().front().volume, 0.5);
  mixer->setMuted("proc:mpv", true);
  EXPECT_THAT(calls(), ElementsAre("proc:mpv 1 true"));
}

TEST(SoundMixerEndTests, aSystemThatHangsHoldsNobody) {
  FakeSoundSystem::World world;
  FakeUserDefaults defaults;
  SoundMemory(defaults).remember({{"proc:mpv", "mpv", {}, 0.5, false}});
  std::promise<void> isHanging, answer, isOver;
  world.answer = SoundConnection::connecting;
  world.atDisconnect = [&] {
    isHanging.set_value();
    answer.get_future().wait();
  };
  ThreadQueue main("main");
  main.sync([&] {
    const auto end = std::shared_ptr<void>(nullptr, [&](void*) { isOver.set_value(); });
    SoundMixer mixer(
        main, {.makeSystem = [&world, end](Queue& queue) -> std::unique_ptr<SoundSystem> {
                 return std::make_unique<FakeSoundSystem>(world, queue);
               },
               .makeOwners = [] { return nullptr; },
               .defaults = defaults,
               .makeQueue = [](std::string label) { return std::make_unique<ThreadQueue>(std::move(label)); },
               .farewell = Seconds(0.01)});
  });
  isHanging.get_future().wait(); // the mixer has gone without it
  answer.set_value();
  isOver.get_future().wait();
}

TEST(SoundAppChoiceTests, byKeyOrName) {
  SoundState state;
  state.apps = {
      {.key = "a", .name = "Player"}, {.key = "b", .name = "player"}, {.key = "c", .name = "Radio"}};
  state.remembered = {{.key = "c", .name = "Radio", .volume = 0.5}, {.key = "d", .name = "Old"}};
  EXPECT_EQ(chooseSoundApp(state, "b")->key, "b");
  EXPECT_EQ(chooseSoundApp(state, "RADIO")->volume, 0.5);
  EXPECT_EQ(chooseSoundApp(state, "old")->key, "d");
  EXPECT_EQ(chooseSoundApp(state, "Player").reason(),
            "Several applications are called Player. Name one of these:\na\nb");
  EXPECT_FALSE(chooseSoundApp(state, "x"));
}

} // namespace
} // namespace korvell

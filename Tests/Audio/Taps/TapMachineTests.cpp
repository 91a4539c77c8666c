#include "Audio/Taps/TapMachine.h"
#include "Base/ManualQueue.h"
#include "Tests/Fakes/FakeTaps.h"

#include <gtest/gtest.h>

#include <random>

namespace korvell {
namespace {

using Phase = TapMachine::Phase;

const SoundOutput speakers{.uid = "speakers", .sampleRate = FakeTaps::rate};

struct TapMachineTests : testing::Test {
  FakeTaps taps;
  ManualClock clock;
  std::optional<TapMachine> machine{std::in_place, taps, clock};
  TapMachine::Facts facts{.processes = {7}, .isPlaying = true, .output = speakers};
  Seconds nextPoll{}, silentFor{}, longestSilence{};

  void step() {
    machine->step(facts);
    const auto due = machine->dueIn();
    nextPoll = clock.monotonic() + std::min(due.value_or(Seconds{1}), Seconds{1});
  }
  void set(double volume, bool isMuted = false) {
    machine->set({volume, isMuted});
    step();
  }
  /// Time passes as it does for the real one: sound all the time, a step when one is due.
  void pass(Seconds span) {
    for (const auto end = clock.monotonic() + span; clock.monotonic() < end;) {
      taps.play();
      clock.elapse(Seconds{0.01});
      const bool isToBeHeard = !taps.playing.empty() && machine && machine->wish().heard() > 0;
      silentFor = isToBeHeard && taps.heard == 0 ? silentFor + Seconds{0.01} : Seconds{0};
      longestSilence = std::max(longestSilence, silentFor);
      if (machine && clock.monotonic() >= nextPoll) step();
    }
  }
  void quiet() {
    taps.playing.clear();
    facts.isPlaying = false;
  }
  void loud() {
    taps.playing = {facts.processes.begin(), facts.processes.end()};
    facts.isPlaying = true;
    step();
  }
};

TEST_F(TapMachineTests, noTapAtFullVolume) {
  step();
  pass(Seconds{2});
  EXPECT_EQ(taps.made, 0);
  set(0.5);
  EXPECT_FLOAT_EQ(taps.heard, 0.1F); // a tap that has heard nothing takes nothing away
  pass(Seconds{0.2});
  EXPECT_NEAR(taps.heard, 0.0125, 1e-6);
  set(1.5);
  pass(Seconds{0.2});
  EXPECT_NEAR(taps.heard, 0.3375, 1e-6);
  EXPECT_EQ(taps.made, 1);
  set(1);
  pass(Seconds{0.2});
  EXPECT_EQ(taps.count(), 0);
  EXPECT_FLOAT_EQ(taps.heard, 0.1F);
  EXPECT_LE(taps.jump, 0.1F * RampedGain(FakeTaps::rate).step() + 1e-7F);
  EXPECT_EQ(longestSilence.count(), 0);
  set(0.5); // back while the first one fades
  pass(Seconds{0.2});
  set(1);
  set(0.5);
  pass(Seconds{0.2});
  EXPECT_NEAR(taps.heard, 0.0125, 1e-6);
  EXPECT_EQ(taps.made, 2);
}

TEST_F(TapMachineTests, withoutPermissionNothingIsTakenAway) {
  taps.hasPermission = false;
  set(0, true);
  for (int second = 0; second < 120; ++second) {
    pass(Seconds{1});
    ASSERT_FLOAT_EQ(taps.heard, 0.1F);
  }
  EXPECT_TRUE(machine->hearsNothing());
  EXPECT_LE(taps.made, 8); // builds anew, ever more seldom
  taps.hasPermission = true;
  pass(Seconds{1});
  EXPECT_FALSE(machine->hearsNothing());
  EXPECT_EQ(taps.heard, 0);
}

TEST_F(TapMachineTests, theWatchdogGivesTheSoundBack) {
  struct Fault {
    const char* name;
    bool FakeTaps::*works;
  };
  for (const auto& fault : {Fault{"no frames", &FakeTaps::hasFrames}, {"zeros", &FakeTaps::hasPermission}}) {
    set(0.5);
    pass(Seconds{60});
    EXPECT_NEAR(taps.heard, 0.0125, 1e-6) << fault.name;
    longestSilence = {};
    taps.*fault.works = false;
    pass(Seconds{6});
    EXPECT_FLOAT_EQ(taps.heard, 0.1F) << fault.name;
    pass(Seconds{60});
    EXPECT_LE(longestSilence.count(), 5.1) << fault.name;
    taps.*fault.works = true;
    pass(Seconds{0.2});
    EXPECT_NEAR(taps.heard, 0.0125, 1e-6) << fault.name; // at once, however long the tries had become
  }
}

TEST_F(TapMachineTests, restsWhileTheApplicationIsQuiet) {
  set(0.5);
  pass(Seconds{1});
  quiet();
  pass(Seconds{29});
  EXPECT_EQ(taps.running, 1);
  pass(Seconds{3});
  EXPECT_EQ(taps.running, 0);
  EXPECT_EQ(taps.count(), 1);
  loud();
  pass(Seconds{0.1});
  EXPECT_NEAR(taps.heard, 0.0125, 1e-6);
  EXPECT_EQ(taps.made, 1);

  // A muted one needs no IO, and isn't heard when it begins again.
  set(0.5, true);
  pass(Seconds{1});
  EXPECT_EQ(taps.running, 0);
  quiet();
  pass(Seconds{40});
  loud();
  pass(Seconds{1});
  EXPECT_EQ(taps.heard, 0);
  set(0.5);
  pass(Seconds{0.1});
  EXPECT_NEAR(taps.heard, 0.0125, 1e-6);
  EXPECT_LE(taps.jump, 0.1F * RampedGain(FakeTaps::rate).step() + 1e-7F);

  // What holds its stream open while it is silent is listened to all the while: it may be heard any moment.
  taps.playing.clear();
  pass(Seconds{300});
  EXPECT_LE(taps.made, 16);
  loud();
  pass(Seconds{0.2});
  EXPECT_NEAR(taps.heard, 0.0125, 1e-6);
}

TEST_F(TapMachineTests, followsProcessesAndOutputs) {
  set(0.5);
  pass(Seconds{1});
  taps.playing = {8};
  facts.processes = {8, 9};
  step();
  pass(Seconds{0.1});
  EXPECT_NEAR(taps.heard, 0.0125, 1e-6);
  EXPECT_EQ(taps.made, 1); // no gap

  facts.output->generation = 1;
  step();
  pass(Seconds{0.2});
  EXPECT_EQ(taps.made, 2);
  EXPECT_NEAR(taps.heard, 0.0125, 1e-6);

  facts.output.reset(); // for a moment, or before sleep
  step();
  pass(Seconds{0.1});
  EXPECT_EQ(taps.count(), 0);
  EXPECT_FLOAT_EQ(taps.heard, 0.1F);
  facts.output = speakers;
  facts.processes.clear();
  step();
  EXPECT_EQ(taps.count(), 0);
}

TEST_F(TapMachineTests, callsThatFailGiveTheSoundBack) {
  for (bool FakeTaps::*fails : {&FakeTaps::failsToMake, &FakeTaps::failsToMute, &FakeTaps::failsToStart}) {
    machine.emplace(taps, clock);
    taps.made = 0;
    taps.*fails = true;
    set(0.5);
    pass(Seconds{120});
    EXPECT_FLOAT_EQ(taps.heard, 0.1F);
    EXPECT_LE(taps.made, 8);
    taps.*fails = false;
    pass(Seconds{31});
    EXPECT_NEAR(taps.heard, 0.0125, 1e-6);
  }
  taps.failsToMute = taps.failsToChange = true; // also where it must be given back
  facts.processes = {8};
  step();
  taps.play();
  EXPECT_FLOAT_EQ(taps.heard, 0.1F);
  EXPECT_EQ(taps.count(), 0);
}

TEST_F(TapMachineTests, whateverHappensNobodyStaysSilent) {
  std::mt19937 random(8);
  const auto chance = [&](int one) { return std::uniform_int_distribution<>(1, one)(random) == 1; };
  const double volumes[] = {0, 0.3, 0.5, 1, 1, 1.2, 1.5};
  for (int event = 0; event < 3000; ++event) {
    for (bool FakeTaps::*works : {&FakeTaps::hasFrames, &FakeTaps::hasPermission}) taps.*works = !chance(5);
    for (bool FakeTaps::*fails :
         {&FakeTaps::failsToMake, &FakeTaps::failsToMute, &FakeTaps::failsToStart, &FakeTaps::failsToChange})
      taps.*fails = chance(5);
    machine->set({volumes[std::size_t(event * 5) % std::size(volumes)], chance(6)});
    if (chance(3)) facts.processes = {SoundProcess(event % 4), 7};
    if (chance(9)) facts.output->generation++;
    facts.isPlaying = !chance(3);
    taps.playing = facts.isPlaying && !chance(6) ? std::set<SoundProcess>{7} : std::set<SoundProcess>{};
    step();
    pass(Seconds{chance(20) ? 40.0 : 0.3});
    ASSERT_LE(longestSilence.count(), 5.1) << event;
  }
  EXPECT_LE(taps.jump, 0.1F * RampedGain(FakeTaps::rate).step() + 1e-7F);
  taps.hasFrames = taps.hasPermission = true;
  taps.failsToMake = taps.failsToMute = taps.failsToStart = taps.failsToChange = false;
  loud();
  set(0.5);
  pass(Seconds{31});
  EXPECT_NEAR(taps.heard, 0.0125, 1e-6);
  machine.reset();
  taps.play();
  EXPECT_FLOAT_EQ(taps.heard, 0.1F);
}

} // namespace
} // namespace korvell

#include "Audio/TapSound.h"
#include "Base/ManualQueue.h"
#include "Tests/Fakes/FakeTaps.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// What the system shows, and what was asked of it.
struct FakeMac {
  FakeTaps taps;
  std::vector<TapSystem::Process> processes;
  std::optional<std::pair<SoundOutput, OutputDevice>> output{
      {{.uid = "speakers", .sampleRate = FakeTaps::rate}, {.name = "Speakers", .volume = 0.5}}};
  TapSystem::Observer observer;
  int looked = 0;
  std::vector<std::string> tapped; ///< the outputs of taps, as they were made
};

class FakeTapSystem final : public TapSystem {
public:
  explicit FakeTapSystem(FakeMac& mac) : mac_(mac) {}
  std::vector<Process> processes() override {
    ++mac_.looked;
    return mac_.processes;
  }
  std::optional<std::pair<SoundOutput, OutputDevice>> output() override { return mac_.output; }
  std::optional<SoundOutput> outputNamed(const std::string& uid) override { return SoundOutput{.uid = uid}; }
  void setOutputVolume(double volume) override { mac_.output->second.volume = volume; }
  void setOutputMuted(bool muted) override { mac_.output->second.muted = muted; }
  void observe(Observer observer) override { mac_.observer = std::move(observer); }
  std::unique_ptr<Tap> makeTap(const SoundOutput& output, std::span<const SoundProcess> processes,
                               std::shared_ptr<TapRender> render) override {
    mac_.tapped.push_back(output.uid);
    return mac_.taps.makeTap(output, processes, std::move(render));
  }

private:
  FakeMac& mac_;
};

struct Listener final : SoundListener {
  SoundConnection connection = SoundConnection::idle;
  SoundAccess access = SoundAccess::granted;
  std::map<StreamID, SoundStream> streams;
  std::optional<OutputDevice> output;
  std::function<void(const SoundStream&)> onNew = [](const SoundStream&) {};

  void connectionChanged(SoundConnection now) override { connection = now; }
  void accessChanged(SoundAccess now) override { access = now; }
  void streamChanged(const SoundStream& stream) override {
    if (streams.insert_or_assign(stream.id, stream).second) onNew(stream);
  }
  void streamEnded(StreamID id) override { streams.erase(id); }
  void outputChanged(const std::optional<OutputDevice>& now) override { output = now; }
};

struct TapSoundTests : testing::Test {
  ManualScheduler time;
  std::unique_ptr<Queue> queue = time.makeQueue("sound");
  FakeMac mac;
  Listener listener;
  std::unique_ptr<TapSound> sound = std::make_unique<TapSound>(*queue, std::make_unique<FakeTapSystem>(mac));

  TapSoundTests() {
    mac.processes = {
        {.id = 7, .pid = 700, .bundleID = "org.example.player", .isPlaying = true, .outputs = {"speakers"}},
        {.id = 9, .pid = 900}};
    sound->connect(listener);
  }
  void pass(double seconds) {
    for (int i = 0; i < seconds * 100; ++i) {
      mac.taps.play();
      time.advance(Seconds{0.01});
    }
  }
  void setVolume(std::vector<StreamID> ids, double volume) {
    sound->setVolume({"player", std::move(ids)}, volume);
  }
};

TEST_F(TapSoundTests, tellsWhatPlaysAndRestsWhileNobodyLooks) {
  EXPECT_EQ(listener.connection, SoundConnection::connected);
  EXPECT_EQ(listener.access, SoundAccess::unasked);
  EXPECT_EQ(listener.output->name, "Speakers");
  ASSERT_EQ(listener.streams.size(), 2);
  EXPECT_EQ(listener.streams[7].pid, 700);
  EXPECT_TRUE(listener.streams[7].isPIDCertain && listener.streams[7].isPlaying);
  EXPECT_EQ(mac.taps.made, 0);

  const int looked = mac.looked;
  pass(10);
  EXPECT_EQ(mac.looked, looked); // no tap, nobody looks: nothing runs
  mac.processes.pop_back();
  for (int notice = 0; notice < 5; ++notice) mac.observer.changed();
  time.run();
  EXPECT_EQ(listener.streams.size(), 1);
  EXPECT_EQ(mac.looked, looked + 1); // notices come in crowds
  sound->measureLevels(true);
  mac.processes.front().isPlaying = false; // which nothing tells
  pass(1.5);
  EXPECT_FALSE(listener.streams[7].isPlaying);

  sound->setOutputVolume(0.25);
  EXPECT_EQ(listener.output->volume, 0.25);
  sound->disconnect();
  EXPECT_FALSE(mac.observer.changed);
}

TEST_F(TapSoundTests, aTapForAnApplicationThatIsNotAtFullVolume) {
  setVolume({7}, 0.5);
  pass(0.2);
  EXPECT_NEAR(mac.taps.heard, 0.0125, 1e-6);
  EXPECT_EQ(listener.access, SoundAccess::granted);
  const auto levels = sound->takeLevels();
  ASSERT_EQ(levels.size(), 1);
  EXPECT_EQ(levels[0].id, 7);
  EXPECT_NEAR(levels[0].peak, 0.0125, 1e-6);
  pass(1);
  EXPECT_EQ(listener.streams[7].volume, 0.5);

  // The process is replaced by another one: what is remembered is set as it appears, and the tap goes on.
  listener.onNew = [&](const SoundStream& stream) { setVolume({stream.id}, 0.5); };
  mac.processes.front().id = 8;
  mac.taps.playing = {8};
  pass(1.2);
  EXPECT_NEAR(mac.taps.heard, 0.0125, 1e-6);
  EXPECT_EQ(mac.taps.made, 1);

  // In a call it is left alone.
  mac.processes.front().isRecording = true;
  pass(1.2);
  EXPECT_FALSE(listener.streams[8].isAdjustable);
  EXPECT_EQ(mac.taps.count(), 0);
  mac.processes.front().isRecording = false;
  pass(1.2);
  EXPECT_NEAR(mac.taps.heard, 0.0125, 1e-6);

  // It plays elsewhere.
  mac.processes.front().outputs = {"headphones"};
  pass(1.2);
  EXPECT_EQ(mac.tapped.back(), "headphones");

  sound->setMuted({"player", {8}}, true);
  pass(1.2);
  EXPECT_TRUE(listener.streams[8].muted);
  EXPECT_EQ(mac.taps.heard, 0);
  sound->setMuted({"player", {8}}, false);
  setVolume({8}, 1);
  pass(0.2);
  EXPECT_EQ(mac.taps.count(), 0);
  setVolume({9, 4711}, 0.5); // one is there, one has ended
  EXPECT_EQ(mac.taps.count(), 1);
  sound->disconnect();
  EXPECT_EQ(mac.taps.count(), 0);
}

TEST_F(TapSoundTests, givesBackBeforeSleepAndWhenTheOutputIsGone) {
  setVolume({7}, 0.5);
  pass(0.2);
  auto hold = std::make_shared<int>(0);
  const std::weak_ptr<int> held = hold;
  mac.observer.asleep(true, std::move(hold));
  EXPECT_FALSE(held.expired());
  time.run();
  EXPECT_TRUE(held.expired());
  EXPECT_EQ(mac.taps.count(), 0);
  pass(2);
  EXPECT_EQ(mac.taps.count(), 0);
  mac.observer.asleep(false, nullptr);
  pass(0.2);
  EXPECT_NEAR(mac.taps.heard, 0.0125, 1e-6);

  const auto output = std::exchange(mac.output, std::nullopt);
  mac.observer.changed();
  time.run();
  EXPECT_EQ(mac.taps.count(), 0);
  EXPECT_FALSE(listener.output);
  mac.output = output;
  mac.observer.changed();
  pass(0.2);
  EXPECT_NEAR(mac.taps.heard, 0.0125, 1e-6);

  mac.observer.changed(); // ends with word of a change on its way, and more to come
  const auto late = mac.observer;
  sound.reset();
  EXPECT_EQ(mac.taps.count(), 0);
  queue.reset();
  late.changed();
  late.asleep(true, nullptr);
  time.run();
}

TEST_F(TapSoundTests, silenceInsteadOfSoundMeansThatThePermissionIsMissing) {
  mac.taps.hasPermission = false;
  setVolume({7}, 0.5);
  pass(6);
  EXPECT_EQ(listener.access, SoundAccess::denied);
  EXPECT_FLOAT_EQ(mac.taps.heard, 0.1F);
  mac.taps.hasPermission = true;
  pass(6);
  EXPECT_EQ(listener.access, SoundAccess::granted);
}

} // namespace
} // namespace korvell

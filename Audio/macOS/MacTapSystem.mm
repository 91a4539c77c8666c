#include "Audio/macOS/MacTapSystem.h"

#include "Audio/macOS/AudioObject.h"
#include "Audio/macOS/MacTap.h"
#include "Audio/macOS/SleepWatch.h"

#import <AudioToolbox/AudioHardwareService.h>

#include <atomic>
#include <unistd.h>

namespace korvell {

namespace {

constexpr auto theSystem = AudioObjectID(kAudioObjectSystemObject);
/// The one that the keyboard's keys move; devices with a volume for each channel have no other for both.
constexpr auto mainVolume =
    audioProperty(kAudioHardwareServiceDeviceProperty_VirtualMainVolume, kAudioObjectPropertyScopeOutput);
constexpr auto plainVolume = audioProperty(kAudioDevicePropertyVolumeScalar, kAudioObjectPropertyScopeOutput);
constexpr auto muteOfOutput = audioProperty(kAudioDevicePropertyMute, kAudioObjectPropertyScopeOutput);

/// What listeners and the sound queue share; listeners may run after they were removed.
struct Notices {
  std::atomic<std::uint64_t> generation = 0;
  std::function<void()> changed; ///< set before the first listener is there
};

/// Listens to properties of one object until it ends. Listeners do nothing but pass it on: no question may be
/// asked where they run.
class Listening {
public:
  struct Event {
    AudioObjectPropertyAddress property;
    bool isNewBeginning = false; ///< what was built before is worthless
  };

  Listening(AudioObjectID object, std::initializer_list<Event> events, std::shared_ptr<Notices> notices)
      : object_(object), queue_(dispatch_get_global_queue(QOS_CLASS_UTILITY, 0)) {
    for (const auto& event : events) {
      const bool isNewBeginning = event.isNewBeginning;
      AudioObjectPropertyListenerBlock block = ^(UInt32, const AudioObjectPropertyAddress*) {
        if (isNewBeginning) ++notices->generation;
        notices->changed();
      };
      if (AudioObjectAddPropertyListenerBlock(object, &event.property, queue_, block) == noErr)
        listeners_.push_back({event.property, block});
    }
  }
  ~Listening() {
    for (const auto& [property, block] : listeners_)
      AudioObjectRemovePropertyListenerBlock(object_, &property, queue_, block);
  }
  Listening(const Listening&) = delete;
  Listening& operator=(const Listening&) = delete;

  AudioObjectID object() const { return object_; }

private:
  const AudioObjectID object_;
  const dispatch_queue_t queue_;
  std::vector<std::pair<AudioObjectPropertyAddress, AudioObjectPropertyListenerBlock>> listeners_;
};

AudioObjectPropertyAddress volumeOf(AudioObjectID device) {
  return AudioObjectHasProperty(device, &mainVolume) ? mainVolume : plainVolume;
}

/// Which of the device's channels are left and right, counted from 0.
ChannelPlace placeOf(AudioObjectID device) {
  constexpr auto property =
      audioProperty(kAudioDevicePropertyPreferredChannelsForStereo, kAudioObjectPropertyScopeOutput);
  const auto pair = readAudioList<UInt32>(device, property);
  if (pair.size() != 2 || pair[0] == 0 || pair[1] == 0) return {};
  return {pair[0] - 1, pair[1] - 1};
}

class MacTapSystem final : public TapSystem {
public:
  std::vector<Process> processes() override {
    std::vector<Process> result;
    for (const auto id :
         readAudioList<AudioObjectID>(theSystem, audioProperty(kAudioHardwarePropertyProcessObjectList))) {
      const auto pid = readAudio<pid_t>(id, audioProperty(kAudioProcessPropertyPID));
      if (!pid || *pid == getpid()) continue; // what we write belongs to those who play it
      const auto is = [&](AudioObjectPropertySelector selector) {
        return readAudio<UInt32>(id, audioProperty(selector)).value_or(0) != 0;
      };
      Process process{.id = id,
                      .pid = *pid,
                      .bundleID = readAudioText(id, audioProperty(kAudioProcessPropertyBundleID)),
                      .isPlaying = is(kAudioProcessPropertyIsRunningOutput)};
      if (process.isPlaying) {
        process.isRecording = is(kAudioProcessPropertyIsRunningInput);
        process.outputs = outputsOf(id);
      }
      result.push_back(std::move(process));
    }
    return result;
  }

  std::optional<std::pair<SoundOutput, OutputDevice>> output() override {
    const auto device = defaultOutput();
    if (device == kAudioObjectUnknown) return std::nullopt;
    auto output = outputOf(device);
    if (!output) return std::nullopt;
    return std::pair{std::move(*output),
                     OutputDevice{.name = readAudioText(device, audioProperty(kAudioObjectPropertyName)),
                                  .volume = readAudio<Float32>(device, volumeOf(device)).value_or(1),
                                  .muted = readAudio<UInt32>(device, muteOfOutput).value_or(0) != 0,
                                  .isAdjustable = isAudioSettable(device, volumeOf(device))}};
  }

  std::optional<SoundOutput> outputNamed(const std::string& uid) override {
    const auto device = audioDeviceNamed(uid);
    return device == kAudioObjectUnknown ? std::nullopt : outputOf(device);
  }

  void setOutputVolume(double volume) override {
    const auto device = defaultOutput();
    writeAudio(device, volumeOf(device), Float32(volume));
  }
  void setOutputMuted(bool muted) override { writeAudio(defaultOutput(), muteOfOutput, UInt32(muted)); }

  void observe(Observer observer) override {
    sleep_.reset();
    deviceListening_.reset();
    listening_.reset();
    if (!observer.changed) return;
    notices_ = std::make_shared<Notices>();
    notices_->generation = ++beginnings_ << 32; // apart from those of earlier observers
    notices_->changed = std::move(observer.changed);
    listening_ = std::make_unique<Listening>(
        theSystem,
        std::initializer_list<Listening::Event>{
            {audioProperty(kAudioHardwarePropertyProcessObjectList)},
            {audioProperty(kAudioHardwarePropertyDefaultOutputDevice)},
            {audioProperty(kAudioHardwarePropertyServiceRestarted), .isNewBeginning = true}},
        notices_);
    sleep_ = std::make_unique<SleepWatch>(std::move(observer.asleep));
  }

  std::unique_ptr<Tap> makeTap(const SoundOutput& output, std::span<const SoundProcess> processes,
                               std::shared_ptr<TapRender> render) override {
    return makeMacTap(output, processes, std::move(render));
  }

private:
  /// The device where sound goes, listened to.
  AudioObjectID defaultOutput() {
    const auto device =
        readAudio<AudioObjectID>(theSystem, audioProperty(kAudioHardwarePropertyDefaultOutputDevice))
            .value_or(kAudioObjectUnknown);
    if (notices_ &&
        (!deviceListening_ || deviceListening_->object() != device || listenedIn_ != notices_->generation))
      listenTo(device);
    return device;
  }

  void listenTo(AudioObjectID device) {
    deviceListening_.reset();
    listenedIn_ = notices_->generation;
    if (device == kAudioObjectUnknown) return;
    constexpr auto output = kAudioObjectPropertyScopeOutput;
    deviceListening_ = std::make_unique<Listening>(
        device,
        std::initializer_list<Listening::Event>{
            {audioProperty(kAudioDevicePropertyDeviceIsAlive)},
            {audioProperty(kAudioDevicePropertyNominalSampleRate)},
            {audioProperty(kAudioDevicePropertyStreamConfiguration, output), .isNewBeginning = true},
            {audioProperty(kAudioDevicePropertyDeviceIsRunningSomewhere)},
            {volumeOf(device)},
            {muteOfOutput}},
        notices_);
  }

  std::optional<SoundOutput> outputOf(AudioObjectID device) {
    const auto isAlive = readAudio<UInt32>(device, audioProperty(kAudioDevicePropertyDeviceIsAlive));
    const auto rate = readAudio<Float64>(device, audioProperty(kAudioDevicePropertyNominalSampleRate));
    auto uid = readAudioText(device, audioProperty(kAudioDevicePropertyDeviceUID));
    if (!isAlive || *isAlive == 0 || !rate || uid.empty()) return std::nullopt;
    return SoundOutput{.uid = std::move(uid),
                       .sampleRate = *rate,
                       .place = placeOf(device),
                       .generation = notices_ ? notices_->generation.load() : 0};
  }

  static std::vector<std::string> outputsOf(AudioObjectID process) {
    std::vector<std::string> uids;
    constexpr auto property = audioProperty(kAudioProcessPropertyDevices, kAudioObjectPropertyScopeOutput);
    for (const auto device : readAudioList<AudioObjectID>(process, property))
      uids.push_back(readAudioText(device, audioProperty(kAudioDevicePropertyDeviceUID)));
    return uids;
  }

  std::shared_ptr<Notices> notices_;
  std::uint64_t beginnings_ = 0, listenedIn_ = 0;
  std::unique_ptr<Listening> listening_, deviceListening_;
  std::unique_ptr<SleepWatch> sleep_;
};

} // namespace

std::unique_ptr<TapSystem> makeMacTapSystem() {
  return hasMacTaps() ? std::make_unique<MacTapSystem>() : nullptr;
}

} // namespace korvell

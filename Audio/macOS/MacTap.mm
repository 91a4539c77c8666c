#include "Audio/macOS/MacTap.h"

#include "Audio/macOS/AudioObject.h"

#import <CoreAudio/AudioHardwareTapping.h>
#import <CoreAudio/CATapDescription.h>
#import <Foundation/Foundation.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace korvell {

namespace {

NSArray<NSNumber*>* numbers(std::span<const SoundProcess> processes) {
  auto* list = [NSMutableArray<NSNumber*> array];
  for (const auto process : processes)
    [list addObject:@(process)];
  return list;
}

/// Runs on the audio thread. Of the inputs the tap is the last: the output's own microphones come before it.
OSStatus renderCycle(AudioObjectID, const AudioTimeStamp*, const AudioBufferList* inputs,
                     const AudioTimeStamp*, AudioBufferList* outputs, const AudioTimeStamp*, void* context) {
  constexpr std::size_t most = 32; // streams of a device; there is no room to be made here
  std::array<AudioBlock, most> blocks{};
  const auto count = std::min<std::size_t>(outputs->mNumberBuffers, most);
  UInt32 frames = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const auto& buffer = outputs->mBuffers[i];
    blocks[i] = {static_cast<float*>(buffer.mData), buffer.mNumberChannels};
    const UInt32 length =
        buffer.mNumberChannels > 0 ? buffer.mDataByteSize / (buffer.mNumberChannels * 4) : 0;
    if (buffer.mData) frames = frames == 0 ? length : std::min(frames, length);
  }
  AudioBlock tap;
  if (inputs->mNumberBuffers > 0) {
    const auto& buffer = inputs->mBuffers[inputs->mNumberBuffers - 1];
    const UInt32 length =
        buffer.mNumberChannels > 0 ? buffer.mDataByteSize / (buffer.mNumberChannels * 4) : 0;
    if (length >= frames) tap = {static_cast<float*>(buffer.mData), buffer.mNumberChannels};
  }
  static_cast<TapRender*>(context)->render(tap, std::span(blocks).first(count), frames);
  return noErr;
}

class API_AVAILABLE(macos(14.4)) MacTap final : public Tap {
public:
  explicit MacTap(std::shared_ptr<TapRender> render) : render_(std::move(render)) {}
  ~MacTap() override {
    stop();
    if (io_) AudioDeviceDestroyIOProcID(device_, io_);
    if (device_ != kAudioObjectUnknown) AudioHardwareDestroyAggregateDevice(device_);
    if (tap_ != kAudioObjectUnknown) AudioHardwareDestroyProcessTap(tap_);
    // The end of its IO isn't waited for: a cycle may still be under way in the renderer.
    const auto kept = render_;
    dispatch_after(dispatch_time(DISPATCH_TIME_NOW, 2 * int64_t(NSEC_PER_SEC)),
                   dispatch_get_global_queue(QOS_CLASS_UTILITY, 0), ^{
                     (void)kept;
                   });
  }
  MacTap(const MacTap&) = delete;
  MacTap& operator=(const MacTap&) = delete;

  bool build(const SoundOutput& output, std::span<const SoundProcess> processes) {
    description_ = [[CATapDescription alloc] initStereoMixdownOfProcesses:numbers(processes)];
    description_.name = @"Korvell";
    description_.privateTap = YES;
    description_.muteBehavior = CATapUnmuted;
    return AudioHardwareCreateProcessTap(description_, &tap_) == noErr && isFloat() && buildDevice(output) &&
           AudioDeviceCreateIOProcID(device_, renderCycle, render_.get(), &io_) == noErr && useOnlyTheTap();
  }

  bool setMute(TapMute mute) override {
    description_.muteBehavior = mute == TapMute::none        ? CATapUnmuted
                                : mute == TapMute::whileRead ? CATapMutedWhenTapped
                                                             : CATapMuted;
    return describe();
  }

  bool setProcesses(std::span<const SoundProcess> processes) override {
    description_.processes = numbers(processes);
    return describe();
  }

  bool start() override {
    if (!isRunning_) isRunning_ = AudioDeviceStart(device_, io_) == noErr;
    return isRunning_;
  }

  void stop() override {
    if (std::exchange(isRunning_, false)) AudioDeviceStop(device_, io_);
  }

private:
  bool describe() {
    const auto* description = (__bridge const void*)description_;
    return writeAudio(tap_, audioProperty(kAudioTapPropertyDescription), description);
  }

  bool isFloat() const {
    const auto format = readAudio<AudioStreamBasicDescription>(tap_, audioProperty(kAudioTapPropertyFormat));
    return format && format->mFormatID == kAudioFormatLinearPCM && format->mBitsPerChannel == 32 &&
           (format->mFormatFlags & kAudioFormatFlagIsFloat) != 0 &&
           (format->mFormatFlags & kAudioFormatFlagIsNonInterleaved) == 0;
  }

  bool buildDevice(const SoundOutput& output) {
    NSString* uid = @(output.uid.c_str());
    if (!uid) return false;
    NSDictionary* composition = @{
      @kAudioAggregateDeviceNameKey : @"Korvell",
      @kAudioAggregateDeviceUIDKey : NSUUID.UUID.UUIDString,
      @kAudioAggregateDeviceIsPrivateKey : @YES,
      @kAudioAggregateDeviceIsStackedKey : @NO,
      @kAudioAggregateDeviceTapAutoStartKey : @YES,
      @kAudioAggregateDeviceMainSubDeviceKey : uid,
      @kAudioAggregateDeviceSubDeviceListKey : @[
        @{@kAudioSubDeviceUIDKey : uid}
      ],
      @kAudioAggregateDeviceTapListKey : @[
        @{@kAudioSubTapUIDKey : description_.UUID.UUIDString,
          @kAudioSubTapDriftCompensationKey : @YES}
      ],
    };
    return AudioHardwareCreateAggregateDevice((__bridge CFDictionaryRef)composition, &device_) == noErr;
  }

  /// Switches the output's microphones off, so that they neither run nor show that they do. A device without
  /// any has one input stream, the tap's.
  bool useOnlyTheTap() {
    constexpr auto property =
        audioProperty(kAudioDevicePropertyIOProcStreamUsage, kAudioObjectPropertyScopeInput);
    UInt32 size = 0;
    if (AudioObjectGetPropertyDataSize(device_, &property, 0, nullptr, &size) != noErr) return false;
    constexpr auto head = offsetof(AudioHardwareIOProcStreamUsage, mStreamIsOn);
    if (size < head + sizeof(UInt32)) return false;
    std::vector<UInt64> bytes(size / sizeof(UInt64) + 1); // aligned for its pointer
    auto* usage = reinterpret_cast<AudioHardwareIOProcStreamUsage*>(bytes.data());
    usage->mIOProc = reinterpret_cast<void*>(io_);
    if (AudioObjectGetPropertyData(device_, &property, 0, nullptr, &size, usage) != noErr) return false;
    const auto count = std::min<std::size_t>(usage->mNumberStreams, (size - head) / sizeof(UInt32));
    if (count == 0) return false;
    UInt32* isOn = usage->mStreamIsOn;
    std::fill_n(isOn, count, 0);
    isOn[count - 1] = 1;
    return AudioObjectSetPropertyData(device_, &property, 0, nullptr, size, usage) == noErr;
  }

  const std::shared_ptr<TapRender> render_;
  CATapDescription* description_ = nil;
  AudioObjectID tap_ = kAudioObjectUnknown, device_ = kAudioObjectUnknown;
  AudioDeviceIOProcID io_ = nullptr;
  bool isRunning_ = false;
};

} // namespace

bool hasMacTaps() { return [NSProcessInfo.processInfo isOperatingSystemAtLeastVersion:{14, 4, 0}]; }

// The question above is asked of the system itself: the compiler's own form of it needs its run-time library.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wunguarded-availability-new"

std::unique_ptr<Tap> makeMacTap(const SoundOutput& output, std::span<const SoundProcess> processes,
                                std::shared_ptr<TapRender> render) {
  if (!hasMacTaps()) return nullptr;
  @autoreleasepool {
    auto tap = std::make_unique<MacTap>(std::move(render));
    return tap->build(output, processes) ? std::move(tap) : nullptr;
  }
}

#pragma clang diagnostic pop

} // namespace korvell

#include "Audio/macOS/AudioObject.h"

#include "Base/macOS/CoreFoundation.h"

namespace korvell {

bool isAudioSettable(AudioObjectID object, AudioObjectPropertyAddress property) {
  Boolean isSettable = 0;
  return AudioObjectIsPropertySettable(object, &property, &isSettable) == noErr && isSettable != 0;
}

std::string readAudioText(AudioObjectID object, AudioObjectPropertyAddress property) {
  const CFOwned<CFStringRef> text(readAudio<CFStringRef>(object, property).value_or(nullptr));
  return cfText(text.get());
}

AudioObjectID audioDeviceNamed(const std::string& uid) {
  const auto name = cfString(uid);
  if (!name) return kAudioObjectUnknown;
  const CFStringRef asked = name.get();
  constexpr auto property = audioProperty(kAudioHardwarePropertyTranslateUIDToDevice);
  AudioObjectID device = kAudioObjectUnknown;
  UInt32 size = sizeof device;
  if (AudioObjectGetPropertyData(kAudioObjectSystemObject, &property, sizeof asked, &asked, &size, &device) !=
      noErr)
    return kAudioObjectUnknown;
  return device;
}

} // namespace korvell

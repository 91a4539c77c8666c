#pragma once
// Properties of the sound system's objects as plain values. Any of them may be gone: then there is nothing.
// Asking may take long, while the system's sound server is busy: on the sound queue only.

#include <CoreAudio/CoreAudio.h>

#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace korvell {

constexpr AudioObjectPropertyAddress
audioProperty(AudioObjectPropertySelector selector,
              AudioObjectPropertyScope scope = kAudioObjectPropertyScopeGlobal) {
  return {selector, scope, kAudioObjectPropertyElementMain};
}

template <class T>
std::optional<T> readAudio(AudioObjectID object, AudioObjectPropertyAddress property) {
  static_assert(std::is_trivially_copyable_v<T>);
  T value{};
  UInt32 size = sizeof(T);
  if (AudioObjectGetPropertyData(object, &property, 0, nullptr, &size, &value) != noErr || size != sizeof(T))
    return std::nullopt;
  return value;
}

template <class T>
std::vector<T> readAudioList(AudioObjectID object, AudioObjectPropertyAddress property) {
  static_assert(std::is_trivially_copyable_v<T>);
  UInt32 size = 0;
  if (AudioObjectGetPropertyDataSize(object, &property, 0, nullptr, &size) != noErr) return {};
  std::vector<T> values(size / sizeof(T));
  size = UInt32(values.size() * sizeof(T));
  if (AudioObjectGetPropertyData(object, &property, 0, nullptr, &size, values.data()) != noErr) return {};
  values.resize(size / sizeof(T)); // it may have become shorter
  return values;
}

template <class T>
bool writeAudio(AudioObjectID object, AudioObjectPropertyAddress property, const T& value) {
  static_assert(std::is_trivially_copyable_v<T>);
  return AudioObjectSetPropertyData(object, &property, 0, nullptr, sizeof(T), &value) == noErr;
}

bool isAudioSettable(AudioObjectID object, AudioObjectPropertyAddress property);
/// Empty without one.
std::string readAudioText(AudioObjectID object, AudioObjectPropertyAddress property);
/// kAudioObjectUnknown when no device has that uid.
AudioObjectID audioDeviceNamed(const std::string& uid);

} // namespace korvell

#pragma once
// Core Foundation's objects owned by C++, and as plain values.

#include "Base/Value.h"

#include <CoreFoundation/CoreFoundation.h>

#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace korvell {

/// One reference to a Core Foundation object, released at the end.
template <class Ref>
class CFOwned {
public:
  CFOwned() = default;
  /// Takes over a reference that the caller owns (functions named Create or Copy give one).
  explicit CFOwned(Ref owned) : ref_(owned) {}
  CFOwned(CFOwned&& other) noexcept : ref_(std::exchange(other.ref_, nullptr)) {}
  CFOwned& operator=(CFOwned&& other) noexcept {
    std::swap(ref_, other.ref_);
    return *this;
  }
  ~CFOwned() {
    if (ref_) CFRelease(ref_);
  }

  Ref get() const { return ref_; }
  /// For functions that hand out a reference through a pointer; only on an empty object.
  Ref* out() { return &ref_; }
  /// Hands the reference to the caller.
  Ref release() { return std::exchange(ref_, nullptr); }
  explicit operator bool() const { return ref_ != nullptr; }

private:
  Ref ref_ = nullptr;
};

/// The object itself when it is of the type asked for, else null.
template <class Ref>
Ref cfCast(CFTypeRef object, CFTypeID type) {
  return object && CFGetTypeID(object) == type ? static_cast<Ref>(object) : nullptr;
}

/// UTF-8; empty for null.
std::string cfText(CFStringRef text);
/// Null when the bytes are no UTF-8.
CFOwned<CFStringRef> cfString(std::string_view text);

/// Strings, numbers, booleans, dates, arrays and dictionaries with string keys; anything else, and what is
/// nested more than 512 deep, is null. Whole numbers are read as signed 64-bit.
Value cfValue(CFTypeRef object);
/// An object with these members only, those that are there.
Value cfValue(CFDictionaryRef dictionary, std::span<const std::string_view> keys);
/// The opposite; members and elements that are null are left out. Empty for null and for text that is no
/// UTF-8.
CFOwned<CFTypeRef> cfObject(const Value& value);

} // namespace korvell

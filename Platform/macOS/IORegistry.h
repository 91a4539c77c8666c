#pragma once
// Entries of the I/O registry and what they publish.

#include "Base/Value.h"

#include <IOKit/IOKitLib.h>

#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace korvell {

/// One reference to an object of the I/O Kit, released at the end.
class IOObject {
public:
  IOObject() = default;
  explicit IOObject(io_object_t owned) : object_(owned) {}
  IOObject(IOObject&& other) noexcept : object_(std::exchange(other.object_, IO_OBJECT_NULL)) {}
  IOObject& operator=(IOObject&& other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~IOObject() {
    if (object_ != IO_OBJECT_NULL) IOObjectRelease(object_);
  }

  io_object_t get() const { return object_; }
  /// For functions that hand out a reference through a pointer; only on an empty object.
  io_object_t* out() { return &object_; }
  explicit operator bool() const { return object_ != IO_OBJECT_NULL; }

private:
  io_object_t object_ = IO_OBJECT_NULL;
};

/// Every entry of a driver class, in the registry's order.
std::vector<IOObject> registryEntries(const char* matchingClass);

/// What an entry publishes under these names; null when its properties can't be read.
Value registryProperties(const IOObject& entry, std::span<const std::string_view> names);

} // namespace korvell

#include "Platform/macOS/IORegistry.h"

#include "Base/macOS/CoreFoundation.h"

namespace korvell {

std::vector<IOObject> registryEntries(const char* matchingClass) {
  std::vector<IOObject> entries;
  IOObject iterator;
  // Takes over the matching dictionary, also when it fails.
  if (IOServiceGetMatchingServices(kIOMainPortDefault, IOServiceMatching(matchingClass), iterator.out()) !=
      KERN_SUCCESS)
    return entries;
  while (auto entry = IOObject(IOIteratorNext(iterator.get()))) entries.push_back(std::move(entry));
  return entries;
}

Value registryProperties(const IOObject& entry, std::span<const std::string_view> names) {
  CFOwned<CFMutableDictionaryRef> properties;
  if (IORegistryEntryCreateCFProperties(entry.get(), properties.out(), nullptr, 0) != KERN_SUCCESS ||
      !properties)
    return {};
  return cfValue(properties.get(), names);
}

} // namespace korvell

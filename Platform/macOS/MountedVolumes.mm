#include "Platform/macOS/MountedVolumes.h"

#include "Base/macOS/CoreFoundation.h"

#import <Foundation/Foundation.h>

namespace korvell {

namespace {

std::string text(NSString* string) { return cfText((__bridge CFStringRef)string); }

std::optional<Volume> volume(NSURL* url, NSArray<NSURLResourceKey>* keys) {
  NSDictionary<NSURLResourceKey, id>* values = [url resourceValuesForKeys:keys error:nil];
  NSNumber* browsable = values[NSURLVolumeIsBrowsableKey];
  NSNumber* total = values[NSURLVolumeTotalCapacityKey];
  if (!browsable.boolValue || total.longLongValue <= 0) return std::nullopt;
  NSNumber* available = values[NSURLVolumeAvailableCapacityForImportantUsageKey];
  NSString* name = values[NSURLVolumeNameKey];
  return Volume{.name = text(name),
                .mountPoint = text(url.path),
                .total = total.longLongValue,
                .available = available.longLongValue};
}

} // namespace

std::vector<Volume> mountedVolumes() {
  std::vector<Volume> volumes;
  @autoreleasepool {
    NSArray<NSURLResourceKey>* keys = @[
      NSURLVolumeNameKey, NSURLVolumeTotalCapacityKey, NSURLVolumeAvailableCapacityForImportantUsageKey,
      NSURLVolumeIsBrowsableKey, NSURLVolumeIsInternalKey
    ];
    NSArray<NSURL*>* urls = [NSFileManager.defaultManager
        mountedVolumeURLsIncludingResourceValuesForKeys:keys
                                                options:NSVolumeEnumerationSkipHiddenVolumes];
    for (NSURL* url in urls)
      if (auto kept = volume(url, keys)) volumes.push_back(std::move(*kept));
  }
  return volumes;
}

} // namespace korvell

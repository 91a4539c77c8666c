#include "Platform/macOS/MacApplications.h"

#include "Base/macOS/CoreFoundation.h"

#import <AppKit/AppKit.h>

namespace korvell {

std::vector<RunningApplication> MacRunningApplications::list() {
  std::vector<RunningApplication> applications;
  @autoreleasepool {
    for (NSRunningApplication* application in NSWorkspace.sharedWorkspace.runningApplications) {
      NSString* path = application.bundleURL.path;
      if (path && application.processIdentifier > 0 && !application.terminated)
        applications.push_back(
            {.pid = application.processIdentifier, .bundlePath = cfText((__bridge CFStringRef)path)});
    }
  }
  return applications;
}

bool MacRunningApplications::quit(ProcessID pid, bool force) {
  @autoreleasepool {
    NSRunningApplication* application = [NSRunningApplication runningApplicationWithProcessIdentifier:pid];
    return force ? [application forceTerminate] : [application terminate];
  }
}

std::optional<std::string> macBundleInfo(const std::string& bundlePath, std::string_view key) {
  const CFOwned<CFURLRef> url(CFURLCreateFromFileSystemRepresentation(
      nullptr, reinterpret_cast<const UInt8*>(bundlePath.data()), CFIndex(bundlePath.size()), true));
  const CFOwned<CFBundleRef> bundle(url ? CFBundleCreate(nullptr, url.get()) : nullptr);
  const auto name = cfString(key);
  if (!bundle || !name) return std::nullopt;
  const auto text = cfCast<CFStringRef>(CFBundleGetValueForInfoDictionaryKey(bundle.get(), name.get()),
                                        CFStringGetTypeID());
  if (!text) return std::nullopt;
  return cfText(text);
}

} // namespace korvell

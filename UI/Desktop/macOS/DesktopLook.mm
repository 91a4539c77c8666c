#include "UI/Desktop/DesktopLook.h"

#import <AppKit/AppKit.h>

namespace korvell {

namespace {

DesktopWishes currentWishes() {
  NSAppearanceName name = [NSApp.effectiveAppearance
      bestMatchFromAppearancesWithNames:@[ NSAppearanceNameAqua, NSAppearanceNameDarkAqua ]];
  NSWorkspace* workspace = NSWorkspace.sharedWorkspace;
  return {.appearance =
              [name isEqualToString:NSAppearanceNameDarkAqua] ? Appearance::dark : Appearance::light,
          .highContrast = workspace.accessibilityDisplayShouldIncreaseContrast == YES,
          .reducedMotion = workspace.accessibilityDisplayShouldReduceMotion == YES,
          .ink = TrayInk::dark}; // a template image: the menu bar tints it
}

} // namespace

struct DesktopLook::Portal {
  explicit Portal(std::function<void(const DesktopWishes&)> changed) {
    const auto tell = ^(NSNotification*) {
      changed(currentWishes());
    };
    themes = [NSDistributedNotificationCenter.defaultCenter
        addObserverForName:@"AppleInterfaceThemeChangedNotification"
                    object:nil
                     queue:NSOperationQueue.mainQueue
                usingBlock:tell];
    options = [NSWorkspace.sharedWorkspace.notificationCenter
        addObserverForName:NSWorkspaceAccessibilityDisplayOptionsDidChangeNotification
                    object:nil
                     queue:NSOperationQueue.mainQueue
                usingBlock:tell];
    dispatch_async(dispatch_get_main_queue(), ^{
      tell(nil);
    });
  }
  ~Portal() {
    [NSDistributedNotificationCenter.defaultCenter removeObserver:themes];
    [NSWorkspace.sharedWorkspace.notificationCenter removeObserver:options];
  }

  id<NSObject> themes, options;
};

DesktopLook::DesktopLook(std::function<void(const DesktopWishes&)> changed)
    : portal_(std::make_unique<Portal>(std::move(changed))) {}
DesktopLook::~DesktopLook() = default;

} // namespace korvell

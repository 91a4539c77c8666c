#include "UI/Shell/Presence.h"

#import <AppKit/AppKit.h>

/// Takes the place of AppKit's own handler, from which the toolkit makes an activation like any other. That
/// one is in place when the launch has finished.
@interface KorvellReopening : NSObject
@property(nonatomic) korvell::Task reopened;
@end

@implementation KorvellReopening

- (void)takePlace {
  [NSAppleEventManager.sharedAppleEventManager setEventHandler:self
                                                   andSelector:@selector(reopen:withReplyEvent:)
                                                 forEventClass:kCoreEventClass
                                                    andEventID:kAEReopenApplication];
}

- (void)reopen:(NSAppleEventDescriptor*)event withReplyEvent:(NSAppleEventDescriptor*)reply {
  (void)event, (void)reply;
  self.reopened();
}

@end

namespace korvell {

struct Presence::Reopening {
  explicit Reopening(Task reopened) {
    handler.reopened = std::move(reopened);
    if (NSRunningApplication.currentApplication.finishedLaunching) [handler takePlace];
    [NSNotificationCenter.defaultCenter addObserver:handler
                                           selector:@selector(takePlace)
                                               name:NSApplicationDidFinishLaunchingNotification
                                             object:nil];
  }
  ~Reopening() {
    [NSNotificationCenter.defaultCenter removeObserver:handler];
    [NSAppleEventManager.sharedAppleEventManager removeEventHandlerForEventClass:kCoreEventClass
                                                                      andEventID:kAEReopenApplication];
  }

  KorvellReopening* handler = [KorvellReopening new];
};

Presence::Presence(Task reopened) : reopening_(std::make_unique<Reopening>(std::move(reopened))) {
  setHasWindow(false); // a program that is started out of a bundle has no standing at all yet
}
Presence::~Presence() = default;

void Presence::setHasWindow(bool hasWindow) {
  [NSApp setActivationPolicy:hasWindow ? NSApplicationActivationPolicyRegular
                                       : NSApplicationActivationPolicyAccessory];
}

void Presence::comeForward() { [NSApp activate]; }

bool Presence::sharesMenuBar() { return true; }

} // namespace korvell

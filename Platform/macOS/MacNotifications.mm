#include "Platform/macOS/MacNotifications.h"

#import <Foundation/Foundation.h>
#import <UserNotifications/UserNotifications.h>

@interface KorvellNotificationDelegate : NSObject <UNUserNotificationCenterDelegate>
@property(nonatomic) korvell::Notifications::OpenHandler onOpen;
@end

@implementation KorvellNotificationDelegate

// Also while one of our windows is in front.
- (void)userNotificationCenter:(UNUserNotificationCenter*)center
       willPresentNotification:(UNNotification*)notification
         withCompletionHandler:(void (^)(UNNotificationPresentationOptions))completionHandler {
  completionHandler(UNNotificationPresentationOptionBanner | UNNotificationPresentationOptionList);
}

- (void)userNotificationCenter:(UNUserNotificationCenter*)center
    didReceiveNotificationResponse:(UNNotificationResponse*)response
             withCompletionHandler:(void (^)(void))completionHandler {
  if (self.onOpen && [response.actionIdentifier isEqualToString:UNNotificationDefaultActionIdentifier])
    self.onOpen(response.notification.request.identifier.UTF8String);
  completionHandler();
}

@end

namespace korvell {

namespace {

/// Asking for the centre without a bundle identifier throws.
UNUserNotificationCenter* centre() {
  return NSBundle.mainBundle.bundleIdentifier ? UNUserNotificationCenter.currentNotificationCenter : nil;
}

NSString* text(const std::string& utf8) { return [NSString stringWithUTF8String:utf8.c_str()] ?: @""; }

} // namespace

struct MacNotifications::Delegate {
  KorvellNotificationDelegate* object = [KorvellNotificationDelegate new];
};

MacNotifications::MacNotifications() : delegate_(std::make_unique<Delegate>()) {}
MacNotifications::~MacNotifications() {
  if (centre().delegate == delegate_->object) centre().delegate = nil;
}

void MacNotifications::requestPermission() {
  [centre() requestAuthorizationWithOptions:UNAuthorizationOptionAlert | UNAuthorizationOptionSound
                          completionHandler:^(BOOL, NSError*){
                          }];
}

void MacNotifications::post(const Notification& notification) {
  @autoreleasepool {
    UNMutableNotificationContent* content = [UNMutableNotificationContent new];
    content.title = text(notification.title);
    content.body = text(notification.body);
    UNNotificationRequest* request =
        [UNNotificationRequest requestWithIdentifier:text(notification.identifier)
                                             content:content
                                             trigger:nil];
    [centre() addNotificationRequest:request withCompletionHandler:nil];
  }
}

void MacNotifications::setOpenHandler(OpenHandler handler) {
  delegate_->object.onOpen = std::move(handler);
  centre().delegate = delegate_->object;
}

} // namespace korvell

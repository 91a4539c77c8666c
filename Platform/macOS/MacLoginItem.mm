#include "Platform/macOS/MacLoginItem.h"

#include "Base/macOS/CoreFoundation.h"

#import <ServiceManagement/ServiceManagement.h>

namespace korvell {

bool MacLoginItem::isEnabled() const {
  return SMAppService.mainAppService.status == SMAppServiceStatusEnabled;
}

Outcome MacLoginItem::setEnabled(bool enabled) {
  SMAppService* service = SMAppService.mainAppService;
  NSError* error = nil;
  const BOOL worked =
      enabled ? [service registerAndReturnError:&error] : [service unregisterAndReturnError:&error];
  if (worked) return success();
  return Failure{cfText((__bridge CFStringRef)error.localizedDescription)};
}

} // namespace korvell

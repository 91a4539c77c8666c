// The helper daemon: listens on its service, lets in nobody but the application, answers with the usage of
// processes and ends when nobody has asked for a while; the system starts it again for the next request.

#include "Helper/Shared/RusageService.h"
#include "Helper/macOS/UsageReader.h"
#include "Platform/Formats/CodeRequirement.h"
#include "Platform/macOS/HelperChannel/CodeSignature.h"
#import "Platform/macOS/HelperChannel/RusageHelperProtocol.h"

#import <Foundation/Foundation.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <vector>

using namespace korvell;

namespace {

constexpr Seconds idleLimit{60};
constexpr Seconds idleCheck{15};

/// When a request last came, on the monotonic clock. Requests come on XPC's own threads.
std::atomic<double> lastRequest;

double now() { return SystemClock().monotonic().count(); }

} // namespace

@interface UsageExport : NSObject <RusageHelperProtocol, NSXPCListenerDelegate>
@end

@implementation UsageExport {
  std::unique_ptr<RusageService> _service;
}

- (instancetype)init {
  if ((self = [super init]))
    _service = std::make_unique<RusageService>(readUsage, [] { lastRequest = now(); });
  return self;
}

- (BOOL)listener:(NSXPCListener*)listener shouldAcceptNewConnection:(NSXPCConnection*)connection {
  connection.exportedInterface = [NSXPCInterface interfaceWithProtocol:@protocol(RusageHelperProtocol)];
  connection.exportedObject = self;
  [connection resume];
  return YES;
}

- (void)rusageForPIDs:(NSArray<NSNumber*>*)pids reply:(void (^)(NSData*))reply {
  std::vector<ProcessID> numbers;
  for (id pid in pids) {
    if (numbers.size() == RusageService::mostProcesses) break;
    if ([pid isKindOfClass:NSNumber.class]) numbers.push_back([pid intValue]);
  }
  const auto records = RusageSample::encode(_service->rusage(numbers));
  reply([NSData dataWithBytes:records.data() length:records.size()]);
}

@end

int main() {
  @autoreleasepool {
    const auto requirement = CodeRequirement::forApplication(ownTeamIdentifier());
    if (!requirement) return EXIT_FAILURE;
    lastRequest = now();
    static UsageExport* const usage = [[UsageExport alloc] init];
    static NSXPCListener* const listener =
        [[NSXPCListener alloc] initWithMachServiceName:@(helperIdentifier)];
    [listener setConnectionCodeSigningRequirement:@(requirement->c_str())];
    listener.delegate = usage;
    [listener resume];
    [NSTimer scheduledTimerWithTimeInterval:idleCheck.count()
                                    repeats:YES
                                      block:^(NSTimer*) {
                                        if (now() - lastRequest >= idleLimit.count()) std::exit(EXIT_SUCCESS);
                                      }];
    [NSRunLoop.mainRunLoop run];
  }
  return EXIT_SUCCESS;
}

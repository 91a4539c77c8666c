#include "Platform/macOS/MacUsageHelper.h"

#include "Base/Localization.h"
#include "Base/macOS/CoreFoundation.h"
#include "Platform/Formats/CodeRequirement.h"
#include "Platform/macOS/HelperChannel/CodeSignature.h"
#import "Platform/macOS/HelperChannel/RusageHelperProtocol.h"

#import <Foundation/Foundation.h>
#import <ServiceManagement/ServiceManagement.h>

#include <condition_variable>
#include <mutex>

namespace korvell {

namespace {

SMAppService* service() { return [SMAppService daemonServiceWithPlistName:@(helperLaunchList)]; }

Outcome outcome(BOOL succeeded, NSError* error) {
  if (succeeded) return success();
  return Failure{cfText((__bridge CFStringRef)error.localizedDescription)};
}

/// Wakes the thread that waits for an answer.
class Arrival {
public:
  void announce() {
    const std::lock_guard guard(lock_);
    arrived_ = true;
    condition_.notify_all();
  }
  void await(Seconds timeout) {
    std::unique_lock guard(lock_);
    condition_.wait_for(guard, timeout, [this] { return arrived_; });
  }

private:
  std::mutex lock_;
  std::condition_variable condition_;
  bool arrived_ = false;
};

/// Tells of the connection's loss as long as anybody cares.
class LossNotice {
public:
  explicit LossNotice(std::function<void()> lost) : lost_(std::move(lost)) {}
  void announce() {
    const std::lock_guard guard(lock_);
    if (const auto lost = std::exchange(lost_, nullptr)) lost();
  }
  void drop() {
    const std::lock_guard guard(lock_);
    lost_ = nullptr;
  }

private:
  std::recursive_mutex lock_; // what is told of the loss may destroy the connection
  std::function<void()> lost_;
};

class XPCConnection final : public UsageHelperConnection {
public:
  XPCConnection(const std::string& requirement, std::function<void()> lost)
      : loss_(std::make_shared<LossNotice>(std::move(lost))) {
    connection_ = [[NSXPCConnection alloc] initWithMachServiceName:@(helperIdentifier)
                                                           options:NSXPCConnectionPrivileged];
    connection_.remoteObjectInterface =
        [NSXPCInterface interfaceWithProtocol:@protocol(RusageHelperProtocol)];
    [connection_ setCodeSigningRequirement:@(requirement.c_str())];
    const std::weak_ptr<LossNotice> weak = loss_;
    connection_.invalidationHandler = ^{
      if (const auto loss = weak.lock()) loss->announce();
    };
    [connection_ resume];
  }
  ~XPCConnection() override {
    loss_->drop();
    [connection_ invalidate];
  }

  void request(std::span<const ProcessID> pids, Handler handler) override {
    NSMutableArray<NSNumber*>* numbers = [NSMutableArray arrayWithCapacity:pids.size()];
    for (const ProcessID pid : pids)
      [numbers addObject:@(pid)];
    arrival_ = std::make_shared<Arrival>();
    const auto arrival = arrival_;
    const auto give = std::make_shared<Handler>(std::move(handler));
    id<RusageHelperProtocol> proxy = [connection_ remoteObjectProxyWithErrorHandler:^(NSError*) {
      (*give)(std::nullopt);
      arrival->announce();
    }];
    [proxy rusageForPIDs:numbers
                   reply:^(NSData* data) {
                     const auto* bytes = static_cast<const std::uint8_t*>(data.bytes);
                     (*give)(std::vector<std::uint8_t>(bytes, bytes + data.length));
                     arrival->announce();
                   }];
  }

  void await(Seconds timeout) override {
    if (arrival_) arrival_->await(timeout);
  }

private:
  NSXPCConnection* connection_;
  std::shared_ptr<LossNotice> loss_;
  std::shared_ptr<Arrival> arrival_; ///< of the last request
};

} // namespace

UsageHelperStatus MacUsageHelper::status() {
  switch (service().status) {
  case SMAppServiceStatusEnabled:
    return UsageHelperStatus::enabled;
  case SMAppServiceStatusRequiresApproval:
    return UsageHelperStatus::requiresApproval;
  case SMAppServiceStatusNotFound:
    return UsageHelperStatus::notFound;
  case SMAppServiceStatusNotRegistered:
    break;
  }
  return UsageHelperStatus::notEnabled;
}

std::shared_ptr<UsageHelperConnection> MacUsageHelper::connect(std::function<void()> lost) {
  const auto requirement = CodeRequirement::forHelper(ownTeamIdentifier());
  if (!requirement) return nullptr;
  return std::make_shared<XPCConnection>(*requirement, std::move(lost));
}

bool MacUsageHelper::isOffered() { return ownTeamIdentifier().has_value(); }

Outcome MacUsageHelper::enable() {
  NSError* error = nil;
  const BOOL succeeded = [service() registerAndReturnError:&error];
  return outcome(succeeded, error);
}

Outcome MacUsageHelper::disable() {
  NSError* error = nil;
  const BOOL succeeded = [service() unregisterAndReturnError:&error];
  return outcome(succeeded, error);
}

void MacUsageHelper::openApprovalSettings() { [SMAppService openSystemSettingsLoginItems]; }

} // namespace korvell

#pragma once
// The usage helper on macOS: a daemon inside the application's bundle, registered with the service-management
// facility and reached over XPC. Both ends demand the other's signature.

#include "Platform/UsageHelper.h"

namespace korvell {

class MacUsageHelper final : public UsageHelperService {
public:
  UsageHelperStatus status() override;
  std::shared_ptr<UsageHelperConnection> connect(std::function<void()> lost) override;
  /// True for a copy that is signed by a team.
  bool isOffered() override;
  Outcome enable() override;
  Outcome disable() override;
  void openApprovalSettings() override;
};

} // namespace korvell

#pragma once
// The privileged helper as the system offers it: whether it is there and may be asked, how to reach it, how
// the user turns it on and off. It tells the usage of processes that the system hides from this user, and
// nothing else.
//
// What travels is portable and defined in Helper/Shared; when to ask and when to leave the helper alone is
// decided by Core/Machine/PrivilegedHelper, the only caller of connect().

#include "Base/Enum.h"
#include "Base/Result.h"
#include "Platform/ProcessTable.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace korvell {

enum class UsageHelperStatus {
  notEnabled,
  enabled,
  requiresApproval, ///< macOS: the user has to allow it in the system's settings
  notFound,         ///< the helper's program or description is missing from this copy
  notPermitted,     ///< Linux: it runs, but this user is not in its group
};

template <>
struct EnumTable<UsageHelperStatus> {
  static constexpr EnumCase<UsageHelperStatus> cases[] = {
      {UsageHelperStatus::notEnabled, "notEnabled", "Not enabled"},
      {UsageHelperStatus::enabled, "enabled", "Enabled"},
      {UsageHelperStatus::requiresApproval, "requiresApproval",
       "Waiting for approval in System Settings > Login Items"},
      {UsageHelperStatus::notFound, "notFound", "Helper missing from this copy of Korvell"},
      {UsageHelperStatus::notPermitted, "notPermitted", "Enabled, but not for this user"},
  };
};

/// The bytes of an answer, one packet of RusageSample records after the other; nothing when the helper
/// failed.
using UsageHelperAnswer = std::optional<std::vector<std::uint8_t>>;

/// One connection. Its owner asks one question at a time.
class UsageHelperConnection {
public:
  using Handler = std::function<void(UsageHelperAnswer)>;

  virtual ~UsageHelperConnection() = default;
  /// Sends a request and returns at once. The handler is called at most once, from any thread, perhaps before
  /// this returns, perhaps long after await(), perhaps never.
  virtual void request(std::span<const ProcessID> pids, Handler handler) = 0;
  /// Returns when the handler of the last request has been called, or when the time is over.
  virtual void await(Seconds timeout) = 0;
};

class UsageHelperService {
public:
  virtual ~UsageHelperService() = default;
  /// Takes at most a few milliseconds.
  virtual UsageHelperStatus status() = 0;
  /// Nothing when there is nobody to connect to. `lost` is called, from any thread, when the connection is of
  /// no further use; not before this returns and never after the connection is destroyed.
  virtual std::shared_ptr<UsageHelperConnection> connect(std::function<void()> lost) = 0;

  /// Whether it lies in the system, switched on or not.
  virtual bool isInstalled() {
    const auto now = status();
    return now != UsageHelperStatus::notFound && now != UsageHelperStatus::notEnabled;
  }
  /// The group whose members may ask, where the system has it: nobody takes it away. Empty otherwise.
  virtual std::string group() { return {}; }

  /// True when this copy may offer the helper. On macOS only a copy whose signature can be pinned does.
  virtual bool isOffered() = 0;
  /// Turns the helper on or off for good. Enabled may still mean that the user has to approve it.
  virtual Outcome enable() = 0;
  virtual Outcome disable() = 0;
  /// Shows the system's settings where the helper is approved; nothing where there are none.
  virtual void openApprovalSettings() = 0;
};

} // namespace korvell

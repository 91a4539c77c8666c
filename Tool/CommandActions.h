#pragma once
// How commands do what the user asks: through the running keeper, so that what it shows follows at once, or,
// where there is none, by themselves. Asks and waits on the main thread.

#include "App/Assembly.h"
#include "Platform/Attention.h"
#include "Tool/Command.h"
#include "Tool/HeadlessLoop.h"

#include <functional>
#include <memory>
#include <string>

namespace korvell {

class CommandActions {
public:
  enum class Where { keeperOrHere, here };
  CommandActions(Context& context, Where where);

  bool isKeepers() const { return isKeepers_; }
  /// What would be done, or why it can't be. A signal ends the wait.
  Result<DescribedAction> describe(const ActionRequest& request);
  /// Does it. A signal ends the wait, and the answer tells that nothing is known; with `interrupted`, which
  /// sees to it that the work ends, the first signal calls it instead and further ones change nothing.
  ActionAnswer perform(const ActionRequest& request, const Task& interrupted = {});
  /// Asks on the terminal; see confirmed(). Meanwhile a signal ends the process.
  [[nodiscard]] bool isConfirmed(const Arguments& arguments, std::string_view text);
  /// Of this process.
  StorageScanner& storage() { return storage_(); }

private:
  AppModel& model();
  std::unique_ptr<Actions> makeActions();
  /// What `begin` hands to its argument; `otherwise` when a signal ended the wait.
  template <class Told>
  Told wait(const std::function<void(std::function<void(const Told&)>)>& begin, Told otherwise,
            const Task& interrupted);

  Context& context_;
  Assembly assembly_;
  const FixedAttention unwatched_{false};
  HeadlessLoop loop_;
  const bool isKeepers_;
  const std::function<StorageScanner&()> storage_ = assembly_.lateStorageScanner(loop_.main());
  std::unique_ptr<AppModel> model_; ///< null until something is to be looked up
  std::unique_ptr<Actions> actions_;
};

/// What it touches, a line each behind the text, the first twenty of them; nothing of one thing only.
std::string withDetails(const ActionDescription& asked, std::string text);

/// Prints what became of it and returns the exit code. `problems` stand on standard error. The message is an
/// error when it did not work, unless it tells a sum.
enum class Telling { one, sum };
int tell(Context& context, const Arguments& arguments, const ActionDescription& asked,
         const ActionAnswer& answer, Telling telling = Telling::one);

} // namespace korvell

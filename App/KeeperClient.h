#pragma once
// Asks the running keeper, so that a terminal shows what the menu bar shows. Blocking; one thread at a time.
// The process ignores SIGPIPE.

#include "Base/Date.h"
#include "Base/Descriptor.h"
#include "Base/UserFolders.h"
#include "Base/Value.h"

#include <optional>
#include <string>

namespace korvell {

class KeeperClient {
public:
  /// Nothing when nobody listens, or when who does is another user. A keeper that could not say where it
  /// answers, for want of room on the disk, is looked for at its usual places.
  static std::optional<KeeperClient> connect(const UserFolders& folders);

  /// Nothing when no answer came within the time, when it is no JSON, or when the keeper has gone; the
  /// connection is of no more use then.
  std::optional<Value> ask(const Value& request, Seconds patience);
  /// The next line that a subscription brought.
  std::optional<Value> next(Seconds patience);
  /// Ends whatever waits for an answer; from any thread.
  void hangUp() const;

private:
  explicit KeeperClient(Descriptor socket) : socket_(std::move(socket)) {}
  bool send(std::string_view bytes, Seconds limit);
  std::optional<std::string> readLine(Seconds limit);
  bool waitFor(short events, Seconds limit) const;

  SystemClock clock_;
  Descriptor socket_; ///< open to the end: hangUp() must not meet another one's number
  bool isLost_ = false;
  std::string pending_; ///< received beyond the last line
};

} // namespace korvell

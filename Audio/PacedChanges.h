#pragma once
// Passes changes on, of each target at most 30 a second and always the last: a slider that is dragged tells
// more than a sound server should hear. The first of a row goes at once. Lives on the queue that it is given.

#include "Base/Queue.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace korvell {

/// Absent members stay as they are.
struct SoundChange {
  std::optional<double> volume = {};
  std::optional<bool> muted = {};
  bool operator==(const SoundChange&) const = default;
};

class PacedChanges {
public:
  static constexpr Seconds pause{1.0 / 30};
  using Send = std::function<void(const std::string& target, const SoundChange& change)>;

  PacedChanges(Queue& queue, Send send);

  void add(const std::string& target, const SoundChange& change);
  /// What has not gone yet.
  SoundChange waiting(const std::string& target) const;
  /// What still waits goes now.
  void finish();

private:
  struct Row {
    SoundChange waiting;
    Seconds next{0}; ///< when one may go
  };
  void pass();

  Queue& queue_;
  const Send send_;
  std::map<std::string, Row> rows_;
  std::unique_ptr<Timer> timer_;
};

} // namespace korvell

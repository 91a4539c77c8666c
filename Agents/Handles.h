#pragma once
// Handles: how a program names what it wants ended. A reading tool gives one out for exactly what it saw
// (processes with their start times, servers as they were listed); an acting tool takes it once, within ten
// minutes. Whoever invents or changes one has nothing. From any thread.

#include "Agents/Seal.h"
#include "App/ActionRequest.h"
#include "Base/Result.h"

#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace korvell {

/// What a handle stands for: exact requests, to be performed as they are.
struct HandleTarget {
  ActionRequest request;
  std::optional<ActionRequest> forced = {}; ///< the same at once, where that can be asked for

  std::string text() const; ///< all of it, to be signed
};

class Handles {
public:
  static constexpr Seconds lifetime{600};
  static constexpr std::size_t most = 4096; ///< the oldest make room

  /// The clock outlives it.
  explicit Handles(const Clock& clock) : clock_(clock) {}

  std::string give(HandleTarget target);
  /// What it stands for, for this action; it stays valid. Fails with a sentence that tells what to do
  /// instead.
  Result<HandleTarget> find(std::string_view handle, std::string_view action) const;
  /// From now on it stands for nothing.
  void use(std::string_view handle);
  const Seal& seal() const { return seal_; }

private:
  struct Given {
    std::string label;
    Seconds until;
    HandleTarget target;
  };
  const Given* given(std::string_view handle) const;
  void drop();

  const Clock& clock_;
  const Seal seal_;
  mutable std::mutex mutex_;
  std::deque<Given> given_; ///< the oldest first
};

} // namespace korvell

#pragma once
// Tells when one thing that an event loop runs keeps it from all others for too long, and what that was. It
// goes by what the thread computed and by what it waited for, not by the clock on the wall: a thread that
// gets no processor has nothing to be blamed for. Between two things the loop sleeps, and is not measured. On
// the loop's thread only.

#include "Base/ThreadMeter.h"

#include <functional>
#include <string>
#include <typeinfo>
#include <vector>

namespace korvell {

class StallWatch {
public:
  struct Stall {
    Seconds computing{}, waiting{};
    /// The path to the culprit, outermost first: each of them had more than half of the limit.
    std::vector<std::string> path;
  };
  struct Services {
    std::function<ThreadMeter::Times()> times;
    std::function<bool()>
        isMachineBusy; ///< asked only where it decides: what was waited for may have waited itself
    std::function<void(const Stall&)> tell;
  };

  StallWatch(Seconds limit, Services services) : limit_(limit), services_(std::move(services)) {}

  /// Something that runs, from the loop or from within another such thing. Names cost nothing until they are
  /// told.
  class Scope {
  public:
    Scope(StallWatch& watch, const std::type_info& type, std::string (*detail)(int) = nullptr,
          int number = 0);
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

  private:
    friend StallWatch;
    std::string name() const;

    StallWatch& watch_;
    Scope* const outer_;
    const std::type_info& type_;
    std::string (*const detail_)(int);
    const int number_;
    ThreadMeter::Times start_;
  };

  /// A loop within something that runs is about to sleep (a menu, a dialog): what ran so far counts, and then
  /// what that loop runs.
  void willSleep();
  void awoke();

  int stalls() const { return stalls_; }

private:
  void judge(const ThreadMeter::Times& spent);

  const Seconds limit_;
  const Services services_;
  Scope* innermost_ = nullptr;
  std::vector<std::string> path_; ///< innermost first
  int stalls_ = 0;
};

} // namespace korvell

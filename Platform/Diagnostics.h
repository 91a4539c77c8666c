#pragma once
// Where the figures come from and what they cost: what `korvell doctor` shows. Asked on demand, never by the
// sampling loop; an answer may take some milliseconds. One thread at a time.

#include "Base/Date.h"
#include "Base/Record.h"
#include "Platform/KnownParts.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace korvell {

struct SourceReport {
  enum class State {
    readable,
    missing, ///< this machine, or its kernel, has no such thing
    refused, ///< it is there but does not let itself be read
  };

  std::string name;   ///< what it tells, localised
  std::string source; ///< where it stands: a path or an interface
  State state = State::readable;
  std::string reason; ///< why it can't be read, or not wholly, a sentence, localised; else empty
  std::string remedy; ///< what it would take, a sentence, localised; empty when nothing would help
  std::optional<double> microseconds; ///< what one reading costs, measured just now; absent without one
  std::vector<KnownPart> parts;       ///< the figures of a measurement that come from it

  bool operator==(const SourceReport&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"name", &SourceReport::name},
                      Field{"source", &SourceReport::source},
                      Field{"state", &SourceReport::state},
                      Field{"reason", &SourceReport::reason},
                      Field{"remedy", &SourceReport::remedy},
                      Field{"microseconds", &SourceReport::microseconds, Unit::microseconds},
                      Field{"parts", &SourceReport::parts}};
  }
};

template <>
struct EnumTable<SourceReport::State> {
  using enum SourceReport::State;
  static constexpr EnumCase<SourceReport::State> cases[] = {{readable, "readable", "readable"},
                                                            {missing, "missing", "not there"},
                                                            {refused, "refused", "not readable"}};
};

/// Why a part of a measurement is not known: the reasons of its sources that can't be read. Empty when they
/// all can.
inline std::string reasonFor(KnownPart part, const std::vector<SourceReport>& sources) {
  std::string reasons;
  for (const auto& source : sources) {
    const bool isPart = std::find(source.parts.begin(), source.parts.end(), part) != source.parts.end();
    if (!isPart || source.state == SourceReport::State::readable || source.reason.empty()) continue;
    if (reasons.find(source.reason) != std::string::npos) continue; // two cards of one kind
    reasons += (reasons.empty() ? "" : " ") + source.reason;
  }
  return reasons;
}

/// What this process has used itself.
struct OwnUsage {
  double cpuSeconds = 0;      ///< user and system time of all its threads
  std::uint64_t resident = 0; ///< bytes of memory at this moment; 0 when unknown
};

class Diagnostics {
public:
  virtual ~Diagnostics() = default;
  virtual std::vector<SourceReport> sources() = 0;
  /// Only those that figures of a measurement come from, without the costs: for their reasons.
  virtual std::vector<SourceReport> figureSources() = 0;
  virtual OwnUsage ownUsage() = 0;
};

} // namespace korvell

#pragma once
// How the machine is doing beyond its counters: whether it is too hot, and how long it has been up.
//
// refresh() looks again and may take milliseconds (thermal sensors answer slowly): once a cycle, on the
// sampler's queue. Everything else may be called from any thread and answers at once with what the last
// refresh() found; before the first one the machine is cool.

#include "Base/Date.h"
#include "Base/Enum.h"

namespace korvell {

enum class ThermalState { nominal, fair, serious, critical };

template <>
struct EnumTable<ThermalState> {
  using enum ThermalState;
  static constexpr EnumCase<ThermalState> cases[] = {{nominal, "nominal", "Nominal"},
                                                     {fair, "fair", "Fair"},
                                                     {serious, "serious", "Serious"},
                                                     {critical, "critical", "Critical"}};
};

class MachineState {
public:
  virtual ~MachineState() = default;
  virtual void refresh() {}
  virtual ThermalState thermalState() const = 0;
  /// Since the machine was started.
  virtual Seconds uptime() const = 0;
};

} // namespace korvell

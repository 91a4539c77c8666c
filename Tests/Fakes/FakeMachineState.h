#pragma once
// A machine whose temperature and uptime the test sets.

#include "Platform/MachineState.h"

namespace korvell {

class FakeMachineState final : public MachineState {
public:
  ThermalState thermal = ThermalState::nominal;
  Seconds up{3600};
  int refreshes = 0;

  void refresh() override { ++refreshes; }
  ThermalState thermalState() const override { return thermal; }
  Seconds uptime() const override { return up; }
};

} // namespace korvell

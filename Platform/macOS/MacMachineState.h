#pragma once
// Temperature and uptime as the system tells them; both are kept by the system and answered at once.

#include "Platform/MachineState.h"

namespace korvell {

class MacMachineState final : public MachineState {
public:
  ThermalState thermalState() const override;
  Seconds uptime() const override;
};

} // namespace korvell

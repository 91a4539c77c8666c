#include "Platform/macOS/MacMachineState.h"

#import <Foundation/Foundation.h>

namespace korvell {

ThermalState MacMachineState::thermalState() const {
  switch (NSProcessInfo.processInfo.thermalState) {
  case NSProcessInfoThermalStateFair:
    return ThermalState::fair;
  case NSProcessInfoThermalStateSerious:
    return ThermalState::serious;
  case NSProcessInfoThermalStateCritical:
    return ThermalState::critical;
  default:
    return ThermalState::nominal;
  }
}

Seconds MacMachineState::uptime() const { return Seconds{NSProcessInfo.processInfo.systemUptime}; }

} // namespace korvell

#pragma once
// The controller and the sensor events of a Mac.

#include "Platform/TemperatureSources.h"

namespace korvell {

/// A connection to "AppleSMC"; null where there is none, or it does not open.
std::unique_ptr<ControllerTransport> openMacController();
/// The temperature services of the event system, whose functions are looked up at run time; null where one of
/// them is missing.
std::unique_ptr<TemperatureEvents> openMacTemperatureEvents();

} // namespace korvell

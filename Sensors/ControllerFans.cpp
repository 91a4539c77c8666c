#include "Sensors/ControllerFans.h"

#include "Sensors/SensorNames.h"

#include <algorithm>

namespace korvell {

namespace {

/// Keys number the fans with one hexadecimal digit.
constexpr int mostFans = 16;
/// A fan's description: type, zone, place and one byte in reserve, then its name filled up with blanks.
constexpr std::size_t descriptionName = 4;

std::string fanName(SMC& smc, const std::string& prefix, int number) {
  const auto description = smc.bytes(prefix + "ID");
  if (!description || description->type != "{fds" || description->bytes.size() <= descriptionName)
    return numberedFan(number);
  const auto& bytes = description->bytes;
  auto name = sensorText(
      {reinterpret_cast<const char*>(bytes.data()) + descriptionName, bytes.size() - descriptionName});
  return name.empty() ? numberedFan(number) : name;
}

} // namespace

std::vector<FanReading> controllerFans(SMC& smc) {
  std::vector<FanReading> fans;
  const int count = int(std::clamp(smc.value("FNum").value_or(0), 0.0, double(mostFans)));
  for (int i = 0; i < count; ++i) {
    const std::string prefix{'F', "0123456789ABCDEF"[i]};
    const auto rpm = smc.value(prefix + "Ac");
    if (!rpm || !isFanSpeed(*rpm)) continue;
    fans.push_back({prefix, fanName(smc, prefix, i + 1), *rpm, fanLimit(smc.value(prefix + "Mn")),
                    fanLimit(smc.value(prefix + "Mx"))});
  }
  return fans;
}

} // namespace korvell

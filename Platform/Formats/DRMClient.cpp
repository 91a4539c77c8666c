#include "Platform/Formats/DRMClient.h"

#include "Platform/Formats/TextScanner.h"

#include <algorithm>

namespace korvell {

namespace {

std::uint64_t bytesPer(std::string_view unit) {
  if (unit == "KiB") return 1024;
  if (unit == "MiB") return 1024 * 1024;
  return 1;
}

/// The rest of `key` behind `prefix` and before its colon; empty when it begins otherwise.
std::string_view nameBehind(std::string_view key, std::string_view prefix) {
  if (!key.starts_with(prefix) || !key.ends_with(':')) return {};
  key.remove_prefix(prefix.size());
  key.remove_suffix(1);
  return key;
}

} // namespace

std::optional<DRMClient> parseDRMClient(std::string_view fdinfo) {
  DRMClient client;
  bool hasID = false;
  std::map<std::string, std::uint64_t> capacities;
  TextScanner scanner(fdinfo);
  do {
    const auto key = scanner.word();
    if (!key.starts_with("drm-")) continue;
    if (key == "drm-pdev:") {
      client.device = scanner.word();
    } else if (key == "drm-client-id:") {
      client.id = scanner.number();
      hasID = true;
    } else if (const auto kind = nameBehind(key, "drm-engine-capacity-"); !kind.empty()) {
      capacities[std::string(kind)] = scanner.number();
    } else if (const auto engine = nameBehind(key, "drm-engine-"); !engine.empty()) {
      client.engineTime[std::string(engine)] = scanner.number();
    } else if (!nameBehind(key, "drm-resident-").empty()) {
      const auto amount = scanner.number();
      client.memory += amount * bytesPer(scanner.word());
    }
  } while (scanner.nextLine());
  if (!hasID || client.device.empty() || client.engineTime.empty()) return std::nullopt;
  for (auto& [engine, time] : client.engineTime)
    if (const auto capacity = capacities.find(engine); capacity != capacities.end())
      time /= std::max<std::uint64_t>(capacity->second, 1);
  return client;
}

} // namespace korvell

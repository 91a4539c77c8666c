#include "Core/Storage/ToolOutput.h"

#include "Base/Text.h"
#include "Base/Value.h"

#include <algorithm>
#include <cmath>

namespace korvell {
namespace {

constexpr std::size_t longestLine = std::size_t{64} << 10;
constexpr std::size_t longestListing = std::size_t{2} << 20;

/// Four of them add up within 64 bits.
constexpr double mostBytes = double(std::int64_t{1} << 60);

struct Unit {
  std::string_view name; ///< in lower case
  double bytes;
};

constexpr Unit units[] = {{"b", 1},
                          {"kb", 1e3},
                          {"mb", 1e6},
                          {"gb", 1e9},
                          {"tb", 1e12},
                          {"pb", 1e15},
                          {"kib", 1024},
                          {"mib", 1024. * 1024},
                          {"gib", 1024. * 1024 * 1024},
                          {"tib", 1024. * 1024 * 1024 * 1024}};

bool isIdentifier(std::string_view text) {
  return text.size() == 36 && text.find_first_not_of("0123456789abcdefABCDEF-") == std::string_view::npos;
}

bool isUnavailable(const Value& device) {
  if (const auto* available = device.find("isAvailable")) return available->asBool() == false;
  const auto* availability = device.find("availability"); // as older versions say it
  const auto* text = availability ? availability->asString() : nullptr;
  return text && text->find("unavailable") != std::string::npos;
}

} // namespace

std::int64_t dockerBytes(std::string_view text) {
  text = trimmed(text);
  const auto value = takeDecimal(text);
  const auto rest = lowercased(trimmed(text));
  const auto name = rest.substr(0, rest.find_first_not_of("abcdefghijklmnopqrstuvwxyz"));
  const auto* unit = std::ranges::find(units, name, &Unit::name);
  if (!value || unit == std::end(units)) return 0;
  const double bytes = *value * unit->bytes;
  return bytes <= mostBytes ? std::llround(bytes) : 0;
}

std::optional<DockerUsage> parseDockerUsage(std::string_view output) {
  constexpr std::pair<std::string_view, std::int64_t DockerUsage::*> rows[] = {
      {"Containers", &DockerUsage::containers},
      {"Build Cache", &DockerUsage::buildCache},
      {"Images", &DockerUsage::images},
      {"Local Volumes", &DockerUsage::volumes},
  };
  DockerUsage usage;
  bool useful = false;
  while (!output.empty()) {
    const auto line = output.substr(0, output.find('\n'));
    output.remove_prefix(std::min(output.size(), line.size() + 1));
    const auto row = line.size() <= longestLine ? parseJSON(line) : std::nullopt;
    const auto* type = row ? row->find("Type") : nullptr;
    const auto* size = row ? row->find("Reclaimable") : nullptr;
    if (!type || !size || !type->asString() || !size->asString()) continue;
    const auto* known = std::ranges::find(rows, *type->asString(), [](const auto& r) { return r.first; });
    if (known == std::end(rows)) continue;
    usage.*known->second = dockerBytes(*size->asString());
    useful = true;
  }
  return useful ? std::optional(usage) : std::nullopt;
}

std::vector<std::string> unavailableSimulators(std::string_view output) {
  std::vector<std::string> found;
  const auto document = output.size() <= longestListing ? parseJSON(output) : std::nullopt;
  const auto* runtimes = document ? document->find("devices") : nullptr;
  if (!runtimes || !runtimes->asObject()) return found;
  for (const auto& [runtime, devices] : *runtimes->asObject()) {
    if (!devices.asArray()) continue;
    for (const auto& device : *devices.asArray()) {
      const auto* udid = device.find("udid");
      if (udid && udid->asString() && isIdentifier(*udid->asString()) && isUnavailable(device))
        found.push_back(*udid->asString());
    }
  }
  return found;
}

} // namespace korvell

#include "Platform/Linux/NetworkLinks.h"

#include "Base/Localization.h"

#include <algorithm>

namespace korvell {

NetworkLinks::NetworkLinks(const std::string& proc, std::string sys)
    : counters_(proc + "/net/dev"), routes_(proc + "/net/route"), routes6_(proc + "/net/ipv6_route"),
      folder_(std::move(sys) + "/class/net/") {}

std::vector<InterfaceCounters> NetworkLinks::counters(FileReader& reader) {
  std::vector<InterfaceCounters> result;
  const auto text = counters_.read(reader);
  if (!text) return result;
  parseNetDev(*text, lines_);
  if (!isKnown()) learn();

  for (std::size_t i = 0; i < lines_.size(); ++i)
    if (known_[i].hardware || !anyHardware_)
      result.push_back({known_[i].name, known_[i].displayName, lines_[i].bytes});
  if (!anyHardware_) {
    const auto name = defaultInterface(reader);
    std::erase_if(result, [&](const InterfaceCounters& interface) { return interface.name != name; });
  }
  return result;
}

std::string NetworkLinks::defaultInterface(FileReader& reader) {
  if (const auto routes = routes_.read(reader))
    if (const auto name = parseDefaultRoute(*routes); !name.empty()) return std::string(name);
  const auto routes = routes6_.read(reader);
  return routes ? std::string(parseDefaultRoute6(*routes)) : std::string();
}

bool NetworkLinks::isKnown() const {
  return std::ranges::equal(lines_, known_, {}, &NetworkLine::name, &Known::name);
}

void NetworkLinks::learn() {
  known_.clear();
  for (const auto& line : lines_) {
    const std::string name(line.name);
    const std::string folder = folder_ + name;
    const bool wireless = exists(folder + "/wireless") || exists(folder + "/phy80211");
    const auto display = wireless ? "Wi-Fi" : name.starts_with("wwan") ? "Cellular" : "Ethernet";
    known_.push_back({name, localized(display), exists(folder + "/device")});
  }
  anyHardware_ = std::ranges::any_of(known_, &Known::hardware);
}

} // namespace korvell

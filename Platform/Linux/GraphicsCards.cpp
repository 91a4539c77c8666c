#include "Platform/Linux/GraphicsCards.h"

#include "Base/Text.h"
#include "Platform/Formats/Graphics.h"
#include "Platform/Formats/TextScanner.h"

#include <algorithm>

namespace korvell {

namespace {

constexpr std::uint16_t amdVendor = 0x1002, nvidiaVendor = 0x10de;

std::optional<std::uint64_t> number(FileReader& reader, const std::string& path) {
  const auto text = reader.read(path);
  return text ? parseInteger<std::uint64_t>(trimmed(*text)) : std::nullopt;
}

std::optional<std::uint16_t> pciNumber(FileReader& reader, const std::string& path) {
  const auto text = reader.read(path);
  return text ? parsePCINumber(*text) : std::nullopt;
}

/// "card0", but not its connectors ("card0-DP-1").
bool isCard(std::string_view name) {
  return name.starts_with("card") && parseInteger<int>(name.substr(4)).has_value();
}

bool mayBeAsleep(const std::string& folder, FileReader& reader) {
  const auto control = reader.read(folder + "/power/control");
  return control && trimmed(*control) == "auto";
}

/// Of the device's "uevent" text: its driver, its place on the bus.
std::string property(const std::string& folder, std::string_view key, FileReader& reader) {
  const auto text = reader.read(folder + "/uevent");
  for (const auto line : splitLines(text.value_or(std::string_view{})))
    if (line.starts_with(key)) return std::string(line.substr(key.size()));
  return {};
}
std::string driverName(const std::string& folder, FileReader& reader) {
  return property(folder, "DRIVER=", reader);
}
std::string pciAddress(const std::string& folder, FileReader& reader) {
  return property(folder, "PCI_SLOT_NAME=", reader);
}

} // namespace

GraphicsCards::GraphicsCards(std::string proc, std::string sys, std::vector<std::string> pciIDs,
                             std::string nvidiaLibrary)
    : proc_(std::move(proc)), sys_(std::move(sys)), pciIDs_(std::move(pciIDs)),
      nvidia_(std::move(nvidiaLibrary)), clients_(proc_) {}

void GraphicsCards::find(FileReader& reader) {
  cards_ = drmCards(reader);
  // NVIDIA's cards are found through its driver, which also knows those without a display interface.
  for (auto& card : nvidiaCards(reader)) cards_.push_back(std::move(card));
  if (std::ranges::find(cards_, Driver::i915, &Card::driver) != cards_.end()) clients_.find();
}

std::vector<GraphicsCards::Card> GraphicsCards::drmCards(FileReader& reader) const {
  std::vector<Card> cards;
  for (const auto& name : folderNames(sys_ + "/class/drm")) {
    if (!isCard(name)) continue;
    Card card{.folder = sys_ + "/class/drm/" + name + "/device"};
    const auto vendor = pciNumber(reader, card.folder + "/vendor");
    if (!vendor || *vendor == nvidiaVendor) continue;
    if (*vendor == amdVendor && exists(card.folder + "/gpu_busy_percent")) card.driver = Driver::amdgpu;
    if (driverName(card.folder, reader) == "i915") card.driver = Driver::i915;
    card.address = pciAddress(card.folder, reader);
    card.mayBeAsleep = mayBeAsleep(card.folder, reader);
    cards.push_back(std::move(card));
  }
  return cards;
}

std::vector<GraphicsCards::Card> GraphicsCards::nvidiaCards(FileReader& reader) const {
  std::vector<Card> cards;
  for (const auto& address : folderNames(proc_ + "/driver/nvidia/gpus")) {
    Card card{Driver::nvidia, sys_ + "/bus/pci/devices/" + address, address};
    card.mayBeAsleep = mayBeAsleep(card.folder, reader);
    cards.push_back(std::move(card));
  }
  return cards;
}

std::vector<GPUCounters> GraphicsCards::counters(FileReader& reader) {
  std::vector<GPUCounters> result;
  bool nvidiaAwake = false;
  for (const auto& card : cards_) {
    if (card.driver == Driver::other) continue;
    if (isAsleep(card, reader)) {
      result.push_back({.utilization = 0, .memoryInUse = 0});
      continue;
    }
    nvidiaAwake |= card.driver == Driver::nvidia;
    if (const auto reading = read(card, reader)) result.push_back(*reading);
  }
  if (!nvidiaAwake) nvidia_.release();
  return result;
}

std::optional<GPUCounters> GraphicsCards::read(const Card& card, FileReader& reader) {
  switch (card.driver) {
  case Driver::amdgpu:
    return amd(card, reader);
  case Driver::nvidia:
    return nvidia_.read(card.address);
  case Driver::i915:
    return intel(card, reader);
  case Driver::other:
    break;
  }
  return std::nullopt;
}

std::optional<GPUCounters> GraphicsCards::intel(const Card& card, FileReader& reader) {
  const auto& sums = clients_.read(reader);
  const auto sum = sums.find(card.address);
  if (sum == sums.end()) return std::nullopt;
  GPUCounters counters{.memoryInUse = sum->second.memory};
  for (const auto& [engine, time] : sum->second.engineTime)
    counters.engineTime.emplace(card.address + " " + engine, time);
  return counters;
}

bool GraphicsCards::isAsleep(const Card& card, FileReader& reader) const {
  if (!card.mayBeAsleep) return false;
  const auto status = reader.read(card.folder + "/power/runtime_status");
  return status && trimmed(*status) == "suspended";
}

std::optional<GPUCounters> GraphicsCards::amd(const Card& card, FileReader& reader) const {
  const auto busy = number(reader, card.folder + "/gpu_busy_percent");
  const auto own = number(reader, card.folder + "/mem_info_vram_used");
  const auto shared = number(reader, card.folder + "/mem_info_gtt_used");
  if (!busy && !own) return std::nullopt;
  GPUCounters counters;
  if (busy) counters.utilization = std::min(double(*busy), 100.0);
  if (own) counters.memoryInUse = *own + shared.value_or(0);
  return counters;
}

std::string GraphicsCards::cardName(const Card& card, FileReader& reader) const {
  if (card.driver == Driver::nvidia) {
    const auto information = reader.read(proc_ + "/driver/nvidia/gpus/" + card.address + "/information");
    return information ? parseNvidiaModel(*information) : std::string{};
  }
  if (const auto product = reader.read(card.folder + "/product_name"); product && !trimmed(*product).empty())
    return std::string(trimmed(*product));
  const auto vendor = pciNumber(reader, card.folder + "/vendor").value_or(0);
  const auto device = pciNumber(reader, card.folder + "/device").value_or(0);
  FileReader lists; // a megabyte, not to be kept
  for (const auto& path : pciIDs_) {
    const auto list = lists.read(path);
    if (!list) continue;
    if (auto name = pciDeviceName(*list, vendor, device); !name.empty()) return name;
  }
  return graphicsMaker(vendor);
}

std::string GraphicsCards::name(FileReader& reader) const {
  std::string all;
  for (const auto& card : cards_) {
    const auto name = cardName(card, reader);
    if (name.empty()) continue;
    if (!all.empty()) all += " + ";
    all += name;
  }
  return all;
}

} // namespace korvell

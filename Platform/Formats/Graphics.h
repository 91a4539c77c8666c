#pragma once
// Names of graphics cards on Linux.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace korvell {

/// "0x1002\n", as sysfs writes the numbers of a PCI device.
std::optional<std::uint16_t> parsePCINumber(std::string_view text);

/// The name of a device in the "pci.ids" list that distributions install, the one in brackets where the entry
/// has both a chip's and a card's name. Empty when the list does not know it.
std::string pciDeviceName(std::string_view pciIDs, std::uint16_t vendor, std::uint16_t device);

/// What to call a card that no list knows: its maker's graphics; empty for makers of no cards.
std::string graphicsMaker(std::uint16_t vendor);

/// "Model:" of /proc/driver/nvidia/gpus/*/information.
std::string parseNvidiaModel(std::string_view information);

} // namespace korvell

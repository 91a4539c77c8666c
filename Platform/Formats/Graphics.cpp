#include "Platform/Formats/Graphics.h"

#include "Base/Text.h"
#include "Platform/Formats/TextScanner.h"

#include <charconv>

namespace korvell {

namespace {

std::optional<std::uint16_t> hex(std::string_view digits) {
  std::uint16_t value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
  if (error != std::errc{} || end != digits.data() + digits.size() || digits.empty()) return std::nullopt;
  return value;
}

std::string inBrackets(std::string_view name) {
  const auto open = name.rfind('['), close = name.rfind(']');
  if (open == std::string_view::npos || close == std::string_view::npos || close < open)
    return std::string(name);
  return std::string(name.substr(open + 1, close - open - 1));
}

} // namespace

std::optional<std::uint16_t> parsePCINumber(std::string_view text) {
  text = trimmed(text);
  if (!text.starts_with("0x")) return std::nullopt;
  return hex(text.substr(2));
}

std::string pciDeviceName(std::string_view pciIDs, std::uint16_t vendor, std::uint16_t device) {
  // A maker stands at the beginning of its line, its devices are indented by one tab, their cards by two.
  TextScanner scanner(pciIDs);
  bool inVendor = false;
  do {
    const bool isDevice = scanner.accept("\t");
    if (isDevice && !inVendor) continue;
    if (scanner.accept("\t") || scanner.accept("#")) continue;
    const auto number = scanner.word();
    if (isDevice) {
      if (hex(number) == device) return inBrackets(scanner.restOfLine());
    } else if (!number.empty()) {
      if (inVendor) return {};
      inVendor = number.size() == 4 && hex(number) == vendor;
    }
  } while (scanner.nextLine());
  return {};
}

std::string graphicsMaker(std::uint16_t vendor) {
  switch (vendor) {
  case 0x1002:
    return "AMD Radeon";
  case 0x8086:
    return "Intel Graphics";
  case 0x10de:
    return "NVIDIA";
  default:
    return {};
  }
}

std::string parseNvidiaModel(std::string_view information) {
  TextScanner scanner(information);
  do {
    if (scanner.word() == "Model:") return std::string(scanner.restOfLine());
  } while (scanner.nextLine());
  return {};
}

} // namespace korvell

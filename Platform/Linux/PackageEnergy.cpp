#include "Platform/Linux/PackageEnergy.h"

#include "Base/Text.h"

#include <array>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace korvell {

namespace {

std::optional<std::uint64_t> readNumber(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return std::nullopt;
  std::array<char, 32> text;
  const auto bytes = read(file, text.data(), text.size());
  close(file);
  if (bytes <= 0) return std::nullopt;
  return parseInteger<std::uint64_t>(trimmed({text.data(), static_cast<std::size_t>(bytes)}));
}

/// "intel-rapl:0": a package. "intel-rapl:0:1" is a part of one, "intel-rapl-mmio:0" the same once more.
bool isPackage(const std::string& name) {
  constexpr std::string_view prefix = "intel-rapl:";
  return name.starts_with(prefix) && parseInteger<int>(std::string_view(name).substr(prefix.size()));
}

} // namespace

PackageEnergy::PackageEnergy(const std::string& sys) {
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(sys + "/class/powercap", error)) {
    if (!isPackage(entry.path().filename().string())) continue;
    const auto folder = entry.path().string();
    const auto range = readNumber(folder + "/max_energy_range_uj");
    if (range && readNumber(folder + "/energy_uj")) packages_.push_back({folder + "/energy_uj", *range, {}});
  }
}

std::optional<std::uint64_t> PackageEnergy::advance() {
  std::optional<std::uint64_t> total;
  for (auto& package : packages_) {
    const auto now = readNumber(package.counter);
    if (now && package.last) {
      const auto step = *now >= *package.last ? *now - *package.last : *now + package.range - *package.last;
      total = total.value_or(0) + step * 1000;
    }
    package.last = now;
  }
  return total;
}

} // namespace korvell

#include "UI/Pictures/IconTheme.h"

#include "Base/Files.h"
#include "Base/Text.h"
#include "Platform/Formats/KeyFile.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <limits>

namespace korvell {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t largestIndex = std::size_t{1} << 20;
constexpr std::size_t mostThemes = 20;
constexpr const char* fallback = "hicolor";

bool isFile(const std::string& path) {
  std::error_code error;
  return fs::is_regular_file(path, error);
}

/// A name is no path: entries come from anywhere.
bool isName(std::string_view text) {
  return !text.empty() && text.find('/') == std::string_view::npos && !text.starts_with('.');
}

/// Far within what an int holds, so that sizes and scales can be reckoned with.
int number(const KeyFile& index, const std::string& group, std::string_view key, int otherwise) {
  const auto value = index.last(group, key);
  constexpr int most = 1 << 16;
  return std::clamp(value ? parseInteger<int>(trimmed(*value)).value_or(otherwise) : otherwise, -most, most);
}

std::vector<std::string> list(const KeyFile& index, std::string_view key) {
  std::vector<std::string> parts;
  if (const auto value = index.last("Icon Theme", key))
    for (const auto part : split(*value, ','))
      if (const auto name = trimmed(part); !name.empty()) parts.emplace_back(name);
  return parts;
}

} // namespace

std::optional<std::string> entryIcon(std::string_view entry) {
  const auto file = KeyFile::parseDesktopEntry(entry);
  const auto icon = file.last("Desktop Entry", "Icon");
  if (!icon || icon->empty()) return std::nullopt;
  return std::string(*icon);
}

const IconTheme::Theme& IconTheme::theme(const std::string& name) {
  const auto [found, isNew] = themes_.try_emplace(name);
  auto& theme = found->second;
  if (!isNew) return theme;
  for (const auto& data : options_.dataFolders) {
    const auto place = data + "/icons/" + name;
    std::error_code error;
    if (!fs::is_directory(place, error)) continue;
    theme.places.push_back(place);
    if (!theme.folders.empty()) continue; // the first index counts for all places
    const auto text = readFile(place + "/index.theme", largestIndex);
    if (!text) continue;
    const auto index = KeyFile::parseDesktopEntry(*text);
    theme.inherits = list(index, "Inherits");
    for (const char* key : {"Directories", "ScaledDirectories"})
      for (const auto& folder : list(index, key)) {
        const int size = number(index, folder, "Size", 0), scale = number(index, folder, "Scale", 1);
        if (size <= 0 || size > 4096 || scale <= 0 || scale > 16) continue;
        const auto type = index.last(folder, "Type").value_or("Threshold");
        const int threshold = type == "Threshold" ? number(index, folder, "Threshold", 2) : 0;
        const bool isScalable = type == "Scalable";
        theme.folders.push_back(
            {folder, scale * (isScalable ? number(index, folder, "MinSize", size) : size - threshold),
             scale * (isScalable ? number(index, folder, "MaxSize", size) : size + threshold)});
      }
  }
  return theme;
}

std::vector<std::string> IconTheme::chain() {
  std::vector<std::string> names;
  const auto add = [&](const std::string& name) {
    if (isName(name) && std::ranges::find(names, name) == names.end() && names.size() < mostThemes)
      names.push_back(name);
  };
  add(options_.theme);
  for (std::size_t i = 0; i < names.size(); ++i)
    for (const auto& parent : theme(names[i]).inherits)
      if (parent != fallback) add(parent);
  add(fallback);
  return names;
}

/// One that is made for that size, or else the nearest: rather a larger one, which is made smaller.
std::optional<std::string> IconTheme::findIn(const Theme& theme, const std::string& name, int pixels) const {
  std::optional<std::string> best;
  int least = std::numeric_limits<int>::max();
  for (const auto& folder : theme.folders) {
    constexpr int smallerIsWorse = 4;
    const int distance = pixels < folder.least  ? folder.least - pixels
                         : pixels > folder.most ? (pixels - folder.most) * smallerIsWorse
                                                : 0;
    if (distance >= least) continue;
    for (const auto& place : theme.places)
      for (const auto& extension : options_.extensions) {
        const auto path = place + "/" + folder.name + "/" + name + "." + extension;
        if (distance >= least || !isFile(path)) continue;
        best = path;
        least = distance;
      }
    if (least == 0) break;
  }
  return best;
}

std::optional<std::string> IconTheme::find(const std::string& name, int pixels) {
  if (name.starts_with('/')) return isFile(name) ? std::optional(name) : std::nullopt;
  if (!isName(name)) return std::nullopt;
  // Some entries name a file: "app.png".
  auto stem = name;
  for (const auto& extension : options_.extensions)
    if (stem.ends_with("." + extension)) stem.resize(stem.size() - extension.size() - 1);
  for (const auto& each : chain())
    if (auto path = findIn(theme(each), stem, pixels)) return path;
  for (const auto& data : options_.dataFolders)
    for (const char* loose : {"/icons/", "/pixmaps/"})
      for (const auto& extension : options_.extensions)
        if (auto path = data + loose + stem + "." + extension; isFile(path)) return path;
  return std::nullopt;
}

} // namespace korvell

#include "Shared/HelpPages.h"

#include "Base/Localization.h"

#include <filesystem>

namespace korvell {

namespace fs = std::filesystem;

HelpPages::HelpPages(const std::string& program) {
  if (program.empty()) return;
  const auto beside = fs::path(program).parent_path();
  const bool isBundle = beside.filename() == "MacOS";
  folder_ = (beside.parent_path() / (isBundle ? "Resources/help" : "share/korvell/help")).string();
}

std::optional<std::string> HelpPages::page(std::string_view name) const {
  if (folder_.empty()) return std::nullopt;
  std::error_code error;
  for (const auto& language : {"/" + std::string(currentLanguage().code) + "/", std::string("/")})
    if (auto path = folder_ + language + std::string(name) + ".html"; fs::is_regular_file(path, error))
      return path;
  return std::nullopt;
}

} // namespace korvell

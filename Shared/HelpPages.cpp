#include "Shared/HelpPages.h"

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
  const auto path = folder_ + "/" + std::string(name) + ".html";
  std::error_code error;
  return !folder_.empty() && fs::is_regular_file(path, error) ? std::optional(path) : std::nullopt;
}

} // namespace korvell

#pragma once
// The help for users: pages that lie beside the program and open without a network. A page bears the raw
// value of the section that it is about, or one of the names below. English is there always; a page in the
// language in effect, in the folder of its code, comes first.

#include <optional>
#include <string>
#include <string_view>

namespace korvell {

class HelpPages {
public:
  static constexpr std::string_view index = "index", settings = "settings", widget = "widget";

  /// `program`: the running program's path; empty when unknown.
  explicit HelpPages(const std::string& program);
  /// The page's file; nothing where it is not installed.
  std::optional<std::string> page(std::string_view name) const;

private:
  std::string folder_;
};

} // namespace korvell

#pragma once
// One text that a user can attach to a question: what runs here, where the figures come from and what they
// cost, the settings that matter and the last errors. No project, file, machine, user or application is named
// in it: a text with a path outside the system's own folders is left out as a whole, and names that are known
// are taken out of what stays.
//
// Its labels are English in every language: they are for whoever answers.

#include "App/ErrorLog.h"
#include "Platform/Diagnostics.h"

#include <string>
#include <string_view>
#include <vector>

namespace korvell {

class SupportReport {
public:
  /// `names`: of the machine and its user. Those that stand in `system`, what the system calls itself, are
  /// many machines' and stay: "debian".
  SupportReport(Date written, std::vector<std::string> names, std::string_view system = {});

  void section(std::string_view title);
  void fact(std::string_view label, std::string_view text);
  void source(const SourceReport& source);
  void error(const LoggedError& error);

  const std::string& text() const { return text_; }

private:
  std::string nameless(std::string_view text) const;

  const std::vector<std::string> names_;
  std::string text_;
};

/// "940 µs", "2.3 ms"
std::string timeText(double microseconds);

} // namespace korvell

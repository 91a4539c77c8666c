#pragma once
// The score and the findings that lower it, as the panel and the Health page show them.

#include "App/Model.h"
#include "UI/Kit/Tone.h"
#include "UI/Parts/Step.h"

#include <optional>
#include <string>
#include <vector>

namespace korvell {

Tone toneOf(Insight::Severity severity);

struct FindingRow {
  Tone tone = Tone::info;
  int penalty = 0;
  std::string title, detail;
  std::optional<Step> fix;
  std::string name; ///< for screen readers

  bool operator==(const FindingRow&) const = default;
};

struct HealthHead {
  std::optional<int> score; ///< absent before the first report
  std::string label;        ///< "Good", "Good so far"
  std::string loss;         ///< "13 points lost to 3 findings", "Nothing to fix", "Measuring…"
  std::string average;      ///< "84 on average over 7 days"; empty while that is not known
  std::vector<FindingRow> findings;
  std::string name; ///< "Health 87 of 100, Good. 13 points lost to 3 findings."

  bool operator==(const HealthHead&) const = default;
};

/// `weekScore` is the score's mean over seven days, where the history has one.
HealthHead healthHead(const Model& model, std::optional<double> weekScore, bool hasBatterySettings);

} // namespace korvell

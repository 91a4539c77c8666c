#include "Core/AIUsage/PlanLimitAlerts.h"

#include "Base/Text.h"

namespace korvell {

namespace {

/// Two windows of one length, or of none, would replace each other's mark and alert by turns for ever.
std::string keyOf(const AICodexLimits& limits, bool isSecondary) {
  const auto minutes = (isSecondary ? limits.secondary : limits.primary)->windowMinutes;
  const bool isAlike =
      isSecondary && (minutes == 0 || (limits.primary && limits.primary->windowMinutes == minutes));
  return "aiPlanLimit.lastReset." + std::to_string(minutes) + (isAlike ? ".secondary" : "");
}

} // namespace

std::string resetText(const TimeZone& zone, Date date) {
  const auto time = localTime(zone, date);
  if (!currentLanguage().numbers.hasHalfDays) return weekdayName(time.weekday) + " " + clockText(zone, date);
  return weekdayName(time.weekday) + " " + halfDayText(time);
}

std::vector<AIPlanLimit> PlanLimitAlerts::markDue(const AICodexLimits& limits, Date now) {
  std::vector<AIPlanLimit> due;
  for (const auto* limit : {&limits.primary, &limits.secondary}) {
    // Written so that a figure that is no number alerts nobody.
    if (*limit && (*limit)->usedPercent >= alertPercent && (*limit)->resetsAt > now &&
        mark(keyOf(limits, limit == &limits.secondary), **limit))
      due.push_back(**limit);
  }
  return due;
}

std::vector<HealthAlert> PlanLimitAlerts::post(const std::vector<AIPlanLimit>& due, Date now) const {
  std::vector<HealthAlert> accepted;
  for (const auto& limit : due) {
    auto alert = this->alert(limit, now);
    if (seams_.post(alert)) accepted.push_back(std::move(alert));
  }
  return accepted;
}

/// False when it was marked before.
bool PlanLimitAlerts::mark(const std::string& key, const AIPlanLimit& limit) {
  const auto known = alerted_.find(key);
  if (known != alerted_.end() && known->second == limit.resetsAt) return false;
  if (seams_.defaults.number(key).value_or(0) == limit.resetsAt.sinceEpoch) return false;
  alerted_[key] = limit.resetsAt;
  (void)seams_.defaults.set(key, limit.resetsAt.sinceEpoch);
  return true;
}

HealthAlert PlanLimitAlerts::alert(const AIPlanLimit& limit, Date now) const {
  const auto percent = std::to_string(limit.wholePercent().value_or(0));
  const auto wording = [&] {
    // English alone writes the name of a limit small within a sentence.
    const auto name = currentLanguage().code == "en" ? lowercased(limit.name()) : limit.name();
    return Wording{localized("Codex {limit} limit at {percent}%", {{"limit", name}, {"percent", percent}}),
                   localized("Resets {time}.", {{"time", resetText(seams_.zone, limit.resetsAt)}})};
  };
  auto own = wording();
  return {.id = seams_.newID(),
          .kind = HealthAlert::Kind::aiPlanLimit,
          .appName = "Codex",
          .title = std::move(own.title),
          .detail = std::move(own.detail),
          .date = now,
          .wordings = wordingsOf(wording)};
}

} // namespace korvell

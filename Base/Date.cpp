#include "Base/Date.h"

#include "Base/Text.h"

#include <cmath>
#include <fmt/format.h>

namespace korvell {

Date SystemClock::now() const {
  return {std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count()};
}

std::string rfc3339(Date date) {
  using namespace std::chrono;
  constexpr double firstSecond = -62'167'219'200, lastSecond = 253'402'300'799.999;
  const double shown = std::fmin(std::fmax(date.sinceEpoch, firstSecond), lastSecond);
  const auto instant = sys_time<milliseconds>(milliseconds(std::llround(shown * 1000)));
  const auto day = floor<days>(instant);
  const year_month_day ymd(day);
  const hh_mm_ss time(instant - day);
  return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:03}Z", int(ymd.year()), unsigned(ymd.month()),
                     unsigned(ymd.day()), time.hours().count(), time.minutes().count(),
                     time.seconds().count(), time.subseconds().count());
}

namespace {

/// A fixed number of digits at the start of `text`, which moves past them.
std::optional<int> takeDigits(std::string_view& text, size_t count) {
  if (text.size() < count) return std::nullopt;
  for (char c : text.substr(0, count))
    if (c < '0' || c > '9') return std::nullopt;
  const auto value = parseInteger<int>(text.substr(0, count));
  text.remove_prefix(count);
  return value;
}

bool take(std::string_view& text, std::string_view anyOf) {
  if (text.empty() || anyOf.find(text.front()) == std::string_view::npos) return false;
  text.remove_prefix(1);
  return true;
}

/// Digits after a decimal point, as a fraction of one.
std::optional<double> takeFraction(std::string_view& text) {
  double fraction = 0, unit = 0.1;
  size_t digits = 0;
  for (; digits < text.size() && text[digits] >= '0' && text[digits] <= '9'; ++digits, unit /= 10)
    fraction += unit * (text[digits] - '0');
  if (digits == 0) return std::nullopt;
  text.remove_prefix(digits);
  return fraction;
}

/// "Z" or "+hh:mm", in seconds east of UTC; the whole rest of the text.
std::optional<int> takeOffset(std::string_view text) {
  if (text == "Z" || text == "z") return 0;
  const int sign = !text.empty() && text.front() == '-' ? -1 : 1;
  if (!take(text, "+-")) return std::nullopt;
  const auto hours = takeDigits(text, 2);
  if (!hours || !take(text, ":")) return std::nullopt;
  const auto minutes = takeDigits(text, 2);
  if (!minutes || !text.empty() || *hours > 23 || *minutes > 59) return std::nullopt;
  return sign * (*hours * 3600 + *minutes * 60);
}

} // namespace

std::optional<Date> parseRFC3339(std::string_view text) {
  using namespace std::chrono;
  const auto y = takeDigits(text, 4);
  if (!y || !take(text, "-")) return std::nullopt;
  const auto mo = takeDigits(text, 2);
  if (!mo || !take(text, "-")) return std::nullopt;
  const auto d = takeDigits(text, 2);
  if (!d || !take(text, "Tt ")) return std::nullopt;
  const auto h = takeDigits(text, 2);
  if (!h || !take(text, ":")) return std::nullopt;
  const auto mi = takeDigits(text, 2);
  if (!mi || !take(text, ":")) return std::nullopt;
  const auto s = takeDigits(text, 2);
  if (!s) return std::nullopt;
  double fraction = 0;
  if (take(text, ".")) {
    const auto digits = takeFraction(text);
    if (!digits) return std::nullopt;
    fraction = *digits;
  }
  const auto offset = takeOffset(text);
  const year_month_day ymd{year(*y), month(unsigned(*mo)), day(unsigned(*d))};
  if (!offset || !ymd.ok() || *h > 23 || *mi > 59 || *s > 60) return std::nullopt;
  const auto midnight = sys_days(ymd).time_since_epoch();
  return Date{double(duration_cast<seconds>(midnight).count() + *h * 3600 + *mi * 60 + *s - *offset) +
              fraction};
}

} // namespace korvell

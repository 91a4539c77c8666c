#include "Tool/Progress.h"

#include "Base/Format.h"
#include "Base/Text.h"

#include <algorithm>

namespace korvell {

void Progress::show(double fraction, std::string_view text) {
  if (!terminal_.isTerminal()) return;
  const auto now = clock_.monotonic();
  if (drawn_ && now - lastDrawn_ < Seconds(0.1)) return;
  lastDrawn_ = now;
  drawn_ = true;
  std::string line;
  if (fraction >= 0) line = bar(fraction, 24) + " " + Format::percent(std::min(fraction, 1.0) * 100) + "  ";
  // A line that wraps could not be taken away again.
  terminal_.write("\r\x1b[K" + fitted(line + escapedControls(text), std::max(0, terminal_.columns() - 1)));
  terminal_.flush();
}

void Progress::clear() {
  if (!drawn_) return;
  terminal_.write("\r\x1b[K");
  terminal_.flush();
  drawn_ = false;
}

} // namespace korvell

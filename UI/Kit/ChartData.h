#pragma once
// What a chart over time shows, as plain values. Percentages run from 0 to 100, memory is bytes in multiples
// of 1,024, rates are bytes a second, power is watts.

#include "Base/Date.h"
#include "UI/Kit/Token.h"

#include <optional>
#include <string>
#include <vector>

namespace korvell {

/// What the time axis spans; the live one moves.
enum class TimeAxis { live, hours12, hours24, days7, days30 };
enum class ValueScale { percent, memory, rate, watts };

/// A stretch of time and what its measurements come to.
struct ChartBucket {
  Date date; ///< when it begins
  double least = 0;
  double mean = 0;
  double most = 0;

  bool operator==(const ChartBucket&) const = default;
};

struct ChartLine {
  std::string name; ///< "Mean", "Read": in the legend; in the readout where there is more than one line
  Token token = Token::cpu;
  std::vector<ChartBucket> buckets; ///< ascending

  bool operator==(const ChartLine&) const = default;
};

/// A moment to remember, marked below the plot.
struct ChartEvent {
  enum class Kind { alert, cleanUp, start };
  Kind kind = Kind::alert;
  Date date;
  std::string title;

  bool operator==(const ChartEvent&) const = default;
};

struct ChartData {
  enum class State {
    measuring,  ///< nothing yet, but soon
    recorded,   ///< there may be gaps
    empty,      ///< nothing in this time; `sentence` and `detail` say so
    unreadable, ///< `sentence` says why
  };

  State state = State::measuring;
  TimeAxis time = TimeAxis::live;
  ValueScale scale = ValueScale::percent;
  Date begin, end;                ///< `end` is now
  Seconds bucket{0};              ///< how long one stands for; 0: an instant
  double total = 0;               ///< of memory: what there is
  std::vector<ChartLine> lines;   ///< one or two; the first one is filled
  std::vector<ChartEvent> events; ///< ascending
  std::string sentence, detail;
  std::string spoken; ///< the name for screen readers: "CPU, last 24 hours, mean 28, maximum 100 percent"

  bool operator==(const ChartData&) const = default;
};

/// A part of a whole, for a bar that is made of all of them.
struct CompositionPart {
  /// From full to nearly nothing: steps of one hue, the last one the ground with an outline.
  enum class Step { full, strong, half, faint, none };
  std::string name;
  std::string value; ///< as it is read: "7.21 GB"
  double amount = 0;
  Step step = Step::full;

  bool operator==(const CompositionPart&) const = default;
};

} // namespace korvell

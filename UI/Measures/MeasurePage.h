#pragma once
// What a measure's page shows beside its chart and its list of applications, as plain values made of the
// model: the figure of the moment, the facts beside it, what the measure is made of. A figure that was not
// read is "–".

#include "App/HistoryQueries.h"
#include "App/Model.h"
#include "App/TemperatureUnit.h"
#include "Platform/Diagnostics.h"
#include "UI/Kit/ChartData.h"
#include "UI/Kit/Figure.h"
#include "UI/Kit/Icon.h"
#include "UI/Kit/Tone.h"

#include <optional>
#include <string>
#include <vector>

namespace korvell {

struct MeasureFact {
  std::string caption;
  Figure figure;
  std::optional<Tone> tone{}; ///< its mark stands before the figure
  std::string reason{};       ///< why it is "–"

  bool operator==(const MeasureFact&) const = default;
};

struct CoreGroup {
  std::string title; ///< "Performance"; empty where all are alike
  int first = 0;     ///< the number of its first core
  std::vector<double> percent;

  bool operator==(const CoreGroup&) const = default;
};

struct VolumeRow {
  std::string name, mount;
  double used = 0;            ///< from 0 to 1
  std::optional<Tone> tone{}; ///< when little is free
  std::string free;           ///< "41.2 GB of 249 GB free"
  std::string spoken;

  bool operator==(const VolumeRow&) const = default;
};

struct DeviceRow {
  Icon icon = Icon::device;
  std::string name;
  int percent = 0;

  bool operator==(const DeviceRow&) const = default;
};

struct MeasurePage {
  Metric metric = Metric::cpu;
  std::string title;
  std::string lead; ///< before the figure of the moment, where there are two of a kind: "Read"
  Figure now;
  std::string nowReason;          ///< why it is "–"
  bool isMeasuring = false;       ///< the first seconds: nothing but that is a reason
  std::vector<MeasureFact> facts; ///< beside it
  std::vector<MeasureFact> range; ///< of the time that the chart shows
  std::string absent;             ///< "This machine has no battery."
  std::vector<CoreGroup> cores;
  std::vector<CompositionPart> composition;
  std::string footnote;
  std::optional<std::vector<VolumeRow>> volumes; ///< only on the disk's page
  std::vector<DeviceRow> devices;
  std::string finding; ///< what is wrong with the battery
  bool opensBatterySettings = false;

  bool operator==(const MeasurePage&) const = default;
};

/// What the model does not know.
struct MeasureBeside {
  std::optional<double> tenMinutes{};      ///< the processor's mean; absent until enough is recorded
  std::optional<SeriesSummary> summary{};  ///< over the chart's range
  HistoryRange range = HistoryRange::live; ///< of the chart
  TemperatureUnit temperatures = TemperatureUnit::celsius;
  std::vector<SourceReport> sources{}; ///< of the figures; empty until they were examined
};

/// Whether a figure is "–".
bool isIncomplete(const MeasurePage& page);

MeasurePage measurePage(const Model& model, Metric metric, const MeasureBeside& beside);

/// "24 hours"; "5 minutes" for the live range.
std::string rangeWords(HistoryRange range);

} // namespace korvell

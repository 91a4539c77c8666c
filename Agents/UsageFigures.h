#pragma once
// Applications and processes as programs are told of them: the figures that were read, and handles.

#include "Agents/Readings.h"
#include "Base/Record.h"
#include "Core/Machine/UsageOrder.h"

#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace korvell {

struct ProcessFigures {
  ProcessID pid = 0;
  std::string name;
  std::optional<std::string> path;
  double cpu = 0;
  std::uint64_t memory = 0;
  double diskRead = 0, diskWrite = 0;
  std::optional<double> netIn, netOut, power; ///< absent where nobody tells them
  std::vector<int> ports;
  std::optional<std::string> handle; ///< for quit_app

  static constexpr auto fields() {
    return std::tuple{Field{"pid", &ProcessFigures::pid},
                      Field{"name", &ProcessFigures::name},
                      Field{"path", &ProcessFigures::path},
                      Field{"cpu", &ProcessFigures::cpu, Unit::corePercent},
                      Field{"memory", &ProcessFigures::memory, Unit::memory},
                      Field{"diskRead", &ProcessFigures::diskRead, Unit::bytesPerSecond},
                      Field{"diskWrite", &ProcessFigures::diskWrite, Unit::bytesPerSecond},
                      Field{"netIn", &ProcessFigures::netIn, Unit::bytesPerSecond},
                      Field{"netOut", &ProcessFigures::netOut, Unit::bytesPerSecond},
                      Field{"power", &ProcessFigures::power, Unit::watts},
                      Field{"ports", &ProcessFigures::ports},
                      Field{"handle", &ProcessFigures::handle}};
  }
};

struct AppFigures {
  std::string app; ///< its key
  std::string name;
  double cpu = 0;
  std::uint64_t memory = 0;
  double diskRead = 0, diskWrite = 0;
  std::optional<double> netIn, netOut, power;
  std::uint32_t processCount = 0;
  std::optional<std::vector<ProcessFigures>> processes; ///< the largest; absent when not asked for
  std::optional<std::string> handle;

  static constexpr auto fields() {
    return std::tuple{Field{"app", &AppFigures::app},
                      Field{"name", &AppFigures::name},
                      Field{"cpu", &AppFigures::cpu, Unit::corePercent},
                      Field{"memory", &AppFigures::memory, Unit::memory},
                      Field{"diskRead", &AppFigures::diskRead, Unit::bytesPerSecond},
                      Field{"diskWrite", &AppFigures::diskWrite, Unit::bytesPerSecond},
                      Field{"netIn", &AppFigures::netIn, Unit::bytesPerSecond},
                      Field{"netOut", &AppFigures::netOut, Unit::bytesPerSecond},
                      Field{"power", &AppFigures::power, Unit::watts},
                      Field{"processCount", &AppFigures::processCount},
                      Field{"processes", &AppFigures::processes},
                      Field{"handle", &AppFigures::handle}};
  }
};

/// `seen`: when they were measured.
AppFigures figuresOf(const AppUsage& app, const KnownParts& known, Readings& readings, Date seen);
ProcessFigures figuresOf(const ProcessUsage& process, const KnownParts& known, Readings& readings, Date seen);

} // namespace korvell

#pragma once
// What was recorded, as programs are told of it.

#include "Base/Record.h"
#include "Core/History/HistoryTypes.h"

#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace korvell {

/// Means over a minute. The history keeps a zero for what nobody told as well: zeros are left out.
struct MinuteFigures {
  std::optional<double> cpu, memory, disk, network, gpu, energy, diskWrite;

  static constexpr auto fields() {
    return std::tuple{Field{"cpu", &MinuteFigures::cpu},
                      Field{"memory", &MinuteFigures::memory},
                      Field{"disk", &MinuteFigures::disk},
                      Field{"network", &MinuteFigures::network},
                      Field{"gpu", &MinuteFigures::gpu},
                      Field{"energy", &MinuteFigures::energy},
                      Field{"diskWrite", &MinuteFigures::diskWrite}};
  }
};

MinuteFigures figuresOf(const HistoryValues& values);

/// An application's mean over some time.
struct AppShare {
  std::string name;
  double value = 0;

  static constexpr auto fields() {
    return std::tuple{Field{"name", &AppShare::name}, Field{"value", &AppShare::value}};
  }
};

std::vector<AppShare> sharesOf(const std::vector<AppTotal>& totals);

} // namespace korvell

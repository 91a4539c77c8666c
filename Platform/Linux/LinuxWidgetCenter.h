#pragma once
// The widgets that run: each shows what is new by itself, so nothing has to be asked for.

#include "Platform/WidgetCenter.h"

#include <string>

namespace korvell {

class LinuxWidgetCenter final : public WidgetCenter {
public:
  explicit LinuxWidgetCenter(std::string folder) : folder_(std::move(folder)) {}
  void currentConfigurations(std::function<void(std::optional<std::size_t>)> answer) override;
  std::uint64_t stamp() const override;
  void reloadAllTimelines() override {}

private:
  const std::string folder_;
};

} // namespace korvell

#pragma once
// The widget framework, which only Swift can call: the two calls stand in WidgetCenterBridge.swift.

#include "Platform/WidgetCenter.h"

namespace korvell {

class MacWidgetCenter final : public WidgetCenter {
public:
  void currentConfigurations(std::function<void(std::optional<std::size_t>)> answer) override;
  void reloadAllTimelines() override;
};

} // namespace korvell

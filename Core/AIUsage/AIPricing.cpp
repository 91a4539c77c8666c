#include "Core/AIUsage/AIPricing.h"

#include "Base/Text.h"

namespace korvell {

namespace {

constexpr AIPricing::Entry prices[] = {{"claude-fable-5-1", {10, 50, 12.5, 20, 0.25}},
                                       {"claude-fable-5", {10, 50, 12.5, 20, 1}},
                                       {"claude-opus-5-5", {4, 20, 5, 8, 0.2}},
                                       {"claude-opus-5", {5, 25, 6.25, 10, 0.5}},
                                       {"claude-opus-4-8", {5, 25, 6.25, 10, 0.5}},
                                       {"claude-opus-4-7", {5, 25, 6.25, 10, 0.5}},
                                       {"claude-opus-4-6", {5, 25, 6.25, 10, 0.5}},
                                       {"claude-opus-4-5", {5, 25, 6.25, 10, 0.5}},
                                       {"claude-sonnet-5", {2, 10, 2.5, 4, 0.2}},
                                       {"claude-sonnet-4-6", {3, 15, 3.75, 6, 0.3}},
                                       {"claude-sonnet-4-5", {3, 15, 3.75, 6, 0.3}},
                                       {"claude-haiku-4-5", {1, 5, 1.25, 2, 0.1}},
                                       {"gpt-6-astra", {10, 50, 10, 10, 1}},
                                       {"gpt-6-sol", {2, 10, 2, 2, 0.2}},
                                       {"gpt-6-luna", {0.1, 0.5, 0.1, 0.1, 0.01}},
                                       {"gpt-5.6-sol", {4, 20, 4, 4, 0.4}},
                                       {"gpt-5.6-terra", {2, 12, 2, 2, 0.2}},
                                       {"gpt-5.6-luna", {0.2, 1.2, 0.2, 0.2, 0.02}},
                                       {"gpt-5.5", {5, 30, 5, 5, 0.5}},
                                       {"gpt-5.4", {2.5, 15, 2.5, 2.5, 0.25}},
                                       {"gpt-5.3-codex", {1.75, 14, 1.75, 1.75, 0.175}},
                                       {"gpt-5.1-codex-mini", {0.25, 2, 0.25, 0.25, 0.025}},
                                       {"gpt-5-codex", {1.25, 10, 1.25, 1.25, 0.125}}};

} // namespace

std::span<const AIPricing::Entry> AIPricing::table() { return prices; }

std::optional<AIPrice> AIPricing::price(std::string_view model) {
  const auto name = lowercased(model);
  const Entry* best = nullptr;
  for (const auto& entry : prices)
    if (name.starts_with(entry.model) && (!best || entry.model.size() > best->model.size())) best = &entry;
  return best ? std::optional(best->price) : std::nullopt;
}

} // namespace korvell

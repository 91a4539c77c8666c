#pragma once
// Those who want to be told of something, in the order in which they came. Belongs to one thread or queue.
//
// An observer lives as long as its Subscription. What has gone is forgotten before the next telling, and
// whenever there is no room left: views come and go for weeks over values that never change.

#include <cstddef>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace korvell {

/// Keeps an observer alive; destroying or resetting it ends the observation.
using Subscription = std::shared_ptr<void>;

template <class... Told>
class Observers {
public:
  using Observer = std::function<void(const Told&...)>;

  [[nodiscard]] Subscription add(Observer observer) {
    if (kept_.size() == kept_.capacity()) {
      forgetGone();
      kept_.reserve(kept_.size() * 2);
    }
    auto kept = std::make_shared<Observer>(std::move(observer));
    kept_.push_back(kept);
    return kept;
  }

  /// Observers may come and go meanwhile; those that come are told next time.
  void tell(const Told&... news) {
    forgetGone();
    const auto current = kept_;
    for (const auto& weak : current)
      if (auto observer = weak.lock()) (*observer)(news...);
  }

  /// How many are remembered, some of them gone.
  std::size_t size() const { return kept_.size(); }

private:
  void forgetGone() {
    std::erase_if(kept_, [](const auto& weak) { return weak.expired(); });
  }

  std::vector<std::weak_ptr<Observer>> kept_;
};

} // namespace korvell

#pragma once
// A value that tells its observers when it is set. Main thread only.
//
// Observers are called in the order in which they subscribed, with the new value already in place; they may
// subscribe and unsubscribe from inside a call. An observer lives as long as its Subscription.

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace korvell {

/// Keeps an observer alive; destroying or resetting it ends the observation.
using Subscription = std::shared_ptr<void>;

template <class T>
class Published {
public:
  using Observer = std::function<void(const T&)>;

  Published() = default;
  explicit Published(T value) : value_(std::move(value)) {}
  Published(const Published&) = delete;
  Published& operator=(const Published&) = delete;

  const T& get() const { return value_; }
  const T& operator*() const { return value_; }
  const T* operator->() const { return &value_; }

  void set(T value) {
    value_ = std::move(value);
    notify();
  }
  /// Publishes only a change.
  void setIfChanged(T value) {
    if (!(value_ == value)) set(std::move(value));
  }

  [[nodiscard]] Subscription observe(Observer observer) {
    auto kept = std::make_shared<Observer>(std::move(observer));
    observers_.push_back(kept);
    return kept;
  }

private:
  void notify() {
    std::erase_if(observers_, [](const auto& weak) { return weak.expired(); });
    auto current = observers_;
    for (const auto& weak : current)
      if (auto observer = weak.lock()) (*observer)(value_);
  }

  T value_{};
  std::vector<std::weak_ptr<Observer>> observers_;
};

} // namespace korvell

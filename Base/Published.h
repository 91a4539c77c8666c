#pragma once
// A value that tells its observers when it is set. Lives on one queue, the main one, and asserts it.
//
// Observers are called in the order in which they subscribed, with the new value already in place; they may
// subscribe and unsubscribe from inside a call. An observer lives as long as its Subscription. Values that
// belong together are set through a Publication: all of them are in place before anybody is told of one.

#include "Base/Observers.h"
#include "Base/Queue.h"

#include <cassert>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

namespace korvell {

template <class T>
class Published {
public:
  using Observer = typename Observers<T>::Observer;

  explicit Published(const Queue& queue, T value = {}) : queue_(queue), value_(std::move(value)) {}
  Published(const Published&) = delete;
  Published& operator=(const Published&) = delete;

  const T& get() const { return value_; }
  const T& operator*() const { return value_; }
  const T* operator->() const { return &value_; }
  /// Another number after each setting: for those who look instead of observing.
  std::uint64_t version() const { return version_; }

  void set(T value) {
    place(std::move(value));
    notify();
  }
  /// Publishes only a change.
  void setIfChanged(T value) {
    if (!(value_ == value)) set(std::move(value));
  }

  [[nodiscard]] Subscription observe(Observer observer) { return observers_.add(std::move(observer)); }

private:
  friend class Publication;

  void place(T value) {
    assert(queue_.isCurrent());
    value_ = std::move(value);
    ++version_;
  }
  void notify() { observers_.tell(value_); }

  const Queue& queue_;
  T value_;
  std::uint64_t version_ = 0;
  Observers<T> observers_;
};

/// Sets several values as one: observers are told when it ends, in the order of the settings.
class Publication {
public:
  Publication() = default;
  ~Publication() {
    for (const auto& notice : notices_) notice();
  }
  Publication(const Publication&) = delete;
  Publication& operator=(const Publication&) = delete;

  template <class T>
  void set(Published<T>& published, T value) {
    published.place(std::move(value));
    notices_.push_back([&published] { published.notify(); });
  }
  template <class T>
  void setIfChanged(Published<T>& published, T value) {
    if (!(*published == value)) set(published, std::move(value));
  }

private:
  std::vector<std::function<void()>> notices_;
};

} // namespace korvell

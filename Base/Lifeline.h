#pragma once
// How a late hand-off finds out that its owner has ended.
//
//   struct Model { Lifeline<Model> life{*this}; ... };
//   other.async([&main, watch = life.watch()] { main.async([watch] { if (auto* model = watch.get()) ... });
//   });
//
// Watches are copied to any thread; get() is asked on the owner's queue only, where the owner also ends.

#include <memory>

namespace korvell {

template <class Owner>
class Lifeline {
public:
  class Watch {
  public:
    /// The owner, or null once it has ended.
    Owner* get() const { return *owner_; }

  private:
    friend class Lifeline;
    explicit Watch(std::shared_ptr<Owner*> owner) : owner_(std::move(owner)) {}
    std::shared_ptr<Owner*> owner_;
  };

  explicit Lifeline(Owner& owner) : owner_(std::make_shared<Owner*>(&owner)) {}
  ~Lifeline() { cut(); }
  Lifeline(const Lifeline&) = delete;
  Lifeline& operator=(const Lifeline&) = delete;

  Watch watch() const { return Watch(owner_); }
  /// Ends it before the owner's other members go.
  void cut() { *owner_ = nullptr; }

private:
  std::shared_ptr<Owner*> owner_;
};

} // namespace korvell

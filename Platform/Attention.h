#pragma once
// Whether anybody is looking. The answer decides the pace of the sampling loop: `watch` is always watched, a
// headless run never is, the interface is while one of its windows is visible. Main thread only.

namespace korvell {

class Attention {
public:
  virtual ~Attention() = default;
  virtual bool isWatched() const = 0;
};

/// One answer for good.
class FixedAttention final : public Attention {
public:
  explicit FixedAttention(bool watched) : watched_(watched) {}
  bool isWatched() const override { return watched_; }

private:
  bool watched_;
};

} // namespace korvell

#include "UI/Kit/Pictures.h"

#include <cmath>
#include <utility>

namespace korvell {

Pictures::Pictures(Queue& main, QueueFactory makeQueue, MakeLoad makeLoad)
    : main_(main), makeQueue_(std::move(makeQueue)), makeLoad_(std::move(makeLoad)), arrivals_(main) {}

Pictures::~Pictures() = default;

QPixmap Pictures::find(const std::string& key, int size, double deviceRatio) {
  const Key wanted{key, int(std::lround(size * deviceRatio))};
  if (const auto found = found_.find(wanted); found != found_.end()) {
    auto picture = found->second;
    if (!picture.isNull()) picture.setDevicePixelRatio(deviceRatio);
    return picture;
  }
  if (found_.size() >= most) clear();
  found_.emplace(wanted, QPixmap());
  if (!queue_) {
    load_ = std::make_shared<Load>(makeLoad_());
    queue_ = makeQueue_("Korvell.pictures");
  }
  queue_->async([this, load = load_, wanted, generation = generation_, watch = life_.watch()] {
    auto picture = (*load)(wanted.first, wanted.second);
    if (picture.isNull()) return;
    main_.async([watch, wanted, generation, picture = std::move(picture)] {
      auto* self = watch.get();
      if (self && generation == self->generation_) self->take(wanted, picture);
    });
  });
  return {};
}

void Pictures::take(const Key& key, const QImage& picture) {
  found_[key] = QPixmap::fromImage(picture);
  arrivals_.set(*arrivals_ + 1);
}

void Pictures::clear() {
  found_.clear();
  ++generation_;
  queue_.reset();
  load_.reset();
}

} // namespace korvell

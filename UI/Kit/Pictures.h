#pragma once
// Pictures that are loaded when they are first asked for, away from the main thread: views show a stand-in
// until they are told. Main thread only.

#include "Base/Lifeline.h"
#include "Base/Published.h"
#include "Base/Queue.h"

#include <QImage>
#include <QPixmap>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace korvell {

class Pictures {
public:
  /// Past so many the cache begins anew.
  static constexpr std::size_t most = 400;
  /// Called on a queue of its own; a null picture for none.
  using Load = std::function<QImage(const std::string& key, int pixels)>;
  /// Makes what loads, when the first picture is asked for.
  using MakeLoad = std::function<Load()>;

  Pictures(Queue& main, QueueFactory makeQueue, MakeLoad makeLoad);
  ~Pictures();
  Pictures(const Pictures&) = delete;
  Pictures& operator=(const Pictures&) = delete;

  /// Of so many logical pixels a side; null for none, or none yet.
  QPixmap find(const std::string& key, int size, double deviceRatio);
  /// Told when pictures have come.
  [[nodiscard]] Subscription observe(std::function<void()> observer) {
    return arrivals_.observe([observer = std::move(observer)](int) { observer(); });
  }
  /// Forgets them all; they would be loaded again.
  void clear();

private:
  using Key = std::pair<std::string, int>; ///< and device pixels
  void take(const Key& key, const QImage& picture);

  Queue& main_;
  const QueueFactory makeQueue_;
  const MakeLoad makeLoad_;
  Published<int> arrivals_;
  std::map<Key, QPixmap> found_; ///< null: none, or on its way
  int generation_ = 0;           ///< answers of an earlier one come too late
  Lifeline<Pictures> life_{*this};
  std::unique_ptr<Queue> queue_; ///< null until the first
  std::shared_ptr<Load> load_;   ///< of that queue
};

} // namespace korvell

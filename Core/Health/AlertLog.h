#pragma once
// The alerts that were raised, kept from one start to the next in "alerts.json" in the data folder: one
// object whose member "alerts" is the list, the newest first.
//
// Called on the main thread; written on a queue of its own, "Korvell.alerts", whole each time, so that a
// crash leaves the old list or the new one. What a later version wrote stays in the file as it is: alerts of
// a kind that is not known here, and members beside those that are. A file that is damaged or far too large
// is put aside as "alerts-damaged-DATE.json"; one that can't be read is left alone and nothing is written.
// What can't be written now is written with the next alert, or at the end.

#include "Base/Queue.h"
#include "Base/Trouble.h"
#include "Core/Health/HealthAlert.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace korvell {

class AlertLog {
public:
  /// Takes a sentence with the file's path in it as it is; on any thread.
  using Tell = std::function<void(const Trouble&)>;
  static constexpr std::size_t mostEntries = 100; ///< with those of a later version

  /// `tell` hears what went wrong with the file, each trouble once until it has passed.
  AlertLog(const QueueFactory& makeQueue, const Clock& clock, const std::string& folder, Tell tell = {});
  ~AlertLog(); ///< waits for what is to be written
  AlertLog(const AlertLog&) = delete;
  AlertLog& operator=(const AlertLog&) = delete;

  /// What was kept, as far as it is understood; for the start, before anything is.
  std::vector<HealthAlert> load();
  /// The whole list, newest first, in place of what load() understood.
  void keep(const std::vector<HealthAlert>& alerts);

private:
  /// An entry of the file, with its position in time.
  struct Entry {
    Value raw;
    Date date;
    std::optional<HealthAlert> alert; ///< nothing when it is not understood
  };
  struct Writer;
  void putAside(const Trouble& trouble);

  const Clock& clock_;
  const std::string path_;
  const Tell tell_;
  Value document_ = Value::object({}); ///< as it was loaded
  std::vector<Entry> entries_;
  bool isLeftAlone_ = false;       ///< what is there could not be read: it must not be replaced
  std::unique_ptr<Writer> writer_; ///< of the queue
  std::unique_ptr<Queue> queue_;
};

} // namespace korvell

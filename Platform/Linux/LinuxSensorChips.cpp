#include "Platform/Linux/LinuxSensorChips.h"

#include <algorithm>
#include <chrono>

namespace korvell {

namespace {

/// So many quick readings in a row make a slow chip one that is read at once again.
constexpr int quickAgain = 10;

bool isSameChip(const FoundChip& a, const FoundChip& b) {
  return a.source == b.source && a.chip.driver == b.chip.driver && a.chip.device == b.chip.device;
}

} // namespace

LinuxSensorChips::LinuxSensorChips(const Clock& clock, QueueFactory makeQueue, LinuxSensorRoots roots,
                                   std::unique_ptr<SensorFiles> files)
    : clock_(clock), makeQueue_(std::move(makeQueue)), roots_(std::move(roots)), files_(std::move(files)),
      reader_(*files_, roots_.nvidiaLibrary) {}

LinuxSensorChips::~LinuxSensorChips() { queue_.reset(); }

std::vector<SensorChip> LinuxSensorChips::read(Seconds patience) {
  const Seconds now = clock_.monotonic();
  if (findSoon_.exchange(false) || !found_ || now - *found_ >= searchInterval) {
    find();
    found_ = now;
  }
  std::vector<std::shared_ptr<Chip>> quick, fresh, slow;
  {
    const std::lock_guard lock(mutex_);
    for (const auto& chip : chips_) {
      if (chip->speed == Speed::quick)
        quick.push_back(chip);
      else if (!chip->isUnderWay)
        (chip->speed == Speed::slow ? slow : fresh).push_back(chip);
    }
  }
  if (!queue_ && !(fresh.empty() && slow.empty())) queue_ = makeQueue_("Korvell.sensors");
  for (const auto& chip : fresh) readOn(*queue_, chip); // first: these are waited for
  for (const auto& chip : slow) readOn(*queue_, chip);
  for (const auto& chip : quick) readNow(*chip);
  awaitUnknown(patience);

  std::vector<SensorChip> values;
  bool allQuick = true;
  {
    const std::lock_guard lock(mutex_);
    for (const auto& chip : chips_) {
      values.push_back(chip->last);
      allQuick &= chip->speed == Speed::quick && !chip->isUnderWay;
    }
  }
  if (allQuick) queue_.reset();
  return values;
}

void LinuxSensorChips::find() {
  auto found = findChips(*files_, roots_.proc, roots_.sys);
  const std::lock_guard lock(mutex_);
  std::vector<std::shared_ptr<Chip>> chips;
  for (auto& each : found) {
    const auto known = std::ranges::find_if(
        chips_, [&](const std::shared_ptr<Chip>& chip) { return isSameChip(chip->found, each); });
    auto chip = std::make_shared<Chip>();
    chip->last = each.chip;
    chip->found = std::move(each);
    // Values and limits go on where the sensors are the same.
    if (known != chips_.end() && (*known)->found.chip == chip->found.chip) {
      chip->speed = (*known)->speed;
      chip->last = (*known)->last;
      chip->wasRead = (*known)->wasRead;
    }
    chips.push_back(std::move(chip));
  }
  chips_ = std::move(chips);
}

void LinuxSensorChips::readOn(Queue& queue, const std::shared_ptr<Chip>& chip) {
  {
    const std::lock_guard lock(mutex_);
    chip->isUnderWay = true;
  }
  queue.async([this, chip] { readNow(*chip); });
}

void LinuxSensorChips::readNow(Chip& chip) {
  std::optional<SensorChip> last;
  {
    const std::lock_guard lock(mutex_);
    if (chip.wasRead) last = chip.last;
  }
  const Seconds begin = clock_.monotonic();
  auto reading = reader_.read(chip.found, last ? &*last : nullptr);
  const bool wasSlow = clock_.monotonic() - begin > slowFrom;
  if (reading.state == ChipState::vanished) findSoon_ = true;
  {
    const std::lock_guard lock(mutex_);
    chip.wasRead |= reading.state == ChipState::read;
    chip.last = std::move(reading.chip);
    chip.isUnderWay = false;
    chip.quickTimes = wasSlow ? 0 : chip.quickTimes + 1;
    if (wasSlow)
      chip.speed = Speed::slow;
    else if (chip.speed == Speed::unknown || chip.quickTimes >= quickAgain)
      chip.speed = Speed::quick;
  }
  finished_.notify_all();
}

void LinuxSensorChips::awaitUnknown(Seconds patience) {
  std::unique_lock lock(mutex_);
  finished_.wait_for(lock, patience, [&] {
    return std::ranges::none_of(chips_, [](const std::shared_ptr<Chip>& chip) {
      return chip->isUnderWay && chip->speed == Speed::unknown;
    });
  });
}

} // namespace korvell

#include "Core/AIUsage/Accounting.h"

#include <algorithm>
#include <tuple>

namespace korvell {

namespace {

constexpr std::size_t smallestTable = 2'048;  ///< grows fourfold
constexpr std::size_t largestTable = 131'072; ///< a megabyte
constexpr std::size_t mostUnwritten = 32'768; ///< a quarter of a megabyte
constexpr std::size_t lookahead = 8;          ///< events
constexpr std::size_t mostPendingBytes = std::size_t{1} << 20;

// The high bits of a product depend on all bits of the key.
std::size_t slotOf(std::uint64_t key, std::size_t size) {
  return std::size_t((key * 0x9e3779b97f4a7c15) >> 40) & (size - 1);
}

} // namespace

SeenKeys::SeenKeys(UsageDatabase& database, std::string scanDay)
    : database_(database), scanDay_(std::move(scanDay)), anyStored_(database.hasSeenAny()),
      slots_(smallestTable) {}

/// The key's, or the free one where it belongs.
std::uint64_t& SeenKeys::slot(std::uint64_t key) {
  std::size_t at = slotOf(key, slots_.size());
  while (slots_[at] != 0 && slots_[at] != key) at = (at + 1) & (slots_.size() - 1);
  return slots_[at];
}

void SeenKeys::makeRoom() {
  if (slots_.size() < largestTable) {
    const auto previous = std::exchange(slots_, std::vector<std::uint64_t>(slots_.size() * 4));
    for (const auto key : previous)
      if (key != 0) slot(key) = key;
  } else {
    flush();
    anyStored_ = true;
    std::fill(slots_.begin(), slots_.end(), 0);
    used_ = 0;
  }
}

// Keys that are not new change nothing: how many of them come depends on the threads, and the portions must
// not.
bool SeenKeys::isFirstSighting(std::uint64_t key) {
  const bool isZero = key == 0; // which marks free slots
  if (isZero ? zeroSeen_ : slot(key) == key) return false;
  if (anyStored_ && database_.hasSeen(key)) return false;
  if (used_ * 2 >= slots_.size()) makeRoom();
  if (isZero) {
    zeroSeen_ = true;
  } else {
    slot(key) = key;
    ++used_;
  }
  unwritten_.push_back(std::int64_t(key));
  if (unwritten_.size() >= mostUnwritten) flush();
  return true;
}

void SeenKeys::prepare(std::uint64_t key) const {
  __builtin_prefetch(&slots_[slotOf(key, slots_.size())], 1);
}

void SeenKeys::flush() {
  std::sort(unwritten_.begin(), unwritten_.end());
  database_.addSeen(unwritten_, scanDay_);
  unwritten_.clear();
}

Accounting::Accounting(UsageDatabase& database, std::string scanDay, PlanReadings limits, Date now)
    : database_(database), seen_(database, std::move(scanDay)), limits_(limits),
      storedLimits_(std::move(limits)), now_(now) {
  limits_.advance(now);
}

void Accounting::merge(AITool tool, FileState& state, const EventBatch& batch) {
  for (std::size_t i = 0; i < batch.events.size(); ++i) {
    const auto& event = batch.events[i];
    if (i + lookahead < batch.events.size())
      if (const auto& key = batch.events[i + lookahead].key) seen_.prepare(*key);
    if (event.key && !seen_.isFirstSighting(*event.key)) continue;
    if (!event.counted) continue;
    if (event.namesProject) state.project = *event.project;
    ++records_;
    if (event.counts.total() < 1) continue;
    const auto* model = models_.intern(*event.model);
    const auto* project = projects_.intern(event.project ? *event.project : state.project);
    add({event.day, tool, model, project}, event.counts);
  }
  limits_.take(batch.limits, now_);
}

void Accounting::add(const Bucket& bucket, const Counts& counts) {
  pending_[bucket] += counts;
  const auto bytes = pending_.size() * sizeof(*pending_.begin()) + models_.bytes() + projects_.bytes();
  if (bytes > mostPendingBytes) flushUsage();
}

void Accounting::finishFile(const std::string& path, const FileState& state) {
  database_.saveFile(path, state);
  states_[path] = state;
}

void Accounting::flushUsage() {
  // In the table's order, which is faster, and the same whatever the addresses are.
  const auto key = [](const auto& row) {
    const auto& bucket = row->first;
    return std::tie(bucket.day.number, bucket.tool, *bucket.model, *bucket.project);
  };
  std::vector<const decltype(pending_)::value_type*> rows;
  rows.reserve(pending_.size());
  for (const auto& row : pending_) rows.push_back(&row);
  std::sort(rows.begin(), rows.end(), [&](auto* a, auto* b) { return key(a) < key(b); });
  for (const auto* row : rows) database_.addUsage(row->first, row->second);
  pending_.clear();
  models_.clear();
  projects_.clear();
}

void Accounting::flush() {
  flushUsage();
  seen_.flush();
  if (limits_ != storedLimits_) database_.saveLimits(limits_);
}

} // namespace korvell

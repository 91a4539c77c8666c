#include "Core/AIUsage/Accounting.h"

#include <algorithm>

namespace korvell {

namespace {

constexpr std::size_t smallestTable = 2'048;  ///< grows fourfold
constexpr std::size_t largestTable = 131'072; ///< a megabyte
constexpr std::size_t mostPendingBytes = std::size_t{1} << 20;

// The keys are hashes, but anyone can write a log: the product spreads chosen ones too.
std::size_t slotOf(std::uint64_t key, std::size_t size) {
  return std::size_t((key * 0x9e3779b97f4a7c15) >> 40) & (size - 1);
}

} // namespace

SeenKeys::SeenKeys(UsageDatabase& database, std::string scanDay)
    : database_(database), scanDay_(std::move(scanDay)), anyStored_(database.hasSeenAny()),
      slots_(smallestTable) {}

bool SeenKeys::insert(std::uint64_t key) {
  if (key == 0) return !std::exchange(zeroSeen_, true);
  std::size_t slot = slotOf(key, slots_.size());
  while (slots_[slot] != 0 && slots_[slot] != key) slot = (slot + 1) & (slots_.size() - 1);
  if (slots_[slot] == key) return false;
  slots_[slot] = key;
  ++used_;
  return true;
}

bool SeenKeys::isFirstSighting(std::uint64_t key) {
  if (anyStored_ && database_.hasSeen(key)) return false;
  if (!insert(key)) return false;
  if (used_ * 2 < slots_.size()) return true;
  if (slots_.size() >= largestTable) {
    flush();
    return true;
  }
  auto previous = std::exchange(slots_, std::vector<std::uint64_t>(slots_.size() * 4));
  used_ = 0;
  for (const auto old : previous)
    if (old != 0) insert(old);
  return true;
}

void SeenKeys::flush() {
  std::vector<std::int64_t> keys;
  keys.reserve(used_ + 1);
  for (auto& slot : slots_)
    if (slot != 0) keys.push_back(std::int64_t(std::exchange(slot, 0)));
  if (std::exchange(zeroSeen_, false)) keys.push_back(0);
  used_ = 0;
  std::sort(keys.begin(), keys.end());
  anyStored_ |= !keys.empty();
  database_.addSeen(keys, scanDay_);
}

Accounting::Accounting(UsageDatabase& database, std::string scanDay, std::optional<AICodexLimits> limits)
    : database_(database), seen_(database, std::move(scanDay)), limits_(limits),
      storedLimits_(std::move(limits)) {}

void Accounting::merge(AITool tool, FileState& state, const EventBatch& batch) {
  for (const auto& event : batch.events) {
    if (event.key && !seen_.isFirstSighting(*event.key)) continue;
    if (!event.counted) continue;
    if (event.namesProject) state.project = *event.project;
    add({event.day, tool, *event.model, event.project ? *event.project : state.project}, event.counts);
    ++records_;
  }
  if (batch.limits) keepNewer(limits_, *batch.limits);
}

void Accounting::add(const BucketView& bucket, const Counts& counts) {
  if (counts.total() < 1) return;
  if (const auto known = pending_.find(bucket); known != pending_.end()) {
    known->second += counts;
    return;
  }
  const auto entry = pending_.emplace(bucket, counts).first;
  pendingBytes_ += sizeof(*entry) + bucket.model.size() + bucket.project.size();
  if (pendingBytes_ > mostPendingBytes) flushUsage();
}

void Accounting::finishFile(const std::string& path, const FileState& state) {
  database_.saveFile(path, state);
  states_[path] = state;
}

void Accounting::flushUsage() {
  for (const auto& [bucket, counts] : pending_) database_.addUsage(bucket, counts);
  pending_.clear();
  pendingBytes_ = 0;
}

void Accounting::flush() {
  flushUsage();
  seen_.flush();
  if (limits_ && limits_ != storedLimits_) database_.saveLimits(*limits_);
}

} // namespace korvell

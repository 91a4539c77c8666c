#include "Agents/Handles.h"

#include <algorithm>

namespace korvell {

namespace {

constexpr char separator = '.'; // neither label nor seal has one

} // namespace

std::string HandleTarget::text() const {
  return dumpJSON(toValue(request)) + (forced ? dumpJSON(toValue(*forced)) : std::string());
}

std::string Handles::give(HandleTarget target) {
  const auto label = randomLabel();
  auto handle = label + separator + seal_.of({label, target.text()});
  const std::lock_guard lock(mutex_);
  drop();
  given_.push_back({label, clock_.monotonic() + lifetime, std::move(target)});
  return handle;
}

void Handles::drop() {
  const auto now = clock_.monotonic();
  while (!given_.empty() && (given_.size() >= most || given_.front().until <= now)) given_.pop_front();
}

const Handles::Given* Handles::given(std::string_view handle) const {
  const auto place = handle.find(separator);
  if (place == std::string_view::npos) return nullptr;
  const auto label = handle.substr(0, place), seal = handle.substr(place + 1);
  const auto found = std::ranges::find(given_, label, &Given::label);
  const bool isGiven = found != given_.end() && seal_.isGenuine(seal, {label, found->target.text()});
  return isGiven && clock_.monotonic() < found->until ? &*found : nullptr;
}

Result<HandleTarget> Handles::find(std::string_view handle, std::string_view action) const {
  const std::lock_guard lock(mutex_);
  const auto* found = given(handle);
  if (!found)
    return Failure{"The handle is unknown, used or older than ten minutes. List again and take the new one."};
  if (actionName(found->target.request) != action)
    return Failure{"The handle stands for something else. Take the one that the list gives for this."};
  return found->target;
}

void Handles::use(std::string_view handle) {
  const std::lock_guard lock(mutex_);
  if (const auto* found = given(handle))
    std::erase_if(given_, [label = found->label](const Given& other) { return other.label == label; });
}

} // namespace korvell

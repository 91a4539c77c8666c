#include "Base/StallWatch.h"

#include <algorithm>
#include <cstdlib>
#include <cxxabi.h>
#include <memory>

namespace korvell {

namespace {

std::string readable(const std::type_info& type) {
  int status = 0;
  const std::unique_ptr<char, void (*)(void*)> name(
      abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), std::free);
  return name ? name.get() : type.name();
}

ThreadMeter::Times operator-(const ThreadMeter::Times& a, const ThreadMeter::Times& b) {
  return {.computing = a.computing - b.computing, .waiting = a.waiting - b.waiting};
}

} // namespace

StallWatch::Scope::Scope(StallWatch& watch, const std::type_info& type, std::string (*detail)(int),
                         int number)
    : watch_(watch), outer_(std::exchange(watch.innermost_, this)), type_(type), detail_(detail),
      number_(number), start_(watch.services_.times()) {}

StallWatch::Scope::~Scope() {
  watch_.innermost_ = outer_;
  const auto spent = watch_.services_.times() - start_;
  if (spent.computing + spent.waiting > watch_.limit_ / 2) watch_.path_.push_back(name());
  if (!outer_) watch_.judge(spent);
}

std::string StallWatch::Scope::name() const {
  return detail_ ? readable(type_) + " " + detail_(number_) : readable(type_);
}

void StallWatch::judge(const ThreadMeter::Times& spent) {
  const auto path = std::exchange(path_, {});
  if (spent.computing + spent.waiting <= limit_) return;
  if (spent.computing <= limit_ && services_.isMachineBusy()) return;
  ++stalls_;
  services_.tell(
      {.computing = spent.computing, .waiting = spent.waiting, .path = {path.rbegin(), path.rend()}});
}

void StallWatch::willSleep() {
  if (!innermost_) return;
  Scope* outermost = innermost_;
  while (outermost->outer_) outermost = outermost->outer_;
  path_.push_back(outermost->name());
  judge(services_.times() - outermost->start_);
}

void StallWatch::awoke() {
  const auto now = services_.times();
  for (auto* scope = innermost_; scope; scope = scope->outer_) scope->start_ = now;
}

} // namespace korvell

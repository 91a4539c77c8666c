#pragma once
// Settings in memory. Two of them over the same store see what the other wrote, as two processes do.

#include "Platform/UserDefaults.h"

#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace korvell {

class FakeUserDefaults final : public UserDefaults {
public:
  struct Store {
    std::mutex mutex;
    std::map<std::string, Value, std::less<>> values;
  };

  explicit FakeUserDefaults(std::shared_ptr<Store> store = std::make_shared<Store>())
      : store_(std::move(store)) {}

  bool readOnly = false;            ///< as on a full disk: nothing can be stored
  std::optional<std::string> fault; ///< what is stored can't be read
  std::vector<std::string> changed; ///< the keys of the changes that were asked for, in their order
  std::function<void()> onChange;   ///< called at each of them, where it happens

  std::optional<Value> value(std::string_view key) const override {
    const std::lock_guard lock(store_->mutex);
    return find(key);
  }

  bool update(std::string_view key,
              const std::function<std::optional<Value>(std::optional<Value>)>& change) override {
    const std::lock_guard lock(store_->mutex);
    changed.emplace_back(key);
    if (onChange) onChange();
    auto value = change(find(key));
    if (readOnly || fault) return false;
    if (value && !value->isNull())
      store_->values.insert_or_assign(std::string(key), std::move(*value));
    else
      store_->values.erase(std::string(key));
    return true;
  }

  std::optional<std::string> trouble() const override { return fault; }
  std::string place() const override { return "memory"; }

private:
  std::optional<Value> find(std::string_view key) const {
    const auto found = store_->values.find(key);
    if (found == store_->values.end()) return std::nullopt;
    return found->second;
  }

  std::shared_ptr<Store> store_;
};

} // namespace korvell

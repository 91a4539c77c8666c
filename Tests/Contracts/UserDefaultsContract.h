#pragma once
// The contract of UserDefaults. Instantiate it with a maker of worlds; each test gets an empty store.

#include "Platform/UserDefaults.h"

#include <cstdint>
#include <gmock/gmock.h>
#include <memory>
#include <thread>

namespace korvell {

struct UserDefaultsWorld {
  virtual ~UserDefaultsWorld() = default;
  /// Another view of the same store, as another process has.
  virtual std::unique_ptr<UserDefaults> open() = 0;
};

using UserDefaultsWorldMaker = std::function<std::unique_ptr<UserDefaultsWorld>()>;

class UserDefaultsContract : public testing::TestWithParam<UserDefaultsWorldMaker> {
protected:
  std::unique_ptr<UserDefaultsWorld> world = GetParam()();
  std::unique_ptr<UserDefaults> defaults = world->open();
  std::unique_ptr<UserDefaults> other = world->open();
};

TEST_P(UserDefaultsContract, valuesComeBackAsTheyWere) {
  const Value list(Value::Array{1, "two", Value(Value::Array{})});
  for (const auto& value :
       {Value(true), Value(std::int64_t{INT64_MAX}), Value(std::int64_t{INT64_MIN}), Value(0.1),
        Value(-1.5e300), Value(""), Value("line\nbreak \"quoted\" \\ ä € 🙂"), list,
        Value::object({{"bytes", std::int64_t{1} << 40}, {"list", list}})}) {
    EXPECT_TRUE(defaults->set("group.key", value));
    EXPECT_EQ(other->value("group.key"), value);
  }
  const Date date{1'772'366'400.125};
  EXPECT_TRUE(defaults->set("group.date", date));
  EXPECT_EQ(other->date("group.date"), date);
}

TEST_P(UserDefaultsContract, aValueOfAnotherTypeCountsAsAbsent) {
  EXPECT_FALSE(defaults->value("absent"));
  defaults->set("text", "1");
  defaults->set("one", 1);
  defaults->set("half", 0.5);
  EXPECT_TRUE(defaults->boolean("absent", true));
  EXPECT_TRUE(defaults->boolean("one", true)) << "a number is no boolean";
  EXPECT_FALSE(defaults->boolean("text", false));
  EXPECT_FALSE(defaults->integer("text"));
  EXPECT_FALSE(defaults->integer("half"));
  EXPECT_FALSE(defaults->date("one"));
  EXPECT_FALSE(defaults->string("one"));
  EXPECT_EQ(defaults->number("one"), 1.0);
}

TEST_P(UserDefaultsContract, aChangeSeesWhatOthersStored) {
  EXPECT_TRUE(defaults->set("count", 1));
  EXPECT_TRUE(other->update("count", [](std::optional<Value> stored) -> std::optional<Value> {
    return Value(stored->asInt().value() + 1);
  }));
  EXPECT_EQ(defaults->integer("count"), 2);
  EXPECT_TRUE(other->set("second", "kept"));
  EXPECT_TRUE(defaults->remove("count"));
  EXPECT_TRUE(defaults->remove("count")) << "removing what is absent is no failure";
  EXPECT_FALSE(other->value("count"));
  EXPECT_EQ(defaults->string("second"), "kept");
}

TEST_P(UserDefaultsContract, threadsDoNotLoseEachOthersChanges) {
  const auto count = [](UserDefaults& view, const char* own) {
    for (int i = 1; i <= 12; ++i) {
      EXPECT_TRUE(view.update("shared", [](std::optional<Value> stored) -> std::optional<Value> {
        return Value(stored ? stored->asInt().value() + 1 : 1);
      }));
      EXPECT_TRUE(view.set(own, i));
    }
  };
  std::thread thread([&] { count(*other, "other"); });
  count(*defaults, "own");
  thread.join();
  EXPECT_EQ(defaults->integer("shared"), 24);
  EXPECT_EQ(defaults->integer("own"), 12);
  EXPECT_EQ(defaults->integer("other"), 12);
}

} // namespace korvell

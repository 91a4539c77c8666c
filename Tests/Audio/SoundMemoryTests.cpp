#include "Audio/SoundMemory.h"
#include "Tests/Fakes/FakeUserDefaults.h"

#include <gtest/gtest.h>

namespace korvell {
namespace {

RememberedApp app(const std::string& key, double volume, bool muted = false) {
  return {key, "Name of " + key, std::nullopt, volume, muted};
}

TEST(SoundMemoryTests, remembersForgetsAndMovesTheLastChoiceToTheEnd) {
  FakeUserDefaults defaults;
  SoundMemory memory(defaults);
  EXPECT_TRUE(memory.remember({app("a", 0.5), app("b", 1.5, true)}));
  EXPECT_TRUE(memory.remember({app("a", 0.75)}));
  EXPECT_EQ(memory.all(), (std::vector{app("b", 1.5, true), app("a", 0.75)}));
  EXPECT_TRUE(memory.forget("b"));
  EXPECT_EQ(memory.all(), std::vector{app("a", 0.75)});
  EXPECT_TRUE(memory.forgetAll());
  EXPECT_FALSE(defaults.value(SoundMemory::key));

  std::vector<RememberedApp> many;
  for (std::size_t i = 0; i < SoundMemory::mostApps + 3; ++i) many.push_back(app("k" + std::to_string(i), 1));
  EXPECT_TRUE(memory.remember(many));
  EXPECT_EQ(memory.all().size(), SoundMemory::mostApps);
  EXPECT_EQ(memory.all().front().key, "k3");
}

TEST(SoundMemoryTests, whatCannotBeReadCountsAsNothingAndStays) {
  FakeUserDefaults defaults;
  SoundMemory memory(defaults);
  const Value stored(Value::Array{Value("text"), Value::object({{"key", 7}}), Value::object({{"volume", 1}}),
                                  Value::object({{"key", "loud"}, {"volume", 9}}), toValue(app("a", 0.5)),
                                  toValue(app("a", 1))});
  defaults.set(SoundMemory::key, stored);
  EXPECT_FALSE(isSoundMemory(stored));
  EXPECT_EQ(memory.all(),
            (std::vector<RememberedApp>{{"loud", "loud", {}, loudestApp, false}, app("a", 0.5)}));
  EXPECT_TRUE(memory.forgetAll());
  EXPECT_EQ(defaults.value(SoundMemory::key)->asArray()->size(), 3U);

  defaults.set(SoundMemory::key, Value("no list"));
  EXPECT_FALSE(memory.remember({app("a", 0.5)}));
  EXPECT_EQ(defaults.value(SoundMemory::key), Value("no list"));
  defaults.remove(SoundMemory::key);
  defaults.readOnly = true;
  EXPECT_FALSE(memory.remember({app("a", 0.5)}));
  EXPECT_TRUE(memory.all().empty());
}

} // namespace
} // namespace korvell

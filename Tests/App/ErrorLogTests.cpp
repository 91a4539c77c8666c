#include "App/ErrorLog.h"

#include "Base/ManualQueue.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::Field;
using testing::StartsWith;

TEST(ErrorLogTests, keepsTheLastOnesAndCountsWhatRepeats) {
  const TemporaryFolder folder;
  const auto data = folder / "data";
  ManualScheduler time{Date{1'772'366'400}};
  {
    ErrorLog log(time.factory(), time.clock(), data, "1.0");
    EXPECT_FALSE(std::filesystem::exists(data)) << "nothing is written while all is well";
    for (int i = 0; i < 60; ++i) log.add(troubleOf("Error " + std::to_string(i), {}));
    log.add(troubleOf("{path} is full.", {{"path", "/home/ada"}}));
  }
  ErrorLog(time.factory(), time.clock(), data, "1.0")
      .add(troubleOf("{path} is full.", {{"path", "/home/ada"}}));
  const auto errors = ErrorLog::read(data);
  ASSERT_TRUE(errors);
  ASSERT_EQ(errors->size(), ErrorLog::mostEntries);
  EXPECT_EQ(errors->front().text, "Error 11");
  EXPECT_EQ(errors->back(), (LoggedError{Date{1'772'366'400}, "1.0", "{path} is full.", 2}));
  EXPECT_EQ(folder.permissions("data/errors.json"), 0600u);
}

TEST(ErrorLogTests, whatIsNotUnderstoodIsPutAside) {
  const TemporaryFolder folder;
  ManualScheduler time{Date{1'772'366'400}};
  folder.write("errors.json", R"({"errors":[{"date":"yesterday"}]})");
  EXPECT_FALSE(ErrorLog::read(folder.path().string()));
  ErrorLog(time.factory(), time.clock(), folder.path().string(), "1.0").add(troubleOf("Error", {}));
  EXPECT_THAT(*ErrorLog::read(folder.path().string()), ElementsAre(Field(&LoggedError::text, "Error")));
  EXPECT_THAT(folder.names(""), ElementsAre(StartsWith("errors-damaged-"), "errors.json"));
}

} // namespace
} // namespace korvell

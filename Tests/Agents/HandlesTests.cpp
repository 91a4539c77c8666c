#include "Agents/Handles.h"
#include "Agents/Schema.h"
#include "Tests/Fakes/FakeClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

constexpr auto quit = QuitRequest::action;

TEST(HandlesTests, standForWhatWasListedOnceAndForTenMinutes) {
  FakeClock clock;
  Handles handles(clock), others(clock);
  const QuitRequest request{.processes = {{42, 4711}}};
  const auto handle = handles.give({request});
  EXPECT_NE(handle, handles.give({request}));
  ASSERT_TRUE(handles.find(handle, quit));
  EXPECT_EQ(handles.find(handle, quit)->request, ActionRequest(request));
  EXPECT_FALSE(handles.find(handle, StopServerRequest::action));
  EXPECT_FALSE(others.find(handle, quit));
  for (std::size_t i = 0; i < handle.size(); ++i) {
    auto forged = handle;
    forged[i] = forged[i] == 'x' ? 'y' : 'x';
    EXPECT_FALSE(handles.find(forged, quit)) << i;
  }
  for (const auto* nothing : {"", ".", "a.b"}) EXPECT_FALSE(handles.find(nothing, quit));
  handles.use(handle);
  EXPECT_FALSE(handles.find(handle, quit));

  const auto late = handles.give({request});
  clock.advance(Handles::lifetime);
  EXPECT_FALSE(handles.find(late, quit));
}

TEST(HandlesTests, theOldestMakeRoom) {
  FakeClock clock;
  Handles handles(clock);
  const auto first = handles.give({StopServerRequest{1}});
  for (std::size_t i = 1; i < Handles::most; ++i) handles.give({StopServerRequest{2}});
  EXPECT_TRUE(handles.find(first, StopServerRequest::action));
  handles.give({StopServerRequest{3}});
  EXPECT_FALSE(handles.find(first, StopServerRequest::action));
}

TEST(SchemaTests, ofARecordFitsWhatTheRecordPrints) {
  const DevServer server{.pid = 1, .name = "n", .ports = {80}, .startedAt = {5}, .lastActive = {6}};
  const auto schema = schema::of<std::vector<DevProject>>();
  const std::vector<DevProject> projects{{"p", {server}}};
  EXPECT_EQ(schema::mismatch(schema, toValue(projects)), std::nullopt);
  EXPECT_EQ(schema::mismatch(schema, *parseJSON(dumpJSON(toValue(projects)))), std::nullopt);
  const auto one = schema::of<StopServerRequest>();
  const struct {
    const char *value, *why;
  } rows[] = {{R"({"pid":1})", ""},
              {R"({})", "/pid is missing."},
              {R"({"pid":1.5})", "/pid is no integer."},
              {R"({"pid":1,"x":2})", "/x is not known."},
              {R"([])", "The value is no object."}};
  for (const auto& row : rows)
    EXPECT_EQ(schema::mismatch(one, *parseJSON(row.value)).value_or(""), row.why) << row.value;
  EXPECT_NE(schema::mismatch(schema::choice<HealthAlert::Kind>(""), Value("nothing")), std::nullopt);
}

} // namespace
} // namespace korvell

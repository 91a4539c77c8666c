#include "Shared/WidgetSnapshot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

WidgetSnapshot sample() {
  return {.date = *parseRFC3339("2026-03-02T08:50:00.250Z"),
          .score = 87,
          .label = "Good",
          .fixes = {{"Disk space is getting low", "41.2 GB free on \"System\" disk.", true, "storage"}},
          .tiles = {{"cpu", "24%", "load 2.1", {1.5, 0, 24}, 100}, {"disk", "41.2 GB", "free", {}, {}}},
          .apps = {{"Firefox", "/usr/share/applications/firefox.desktop", "3.12 GB", 1},
                   {"Würfel – \xF0\x9F\x8E\xB2", {}, "1.46 GB", 0.46875}}};
}

TEST(WidgetSnapshotTests, WritesTheKeysAndReadsThemBack) {
  const auto text = sample().encoded();
  EXPECT_EQ(WidgetSnapshot::decoded(text), sample());
  const auto document = parseJSON(text);
  ASSERT_TRUE(document);
  std::vector<std::string> keys;
  for (const auto& [name, value] : *document->asObject()) keys.push_back(name);
  EXPECT_THAT(keys, testing::ElementsAre("date", "score", "label", "fixes", "tiles", "apps"));
  EXPECT_EQ(document->find("date")->asDouble(), 794134200.25); // from 2001-01-01 on
  EXPECT_EQ(dumpJSON(document->find("tiles")->asArray()->at(1)),
            R"({"page":"disk","value":"41.2 GB","detail":"free","points":[]})");
}

/// The sample with one member of one of its objects replaced or, by null, left out.
std::string changed(std::string_view list, std::string_view member, const Value& value) {
  auto document = *parseJSON(sample().encoded());
  const auto change = [&](Value& object) {
    value.isNull() ? object.erase(member) : void(object.set(member, value));
  };
  if (list.empty()) {
    change(document);
  } else {
    auto elements = *document.find(list)->asArray();
    change(elements.front());
    document.set(list, elements);
  }
  return dumpJSON(document);
}

TEST(WidgetSnapshotTests, LeavesUnknownMembersAlone) {
  for (const auto* list : {"", "fixes", "tiles", "apps"})
    EXPECT_EQ(WidgetSnapshot::decoded(changed(list, "later", Value::object({{"x", 1}}))), sample()) << list;
}

TEST(WidgetSnapshotTests, RefusesWhatIsNoDocument) {
  struct Row {
    const char *list, *member;
    Value value;
  };
  const Row rows[] = {{"", "date", {}},
                      {"", "date", "2026-03-02"},
                      {"", "score", {}},
                      {"", "score", 101},
                      {"", "score", 87.5},
                      {"", "label", 1},
                      {"", "fixes", {}},
                      {"", "tiles", Value::object()},
                      {"fixes", "critical", {}},
                      {"fixes", "critical", 1},
                      {"fixes", "page", {}},
                      {"tiles", "points", {}},
                      {"tiles", "points", Value(Value::Array{Value()})},
                      {"tiles", "maxValue", "100"},
                      {"apps", "name", {}},
                      {"apps", "fraction", 1.5},
                      {"apps", "bundlePath", false}};
  for (const auto& row : rows)
    EXPECT_FALSE(WidgetSnapshot::decoded(changed(row.list, row.member, row.value)))
        << row.list << " " << row.member << " " << dumpJSON(row.value);
  const auto whole = sample().encoded();
  for (std::size_t length = 0; length + 1 < whole.size(); ++length)
    EXPECT_FALSE(WidgetSnapshot::decoded(whole.substr(0, length))) << length;
  EXPECT_FALSE(WidgetSnapshot::decoded("[]"));
}

TEST(WidgetSnapshotTests, LiesWhereBothSidesLook) {
  UserFolders folders{.home = "/home/u", .data = "/home/u/.local/share/korvell"};
  EXPECT_EQ(WidgetShared::snapshotURL(folders), "/home/u/.local/share/korvell/Widget/widget.json");
  folders.home = "/Users/u/Library/Containers/w/Data";
  const std::string below = "/Library/Application Support/Korvell/Widget/widget.json";
  EXPECT_EQ(WidgetShared::sandboxedSnapshotURL("/Users/u", folders), "/Users/u" + below);
  EXPECT_EQ(WidgetShared::sandboxedSnapshotURL(std::nullopt, folders), folders.home + below);
}

} // namespace
} // namespace korvell

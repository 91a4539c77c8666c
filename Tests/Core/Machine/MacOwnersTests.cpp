#include "Core/Machine/MacOwners.h"
#include "FakeProcessLookup.h"

#include <gtest/gtest.h>
#include <map>

namespace korvell {
namespace {

const BundleInfo noInfo = [](const std::string&, std::string_view) { return std::nullopt; };

TEST(MacOwnersTests, thePathDecides) {
  const struct {
    const char *path, *key, *name, *rule;
  } rows[] = {
      {"/Applications/Editor.app/Contents/Frameworks/Helper (GPU).app/Contents/MacOS/Helper (GPU)",
       "/Applications/Editor.app", "Editor", "bundle"},
      {"/me/Code.apps/Big.Tool.app/Contents/MacOS/x", "/me/Code.apps/Big.Tool.app", "Big.Tool", "bundle"},
      {"/usr/local/Thing.app/Contents/MacOS/Thing", "/usr/local/Thing.app", "Thing", "bundle"},
      {"/opt/.app/bin/x", "/opt/.app", ".app", "bundle"},
      {"/System/Library/CoreServices/Finder.app/Contents/MacOS/Finder",
       "/System/Library/CoreServices/Finder.app", "Finder", "bundle"},
      {"/System/Library/CoreServices/Dock.app/Contents/MacOS/Dock", "macOS", "macOS", "system bundle"},
      {"/System/Library/PrivateFrameworks/X.framework/x", "macOS", "macOS", "system path"},
      {"/usr/libexec/syspolicyd", "macOS", "macOS", "system path"},
      {"", "macOS", "macOS", "no path"},
      {"/usr/local/bin/tool", "proc:tool", "tool", "process"},
      {"/Library/PrivilegedHelperTools/tool", "proc:tool", "tool", "process"},
      {"/Systematic/tool", "proc:tool", "tool", "process"},
      {"/Applications/Editor.app", "proc:tool", "tool", "process"},
  };
  for (const auto& row : rows) {
    const auto [owner, rule] = makeOwner(row.path, "tool", noInfo);
    EXPECT_EQ(owner->key, row.key) << row.path;
    EXPECT_EQ(owner->name, row.name) << row.path;
    EXPECT_EQ(owner->bundlePath.value_or(""), std::string_view(row.rule) == "bundle" ? row.key : "")
        << row.path;
    EXPECT_EQ(rule, row.rule) << row.path;
  }
}

TEST(MacOwnersTests, bundlesAreCalledAsTheySay) {
  std::map<std::string, std::string, std::less<>> info;
  const BundleInfo bundles = [&](const std::string&, std::string_view key) {
    const auto found = info.find(key);
    return found == info.end() ? std::nullopt : std::optional(found->second);
  };
  const auto name = [&] { return makeOwner("/Applications/Editor.app/x", "tool", bundles).owner->name; };
  info["CFBundleDisplayName"] = "";
  EXPECT_EQ(name(), "Editor");
  info["CFBundleName"] = "Edit";
  EXPECT_EQ(name(), "Edit");
  info["CFBundleDisplayName"] = "Editor Pro";
  EXPECT_EQ(name(), "Editor Pro");
}

TEST(MacOwnersTests, theResponsibleProcessAnswersForItsHelpers) {
  FakeProcessLookup processes;
  processes.add(10, 1, {.path = "/Applications/Editor.app/Contents/MacOS/Editor", .name = "Editor"});
  processes.add(11, 1, {.path = "", .name = "pid 11"});
  processes.add(12, 1, {.path = "/opt/node/bin/node", .name = "node"});
  processes.add(42, 1, {.path = "/Users/me/bin/tool", .name = "tool"});
  const struct {
    ProcessID responsible;
    const char* key;
    std::string_view rule;
  } rows[] = {
      {10, "/Applications/Editor.app", "responsible process's bundle"},
      {12, "proc:node", "responsible process"},
      {42, "proc:tool", "process"}, // itself
      {0, "proc:tool", "process"},
      {11, "proc:tool", "process"}, // its path is unknown
      {99, "proc:tool", "process"}, // it is gone
  };
  MacOwners owners(noInfo);
  for (const auto& row : rows) {
    const ProcessFacts facts{.path = "/Users/me/bin/tool", .name = "tool", .responsible = row.responsible};
    const auto decision = owners.owner(42, facts, processes);
    EXPECT_EQ(decision.owner->key, row.key) << row.responsible;
    EXPECT_EQ(decision.rule, row.rule) << row.responsible;
  }
}

TEST(MacOwnersTests, aBundleIsReadOnce) {
  int asked = 0;
  MacOwners owners([&](const std::string&, std::string_view) {
    ++asked;
    return std::optional<std::string>("Editor");
  });
  FakeProcessLookup processes;
  const ProcessFacts facts{.path = "/Applications/Editor.app/Contents/MacOS/Editor", .name = "Editor"};
  const auto first = owners.owner(1, facts, processes);
  owners.beginCycle();
  EXPECT_EQ(owners.owner(2, facts, processes).owner, first.owner);
  EXPECT_EQ(asked, 1);
}

} // namespace
} // namespace korvell

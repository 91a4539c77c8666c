#include "Core/Machine/MacOwners.h"
#include "FakeProcessLookup.h"

#include <gtest/gtest.h>
#include <map>

namespace korvell {
namespace {

const Owner system{"macOS", "macOS", std::nullopt};
const Owner process{"proc:tool", "tool", std::nullopt};
Owner application(const char* path, const char* name) { return {path, name, path}; }

const BundleInfo noInfo = [](const std::string&, std::string_view) { return std::nullopt; };

TEST(MacOwnersTests, thePathDecides) {
  const struct {
    const char* path;
    Owner owner;
    std::string_view rule;
  } rows[] = {
      {"/Applications/Editor.app/Contents/Frameworks/Helper (GPU).app/Contents/MacOS/Helper (GPU)",
       application("/Applications/Editor.app", "Editor"), "bundle"},
      {"/Users/me/Code.apps/Big.Tool.app/Contents/MacOS/x",
       application("/Users/me/Code.apps/Big.Tool.app", "Big.Tool"), "bundle"},
      {"/usr/local/Thing.app/Contents/MacOS/Thing", application("/usr/local/Thing.app", "Thing"), "bundle"},
      {"/opt/.app/bin/x", application("/opt/.app", ".app"), "bundle"},
      {"/System/Library/CoreServices/Finder.app/Contents/MacOS/Finder",
       application("/System/Library/CoreServices/Finder.app", "Finder"), "bundle"},
      {"/System/Library/CoreServices/Dock.app/Contents/MacOS/Dock", system, "system bundle"},
      {"/System/Library/PrivateFrameworks/X.framework/x", system, "system path"},
      {"/usr/libexec/syspolicyd", system, "system path"},
      {"", system, "no path"},
      {"/usr/local/bin/tool", process, "process"},
      {"/Library/PrivilegedHelperTools/tool", process, "process"},
      {"/Systematic/tool", process, "process"},
      {"/Applications/Editor.app", process, "process"},
  };
  for (const auto& row : rows) {
    const auto decision = makeOwner(row.path, "tool", noInfo);
    EXPECT_EQ(*decision.owner, row.owner) << row.path;
    EXPECT_EQ(decision.rule, row.rule) << row.path;
  }
}

TEST(MacOwnersTests, bundlesAreCalledAsTheySay) {
  std::map<std::string, std::string, std::less<>> info;
  const BundleInfo bundles = [&](const std::string& path,
                                 std::string_view key) -> std::optional<std::string> {
    EXPECT_EQ(path, "/Applications/Editor.app");
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

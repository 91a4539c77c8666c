#include "Core/Machine/MacOwners.h"

#include <gtest/gtest.h>
#include <map>

namespace korvell {
namespace {

const BundleInfo noInfo = [](const std::string&, std::string_view) { return std::nullopt; };

TEST(MacOwnersTests, thePathDecides) {
  const Owner system{"macOS", "macOS", std::nullopt};
  const auto application = [](const char* path, const char* name) { return Owner{path, name, path}; };
  const auto process = Owner{"proc:tool", "tool", std::nullopt};
  const struct {
    const char* path;
    Owner owner;
    std::string_view rule;
  } rows[] = {
      {"/Applications/Editor.app/Contents/MacOS/Editor", application("/Applications/Editor.app", "Editor"),
       "bundle"},
      {"/Applications/Editor.app/Contents/Frameworks/Helper (GPU).app/Contents/MacOS/Helper (GPU)",
       application("/Applications/Editor.app", "Editor"), "bundle"},
      {"/Users/me/Code.apps/Big.Tool.app/Contents/MacOS/x",
       application("/Users/me/Code.apps/Big.Tool.app", "Big.Tool"), "bundle"},
      {"/usr/local/Thing.app/Contents/MacOS/Thing", application("/usr/local/Thing.app", "Thing"), "bundle"},
      {"/opt/.app/bin/x", application("/opt/.app", ".app"), "bundle"},
      {"/System/Library/CoreServices/Finder.app/Contents/MacOS/Finder",
       application("/System/Library/CoreServices/Finder.app", "Finder"), "bundle"},
      {"/System/Library/CoreServices/Dock.app/Contents/MacOS/Dock", system, "system bundle"},
      {"/System/Library/CoreServices/Finder.app.old/Contents/MacOS/Finder", system, "system path"},
      {"/System/Library/PrivateFrameworks/X.framework/x", system, "system path"},
      {"/usr/libexec/syspolicyd", system, "system path"},
      {"/Library/Apple/System/Library/x", system, "system path"},
      {"/private/preboot/Cryptexes/x", system, "system path"},
      {"", system, "no path"},
      {"/usr/local/bin/tool", process, "process"},
      {"/Library/PrivilegedHelperTools/tool", process, "process"},
      {"/Systematic/tool", process, "process"},
      {"/Applications/Editor.app", process, "process"},
      {"bin/tool", process, "process"},
  };
  for (const auto& row : rows) {
    const auto decision = makeOwner(row.path, "tool", noInfo);
    EXPECT_EQ(decision.owner->key, row.owner.key) << row.path;
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
  EXPECT_EQ(name(), "Editor");
  info["CFBundleName"] = "Edit";
  EXPECT_EQ(name(), "Edit");
  info["CFBundleDisplayName"] = "Editor Pro";
  EXPECT_EQ(name(), "Editor Pro");
  info["CFBundleDisplayName"] = "";
  EXPECT_EQ(name(), "Edit");
}

class Processes : public ProcessLookup {
public:
  std::map<ProcessID, ProcessFacts> table;
  ProcessID parent(ProcessID) const override { return 1; }
  const ProcessFacts* facts(ProcessID pid) override {
    const auto found = table.find(pid);
    return found == table.end() ? nullptr : &found->second;
  }
};

TEST(MacOwnersTests, theResponsibleProcessAnswersForItsHelpers) {
  Processes processes;
  processes.table[10] = {.path = "/Applications/Editor.app/Contents/MacOS/Editor", .name = "Editor"};
  processes.table[11] = {.path = "", .name = "pid 11"};
  processes.table[12] = {.path = "/opt/node/bin/node", .name = "node"};
  const struct {
    ProcessID responsible;
    const char* key;
    std::string_view rule;
  } rows[] = {
      {10, "/Applications/Editor.app", "responsible process's bundle"},
      {12, "proc:node", "responsible process"},
      {42, "proc:tool", "process"}, // itself
      {0, "proc:tool", "process"},
      {-1, "proc:tool", "process"},
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
  Processes processes;
  const ProcessFacts facts{.path = "/Applications/Editor.app/Contents/MacOS/Editor", .name = "Editor"};
  const auto first = owners.owner(1, facts, processes);
  owners.beginCycle();
  EXPECT_EQ(owners.owner(2, facts, processes).owner, first.owner);
  EXPECT_EQ(asked, 1);
}

} // namespace
} // namespace korvell

#include "Core/DevServers/DevServerRules.h"

#include <gtest/gtest.h>
#include <set>

namespace korvell {
namespace {

TEST(DevServerRulesTests, executablesThatAreTheSystemsAreSkipped) {
  struct Row {
    const char* path;
    bool onMacOS, onLinux;
  };
  for (const Row& row :
       {Row{"/usr/bin/python3.11", false, false},
        {"/usr/lib/postgresql/15/bin/postgres", true, false},
        {"/usr/lib/systemd/systemd-resolved", true, true},
        {"/usr/sbin/cupsd", true, true},
        {"/sbin/rpcbind", false, true},
        {"/System/Library/CoreServices/ControlCenter", true, false},
        {"/Applications/Postgres.app/Contents/MacOS/postgres", true, false},
        {"/opt/Python.framework/Versions/3.12/Resources/Python.app/Contents/MacOS/Python", false, false}}) {
    EXPECT_EQ(isSkippedExecutable(row.path, macOSDevServerTables), row.onMacOS) << row.path;
    EXPECT_EQ(isSkippedExecutable(row.path, linuxDevServerTables), row.onLinux) << row.path;
  }
}

TEST(DevServerRulesTests, infrastructureIsMatchedByItsWholeName) {
  for (const auto& [name, onMacOS, onLinux] : {std::tuple{"ssh", true, true},
                                               {"com.docker.backend", true, true},
                                               {"docker-proxy", false, true},
                                               {"sshfs-web", false, false},
                                               {"Tor", false, false},
                                               {"", false, false}}) {
    EXPECT_EQ(isInfrastructure(name, macOSDevServerTables), onMacOS) << name;
    EXPECT_EQ(isInfrastructure(name, linuxDevServerTables), onLinux) << name;
  }
}

TEST(DevServerRulesTests, runtimesAreRecognisedByTheirBeginning) {
  for (auto [name, label] : {std::pair{"Python", "python"},
                             {"python3.11", "python"},
                             {"postgres: writer", "postgres"},
                             {"Caddy", "Caddy"},
                             {"my-node", "my-node"}})
    EXPECT_EQ(runtimeLabel(name), label);
}

TEST(DevServerRulesTests, descendantsComeOnceEvenFromACircle) {
  const auto children = childrenOf({{2, 1}, {3, 2}, {4, 2}, {5, 4}, {6, 1}, {1, 5}});
  const auto found = descendants(2, children);
  EXPECT_EQ(found.front(), 2);
  EXPECT_EQ(std::multiset(found.begin(), found.end()), (std::multiset<ProcessID>{1, 2, 3, 4, 5, 6}));
}

TEST(DevServerRulesTests, theServiceIsTheDeepestMarkedFolderTheProjectItsRepository) {
  struct Row {
    std::set<std::string> files;
    const char *directory, *service, *project;
  };
  const Row rows[] = {
      {{}, "/home/u/a/b", "/home/u/a/b", "/home/u/a/b"},
      {{"/home/u/a/.git", "/home/u/a/b/package.json"}, "/home/u/a/b/src", "/home/u/a/b", "/home/u/a"},
      {{"/home/u/a/.git", "/home/u/a/package.json"}, "/home/u/a", "/home/u/a", "/home/u/a"},
      {{"/home/u/a/Cargo.toml", "/home/u/a/b/mix.exs"}, "/home/u/a/b/c", "/home/u/a/b", "/home/u/a/b"},
      {{"/home/u/a/Cargo.toml"}, "/home/u/a/b", "/home/u/a", "/home/u/a"},
      {{"/home/u/a/.git", "/home/u/a/b/.git"}, "/home/u/a/b/src", "/home/u/a/b", "/home/u/a/b"},
      // What marks the home folder itself, or what lies above it, is nobody's project.
      {{"/home/u/.git", "/home/u/package.json", "/home/.git"}, "/home/u/a/b", "/home/u/a/b", "/home/u/a/b"}};
  for (const Row& row : rows) {
    const auto exists = [&](const std::string& path) { return row.files.contains(path); };
    EXPECT_EQ(projectFolders(row.directory, "/home/u", exists), (ProjectFolders{row.service, row.project}))
        << row.directory;
  }
}

TEST(DevServerRulesTests, idleIsLongerThanHalfAnHour) {
  DevServer exactly{.lastActive = Date{1000}}, longer{.lastActive = Date{999}},
      future{.lastActive = Date{1e9}};
  EXPECT_EQ(idleServers({{"a", {exactly}}, {"b", {longer, future}}}, Date{2800}), std::vector{longer});
}

} // namespace
} // namespace korvell

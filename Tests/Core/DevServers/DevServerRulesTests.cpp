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
       {Row{"/opt/homebrew/bin/node", false, false},
        {"/usr/bin/python3.11", false, false},
        {"/usr/local/bin/caddy", false, false},
        {"/usr/lib/jvm/java-17-openjdk-amd64/bin/java", true, false},
        {"/usr/lib/postgresql/15/bin/postgres", true, false},
        {"/usr/lib/systemd/systemd-resolved", true, true},
        {"/usr/libexec/rapportd", true, true},
        {"/usr/sbin/cupsd", true, true},
        {"/sbin/rpcbind", false, true},
        {"/System/Library/CoreServices/ControlCenter", true, false},
        {"/Library/Frameworks/x", true, false},
        {"/Applications/Postgres.app/Contents/MacOS/postgres", true, false},
        {"/opt/homebrew/Frameworks/Python.framework/Versions/3.12/Resources/Python.app/Contents/"
         "MacOS/Python",
         false, false}}) {
    EXPECT_EQ(isSkippedExecutable(row.path, macOSDevServerTables), row.onMacOS) << row.path;
    EXPECT_EQ(isSkippedExecutable(row.path, linuxDevServerTables), row.onLinux) << row.path;
  }
}

TEST(DevServerRulesTests, infrastructureIsMatchedByItsWholeName) {
  for (const auto* tables : {&macOSDevServerTables, &linuxDevServerTables}) {
    for (auto name : {"ssh", "com.docker.backend", "privoxy", "qemu-system-x86_64"})
      EXPECT_TRUE(isInfrastructure(name, *tables)) << name;
    for (auto name : {"sshfs-web", "node", "Tor", ""}) EXPECT_FALSE(isInfrastructure(name, *tables)) << name;
  }
  EXPECT_TRUE(isInfrastructure("docker-proxy", linuxDevServerTables));
  EXPECT_FALSE(isInfrastructure("docker-proxy", macOSDevServerTables));
}

TEST(DevServerRulesTests, runtimesAreRecognisedByTheirBeginning) {
  for (auto [name, label] : {std::pair{"node", "node"},
                             {"Python", "python"},
                             {"python3.11", "python"},
                             {"beam.smp", "beam"},
                             {"postgres: writer", "postgres"},
                             {"redis-server", "redis"},
                             {"Caddy", "Caddy"},
                             {"my-node", "my-node"}})
    EXPECT_EQ(runtimeLabel(name), label);
}

TEST(DevServerRulesTests, descendantsComeOnceEvenFromACircle) {
  const auto children = childrenOf({{2, 1}, {3, 2}, {4, 2}, {5, 4}, {6, 1}, {1, 5}});
  auto found = descendants(2, children);
  EXPECT_EQ(found.front(), 2);
  EXPECT_EQ(std::set(found.begin(), found.end()), (std::set<ProcessID>{1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(found.size(), 6u);
  EXPECT_EQ(descendants(6, children), std::vector<ProcessID>{6});
}

TEST(DevServerRulesTests, theServiceIsTheDeepestMarkedFolderTheProjectItsRepository) {
  struct Row {
    std::set<std::string> files;
    const char *directory, *service, *project;
  };
  const Row rows[] = {
      {{}, "/home/u/scratch/a", "/home/u/scratch/a", "/home/u/scratch/a"},
      {{"/home/u/shop/.git", "/home/u/shop/api/package.json"},
       "/home/u/shop/api/src",
       "/home/u/shop/api",
       "/home/u/shop"},
      {{"/home/u/shop/.git", "/home/u/shop/package.json"}, "/home/u/shop", "/home/u/shop", "/home/u/shop"},
      {{"/home/u/a/go.mod"}, "/home/u/a/cmd/x", "/home/u/a", "/home/u/a"},
      {{"/home/u/a/Cargo.toml", "/home/u/a/b/mix.exs"}, "/home/u/a/b", "/home/u/a/b", "/home/u/a/b"},
      {{"/home/u/a/.git", "/home/u/a/vendor/lib/.git"},
       "/home/u/a/vendor/lib/src",
       "/home/u/a/vendor/lib",
       "/home/u/a/vendor/lib"},
      // What marks the home folder itself, or what lies above it, is nobody's project.
      {{"/home/u/.git", "/home/.git", "/.git"}, "/home/u/a", "/home/u/a", "/home/u/a"},
      {{"/home/u/package.json"}, "/home/u/a/b", "/home/u/a/b", "/home/u/a/b"}};
  for (const Row& row : rows) {
    const auto exists = [&](const std::string& path) { return row.files.contains(path); };
    EXPECT_EQ(projectFolders(row.directory, "/home/u", exists), (ProjectFolders{row.service, row.project}))
        << row.directory;
  }
}

TEST(DevServerRulesTests, idleIsLongerThanHalfAnHour) {
  DevServer exactly{.pid = 1, .lastActive = Date{1000}}, longer{.pid = 2, .lastActive = Date{999}},
      future{.pid = 3, .lastActive = Date{1e9}};
  const auto idle = idleServers(
      {{.name = "a", .servers = {exactly}}, {.name = "b", .servers = {longer, future}}}, Date{2800});
  EXPECT_EQ(idle, std::vector<DevServer>{longer});
}

} // namespace
} // namespace korvell

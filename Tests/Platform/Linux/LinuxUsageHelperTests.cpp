#include "Platform/Linux/LinuxUsageHelper.h"

#include "Base/Descriptor.h"
#include "Base/LocalAddress.h"
#include "Tests/Fakes/FakeEnvironment.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <gmock/gmock.h>

using namespace korvell;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

struct LinuxUsageHelperTests : testing::Test {
  TemporaryFolder root;
  std::vector<std::string> commands;
  std::map<std::string, int> exitStatus; ///< of a command that fails
  std::map<std::string, std::string, std::less<>> variables{{"SUDO_UID", "1000"}};
  bool administrator = true, group = false;
  LinuxUsageHelper helper{{.root = root.path().string(),
                           .ownFolder = root / "own",
                           .environment = [this](auto name) { return fakeEnvironment(variables)(name); },
                           .run = [this](const std::string& path, const std::vector<std::string>& arguments,
                                         Seconds, const Cancellation&) -> std::optional<ShellResult> {
                             if (!path.starts_with("/usr/sbin/") && !path.ends_with("systemctl"))
                               return std::nullopt;
                             std::string command = path;
                             for (const auto& argument : arguments) command += " " + argument;
                             commands.push_back(command);
                             return ShellResult{.exitStatus = exitStatus[command]};
                           },
                           .isAdministrator = [this] { return administrator; },
                           .userName = [](std::uint32_t id) { return std::string(id == 1000 ? "ada" : ""); },
                           .groupExists = [this] { return group; }}};

  LinuxUsageHelperTests() {
    root.write("own/korvell-helper", "program");
    std::filesystem::create_directories(root / "run/systemd/system");
  }
};

} // namespace

TEST_F(LinuxUsageHelperTests, enablingInstallsAndDisablingTakesAway) {
  EXPECT_EQ(helper.status(), UsageHelperStatus::notEnabled);
  umask(0077);
  EXPECT_TRUE(helper.enable());
  umask(0022);
  EXPECT_THAT(commands, ElementsAre("/usr/sbin/groupadd --system korvell",
                                    "/usr/sbin/usermod --append --groups korvell ada",
                                    "/usr/bin/systemctl daemon-reload",
                                    "/usr/bin/systemctl enable --now korvell-helper.socket"));
  EXPECT_EQ(root.permissions("usr/local/libexec/korvell-helper"), 0755u);
  EXPECT_EQ(root.permissions("usr/local/libexec"), 0755u);
  EXPECT_EQ(root.permissions("etc/systemd/system/korvell-helper.service"), 0644u);
  const auto service = root.text("etc/systemd/system/korvell-helper.service");
  EXPECT_THAT(service, HasSubstr("\nExecStart=/usr/local/libexec/korvell-helper\n"));
  EXPECT_THAT(service, HasSubstr("\nSystemCallFilter=@system-service\n"))
      << "only the program's place is filled in";
  EXPECT_TRUE(std::filesystem::exists(root / "etc/systemd/system/korvell-helper.socket"));

  commands.clear();
  EXPECT_TRUE(helper.disable());
  EXPECT_THAT(commands, ElementsAre("/usr/bin/systemctl disable --now korvell-helper.socket",
                                    "/usr/bin/systemctl stop korvell-helper.service",
                                    "/usr/bin/systemctl daemon-reload"));
  EXPECT_FALSE(std::filesystem::exists(root / "usr/local/libexec/korvell-helper"));
  EXPECT_FALSE(std::filesystem::exists(root / "etc/systemd/system/korvell-helper.service"));
  commands.clear();
  EXPECT_TRUE(helper.disable());
  EXPECT_THAT(commands, ElementsAre()) << "there is nothing to disable";
}

TEST_F(LinuxUsageHelperTests, aPackagesHelperRunsFromWhereItLies) {
  LinuxUsageHelper::Sources sources;
  sources.root = root.path().string();
  sources.ownFolder = root / "usr/bin";
  sources.run = [](auto&&...) { return ShellResult{}; };
  sources.isAdministrator = [] { return true; };
  sources.environment = fakeEnvironment({});
  sources.groupExists = [] { return true; };
  LinuxUsageHelper packaged(std::move(sources));
  EXPECT_FALSE(packaged.isOffered());
  root.write("usr/libexec/korvell/korvell-helper", "program");
  EXPECT_TRUE(packaged.isOffered());
  EXPECT_TRUE(packaged.enable());
  EXPECT_THAT(root.text("etc/systemd/system/korvell-helper.service"),
              HasSubstr("\nExecStart=/usr/libexec/korvell/korvell-helper\n"));
  EXPECT_FALSE(std::filesystem::exists(root / "usr/local/libexec/korvell-helper"));
  EXPECT_TRUE(packaged.disable());
  EXPECT_TRUE(packaged.isOffered()) << "what the package brought stays";
}

TEST_F(LinuxUsageHelperTests, theCallerIsAdmittedWhoeverThatIs) {
  group = true;
  variables = {{"PKEXEC_UID", "1000"}};
  EXPECT_TRUE(helper.enable());
  EXPECT_EQ(commands.front(), "/usr/sbin/usermod --append --groups korvell ada");
  for (const char* nobody : {"0", "77", "-1", "ada"}) {
    commands.clear();
    variables = {{"SUDO_UID", nobody}};
    EXPECT_TRUE(helper.enable());
    EXPECT_EQ(commands.front(), "/usr/bin/systemctl daemon-reload") << nobody;
  }
}

TEST_F(LinuxUsageHelperTests, saysWhyItCannotBeEnabled) {
  administrator = false;
  EXPECT_THAT(helper.enable().reason(), HasSubstr("sudo"));
  EXPECT_THAT(helper.disable().reason(), HasSubstr("sudo"));
  administrator = true;
  exitStatus["/usr/bin/systemctl enable --now korvell-helper.socket"] = 4;
  EXPECT_EQ(helper.enable().reason(),
            "“systemctl enable --now korvell-helper.socket” failed with exit code 4.");
  std::filesystem::remove(root / "own/korvell-helper");
  EXPECT_EQ(helper.enable().reason(), "Helper missing from this copy of Korvell");
  EXPECT_FALSE(helper.isOffered());
  std::filesystem::remove(root / "run/systemd/system");
  EXPECT_THAT(helper.enable().reason(), HasSubstr("korvell-helper --socket /run/korvell-helper.sock"));
  EXPECT_THAT(helper.disable().reason(), HasSubstr("End the helper"));
}

TEST_F(LinuxUsageHelperTests, theStatusIsWhatTheFilesTell) {
  std::filesystem::remove(root / "own/korvell-helper");
  EXPECT_EQ(helper.status(), UsageHelperStatus::notFound);
  root.write("usr/lib/systemd/system/korvell-helper.socket", "");
  EXPECT_EQ(helper.status(), UsageHelperStatus::notEnabled);
  std::filesystem::create_directories(root / "run");
  const auto path = root / "run/korvell-helper.sock";
  {
    const Descriptor listener(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    ASSERT_TRUE(LocalAddress::of(path)->bind(listener.get()));
    EXPECT_EQ(helper.status(), UsageHelperStatus::notEnabled) << "bound is not listening";
    ASSERT_EQ(::listen(listener.get(), 1), 0);
    EXPECT_EQ(helper.status(), UsageHelperStatus::enabled);
  }
  EXPECT_TRUE(std::filesystem::exists(path));
  EXPECT_EQ(helper.status(), UsageHelperStatus::notEnabled) << "its owner has ended";
  EXPECT_FALSE(helper.connect([] {}));
}

#include "Platform/Linux/TerminalWindow.h"
#include "Tests/Fakes/FakeEnvironment.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace korvell {
namespace {

using testing::ElementsAre;

TEST(TerminalWindowTests, aTerminalThatIsInstalledOnADesktop) {
  TemporaryFolder folder;
  const auto window = [&](std::map<std::string, std::string, std::less<>> variables) {
    return TerminalWindow::with({"/opt/tool", "watch"}, fakeEnvironment(std::move(variables)),
                                {(folder.path() / "local").string(), folder.path().string()});
  };
  EXPECT_FALSE(window({{"DISPLAY", ":0"}})) << "no terminal";
  folder.write("xterm", "");
  EXPECT_FALSE(window({{"DISPLAY", ":0"}})) << "one that can't be executed";
  std::filesystem::permissions(folder.path() / "xterm", std::filesystem::perms::owner_all);
  EXPECT_FALSE(window({{"DISPLAY", ""}})) << "no desktop";
  const auto found = window({{"WAYLAND_DISPLAY", "wayland-0"}});
  ASSERT_TRUE(found);
  EXPECT_EQ(found->program, (folder.path() / "xterm").string());
  EXPECT_THAT(found->arguments, ElementsAre("-e", "/opt/tool", "watch"));
}

} // namespace
} // namespace korvell

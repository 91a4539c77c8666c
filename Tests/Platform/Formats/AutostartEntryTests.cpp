#include "Base/Files.h"
#include "Platform/Formats/AutostartEntry.h"
#include "Platform/Formats/KeyFile.h"
#include "Tests/FixturesFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

TEST(AutostartEntryTests, anyPathIsOneWordOfItsExecLine) {
  for (const std::string path : {"/usr/bin/korvell-app", "/opt/my apps/100% \"$HOME\" `x`\\y/korvell-app"}) {
    const auto entry = autostartEntry("", path, true);
    EXPECT_TRUE(isAutostartEnabled(entry));
    const auto file = KeyFile::parseDesktopEntry(entry);
    const auto words = desktopEntryArguments(*file.last("Desktop Entry", "Exec"));
    ASSERT_TRUE(words) << entry;
    EXPECT_THAT(*words, ElementsAre(path));
  }
}

TEST(AutostartEntryTests, theTemplateForAdministratorsIsWhatIsWritten) {
  EXPECT_EQ(readFile(fixturePath("../../Resources/Linux/autostart.desktop.in"), 4096),
            autostartEntry("", "@CMAKE_INSTALL_FULL_BINDIR@/korvell-app", true));
}

TEST(AutostartEntryTests, switchingKeepsWhatOthersWrote) {
  const std::string edited = "# mine\n[Desktop Entry]\nType=Application\nExec=/old/korvell-app\n"
                             "X-GNOME-Autostart-enabled=false\nX-GNOME-Autostart-Delay=20\n\n"
                             "[Desktop Action x]\nExec=/bin/true";
  EXPECT_FALSE(isAutostartEnabled(edited)) << "the desktop switched it off";
  const auto on = autostartEntry(edited, "/new/korvell-app", true);
  EXPECT_TRUE(isAutostartEnabled(on));
  EXPECT_THAT(on, HasSubstr("# mine\n"));
  EXPECT_THAT(on, HasSubstr("Exec=\"/new/korvell-app\"\n"));
  EXPECT_THAT(on, HasSubstr("X-GNOME-Autostart-Delay=20\n"));
  EXPECT_THAT(on, HasSubstr("[Desktop Action x]\nExec=/bin/true\n"));
  EXPECT_THAT(on, Not(HasSubstr("/old/")));

  const auto off = autostartEntry(on, "", false);
  EXPECT_FALSE(isAutostartEnabled(off));
  EXPECT_THAT(off, HasSubstr("Exec=\"/new/korvell-app\"\n"));
  EXPECT_EQ(autostartEntry(off, "/new/korvell-app", true), on);

  const auto mended = autostartEntry("no entry at all", "/x", true);
  EXPECT_TRUE(isAutostartEnabled(mended));
  EXPECT_FALSE(isAutostartEnabled("")) << "a file that a full disk left empty";
}

} // namespace
} // namespace korvell

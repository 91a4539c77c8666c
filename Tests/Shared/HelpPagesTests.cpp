#include "Shared/HelpPages.h"

#include "Base/Localization.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace korvell {
namespace {

TEST(HelpPagesTests, lieBesideTheProgramWhereverThatIs) {
  TemporaryFolder root;
  root.write("usr/share/korvell/help/cpu.html", "");
  root.write("Korvell.app/Contents/Resources/help/cpu.html", "");
  const HelpPages installed(root / "usr/bin/korvell-app"),
      bundle(root / "Korvell.app/Contents/MacOS/Korvell");
  EXPECT_EQ(installed.page("cpu"), root / "usr/share/korvell/help/cpu.html");
  EXPECT_EQ(bundle.page("cpu"), root / "Korvell.app/Contents/Resources/help/cpu.html");
  EXPECT_EQ(installed.page("gpu"), std::nullopt);
  EXPECT_EQ(HelpPages(root / "elsewhere/korvell").page("cpu"), std::nullopt);
  EXPECT_EQ(HelpPages("").page("cpu"), std::nullopt);
}

TEST(HelpPagesTests, areInTheLanguageInEffectWhereThereIsOne) {
  TemporaryFolder root;
  for (const auto* page : {"cpu", "gpu", "de/cpu"})
    root.write("share/korvell/help/" + std::string(page) + ".html", "");
  const HelpPages help(root / "bin/korvell-app");
  setLanguages({{}, {.code = "de"}});
  {
    const InLanguage german("de");
    EXPECT_EQ(help.page("cpu"), root / "share/korvell/help/de/cpu.html");
    EXPECT_EQ(help.page("gpu"), root / "share/korvell/help/gpu.html");
  }
  EXPECT_EQ(help.page("cpu"), root / "share/korvell/help/cpu.html");
  setLanguages({{}});
}

} // namespace
} // namespace korvell

#include "UI/Pictures/IconTheme.h"

#include "Tests/Fakes/TemporaryFolder.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace korvell {
namespace {

struct IconThemeTests : testing::Test {
  TemporaryFolder user, system;

  static void put(const std::string& path, const std::string& text = "x") {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path) << text;
  }
  IconTheme theme(std::string name = "Chosen", std::vector<std::string> extensions = {"png", "svg"}) const {
    return IconTheme({.dataFolders = {user / "data", system / "data"},
                      .theme = std::move(name),
                      .extensions = std::move(extensions)});
  }
  std::string at(const std::string& below) const { return system / "data/icons/" + below; }

  IconThemeTests() {
    put(at("Chosen/index.theme"),
        "[Icon Theme]\nDirectories=16,48,any\nScaledDirectories=16@2\nInherits=Parent\n"
        "[16]\nSize=16\nType=Fixed\n[48]\nSize=48\n"
        "[any]\nSize=64\nMinSize=8\nMaxSize=2147483647\nScale=2\nType=Scalable\n"
        "[16@2]\nSize=16\nScale=2\nType=Fixed\n");
    put(at("Parent/index.theme"), "[Icon Theme]\nDirectories=24\nInherits=Chosen,hicolor\n[24]\nSize=24\n");
    put(at("hicolor/index.theme"), "[Icon Theme]\nDirectories=256\n[256]\nSize=256\n");
  }
};

TEST_F(IconThemeTests, takesThePictureThatIsMadeForTheSize) {
  for (const char* file : {"16/app.png", "16@2/app.png", "48/app.png"}) put(at("Chosen/") + file);
  auto icons = theme();
  EXPECT_EQ(icons.find("app", 16), at("Chosen/16/app.png"));
  EXPECT_EQ(icons.find("app", 32), at("Chosen/16@2/app.png"));
  EXPECT_EQ(icons.find("app", 50), at("Chosen/48/app.png")) << "within the threshold of 2";
  EXPECT_EQ(icons.find("app", 40), at("Chosen/48/app.png")) << "rather made smaller than blown up";
  put(at("Chosen/any/app.svg"));
  EXPECT_EQ(icons.find("app", 40), at("Chosen/any/app.svg"));
  EXPECT_EQ(theme("Chosen", {"png"}).find("app", 40), at("Chosen/48/app.png")) << "svg can't be shown";
}

TEST_F(IconThemeTests, looksInParentsInTheUsersFoldersAndAmongLoosePictures) {
  put(at("Parent/24/parents.png"));
  put(at("hicolor/256/everyones.png"));
  put(system / "data/pixmaps/loose.png");
  put(user / "data/icons/Chosen/48/parents.svg");
  auto icons = theme();
  EXPECT_EQ(icons.find("everyones", 20), at("hicolor/256/everyones.png"));
  EXPECT_EQ(icons.find("everyones.png", 20), at("hicolor/256/everyones.png"));
  EXPECT_EQ(icons.find("loose", 20), system / "data/pixmaps/loose.png");
  EXPECT_EQ(icons.find("parents", 24), user / "data/icons/Chosen/48/parents.svg")
      << "the user's part of the chosen theme has no index of its own";
  EXPECT_EQ(icons.find("nowhere", 20), std::nullopt);
  EXPECT_EQ(theme("").find("everyones", 20), at("hicolor/256/everyones.png"));
  EXPECT_EQ(theme("not there").find("everyones", 20), at("hicolor/256/everyones.png"));
}

TEST_F(IconThemeTests, entriesNameAPictureOrAPathAndNothingElse) {
  EXPECT_EQ(entryIcon("[Other]\nIcon=no\n[Desktop Entry]\nIcon=org.gimp.GIMP\n"), "org.gimp.GIMP");
  EXPECT_EQ(entryIcon("[Desktop Entry]\nIcon=\n"), std::nullopt);
  const auto picture = user / "own.png";
  put(picture);
  auto icons = theme();
  EXPECT_EQ(icons.find(picture, 20), picture);
  EXPECT_EQ(icons.find(picture + "x", 20), std::nullopt);
  put(at("hicolor/secret.png"));
  EXPECT_EQ(icons.find("../secret", 256), std::nullopt);
}

} // namespace
} // namespace korvell

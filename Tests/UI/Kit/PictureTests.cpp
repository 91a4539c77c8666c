#include "Tests/UI/Kit/KitFixture.h"

#include "Base/ManualQueue.h"
#include "UI/Kit/Pictures.h"

namespace korvell {
namespace {

struct PictureTests : KitTests {
  ManualScheduler time;
  std::unique_ptr<Queue> main = time.makeMainQueue();
  std::vector<std::pair<std::string, int>> loaded;
  int told = 0;
  Pictures pictures{*main, time.factory(), [this]() -> Pictures::Load {
                      return [this](const std::string& key, int pixels) {
                        loaded.emplace_back(key, pixels);
                        return key == "none" ? QImage() : QImage(pixels, pixels, QImage::Format_ARGB32);
                      };
                    }};
};

TEST_F(PictureTests, areLoadedOnceASizeAndToldWhenTheyCome) {
  const auto subscription = pictures.observe([this] { ++told; });
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(pictures.find("app", 20, 2).isNull());
  pictures.find("none", 20, 1);
  time.run();
  EXPECT_EQ(loaded, (std::vector<std::pair<std::string, int>>{{"app", 40}, {"none", 20}}));
  EXPECT_EQ(told, 1) << "there is nothing to be told of a picture that is none";
  const auto found = pictures.find("app", 20, 2);
  EXPECT_EQ(found.deviceIndependentSize(), QSizeF(20, 20));
  EXPECT_TRUE(pictures.find("none", 20, 1).isNull());
  time.run();
  EXPECT_EQ(loaded.size(), 2u);
}

TEST_F(PictureTests, forgetsWhatWasOnItsWay) {
  pictures.find("app", 20, 1);
  pictures.clear();
  time.run();
  EXPECT_TRUE(pictures.find("app", 20, 1).isNull());
  time.run();
  EXPECT_FALSE(pictures.find("app", 20, 1).isNull()) << "asked for anew";
}

} // namespace
} // namespace korvell

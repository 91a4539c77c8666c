#include "Base/FileLock.h"
#include "Base/Files.h"
#include "Platform/Linux/SettingsFile.h"
#include "Tests/Contracts/UserDefaultsContract.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <csignal>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace korvell;
using testing::ElementsAre;

namespace {

struct World final : UserDefaultsWorld {
  TemporaryFolder home;
  const std::string folder = home / "config/korvell", path = folder + "/settings.json";
  std::unique_ptr<UserDefaults> open() override { return std::make_unique<SettingsFile>(folder); }

  std::string text() const { return home.text("config/korvell/settings.json"); }
  void write(const std::string& bytes) const { home.write("config/korvell/settings.json", bytes); }
  std::vector<std::string> files() const { return home.names("config/korvell"); }
};

} // namespace

namespace korvell {
INSTANTIATE_TEST_SUITE_P(SettingsFile, UserDefaultsContract,
                         testing::Values([] { return std::make_unique<World>(); }));
} // namespace korvell

TEST(SettingsFile, isATextForPeople) {
  World w;
  auto defaults = w.open();
  defaults->set("weeklyReport.enabled", false);
  defaults->set("alert.cpu", true);
  defaults->set("weeklyReport.enabled", true);
  EXPECT_EQ(w.text(), "{\n  \"weeklyReport.enabled\": true,\n  \"alert.cpu\": true\n}\n");
  w.write("\n{\"alert.cpu\":false, \"mine\": [1],\n \"nothing\": null}");
  EXPECT_FALSE(defaults->boolean("alert.cpu", true));
  EXPECT_FALSE(defaults->value("nothing"));
  defaults->set("menuBarStyle", "icon");
  EXPECT_EQ(defaults->value("mine"), Value(Value::Array{1})) << "members that nobody knows stay";
}

TEST(SettingsFile, isForItsUserOnlyAndIsWrittenForAChangeOnly) {
  World w;
  EXPECT_FALSE(w.open()->value("a"));
  EXPECT_FALSE(std::filesystem::exists(w.folder)) << "reading makes nothing";
  umask(0);
  EXPECT_TRUE(w.open()->set("a", 1));
  umask(022);
  EXPECT_EQ(w.home.permissions("config/korvell/settings.json"), 0600u);
  EXPECT_EQ(w.home.permissions("config/korvell/settings.json.lock"), 0600u);
  EXPECT_EQ(w.home.permissions("config/korvell"), 0700u);
  w.write("{\"a\":1}");
  EXPECT_TRUE(w.open()->set("a", 1));
  EXPECT_TRUE(w.open()->remove("b"));
  EXPECT_EQ(w.text(), "{\"a\":1}");
}

TEST(SettingsFile, whatCannotBeReadStaysAsItIsAndTheLastGoodValuesApply) {
  const std::pair<std::string, const char*> rows[] = {{"{\"a\": 1,\n\"b\": 2,\n}\n", "line 3, column 1 is"},
                                                      {"{\n  // mine\n}", "line 2, column 3 is"},
                                                      {"{\"ä\": x}", "line 1, column 7 is"},
                                                      {"{\"a\": 1", "line 1, column 8 is"},
                                                      {"{\"a\":1}{}", "line 1, column 8 is"},
                                                      {"\xff\xfe{}", "line 1, column 1 is"},
                                                      {"{\"a\": 1e400}", "line 1, column 7 is too large"},
                                                      {"[1]", "no JSON object"},
                                                      {"null", "no JSON object"}};
  for (const auto& [damaged, place] : rows) {
    World w;
    const auto running = w.open(), writer = w.open();
    ASSERT_TRUE(writer->set("a", 1));
    w.write("{\"a\": 2}"); // by hand
    EXPECT_EQ(running->integer("a"), 2);
    EXPECT_FALSE(running->trouble());
    w.write(damaged);
    EXPECT_EQ(running->integer("a"), 2) << "what it has read itself: " << damaged;
    EXPECT_EQ(w.open()->integer("a"), 2) << "what another one has read: " << damaged;
    const auto trouble = running->trouble().value_or("");
    EXPECT_NE(trouble.find(w.path), std::string::npos) << trouble;
    EXPECT_NE(trouble.find(place), std::string::npos) << trouble;
    EXPECT_NE(trouble.find("The last settings that could be read apply"), std::string::npos) << trouble;
    EXPECT_FALSE(writer->set("b", 2)) << damaged;
    EXPECT_FALSE(writer->remove("a")) << damaged;
    EXPECT_EQ(w.text(), damaged);
    EXPECT_THAT(w.files(), ElementsAre("settings.json", "settings.json.good", "settings.json.lock"));
    w.write("{\"a\": 3}");
    EXPECT_TRUE(writer->set("b", 2)) << "mended";
    EXPECT_EQ(running->integer("a"), 3);
    std::filesystem::remove(w.path);
    EXPECT_FALSE(running->value("a")) << "removed on purpose: the defaults";
  }
}

TEST(SettingsFile, withoutGoodValuesTheDefaultsApplyAndAreCalledSo) {
  World w;
  w.write("{");
  const auto running = w.open();
  for (int again = 0; again < 2; ++again) {
    EXPECT_NE(running->trouble().value_or("").find("Every setting is at its default"), std::string::npos);
    EXPECT_FALSE(running->value("a"));
  }
  EXPECT_THAT(w.files(), ElementsAre("settings.json")) << "reading makes nothing";
  w.write(" \n");
  EXPECT_FALSE(w.open()->trouble()) << "an empty file is none";
  EXPECT_TRUE(w.open()->set("a", 1));
}

TEST(SettingsFile, allFallBackOnWhatAnyOfThemReadLast) {
  World w;
  const auto running = w.open();
  w.write("{\"a\": 1}");
  EXPECT_EQ(running->integer("a"), 1);
  w.write("{\"a\": 2}");
  EXPECT_FALSE(w.open()->trouble());
  w.write("{");
  const auto other = w.open();
  for (const auto* one : {running.get(), other.get()}) EXPECT_EQ(one->integer("a"), 2);

  w.write("{\"a\": 3}");
  {
    const auto changing = FileLock::acquire(w.path + ".lock", Seconds{0});
    EXPECT_EQ(running->integer("a"), 3);
    EXPECT_EQ(w.home.text("config/korvell/settings.json.good"), "{\"a\": 2}") << "the other one's to write";
    w.write("{");
    EXPECT_EQ(running->integer("a"), 3) << "what it could not keep it still knows";
  }
  w.write("{\"a\": 4}");
  EXPECT_EQ(running->integer("a"), 4);
  w.write("");
  EXPECT_FALSE(running->value("a"));
  w.write("{");
  EXPECT_EQ(running->integer("a"), 4) << "an editor may empty a file before it writes it";
  w.home.write("config/korvell/settings.json.good", "[]");
  EXPECT_EQ(running->integer("a"), 4);
  EXPECT_NE(w.open()->trouble().value_or("").find("at its default"), std::string::npos);
}

TEST(SettingsFile, linksStayLinks) {
  World w;
  std::filesystem::create_directories(w.folder);
  const std::string target = w.home / "dotfiles.json";
  std::filesystem::create_symlink("../../dotfiles.json", w.path); // to nothing yet
  EXPECT_TRUE(w.open()->set("a", 1));
  EXPECT_TRUE(w.open()->set("a", 2));
  EXPECT_TRUE(std::filesystem::is_symlink(w.path));
  EXPECT_EQ(readFile(target, 100), "{\n  \"a\": 2\n}\n");
  std::filesystem::remove(w.path);
  std::filesystem::create_symlink("settings.json", w.path); // to itself
  EXPECT_FALSE(w.open()->set("a", 3));
}

TEST(SettingsFile, aChangeThatCannotBeStoredSaysSoAndHarmsNothing) {
  World w;
  ASSERT_TRUE(w.open()->set("a", 1));
  const auto before = w.text();
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  const rlimit tiny{10, limit.rlim_max};
  setrlimit(RLIMIT_FSIZE, &tiny); // what follows is written in part
  const bool stored = w.open()->set("b", "a longer text than that");
  setrlimit(RLIMIT_FSIZE, &limit);
  std::signal(SIGXFSZ, handler);
  EXPECT_FALSE(stored);
  EXPECT_EQ(w.text(), before);
  EXPECT_THAT(w.files(), ElementsAre("settings.json", "settings.json.good", "settings.json.lock"));

  std::filesystem::remove(w.path);
  std::filesystem::create_directory(w.path); // no regular file: neither readable nor replaced
  EXPECT_FALSE(w.open()->set("b", 2));
  EXPECT_TRUE(std::filesystem::is_directory(w.path));
}

TEST(SettingsFile, processesDoNotLoseEachOthersChanges) {
  World w;
  constexpr int processes = 3, changes = 6;
  for (int process = 0; process < processes; ++process) {
    if (fork() != 0) continue;
    bool good = true;
    auto defaults = w.open();
    for (int i = 1; i <= changes; ++i) {
      good = good && defaults->update("shared", [](std::optional<Value> stored) -> std::optional<Value> {
        return Value(stored ? stored->asInt().value() + 1 : 1);
      });
      good = good && defaults->set("own." + std::to_string(process), i);
    }
    _exit(good ? 0 : 1);
  }
  for (int process = 0, status = 0; process < processes; ++process) {
    ASSERT_GT(wait(&status), 0);
    EXPECT_EQ(status, 0);
  }
  EXPECT_EQ(w.open()->integer("shared"), processes * changes);
  for (int process = 0; process < processes; ++process)
    EXPECT_EQ(w.open()->integer("own." + std::to_string(process)), changes);
  EXPECT_THAT(w.files(), ElementsAre("settings.json", "settings.json.good", "settings.json.lock"));
}

TEST(FileLock, isHeldByOneAndGivenBackAtTheEnd) {
  const TemporaryFolder folder;
  bool held = true;
  {
    const auto first = FileLock::acquire(folder / "lock", Seconds{0}, &held);
    ASSERT_TRUE(first);
    EXPECT_FALSE(held);
    EXPECT_FALSE(FileLock::acquire(folder / "lock", Seconds{0}, &held));
    EXPECT_TRUE(held);
  }
  EXPECT_TRUE(FileLock::acquire(folder / "lock", Seconds{0}));
  EXPECT_FALSE(FileLock::acquire(folder / "missing/lock", Seconds{0}, &held));
  EXPECT_FALSE(held);
}

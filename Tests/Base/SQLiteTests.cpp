#include "Base/DatabaseFile.h"

#include "Tests/Fakes/TemporaryFolder.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace korvell;
using namespace std::string_literals;

namespace {

constexpr int sqliteReadOnly = 8, sqliteCannotOpen = 14, sqliteMisuse = 21, sqliteNotADatabase = 26;
constexpr int sqliteDone = 101;

struct World {
  TemporaryFolder folder;
  std::string path = folder / "a.db";
  Database db = Database::open(path, Database::Mode::readWriteCreate);
  World() { db.exec("CREATE TABLE t (id INTEGER PRIMARY KEY, value)"); }
};

} // namespace

TEST(SQLite, valuesComeBackAsTheyWere) {
  World w;
  auto insert = w.db.prepare("INSERT INTO t (value) VALUES (?)");
  const auto add = [&](auto value) {
    insert.bind(1, value);
    EXPECT_TRUE(insert.run());
  };
  add(std::int64_t{INT64_MIN});
  add(0.1);
  add(std::string_view("a\0b ä"s));
  add(std::string_view()); // an empty text is a text
  add(std::optional<int>());
  add(5);
  EXPECT_TRUE(insert.run()) << "bindings do not outlive a run";
  EXPECT_EQ(w.db.changes(), 1);

  auto select = w.db.prepare("SELECT value FROM t ORDER BY id");
  const auto next = [&]() -> Statement& {
    EXPECT_TRUE(select.stepRow());
    return select;
  };
  EXPECT_EQ(next().integer(0), INT64_MIN);
  EXPECT_EQ(next().real(0), 0.1);
  EXPECT_EQ(next().text(0), "a\0b ä"s);
  EXPECT_FALSE(next().isNull(0));
  EXPECT_TRUE(next().isNull(0));
  EXPECT_EQ(next().integer(0), 5);
  EXPECT_TRUE(next().isNull(0));
  EXPECT_EQ(select.step(), sqliteDone);
}

TEST(SQLite, errorsAreValues) {
  World w;
  int code = 0;
  EXPECT_FALSE(Database::open(w.folder / "missing/a.db", Database::Mode::readWriteCreate, &code));
  EXPECT_EQ(code, sqliteCannotOpen);
  EXPECT_FALSE(Database::open(w.folder / "b.db", Database::Mode::readWrite, &code));
  EXPECT_EQ(code, sqliteCannotOpen) << "only readWriteCreate creates";
  EXPECT_EQ(Database::open(w.path, Database::Mode::readOnly).exec("DELETE FROM t"), sqliteReadOnly);

  w.folder.write("text.db", std::string(4096, 'x'));
  auto text = Database::open(w.folder / "text.db", Database::Mode::readWrite);
  EXPECT_EQ(text.exec("SELECT * FROM sqlite_master"), sqliteNotADatabase);

  auto broken = w.db.prepare("SELECT nonsense FROM t");
  EXPECT_FALSE(broken || broken.run());
  EXPECT_EQ(broken.step(), sqliteMisuse);
  EXPECT_NE(w.db.lastErrorMessage().find("nonsense"), std::string::npos);

  EXPECT_NE(
      w.db.exec("INSERT INTO t VALUES (1, 1); INSERT INTO t VALUES (1, 2); INSERT INTO t VALUES (2, 3)"), 0);
  auto count = w.db.prepare("SELECT count(*) FROM t");
  ASSERT_TRUE(count.stepRow());
  EXPECT_EQ(count.integer(0), 1) << "the script stopped at the failure";

  Database closed;
  EXPECT_EQ(closed.exec("SELECT 1"), sqliteMisuse);
  EXPECT_FALSE(closed.prepare("SELECT 1"));
}

TEST(DatabaseFile, isForItsUserOnlyHoweverItWasBefore) {
  const TemporaryFolder folder;
  const mode_t before = umask(0);
  for (const bool isThere : {false, true}) {
    SCOPED_TRACE(isThere);
    const auto name = isThere ? "open" : "new";
    const auto path = folder / name + "/a.sqlite";
    if (isThere) {
      std::filesystem::create_directory(folder / name);
      for (const auto& file : {path, path + "-wal", path + "-shm"}) std::ofstream(file) << "";
      std::filesystem::create_directory(folder / name + "/b.sqlite");
    }
    auto database = openPrivateDatabase(path);
    EXPECT_EQ(database.exec("PRAGMA journal_mode=WAL; CREATE TABLE t(a); INSERT INTO t VALUES (1)"), 0);
    EXPECT_EQ(folder.permissions(name), 0700u);
    for (const auto suffix : {"", "-wal", "-shm"})
      EXPECT_EQ(folder.permissions(std::string(name) + "/a.sqlite" + suffix), 0600u) << suffix;
  }
  EXPECT_FALSE(openPrivateDatabase(folder / "open/b.sqlite"));
  EXPECT_EQ(folder.permissions("open/b.sqlite"), 0777u) << "what is no database is left alone";
  umask(before);
}

TEST(SQLite, aStatementMayOutliveItsDatabase) {
  World w;
  ASSERT_EQ(w.db.exec("INSERT INTO t VALUES (1, 7)"), 0);
  auto select = w.db.prepare("SELECT value FROM t");
  w.db.close();
  EXPECT_FALSE(w.db);
  ASSERT_TRUE(select.stepRow());
  EXPECT_EQ(select.integer(0), 7);
}

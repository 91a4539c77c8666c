#include "Core/AIUsage/AIUsageScanner.h"

#include "LogText.h"
#include "Tests/Fakes/FakeClock.h"
#include "Tests/Fakes/FakeLogFiles.h"
#include "Tests/Fakes/FakeTimeZone.h"
#include "Tests/Fakes/TemporaryFolder.h"
#include "Tests/Fakes/TestVFS.h"

#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <sys/stat.h>

namespace korvell {
namespace {

using Outcome = AIUsageScanner::Outcome;

const std::string claudeFolder = "/home/ann/.claude/projects/-home-ann-code-api/";
const std::string codexFolder = "/home/ann/.codex/sessions/2026/03/01/";

class ScannerTests : public testing::Test {
protected:
  ScannerTests() { clock.wall = {1'772'366'400}; } // 2026-03-01 12:00 UTC

  std::unique_ptr<AIUsageScanner> open(int threads = 1) {
    auto options = AIUsageScanner::defaults({.home = "/home/ann", .data = folder / "data"});
    options.threads = threads;
    return std::make_unique<AIUsageScanner>(options, files, zone, clock);
  }
  AIScanStats scan() {
    if (!scanner) scanner = open();
    return scanner->refresh(clock.wall);
  }
  std::string database() const { return folder / "data/ai-usage.sqlite"; }
  FakeLogFiles::File& file(const std::string& path) {
    auto& file = files.files[path];
    file.modified = clock.wall;
    return file;
  }
  void append(const std::string& path, const std::string& line) { file(path).text += line + "\n"; }

  /// The next message of each tool.
  void write(int number) {
    append(claudeFolder + "a.jsonl", ClaudeText{.id = "msg_" + std::to_string(number)}.text());
    append(codexFolder + "b.jsonl", CodexText{.total = 1 + number}.text());
  }
  /// A database that knows the first message of each tool, and as many other files.
  void beginAnew(int others) {
    scanner.reset();
    std::filesystem::remove_all(folder.path() / "data");
    files.files.clear();
    for (int i = 0; i < others; ++i) append(claudeFolder + std::to_string(i) + ".jsonl", "{}");
    write(1);
    scan();
  }

  void execute(const char* sql) {
    EXPECT_EQ(Database::open(database(), Database::Mode::readWrite).exec(sql), SQLITE_OK) << sql;
  }
  /// Days on which one token was used.
  void use(const std::vector<const char*>& days) {
    if (!scanner) scan();
    for (const auto* day : days)
      execute(fmt::format("INSERT INTO usage VALUES('{}', 'Codex', 'm', 'p', 1, 0, 0, 0, 0)", day).c_str());
  }
  /// One text of all rows, each ended by "; ".
  std::string rows(const std::string& columns) {
    auto db = Database::open(database(), Database::Mode::readOnly);
    auto statement = db.prepare("SELECT " + columns);
    EXPECT_TRUE(bool(statement)) << columns;
    std::string text;
    while (statement.stepRow()) text += statement.text(0) + "; ";
    return text;
  }
  std::string usage() {
    return rows("day || ' ' || model || ' ' || project || ' ' || input || ' ' || output FROM usage");
  }
  /// Everything that is stored.
  std::string dump() {
    return rows("path || ' ' || offset || ' ' || last_total || ' ' || model || ' ' || project FROM files "
                "ORDER BY path") +
           rows("day || tool || model || project || ' ' || input || ' ' || output || ' ' || cache_write || ' "
                "' "
                "|| cache_write_1h || ' ' || cache_read FROM usage") +
           rows("hash || ' ' || day FROM seen ORDER BY hash") + rows("key || ' ' || value FROM kv");
  }

  TemporaryFolder folder;
  FakeLogFiles files;
  FakeTimeZone zone;
  FakeClock clock;
  TestVFS disk{clock};
  std::unique_ptr<AIUsageScanner> scanner;
};

const std::string twoOfEach = "2026-03-01 claude-sonnet-4-5 shop 2 4; 2026-03-01 unknown Home 60 14; ";
const std::string oneMessage = "2026-03-01 claude-sonnet-4-5 shop 1 2; ";

// Folders' names need not be UTF-8, and messages of zeros add no row.
TEST_F(ScannerTests, countsBothTools) {
  append(claudeFolder + "a.jsonl", ClaudeText{}.text());
  append(claudeFolder + "a.jsonl", ClaudeText{.id = "msg_2", .cwd = ""}.text());
  append(claudeFolder + "b.jsonl", ClaudeText{.id = "msg_3", .cwd = ""}.text());
  append(codexFolder + "c.jsonl", CodexText{}.text());
  append("/home/ann/.claude/projects/-p-caf\xe9/a\xff.jsonl", ClaudeText{.id = "msg_4", .cwd = ""}.text());
  append(claudeFolder + "d.jsonl",
         ClaudeText{.id = "5", .cwd = "/zero", .usage = R"("input_tokens":0)"}.text());
  std::size_t bytes = 0;
  for (const auto& [path, log] : files.files) bytes += log.text.size();
  const auto stats = scan();
  EXPECT_EQ(scanner->lastOutcome(), Outcome::done);
  EXPECT_EQ(stats.files, 5);
  EXPECT_EQ(stats.bytes, std::int64_t(bytes));
  EXPECT_EQ(stats.records, 6);
  EXPECT_EQ(usage(), "2026-03-01 claude-sonnet-4-5 api 1 2; 2026-03-01 claude-sonnet-4-5 caf\xe9 1 2; "
                     "2026-03-01 claude-sonnet-4-5 shop 2 4; 2026-03-01 unknown Home 30 7; ");
  scanner.reset();
  EXPECT_EQ(scan().files, 0);
}

TEST_F(ScannerTests, aMessageCountsOnceWhereverItIsRepeated) {
  for (const char* name : {"a.jsonl", "b.jsonl"}) append(claudeFolder + name, ClaudeText{}.text());
  append(claudeFolder + "b.jsonl", ClaudeText{.request = "req_2"}.text());
  scan();
  EXPECT_EQ(usage(), "2026-03-01 claude-sonnet-4-5 shop 2 4; ");
  scanner.reset();
  append(claudeFolder + "c.jsonl", ClaudeText{}.text());
  EXPECT_EQ(scan().records, 0) << "known to the database only";
  // A repeated line leaves the file's project alone.
  append(claudeFolder + "c.jsonl", ClaudeText{.id = "msg_9", .cwd = ""}.text());
  scan();
  EXPECT_EQ(usage(), "2026-03-01 claude-sonnet-4-5 api 1 2; 2026-03-01 claude-sonnet-4-5 shop 2 4; ");
}

// A second half of a line, a file cut short, emptied, too old, unreadable, shrinking under the scan.
TEST_F(ScannerTests, filesThatChange) {
  const auto path = claudeFolder + "a.jsonl", line = ClaudeText{}.text() + "\n";
  file(path).text = "{}\n" + line.substr(0, 80);
  EXPECT_EQ(scan().records, 0);
  EXPECT_NE(dump().find("a.jsonl 3 "), std::string::npos);
  file(path).text = "{}\n" + line;
  file(path).modified = clock.wall - Seconds{2'592'001};
  files.opened.clear();
  EXPECT_EQ(scan().files, 0);
  EXPECT_TRUE(files.opened.empty());
  file(path).modified = clock.wall - Seconds{2'592'000};
  files.files[path].readable = false;
  EXPECT_EQ(scan().records, 0);
  files.files[path].readable = true;
  EXPECT_EQ(scan().records, 1);
  file(path).listedSize = 1'000'000;
  EXPECT_EQ(scan().records, 0);
  EXPECT_EQ(usage(), oneMessage);

  const auto codex = codexFolder + "a.jsonl";
  append(codex, CodexText::context("gpt-5.5", "/p/tool"));
  append(codex, CodexText{}.text());
  scan();
  file(codex).text = CodexText{.total = 7}.text() + "\n";
  scan();
  EXPECT_EQ(usage(), oneMessage + "2026-03-01 gpt-5.5 tool 30 7; 2026-03-01 unknown tool 30 7; ");
  file(codex).text.clear();
  scan();
  scanner.reset();
  append(codex, std::string(2'000, ' '));
  append(codex, CodexText{.total = 7}.text());
  EXPECT_EQ(scan().records, 1) << "grown beyond its old length after it was empty";
}

TEST_F(ScannerTests, theDayIsThatOfTheZoneInWhichTheLineIsRead) {
  append(claudeFolder + "a.jsonl", ClaudeText{.timestamp = "2026-03-01T00:30:00Z"}.text());
  scan();
  zone.move(-5 * 3'600);
  append(claudeFolder + "a.jsonl", ClaudeText{.id = "msg_2", .timestamp = "2026-03-01T00:30:00Z"}.text());
  scan();
  EXPECT_EQ(usage(), "2026-02-28 claude-sonnet-4-5 shop 1 2; " + oneMessage);
  EXPECT_EQ(scanner->summary(2, clock.wall).rows.at(0).day, startOfDay(zone, *parseDay("2026-02-28")));
}

TEST_F(ScannerTests, theNewestLimitsStay) {
  for (const auto& [name, time, used] :
       {std::tuple{"a.jsonl", "2026-03-01T11:50:00Z", 40}, std::tuple{"b.jsonl", "2026-03-01T11:40:00Z", 20}})
    append(codexFolder + name,
           CodexText{.timestamp = time,
                     .limits =
                         fmt::format(R"({{"primary":{{"used_percent":{},"resets_at":1772380000}}}})", used)}
               .text());
  scan();
  EXPECT_EQ(rows("key || ' ' || value FROM kv"),
            R"(codex_limits {"date":794058600.0,"primary":{"usedPercent":40.0,"windowMinutes":0,)"
            R"("resetsAt":794072800.0}}; )");
  scanner.reset();
  scan();
  EXPECT_EQ(scanner->latestLimits()->primary->usedPercent, 40) << "read back";
}

// By the clock, but never more than forty days before the newest day that usage vouches for.
TEST_F(ScannerTests, whatIsOlderThanFortyDaysGoesAtTheStart) {
  const auto scanOn = [&](const std::string& day, const std::string& id = "") {
    clock.wall = *parseRFC3339(day + "T12:00:00Z");
    scanner = open();
    if (!id.empty())
      append(claudeFolder + "a.jsonl",
             ClaudeText{.id = "msg_" + id, .timestamp = rfc3339(clock.wall)}.text());
    scan();
    return rows("substr(day, 6) FROM usage") + rows("count(*) FROM seen");
  };
  EXPECT_EQ(scanOn("2026-03-01", "1"), "03-01; 1; ");
  EXPECT_EQ(scanOn("2026-03-02", "2"), "03-01; 03-02; 2; ");
  EXPECT_EQ(scanOn("2026-05-01"), "03-01; 03-02; 2; ") << "nothing newer: perhaps the clock is wrong";
  EXPECT_EQ(scanOn("2026-06-01", "3"), "03-01; 03-02; 06-01; 3; ");
  EXPECT_EQ(scanOn("2026-06-02", "4"), "03-01; 03-02; 06-01; 06-02; 4; ") << "used with a wrong clock";
  const std::string ahead = "06-01; 06-02; ";
  EXPECT_EQ(scanOn("2026-03-02"), "03-01; 03-02; " + ahead + "4; ");
  std::string days = "03-01; 03-02; ";
  for (int day = 9; day < 15; ++day) {
    const auto text = fmt::format("04-{:02}", day), id = std::to_string(day);
    days += text + "; ";
    EXPECT_EQ(scanOn("2026-" + text, id), fmt::format("{}{}{}; ", days, ahead, day - 4)) << "after a pause";
  }
  EXPECT_EQ(scanOn("2026-04-14"), days + ahead + "10; ") << "six days prove nothing";
  EXPECT_EQ(scanOn("2026-04-15", "15"), days + "04-15; " + ahead + "11; ");
  use({"2026-03-05", "2026-03-06", "2026-03-xx"});
  EXPECT_EQ(scanOn("2026-04-15"), "03-06; 03-xx; " + days.substr(14) + "04-15; " + ahead + "9; ");
  execute("DELETE FROM usage");
  use({"2026-03-03", "2026-03-10", "2026-03-17", "2026-03-24", "2026-03-31", "2026-04-07", "2026-04-15"});
  EXPECT_EQ(scanOn("2026-04-16").substr(0, 7), "03-03; ") << "eight days without usage";
  use({"2026-04-08"});
  EXPECT_EQ(scanOn("2026-04-16").substr(0, 7), "03-10; ") << "a week needs no proof";
}

// Its day is the newest of usage then, so that copies of the message never count.
TEST_F(ScannerTests, keysReadWhileTheClockIsBehindStay) {
  use({"2026-01-16", "2026-01-23", "2026-01-30", "2026-02-06", "2026-02-13", "2026-02-20", "2026-02-27",
       "2099-01-01"});
  const auto now = clock.wall;
  clock.wall = now - Seconds{90 * 86'400};
  scanner = open();
  append(claudeFolder + "a.jsonl", ClaudeText{.timestamp = rfc3339(clock.wall)}.text());
  EXPECT_EQ(scan().records, 1);
  clock.wall = now;
  scanner = open();
  append(claudeFolder + "b.jsonl", ClaudeText{}.text());
  EXPECT_EQ(scan().records, 0);
  EXPECT_EQ(rows("day FROM seen"), "2026-02-27; ");
}

TEST_F(ScannerTests, whatLiesAheadWaitsUntilItsTimeHasCome) {
  const auto limits = [&](const char* time, int used) {
    return CodexText{.timestamp = time,
                     .total = used,
                     .limits =
                         fmt::format(R"({{"primary":{{"used_percent":{},"resets_at":1772380000}}}})", used)}
        .text();
  };
  append(codexFolder + "a.jsonl", limits("2026-04-30T12:00:00Z", 90));
  append(codexFolder + "a.jsonl", limits("2026-03-02T12:00:00Z", 50));
  append(codexFolder + "b.jsonl", limits("2026-03-01T11:00:00Z", 20));
  scan();
  const auto shown = [&](double days) {
    const auto summary = scanner->summary(30, clock.wall + Seconds{days * 86'400});
    return fmt::format("{} days, {}%", summary.rows.size(),
                       summary.codexLimits ? summary.codexLimits->primary->usedPercent : -1);
  };
  EXPECT_EQ(shown(0), "1 days, 20%");
  append(codexFolder + "b.jsonl", limits("2026-03-01T11:30:00Z", 21));
  scan();
  EXPECT_EQ(shown(0), "1 days, 21%") << "nor does it keep newer ones out";
  scanner = open(); // also by another process
  EXPECT_EQ(shown(0.49), "1 days, 21%");
  EXPECT_EQ(shown(0.5), "2 days, 21%") << "a day begins at midnight";
  EXPECT_EQ(shown(1), "2 days, 50%");
  // A reading that was stored while the clock was wrong.
  clock.wall = clock.wall + Seconds{70 * 86'400};
  append(codexFolder + "a.jsonl", limits("2026-05-05T12:00:00Z", 70));
  scan();
  EXPECT_EQ(shown(0), "2 days, 70%");
  clock.wall = clock.wall - Seconds{70 * 86'400};
  EXPECT_EQ(shown(0), "1 days, -1%");
  append(codexFolder + "b.jsonl", limits("2026-03-01T11:45:00Z", 22));
  scan();
  EXPECT_EQ(shown(0), "1 days, 22%");
}

// Each column is read by its name, and each figure is another.
TEST_F(ScannerTests, everyColumnHoldsWhatItsNameSays) {
  append(claudeFolder + "a.jsonl",
         ClaudeText{.usage =
                        R"("input_tokens":1,"output_tokens":2,"cache_creation_input_tokens":30,)"
                        R"("cache_read_input_tokens":5,"cache_creation":{"ephemeral_1h_input_tokens":4})"}
             .text());
  append(codexFolder + "b.jsonl", CodexText::context("gpt-5.5", "/p/tool"));
  append(codexFolder + "b.jsonl", CodexText{.total = 77}.text());
  scan();
  EXPECT_EQ(
      rows("'day ' || day || ', tool ' || tool || ', model ' || model || ', project ' || project || "
           "', ' || input || ' in, ' || output || ' out, ' || cache_write || ' written, ' || "
           "cache_write_1h || ' for an hour, ' || cache_read || ' read' FROM usage"),
      "day 2026-03-01, tool Claude Code, model claude-sonnet-4-5, project shop, 1 in, 2 out, 30 written, 4 "
      "for an hour, 5 read; "
      "day 2026-03-01, tool Codex, model gpt-5.5, project tool, 30 in, 7 out, 0 written, 0 for an hour, 20 "
      "read; ");
  EXPECT_EQ(rows("'last ' || last_total || ', model ' || model || ', project ' || project || ', of ' || path "
                 "FROM files WHERE offset > last_total AND path LIKE '%b.jsonl'"),
            "last 77, model gpt-5.5, project tool, of " + codexFolder + "b.jsonl; ");
  scanner = open();
  const auto summary = scanner->summary(1, clock.wall);
  ASSERT_EQ(summary.rows.size(), 2u);
  EXPECT_EQ(summary.rows[0], (AIUsageRow{startOfDay(zone, *parseDay("2026-03-01")),
                                         AITool::claude,
                                         "claude-sonnet-4-5",
                                         "shop",
                                         {1, 2, 30, 5},
                                         listCost("claude-sonnet-4-5", {1, 2, 30, 4, 5})}));
  append(codexFolder + "b.jsonl", CodexText{.total = 77}.text());
  append(codexFolder + "b.jsonl", CodexText{.total = 78}.text());
  EXPECT_EQ(scan().records, 1) << "the state is read back";
  EXPECT_EQ(
      rows("project || ' ' || input || ' ' || output || ' ' || cache_read FROM usage WHERE tool = 'Codex'"),
      "tool 60 14 40; ");
}

TEST_F(ScannerTests, anotherScannersWorkIsTakenOver) {
  const auto other = open();
  scanner = open();
  append(claudeFolder + "a.jsonl", ClaudeText{}.text());
  append(codexFolder + "b.jsonl", CodexText{}.text());
  EXPECT_EQ(other->refresh(clock.wall).records, 2);
  EXPECT_EQ(scan().files, 0);
  append(codexFolder + "b.jsonl", CodexText{}.text());
  EXPECT_EQ(scan().records, 0) << "the running total came from the other";
  EXPECT_EQ(usage(), oneMessage + "2026-03-01 unknown Home 30 7; ");
}

// What disks, other processes and people do to the database: the outcome tells it, and once it is over the
// totals are those of an undisturbed scan.
TEST_F(ScannerTests, noFaultOfTheDatabaseLosesOrRepeatsAnything) {
  const auto overwrite = [&](std::size_t from, std::size_t to) {
    std::fstream file(database(), std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(std::streamoff(from));
    file << std::string(to - from, '\x5a');
  };
  std::optional<Database> other;
  struct Row {
    const char* what;
    bool isOpen; ///< while it happens
    Outcome outcome;
    bool isPutAside;
    std::function<void()> fault, mend = [] {};
  };
  const Row rows[] = {
      {"text in its place", false, Outcome::done, true, [&] { overwrite(0, 5'000); }},
      {"cut short", false, Outcome::done, true, [&] { std::filesystem::resize_file(database(), 5'000); }},
      {"pages overwritten", false, Outcome::done, true, [&] { overwrite(4'096, 9 * 4'096); }},
      {"pages overwritten while it is open", false, Outcome::done, true,
       [&] {
         scanner = open();
         overwrite(4'096, 9 * 4'096);
       }},
      {"deleted", true, Outcome::done, false, [&] { std::filesystem::remove_all(folder.path() / "data"); }},
      {"a full disk", true, Outcome::full, false, [&] { disk.writeError = SQLITE_FULL; }},
      {"a full disk at the start", false, Outcome::full, false, [&] { disk.writeError = SQLITE_FULL; }},
      {"a broken disk", true, Outcome::failed, false, [&] { disk.writeError = SQLITE_IOERR_WRITE; }},
      {"no reading", false, Outcome::failed, false, [&] { disk.readError = SQLITE_IOERR_READ; }},
      {"no way to open it", false, Outcome::failed, false, [&] { disk.openError = SQLITE_CANTOPEN; }},
      {"another process's lock", true, Outcome::locked, false,
       [&] {
         other = Database::open(database(), Database::Mode::readWrite);
         EXPECT_EQ(other->exec("BEGIN IMMEDIATE"), SQLITE_OK);
       },
       [&] { other.reset(); }},
      {"a newer version's", false, Outcome::foreign, false, [&] { execute("PRAGMA user_version = 1"); },
       [&] { execute("PRAGMA user_version = 0"); }},
      {"a newer version's columns", false, Outcome::foreign, false,
       [&] { execute("ALTER TABLE files ADD COLUMN inode INTEGER"); },
       [&] { execute("ALTER TABLE files DROP COLUMN inode"); }},
      {"a row that is refused", true, Outcome::failed, false,
       [&] { execute("CREATE TRIGGER t BEFORE INSERT ON usage BEGIN SELECT RAISE(ABORT, 'no'); END"); },
       [&] { execute("DROP TRIGGER t"); }},
      {"a transaction that ends by itself", true, Outcome::failed, false,
       [&] { execute("CREATE TRIGGER t BEFORE INSERT ON usage BEGIN SELECT RAISE(ROLLBACK, 'full'); END"); },
       [&] { execute("DROP TRIGGER t"); }}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    beginAnew(300);
    if (!row.isOpen) scanner.reset();
    row.fault();
    write(2);
    scan();
    EXPECT_EQ(scanner->lastOutcome(), row.outcome);
    EXPECT_EQ(scanner->putAside().has_value(), row.isPutAside);
    if (row.outcome != Outcome::failed) {
      EXPECT_EQ(scanner->summary(30, clock.wall).rows.size(), 2u);
    }
    disk.writeError = disk.readError = disk.openError = SQLITE_OK;
    row.mend();
    scan();
    EXPECT_EQ(scanner->lastOutcome(), Outcome::done);
    EXPECT_EQ(usage(), twoOfEach);
  }
}

// The disk may begin to fail at any read or write of a scan, from the opening of the database on.
TEST_F(ScannerTests, theDiskMayFailAtAnyMoment) {
  for (const auto& [error, code] :
       {std::pair{&TestVFS::readError, SQLITE_IOERR_READ}, std::pair{&TestVFS::writeError, SQLITE_FULL}})
    for (int calls = 0;; ++calls) {
      SCOPED_TRACE(fmt::format("{} after {} calls", code, calls));
      beginAnew(9);
      scanner.reset();
      write(2);
      disk.calls = calls;
      disk.*error = code;
      scan();
      disk.*error = SQLITE_OK;
      const bool wentWell = disk.calls >= 0;
      scan();
      EXPECT_EQ(scanner->lastOutcome(), Outcome::done);
      ASSERT_EQ(usage(), twoOfEach);
      if (wentWell) break;
      ASSERT_LT(calls, 500);
    }
}

TEST_F(ScannerTests, sumsStopAtTheEndOf64Bits) {
  append(claudeFolder + "a.jsonl", ClaudeText{.usage = R"("input_tokens":9223372036854775807)"}.text());
  append(claudeFolder + "a.jsonl", ClaudeText{.id = "msg_2"}.text());
  EXPECT_EQ(scan().records, 1) << "so many are no count";
  execute("UPDATE usage SET input = 9223372036854775807, output = 9223372036854775805");
  append(claudeFolder + "a.jsonl", ClaudeText{.id = "msg_3"}.text());
  append(claudeFolder + "a.jsonl", ClaudeText{.id = "msg_4"}.text());
  scan();
  EXPECT_EQ(scanner->lastOutcome(), Outcome::done);
  EXPECT_EQ(usage(), "2026-03-01 claude-sonnet-4-5 shop 9223372036854775807 9223372036854775807; ");
  EXPECT_EQ(scanner->summary(1, clock.wall).tokens({0}).total(), INT64_MAX);
}

TEST_F(ScannerTests, severalThreadsAndManyScansEqualOneOfEach) {
  std::mt19937 random(3);
  FakeLogFiles all;
  for (int f = 0; f < 24; ++f) {
    const bool claude = f % 3 != 0;
    auto& log = all.files[(claude ? claudeFolder : codexFolder) + std::to_string(f) + ".jsonl"];
    log.modified = clock.wall;
    for (int i = 0; i < 60; ++i) {
      const auto id = std::to_string(random() % 500);
      const auto time = fmt::format("2026-03-0{}T{:02}:00:00Z", 1 + random() % 4, random() % 24);
      const auto cwd = random() % 3 ? "/home/ann/p" + std::to_string(random() % 4) : "";
      if (random() % 4 == 0) log.text += std::string(random() % 30'000, 'x') + "\n";
      log.text += (!claude ? random() % 5 ? CodexText{.timestamp = time, .total = int(random() % 9)}.text()
                                          : CodexText::context("gpt-" + id, cwd)
                           : ClaudeText{.id = "msg_" + id, .timestamp = time, .cwd = cwd}.text()) +
                  (random() % 20 ? "\n" : "}\n");
    }
  }
  // Large enough for helpers to be worth it, with more events than one batch takes.
  auto& large = all.files[claudeFolder + "1a.jsonl"];
  large = {std::string(9 << 20, ' ') + "\n", clock.wall};
  for (int i = 0; i < 12'000; ++i)
    large.text += ClaudeText{.id = "msg_" + std::to_string(i * 7 % 9'000)}.text() + "\n";
  std::string expected;
  for (const int threads : {1, 2, 4}) {
    std::filesystem::remove_all(folder.path() / "data");
    files.files = all.files;
    open(threads)->refresh(clock.wall);
    if (expected.empty()) expected = dump();
    EXPECT_EQ(dump(), expected) << threads << " threads";
    EXPECT_GT(expected.size(), 2'000u);
  }
  // Growing file by file, in the order in which one scan reads them.
  std::filesystem::remove_all(folder.path() / "data");
  files.files.clear();
  for (const auto& [path, log] : all.files)
    for (std::size_t end = random() % log.text.size();; end = log.text.size()) {
      files.files[path] = {log.text.substr(0, end), clock.wall};
      files.readLimit = 1 + random() % 100'000;
      scan();
      if (end == log.text.size()) break;
    }
  EXPECT_EQ(dump(), expected);
}

} // namespace
} // namespace korvell

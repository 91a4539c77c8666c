// A keeper that is killed, over and over, while it records under a clock that runs as fast as it can.
// Whatever the moment, what it had stored is there, whole and once.

#include "HistoryFixture.h"

#include <csignal>
#include <fmt/format.h>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

namespace korvell {
namespace {

constexpr int kills = 200;
constexpr int appsAMinute = int(keptAppsPerValue);

class HistoryKillTests : public HistoryFixture {
protected:
  /// A process that records a sample every ten seconds of its own time, for ever, and tells on the pipe the
  /// time of each sample once it was taken in.
  [[noreturn]] void keepRecording(Date from, int pipe) {
    store = open();
    for (Date now = from;; now = now + Seconds{10}) {
      auto snapshot = SystemSnapshot::empty(now);
      snapshot.cpu.total = 50;
      for (int i = 0; i < appsAMinute; ++i)
        snapshot.apps.push_back({.id = fmt::format("app{}", i),
                                 .name = "App",
                                 .bundlePath = std::string(200, 'p'),
                                 .processes = {{.pid = i, .cpu = 1, .memory = 1}}});
      clock.setNow(now);
      store->record(snapshot, 90);
      scheduler.run();
      if (write(pipe, &now, sizeof now) != sizeof now) _exit(1);
    }
  }

  /// Starts such a process, kills it after some samples, and hands back the last one that it told of.
  Date recordAndKill(Date from, int samples) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) keepRecording(from, ends[1]);
    close(ends[1]);
    Date last = from, told;
    while (samples-- > 0 && read(ends[0], &told, sizeof told) == sizeof told) last = told;
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    while (read(ends[0], &told, sizeof told) == sizeof told) last = told; // up to its last breath
    close(ends[0]);
    return last;
  }
};

TEST_F(HistoryKillTests, whatWasStoredIsThereWholeAndOnce) {
  store.reset(); // nothing is shared with the children
  std::mt19937 random(2026);
  Date from = start;
  std::int64_t confirmed = 0, minutes = 0;
  for (int i = 0; i < kills; ++i) {
    const Date last = recordAndKill(from, 1 + int(random() % 60));
    ASSERT_EQ(row("PRAGMA integrity_check"), "ok");
    // Every minute before that of the last sample is there; the one in progress may be missing.
    for (auto ts = minuteOf(from); ts < minuteOf(last); ts += 60, ++confirmed)
      ASSERT_EQ(row(fmt::format("SELECT COUNT(*) FROM apps WHERE ts = {}", ts)), std::to_string(appsAMinute))
          << "minute " << ts << " after kill " << i;
    minutes = std::stol(row("SELECT COUNT(*) FROM system"));
    // Now and then the next keeper starts within the minute in which the last one died.
    from = last + Seconds{double(random() % 50)};
  }
  EXPECT_EQ(row(fmt::format("SELECT COUNT(*) FROM (SELECT ts FROM apps GROUP BY ts HAVING COUNT(*) != {})",
                            appsAMinute)),
            "0");
  EXPECT_EQ(row("SELECT COUNT(*) FROM (SELECT ts, app FROM apps GROUP BY ts, app HAVING COUNT(*) > 1)"), "0");
  EXPECT_EQ(row("SELECT COUNT(*) FROM system WHERE ts NOT IN (SELECT ts FROM apps)"), "0");
  EXPECT_EQ(row("SELECT COUNT(*) FROM apps WHERE ts NOT IN (SELECT ts FROM system)"), "0");
  EXPECT_GE(minutes, confirmed);
  EXPECT_GT(confirmed, kills); // the children did get somewhere
  EXPECT_TRUE(filesLike("damaged").empty());
}

} // namespace
} // namespace korvell

#include "Helper/Linux/UsageReader.h"

#include "Tests/Fakes/TemporaryFolder.h"

#include <fstream>
#include <gtest/gtest.h>

using namespace korvell;

namespace {

/// A process tree built from proc(5).
struct UsageReaderTests : testing::Test {
  TemporaryFolder proc;
  UsageReader reader{proc.path().string()};

  void write(const std::string& name, const std::string& text) const {
    std::filesystem::create_directories(std::filesystem::path(proc / name).parent_path());
    std::ofstream(proc / name) << text;
  }
  void process(int pid, std::uint64_t start, int childFaults, std::uint64_t read,
               std::uint64_t written) const {
    const auto id = std::to_string(pid);
    // Fields 11 and 22 are the minor faults of waited-for children and the start.
    write(id + "/stat", id + " (a (b) c) S 1 1 1 0 -1 4194304 5 " + std::to_string(childFaults) +
                            " 0 0 1 1 0 0 20 0 1 0 " + std::to_string(start) +
                            " 1000 10 18446744073709551615" +
                            " 1 1 1 1 1 0 0 0 0 0 0 0 17 0 0 0 0 0 0 0 0 0 0 0 0 0 0\n");
    write(id + "/io", io(read, written));
  }
  static std::string io(std::uint64_t read, std::uint64_t written) {
    return "rchar: 1\nwchar: 2\nsyscr: 3\nsyscw: 4\nread_bytes: " + std::to_string(read) +
           "\nwrite_bytes: " + std::to_string(written) + "\ncancelled_write_bytes: 0\n";
  }
};

} // namespace

TEST_F(UsageReaderTests, tellsStorageBytesAndTheStartAndNothingElse) {
  process(42, 777, 0, 1000, 2000);
  EXPECT_EQ(reader.read(42), (RusageSample{.diskRead = 1000, .diskWritten = 2000, .start = 777}));
  process(42, 777, 0, 1500, 2000);
  EXPECT_EQ(reader.read(42)->diskRead, 1500u);
  EXPECT_FALSE(reader.read(43));
  write("44/stat", "44 (cut");
  write("44/io", io(1, 1));
  EXPECT_FALSE(reader.read(44));
  process(45, 1, 0, 1, 1);
  std::filesystem::remove(proc / "45/io");
  EXPECT_FALSE(reader.read(45));
}

TEST_F(UsageReaderTests, whatEndedChildrenPassOnIsNotTold) {
  process(42, 777, 0, 1000, 0);
  ASSERT_TRUE(reader.read(42));
  process(42, 777, 9, 1'001'100, 0); // a child that had read a million bytes was waited for
  write("42/task/42/io", io(1100, 0));
  EXPECT_EQ(reader.read(42)->diskRead, 1100u);
}

TEST_F(UsageReaderTests, aReusedIdBeginsAnew) {
  process(42, 777, 0, 1'000'000, 0);
  ASSERT_TRUE(reader.read(42));
  process(42, 888, 0, 5, 0);
  const auto sample = reader.read(42);
  EXPECT_EQ(sample->start, 888u);
  EXPECT_EQ(sample->diskRead, 5u);
}

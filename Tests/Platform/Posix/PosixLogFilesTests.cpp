#include "Platform/Posix/PosixLogFiles.h"

#include "Tests/Fakes/TemporaryFolder.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace korvell {
namespace {

TEST(PosixLogFilesTests, findsRegularFilesOfTheExtensionInOrder) {
  TemporaryFolder folder;
  namespace fs = std::filesystem;
  for (const char* path : {"root/b/.hidden", "root/a.d/x", "root/c"}) fs::create_directories(folder / path);
  for (const char* path :
       {"root/z.jsonl", "root/b/.hidden/x.jsonl", "root/a.d/2.jsonl", "root/a.d/10.jsonl", "root/.jsonl",
        "root/.h.jsonl", "root/no.json", "root/no.JSONL", "root/jsonl", "root/caf\xe9.jsonl"})
    std::ofstream(folder / path) << "12345";
  fs::create_directory(folder / "root/dir.jsonl");
  fs::create_directory_symlink(folder / "root", folder / "root/b/loop");
  fs::create_symlink(folder / "root/z.jsonl", folder / "root/link.jsonl");
  ASSERT_EQ(mkfifo((folder / "root/pipe.jsonl").c_str(), 0600), 0);
  fs::create_directory_symlink(folder / "root", folder / "way");

  const auto root = folder / "way"; // the folder itself may be a link
  std::vector<std::string> names;
  for (const auto& file : PosixLogFiles().list(root, "jsonl")) {
    names.push_back(file.path.substr(root.size()));
    EXPECT_EQ(file.size, 5);
    EXPECT_GT(file.modified.sinceEpoch, 1e9);
  }
  const std::vector<std::string> expected = {"/.h.jsonl",     "/caf\xe9.jsonl", "/z.jsonl",
                                             "/a.d/10.jsonl", "/a.d/2.jsonl",   "/b/.hidden/x.jsonl"};
  EXPECT_EQ(names, expected);
  EXPECT_TRUE(PosixLogFiles().list(folder / "absent", "jsonl").empty());
}

TEST(PosixLogFilesTests, opensNothingButRegularFiles) {
  TemporaryFolder folder;
  std::ofstream(folder / "a") << "hello";
  std::filesystem::create_symlink(folder / "a", folder / "link");
  ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
  PosixLogFiles files;
  for (const char* name : {"link", "pipe", "absent", "."}) EXPECT_FALSE(files.open(folder / name)) << name;
  char buffer[8];
  const auto log = files.open(folder / "a");
  ASSERT_TRUE(log);
  EXPECT_EQ(log->read(buffer, sizeof buffer, 3), 2);
  EXPECT_EQ(std::string(buffer, 2), "lo");
  EXPECT_EQ(log->read(buffer, sizeof buffer, 5), 0);
}

} // namespace
} // namespace korvell

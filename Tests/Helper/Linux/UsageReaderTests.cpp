#include "Helper/Linux/UsageReader.h"

#include "Tests/Fakes/ProcTree.h"

#include <gtest/gtest.h>

using namespace korvell;

namespace {

struct UsageReaderTests : testing::Test {
  ProcTree tree;
  UsageReader reader{tree.folder.path().string()};
};

} // namespace

TEST_F(UsageReaderTests, tellsStorageBytesAndTheStartAndNothingElse) {
  tree.put(42, {.comm = "a (b) c", .start = 777, .anonymousPages = 9, .io = {1000, 2000}});
  EXPECT_EQ(reader.read(42), (RusageSample{.diskRead = 1000, .diskWritten = 2000, .start = 777}));
  tree.put(42, {.start = 777, .io = {1500, 2000}});
  EXPECT_EQ(reader.read(42)->diskRead, 1500u);
  tree.put(42, {.start = 888, .io = {5, 0}});
  EXPECT_EQ(reader.read(42), (RusageSample{.diskRead = 5, .start = 888})) << "a reused id begins anew";
}

TEST_F(UsageReaderTests, whatCanNotBeReadIsNotTold) {
  tree.write("44/stat", "44 (cut");
  tree.writeIO("44/io", {1, 1});
  tree.put(45, {});
  std::filesystem::remove(tree.folder / "45/io");
  for (const ProcessID pid : {43, 44, 45}) EXPECT_FALSE(reader.read(pid)) << pid;
}

TEST_F(UsageReaderTests, whatEndedChildrenPassOnIsNotTold) {
  tree.put(42, {.io = {1000, 0}});
  ASSERT_TRUE(reader.read(42));
  tree.put(42, {.childFaults = 9, .io = {1'001'100, 0}}); // a child that had read a million was waited for
  tree.writeIO("42/task/42/io", {1100, 0});
  EXPECT_EQ(reader.read(42)->diskRead, 1100u);
}

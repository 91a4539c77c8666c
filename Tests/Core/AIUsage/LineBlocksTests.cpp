#include "Core/AIUsage/LineBlocks.h"

#include "Tests/Fakes/FakeLogFiles.h"

#include <gtest/gtest.h>

namespace korvell {
namespace {

TEST(LineBlocksTests, linesAreCutWhateverTheReads) {
  constexpr std::size_t longest = LineBlocks::blockSize * 2;
  FakeLogFiles files;
  auto& text = files.files["/a"].text;
  std::string expected; // without the line that is too long
  for (const std::size_t length :
       {std::size_t(0), std::size_t(5), LineBlocks::blockSize, longest, std::size_t(9), longest + 1,
        std::size_t(0), LineBlocks::blockSize - 1, longest * 3, std::size_t(7)}) {
    const std::string line = std::string(length, char('a' + length % 26)) + "\n";
    text += line;
    if (length <= longest) expected += line;
  }
  const auto whole = std::int64_t(text.size());
  text += "begun";
  for (const std::size_t limit : {SIZE_MAX, std::size_t(100'001), LineBlocks::blockSize}) {
    files.readLimit = limit;
    const auto log = files.open("/a");
    BlockBuffer buffer;
    LineBlocks blocks(*log, buffer, 0, longest);
    std::string got;
    std::string_view lines;
    while (blocks.next(lines)) got += lines;
    EXPECT_TRUE(got == expected) << got.size() << " " << expected.size();
    EXPECT_EQ(blocks.offset(), whole);
    EXPECT_LE(buffer.capacity(), longest + 100);
  }
  files.files["/b"].text = "ab\n" + std::string(longest * 2, 'x');
  const auto log = files.open("/b");
  BlockBuffer buffer;
  LineBlocks blocks(*log, buffer, 0, longest);
  std::string_view lines;
  EXPECT_TRUE(blocks.next(lines));
  EXPECT_FALSE(blocks.next(lines));
  EXPECT_EQ(blocks.offset(), 3) << "a line that is too long and not ended yet stays";
}

} // namespace
} // namespace korvell

#include "Platform/Linux/GraphicsCards.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class NvidiaTests : public testing::Test {
protected:
  NvidiaTests() {
    tree.write("proc/driver/nvidia/gpus/0000:01:00.0/information", "Model: \t\t NVIDIA Something\nIRQ: 1\n");
    tree.write(device + "/power/control", "auto\n");
    tree.write(device + "/power/runtime_status", "active\n");
  }

  std::vector<GPUCounters> read(const std::string& status) {
    tree.write(device + "/power/runtime_status", status + "\n");
    return cards.counters(reader);
  }
  int counter(const char* name) {
    void* library = ::dlopen(KORVELL_FAKE_NVIDIA, RTLD_NOW | RTLD_NOLOAD);
    if (!library) return -1; // nobody has opened it
    const int value = *static_cast<int*>(::dlsym(library, name));
    ::dlclose(library);
    return value;
  }

  const std::string device = "sys/bus/pci/devices/0000:01:00.0";
  TemporaryFolder tree;
  FileReader reader;
  GraphicsCards cards{tree / "proc", tree / "sys", {}, KORVELL_FAKE_NVIDIA};
};

TEST_F(NvidiaTests, aSleepingCardIsLeftAsleep) {
  cards.find(reader);
  EXPECT_EQ(cards.name(reader), "NVIDIA Something");
  EXPECT_THAT(read("suspended"), ElementsAre(GPUCounters{0.0, 0}));
  EXPECT_EQ(counter("startedTimes"), -1);

  EXPECT_THAT(read("active"), ElementsAre(GPUCounters{42.0, 3ull << 30}));
  EXPECT_THAT(read("active"), ElementsAre(GPUCounters{42.0, 3ull << 30}));
  EXPECT_EQ(counter("startedTimes"), 1);
  EXPECT_EQ(counter("runningNow"), 1);

  read("suspended");
  EXPECT_EQ(counter("runningNow"), 0);
  read("active");
  EXPECT_EQ(counter("startedTimes"), 2);
}

TEST_F(NvidiaTests, whatTheLibraryDoesNotKnowIsLeftOutAndWithoutItThereIsNoFigure) {
  tree.write("proc/driver/nvidia/gpus/0000:02:00.0/information", "Model: Other\n");
  cards.find(reader);
  EXPECT_THAT(read("active"), ElementsAre(GPUCounters{42.0, 3ull << 30}));
  GraphicsCards without{tree / "proc", tree / "sys", {}, tree / "libnone.so.1"};
  without.find(reader);
  EXPECT_THAT(without.counters(reader), IsEmpty());
}

} // namespace
} // namespace korvell

#include "Platform/Linux/DRMClients.h"
#include "Platform/Linux/GraphicsCards.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::Pair;

const std::string card = "0000:00:02.0";

std::string text(int client, std::uint64_t render, std::uint64_t video, const std::string& device = card) {
  return "pos:\t0\nflags:\t02100002\nmnt_id:\t26\nino:\t500\ndrm-driver:\ti915\ndrm-client-id:\t" +
         std::to_string(client) + "\ndrm-pdev:\t" + device +
         "\ndrm-total-system0:\t99 MiB\ndrm-resident-system0:\t64 MiB\n" +
         "drm-resident-stolen-system0:\t1024 KiB\ndrm-resident-local0:\t5\ndrm-engine-render:\t" +
         std::to_string(render) + " ns\ndrm-engine-video:\t" + std::to_string(video) +
         " ns\ndrm-engine-capacity-video:\t2\n";
}

TEST(DRMClientTests, aClientsText) {
  const auto client = parseDRMClient(text(17, 9288864723, 4000));
  ASSERT_TRUE(client);
  EXPECT_EQ(client->id, 17u);
  EXPECT_EQ(client->device, card);
  EXPECT_THAT(client->engineTime, ElementsAre(Pair("render", 9288864723), Pair("video", 2000)));
  EXPECT_EQ(client->memory, (65u << 20) + 5);
  for (const auto* other :
       {"", "pos:\t0\nflags:\t02\n", "drm-driver:\txe\ndrm-client-id:\t1\ndrm-pdev:\tx\ndrm-cycles-rcs:\t5\n",
        "drm-client-id:\t1\ndrm-engine-render:\t5 ns\n"})
    EXPECT_FALSE(parseDRMClient(other)) << other;
}

class DRMClientsTests : public testing::Test {
protected:
  void open(const std::string& descriptor, const std::string& fdinfo,
            const std::string& target = "/dev/dri/renderD128") {
    const auto [process, number] =
        std::pair(descriptor.substr(0, descriptor.find('/')), descriptor.substr(descriptor.find('/') + 1));
    proc.write(process + "/fdinfo/" + number, fdinfo);
    std::filesystem::create_directories(proc / (process + "/fd"));
    std::error_code there;
    std::filesystem::create_symlink(target, proc / (process + "/fd/" + number), there);
  }
  void close(const std::string& path) { std::filesystem::remove(proc / path); }
  std::uint64_t render() { return clients.read(reader).at(card).engineTime.at("render"); }

  TemporaryFolder proc;
  FileReader reader;
  DRMClients clients{proc.path().string()};
};

TEST_F(DRMClientsTests, timesAddUpAndStayWhenAProgramEnds) {
  open("10/4", text(1, 1000, 0));
  open("11/9", text(1, 1000, 0)); // the same client in a child
  open("12/4", text(2, 500, 0));
  open("12/5", text(3, 77777, 0), "/dev/null");
  clients.find();
  EXPECT_EQ(render(), 0u) << "what was before the first look does not count";
  EXPECT_EQ(clients.read(reader).at(card).memory, 2 * ((65ull << 20) + 5));

  open("10/4", text(1, 1300, 0));
  open("11/9", text(1, 1300, 0));
  open("12/4", text(2, 540, 0));
  EXPECT_EQ(render(), 340u);

  close("12/fdinfo/4");
  open("10/4", "pos:\t0\n"); // the descriptor is another file by now
  open("11/9", text(1, 1310, 0));
  EXPECT_EQ(render(), 350u);

  open("13/4", text(4, 1'000'000, 0));
  clients.find();
  EXPECT_EQ(render(), 350u);
  open("13/4", text(4, 1'000'001, 0));
  EXPECT_EQ(render(), 351u);

  const std::string another = "0000:03:00.0";
  open("10/5", text(1, 20, 0, another));
  clients.find();
  clients.read(reader);
  open("10/5", text(1, 25, 0, another));
  EXPECT_EQ(render(), 351u);
  EXPECT_EQ(clients.read(reader).at(another).engineTime.at("render"), 5u) << "every card has its own sum";
}

TEST_F(DRMClientsTests, anIntelCardReadsWhatItsProgramsUsed) {
  const TemporaryFolder sys;
  sys.write("class/drm/card0/device/vendor", "0x8086\n");
  sys.write("class/drm/card0/device/uevent", "DRIVER=i915\nPCI_SLOT_NAME=" + card + "\n");
  open("10/4", text(1, 1000, 0));
  GraphicsCards cards(proc.path().string(), sys.path().string(), {}, "");
  cards.find(reader);
  cards.counters(reader);
  open("10/4", text(1, 1600, 400));
  const auto counters = cards.counters(reader);
  ASSERT_EQ(counters.size(), 1u);
  EXPECT_FALSE(counters[0].utilization);
  EXPECT_THAT(counters[0].engineTime, ElementsAre(Pair(card + " render", 600), Pair(card + " video", 200)));
}

} // namespace
} // namespace korvell

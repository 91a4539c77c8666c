#include "Platform/Linux/ServiceManager.h"

#include "FakeBus.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::Pair;

struct Unit {
  const char *name, *loadState;
};
struct UnitFile {
  const char *path, *state;
};

struct ServiceManagerTests : testing::Test {
  TemporaryFolder folder;
  const std::string path = folder / "bus";

  /// What a bus says whose service answers every call with an error of this name.
  std::string silenceAfter(const char* error) {
    const FakeBus bus(path, [=](sd_bus_message* call) {
      return sd_bus_reply_method_errorf(call, error, "no \x1b[31mway");
    });
    return askServiceManager(bus.address(), Seconds{20}).silence;
  }
};

// As systemd's own documentation of its interface describes the two answers.
int answer(sd_bus_message* call, const std::vector<Unit>& units, const std::vector<UnitFile>& files) {
  sd_bus_message* reply = nullptr;
  sd_bus_message_new_method_return(call, &reply);
  if (sd_bus_message_is_method_call(call, nullptr, "ListUnitsByPatterns")) {
    sd_bus_message_open_container(reply, 'a', "(ssssssouso)");
    for (const auto& [name, loadState] : units)
      sd_bus_message_append(reply, "(ssssssouso)", name, "A description", loadState, "active", "running", "",
                            "/unit", 0u, "", "/");
  } else {
    sd_bus_message_open_container(reply, 'a', "(ss)");
    for (const auto& [file, state] : files) sd_bus_message_append(reply, "(ss)", file, state);
  }
  sd_bus_message_close_container(reply);
  sd_bus_send(nullptr, reply, nullptr);
  sd_bus_message_unref(reply);
  return 1;
}

TEST_F(ServiceManagerTests, whatIsLoadedAndWhatIsEnabled) {
  bool asksForServices = true, startsNobody = true;
  const FakeBus bus(path, [&](sd_bus_message* call) {
    const char* pattern = "";
    sd_bus_message_skip(call, "as"); // of states: any
    sd_bus_message_enter_container(call, 'a', "s");
    asksForServices &=
        sd_bus_message_read(call, "s", &pattern) > 0 && pattern == std::string_view("*.service");
    startsNobody &= sd_bus_message_get_auto_start(call) == 0;
    return answer(
        call,
        {{"a.service", "loaded"}, {"b.service", "not-found"}, {"app-x\\x2dy@autostart.service", "loaded"}},
        {{"/etc/systemd/user/a.service", "enabled"},
         {"/run/systemd/user/r.service", "enabled-runtime"},
         {"/etc/systemd/user/m.service", "masked"},
         {"/etc/systemd/user/d.service", "disabled"}});
  });
  const auto jobs = askServiceManager(bus.address(), Seconds{20});
  EXPECT_EQ(jobs.silence, "");
  EXPECT_THAT(jobs.loaded, ElementsAre("a.service", "app-x\\x2dy@autostart.service"));
  EXPECT_THAT(jobs.enabled, ElementsAre(Pair("a.service", true), Pair("d.service", false),
                                        Pair("m.service", false), Pair("r.service", true)));
  EXPECT_TRUE(asksForServices);
  EXPECT_TRUE(startsNobody);
}

TEST_F(ServiceManagerTests, aSilenceHasAReason) {
  for (const auto& address : {std::string(), "unix:path=" + path, std::string("nonsense")})
    EXPECT_EQ(askServiceManager(address, Seconds{20}).silence, "There is no message bus.") << address;
  EXPECT_EQ(silenceAfter("org.freedesktop.DBus.Error.ServiceUnknown"), "systemd does not run here.");
  EXPECT_EQ(silenceAfter("org.freedesktop.DBus.Error.NameHasNoOwner"), "systemd does not run here.");
  EXPECT_THAT(silenceAfter("org.freedesktop.DBus.Error.AccessDenied"),
              testing::AllOf(testing::StartsWith("systemd refused to answer: no "),
                             testing::Not(testing::HasSubstr("\x1b"))));
}

TEST_F(ServiceManagerTests, nobodyIsWaitedForLongerThanAllowed) {
  const FakeBus hanging(path, [](sd_bus_message*) { return 1; });
  EXPECT_EQ(askServiceManager(hanging.address(), Seconds{0.05}).silence, "systemd did not answer in time.");
  // A bus that takes the connection and never says a word.
  const auto mute = folder / "mute";
  const Descriptor listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  mute.copy(address.sun_path, sizeof(address.sun_path) - 1);
  ASSERT_EQ(bind(listener.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(listen(listener.get(), 1), 0);
  EXPECT_EQ(askServiceManager("unix:path=" + mute, Seconds{0.05}).silence, "systemd did not answer in time.");
}

} // namespace
} // namespace korvell

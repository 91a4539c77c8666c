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
  const char *name, *loadState, *activeState = "active", *subState = "running";
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
    for (const auto& unit : units)
      sd_bus_message_append(reply, "(ssssssouso)", unit.name, "A description", unit.loadState,
                            unit.activeState, unit.subState, "", "/unit", 0u, "", "/");
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
    return answer(call,
                  {{"a.service", "loaded"},
                   {"b.service", "not-found", "inactive", "dead"},
                   {"c.service", "loaded", "activating", "auto-restart"},
                   {"app-x\\x2dy@autostart.service", "loaded", "active", "exited"}},
                  {{"/etc/systemd/user/a.service", "enabled"},
                   {"/run/systemd/user/r.service", "enabled-runtime"},
                   {"/etc/systemd/user/m.service", "masked"},
                   {"/etc/systemd/user/d.service", "disabled"}});
  });
  const auto jobs = askServiceManager(bus.address(), Seconds{20});
  EXPECT_EQ(jobs.silence, "");
  EXPECT_THAT(jobs.loaded, ElementsAre("a.service", "app-x\\x2dy@autostart.service", "c.service"));
  EXPECT_THAT(jobs.active, ElementsAre("a.service", "app-x\\x2dy@.service", "app-x\\x2dy@autostart.service"));
  EXPECT_THAT(jobs.enabled, ElementsAre(Pair("a.service", true), Pair("d.service", false),
                                        Pair("m.service", false), Pair("r.service", true)));
  EXPECT_TRUE(asksForServices);
  EXPECT_TRUE(startsNobody);
}

/// As systemd's documentation describes the properties of a unit and a service; some of them.
int answerAboutUnit(sd_bus_message* call, const std::string& fragment, const char* activeState,
                    const std::vector<const char*>& programs, const char* image, bool binds) {
  const char* argument = "";
  sd_bus_message_read(call, "s", &argument);
  if (sd_bus_message_is_method_call(call, nullptr, "LoadUnit")) {
    if (argument == std::string_view("gone.service"))
      return sd_bus_reply_method_errorf(call, "org.freedesktop.systemd1.NoSuchUnit", "not there");
    return sd_bus_reply_method_return(call, "o", "/org/freedesktop/systemd1/unit/a_2eservice");
  }
  sd_bus_message* reply = nullptr;
  sd_bus_message_new_method_return(call, &reply);
  sd_bus_message_open_container(reply, 'a', "{sv}");
  if (argument == std::string_view("org.freedesktop.systemd1.Unit")) {
    sd_bus_message_append(reply, "{sv}{sv}{sv}{sv}{sv}", "Id", "s", "a.service", "LoadState", "s", "loaded",
                          "FragmentPath", "s", fragment.c_str(), "ActiveState", "s", activeState, "Requires",
                          "as", 1, "x.target");
  } else {
    sd_bus_message_append(reply, "{sv}{sv}", "MainPID", "u", 7u, "RootImage", "s", image);
    sd_bus_message_append(reply, "{sv}", "BindPaths", "a(ssbt)", int(binds), "/a", "/b", 0, std::uint64_t(0));
    sd_bus_message_open_container(reply, 'e', "sv");
    sd_bus_message_append(reply, "s", "ExecStart");
    sd_bus_message_open_container(reply, 'v', "a(sasbttttuii)");
    sd_bus_message_open_container(reply, 'a', "(sasbttttuii)");
    constexpr std::uint64_t never = 0;
    for (const auto* program : programs)
      sd_bus_message_append(reply, "(sasbttttuii)", program, 2, program, "-x", 1, never, never, never, never,
                            0u, 0, 0);
    for (int i = 0; i < 3; ++i) sd_bus_message_close_container(reply);
    sd_bus_message_append(reply, "{sv}", "ExtensionDirectories", "as", 0);
  }
  sd_bus_message_close_container(reply);
  sd_bus_send(nullptr, reply, nullptr);
  sd_bus_message_unref(reply);
  return 1;
}

TEST_F(ServiceManagerTests, whatTheManagerMakesOfAService) {
  folder.write("a.service", "");
  folder.write("other/a.service", "");
  const auto unit = folder / "a.service", other = folder / "other/a.service";
  const auto told = [&](const std::string& fragment, const char* activeState,
                        const std::vector<const char*>& programs, const char* image = "",
                        bool binds = false) {
    const FakeBus bus(path, [=](sd_bus_message* call) {
      return answerAboutUnit(call, fragment, activeState, programs, image, binds);
    });
    const auto jobs = askAboutServices(bus.address(), {folder / "gone.service", unit}, Seconds{20});
    EXPECT_EQ(jobs.size(), 1u);
    return jobs.contains(unit) ? jobs.at(unit) : EffectiveJob{};
  };
  EXPECT_EQ(told(unit, "active", {"/opt/one", "/opt/two"}),
            (EffectiveJob{.isActive = true, .programs = {"/opt/one", "/opt/two"}}));
  EXPECT_EQ(told(other, "inactive", {}), (EffectiveJob{.isThisFile = false}));
  EXPECT_EQ(told(unit, "failed", {}, "/srv/x.raw"), (EffectiveJob{.looksElsewhere = true}));
  EXPECT_EQ(told(unit, "failed", {}, "", true), (EffectiveJob{.looksElsewhere = true}));
  EXPECT_TRUE(askAboutServices("", {unit}, Seconds{20}).empty());
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
  const auto hung = askServiceManager(hanging.address(), Seconds{0.05});
  EXPECT_EQ(hung.silence, "systemd did not answer in time.");
  EXPECT_TRUE(hung.mayRun);
  EXPECT_TRUE(askAboutServices(hanging.address(), {"/etc/systemd/user/a.service"}, Seconds{0.05})
                  .at("/etc/systemd/user/a.service")
                  .looksElsewhere)
      << "nothing is known of it, so it is no leftover";
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

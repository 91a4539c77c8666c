// korvell-helper: tells members of its group how much the processes of other users have read from and written
// to storage, which the kernel shows to administrators only. It can do nothing else.

#include "Base/Text.h"
#include "Helper/Linux/Confinement.h"
#include "Helper/Linux/ListeningSocket.h"
#include "Helper/Linux/PeerAdmission.h"
#include "Helper/Linux/UsageReader.h"
#include "Helper/Linux/UsageServer.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <grp.h>
#include <memory>
#include <pwd.h>
#include <string>
#include <string_view>
#include <unistd.h>

namespace {

using namespace korvell;

constexpr int exitFailed = 1, exitUsage = 2;
constexpr Seconds never{1e12};

constexpr const char* help =
    "usage: korvell-helper [--socket PATH] [--group NAME] [--user NAME]... [--run-as NAME]\n"
    "                      [--idle-exit SECONDS]\n"
    "\n"
    "Tells how much the processes of other users have read from and written to storage.\n"
    "Started by its socket unit, or as root by any supervisor with --socket.\n"
    "\n"
    "  --socket PATH        listen there instead of on the socket that systemd hands over\n"
    "  --group NAME         whose members may ask (korvell)\n"
    "  --user NAME          a user who may ask as well; may be repeated\n"
    "  --run-as NAME        the user to become when started as root, with no other processes "
    "(korvell-helper)\n"
    "  --idle-exit SECONDS  end after so long without a request (60 under systemd, never with --socket)\n";

struct Configuration {
  std::string socket;
  std::string group = "korvell";
  std::vector<std::string> users;
  std::string account = "korvell-helper";
  std::optional<int> idleExit;
  bool help = false;
};

std::optional<Configuration> parse(int argc, char** argv) {
  Configuration configuration;
  for (int i = 1; i < argc; ++i) {
    const std::string_view name = argv[i];
    if (name == "--help") {
      configuration.help = true;
      continue;
    }
    if (++i == argc) return std::nullopt;
    if (name == "--socket")
      configuration.socket = argv[i];
    else if (name == "--group")
      configuration.group = argv[i];
    else if (name == "--user")
      configuration.users.emplace_back(argv[i]);
    else if (name == "--run-as")
      configuration.account = argv[i];
    else if (name == "--idle-exit")
      configuration.idleExit = parseInteger<int>(argv[i]);
    else
      return std::nullopt;
    if (name == "--idle-exit" && configuration.idleExit.value_or(0) < 1) return std::nullopt;
  }
  return configuration;
}

int fail(const std::string& reason) {
  std::fprintf(stderr, "korvell-helper: %s\n", reason.c_str());
  return exitFailed;
}

/// Names are looked up once, before the process is confined.
Result<PeerAdmission> admissionFor(const Configuration& configuration) {
  PeerAdmission admission;
  if (const auto* group = getgrnam(configuration.group.c_str())) admission.group = group->gr_gid;
  for (const auto& name : configuration.users) {
    const auto* user = getpwnam(name.c_str());
    if (!user) return Failure{"there is no user " + name};
    admission.users.push_back(user->pw_uid);
  }
  if (!admission.group && admission.users.empty()) return Failure{"there is no group " + configuration.group};
  return admission;
}

/// Whom to become; nobody else when there are no privileges to leave.
Result<Account> accountFor(const Configuration& configuration) {
  if (geteuid() != 0) return Account{};
  const auto* user = getpwnam(configuration.account.c_str());
  if (!user) return Failure{"there is no user " + configuration.account + " to run as"};
  if (user->pw_uid == 0) return Failure{configuration.account + " is an administrator; run as another user"};
  return Account{user->pw_uid, user->pw_gid};
}

Result<Descriptor> listenerFor(const Configuration& configuration, const PeerAdmission& admission) {
  const auto reach = admission.users.empty() ? SocketReach::group : SocketReach::everyone;
  if (!configuration.socket.empty()) return listenAt(configuration.socket, admission.group, reach);
  auto listener = inheritedListener();
  if (!listener)
    return Failure{"no socket was handed over; start it by its socket unit, or with --socket PATH"};
  return std::move(*listener);
}

void serve(Descriptor listener, const PeerAdmission& admission, Seconds idleExit) {
  const SystemClock clock;
  UsageReader reader;
  UsageServer server(std::move(listener),
                     RusageService([&reader](ProcessID pid) { return reader.read(pid); },
                                   [&reader] { reader.beginRequest(); }),
                     [&admission](int socket) -> std::optional<std::uint32_t> {
                       const auto peer = peerOf(socket);
                       if (!peer || !admission.admits(*peer)) return std::nullopt;
                       return peer->user;
                     },
                     clock, {});
  while (clock.monotonic() - server.lastRequest() < idleExit)
    server.turn(idleExit - (clock.monotonic() - server.lastRequest()));
}

} // namespace

int main(int argc, char** argv) {
  const auto configuration = parse(argc, argv);
  if (!configuration || configuration->help) {
    std::fputs(help, configuration ? stdout : stderr);
    return configuration ? EXIT_SUCCESS : exitUsage;
  }
  const auto admission = admissionFor(*configuration);
  if (!admission) return fail(admission.reason());
  const auto account = accountFor(*configuration);
  if (!account) return fail(account.reason());
  auto listener = listenerFor(*configuration, *admission);
  if (!listener) return fail(listener.reason());
  if (!confineProcess(*account)) return fail("privileges could not be given up");
  const Seconds standard = configuration->socket.empty() ? Seconds{60} : never;
  serve(std::move(*listener), *admission,
        configuration->idleExit ? Seconds{double(*configuration->idleExit)} : standard);
  return EXIT_SUCCESS;
}

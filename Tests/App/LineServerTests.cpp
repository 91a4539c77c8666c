// The keeper's socket among clients that mean harm or don't know better.

#include "App/LineServer.h"
#include "Base/LocalAddress.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <future>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>

namespace korvell {
namespace {

class Client {
public:
  explicit Client(const std::string& path) : socket_(connectLocal(path)) {
    if (!socket_) return;
    fcntl(socket_.get(), F_SETFL, 0); // blocking
    const timeval patience{20, 0};
    setsockopt(socket_.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  }
  bool send(std::string_view bytes) const {
    return write(socket_.get(), bytes.data(), bytes.size()) == ssize_t(bytes.size());
  }
  /// The next line; "<gone>" when the server hung up instead, "<silence>" when it did neither.
  std::string line() const {
    std::string line;
    errno = 0;
    for (char byte = 0; read(socket_.get(), &byte, 1) == 1; line += byte)
      if (byte == '\n') return line;
    return errno == EAGAIN ? "<silence>" : "<gone>";
  }
  std::string ask(const std::string& request) const {
    send(request + "\n");
    return line();
  }

private:
  Descriptor socket_;
};

struct LineServerTests : testing::Test {
  TemporaryFolder folder;
  const std::string path = folder / "runtime/keeper.sock";
  LineServer::Limits limits{.clients = 3, .line = 1000, .patience = Seconds{60}};
  std::atomic<bool> allowed = true;
  std::promise<LineServer::Peer> kept; ///< of the line "keep"

  LineServerTests() { std::signal(SIGPIPE, SIG_IGN); } // as the tool's main does

  std::unique_ptr<LineServer> listen() {
    return LineServer::listen(
        path,
        [this](std::string line, LineServer::Peer peer) {
          if (line == "keep") return kept.set_value(std::move(peer));
          if (line == "subscribe") {
            peer.subscribe("subscribed");
            return kept.set_value(std::move(peer));
          }
          peer.answer(line == "much" ? std::string(20'000'000, 'x') : "got " + line);
        },
        limits, [this](int socket) { return allowed && isSameUser(socket); });
  }
  /// A socket of that path, as another process would make it.
  Descriptor bound() const {
    std::filesystem::create_directories(folder / "runtime");
    Descriptor socket(::socket(AF_UNIX, SOCK_STREAM, 0));
    EXPECT_TRUE(LocalAddress::of(path)->bind(socket.get()));
    return socket;
  }
};

TEST_F(LineServerTests, linesAreAnsweredOneAfterTheOther) {
  const auto server = listen();
  ASSERT_TRUE(server);
  for (const auto& [made, mode] : {std::pair(path, 0600u), std::pair(folder / "runtime", 0700u)}) {
    struct stat info {};
    ASSERT_EQ(stat(made.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, mode) << made;
  }
  const Client client(path);
  client.send("one\ntwo\nthr");
  EXPECT_EQ(client.line(), "got one");
  EXPECT_EQ(client.line(), "got two");
  EXPECT_EQ(client.ask("ee\n"), "got three");
  EXPECT_EQ(client.line(), "got ");
}

TEST_F(LineServerTests, strangersAndWhoSendsTooMuchAreDisconnectedAndNobodyElse) {
  const auto server = listen();
  allowed = false; // of another user
  EXPECT_EQ(Client(path).ask("x"), "<gone>");
  allowed = true;
  const Client polite(path), tooLong(path), endless(path);
  EXPECT_EQ(polite.ask("a"), "got a");
  EXPECT_EQ(tooLong.ask(std::string(999, 'x')), "got " + std::string(999, 'x'));
  EXPECT_EQ(tooLong.ask(std::string(1000, 'x')), "<gone>");
  EXPECT_FALSE(endless.send(std::string(10'000'000, 'y')));
  EXPECT_EQ(polite.ask("b"), "got b");
}

TEST_F(LineServerTests, thereAreOnlySoManyClients) {
  const auto server = listen();
  std::vector<Client> clients;
  for (int i = 0; i < 3; ++i) EXPECT_EQ(clients.emplace_back(path).ask("x"), "got x");
  for (int i = 0; i < 20; ++i) ASSERT_EQ(Client(path).line(), "<gone>");
  clients.pop_back();
  // The place is free once the server has noticed; whoever comes too early is sent away.
  std::string answer = "<gone>";
  for (int i = 0; i < 10'000 && answer == "<gone>"; ++i) answer = Client(path).ask("y");
  EXPECT_EQ(answer, "got y");
}

TEST_F(LineServerTests, patienceIsForClientsWhoseTurnItIs) {
  limits.patience = Seconds{0.05};
  auto server = listen();
  const Client silent(path), halting(path);
  halting.send("half a li");
  EXPECT_EQ(silent.line(), "<gone>");
  EXPECT_EQ(halting.line(), "<gone>");

  const Client waiting(path), greedy(path);
  waiting.send("keep\n");
  auto peer = kept.get_future().get();
  greedy.send("much\n"); // and does not fetch it in time
  // Whoever waits for an answer is not hurried: another client comes and is sent away for its silence first.
  EXPECT_EQ(Client(path).line(), "<gone>");
  std::thread([&] { peer.answer("at last"); }).join();
  EXPECT_EQ(waiting.line(), "at last");
  EXPECT_EQ(greedy.line(), "<gone>");

  kept = {};
  Client(path).send("keep\n");
  peer = kept.get_future().get();
  peer.answer("nobody is there");
  server.reset();
  peer.answer("nor is the server");
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(LineServerTests, subscribersListenAndWhoDoesNotIsDropped) {
  using Pushed = LineServer::Pushed;
  limits.patience = Seconds{0.05};
  auto server = listen();
  const auto push = [](const LineServer::Peer& peer, const std::string& line) {
    auto pushed = Pushed::busy;
    while (pushed == Pushed::busy) pushed = peer.push(line);
    return pushed;
  };
  const auto subscriber = [&](const Client& client) {
    kept = {};
    EXPECT_EQ(client.ask("subscribe"), "subscribed");
    return kept.get_future().get();
  };
  const Client listening(path), deaf(path);
  const auto toListening = subscriber(listening), toDeaf = subscriber(deaf);
  EXPECT_EQ(Client(path).line(), "<gone>") << "its silence is; a subscriber's is not";
  for (const char* line : {"1", "2"}) {
    EXPECT_EQ(push(toListening, line), Pushed::taken);
    EXPECT_EQ(listening.line(), line);
  }
  EXPECT_EQ(toDeaf.push(std::string(20'000'000, 'x')), Pushed::taken);
  EXPECT_EQ(toDeaf.push("dropped"), Pushed::busy);
  EXPECT_EQ(push(toDeaf, "late"), Pushed::gone) << "it did not fetch the first in time";
  listening.send("a word");
  EXPECT_EQ(listening.line(), "<gone>");
  EXPECT_EQ(push(toListening, "3"), Pushed::gone);
  EXPECT_EQ(Client(path).ask("x"), "got x");
  server.reset();
  EXPECT_EQ(toListening.push("nobody"), Pushed::gone);
}

TEST_F(LineServerTests, oneThatTakesNoConnectionsIsNotWaitedFor) {
  const auto hung = bound();
  ASSERT_EQ(::listen(hung.get(), 0), 0);
  const Descriptor first = connectLocal(path), second = connectLocal(path);
  EXPECT_FALSE(connectLocal(path));
}

TEST_F(LineServerTests, onlyASocketThatNobodyListensAtIsReplaced) {
  bound().reset(); // as a process that was killed leaves it
  auto first = listen();
  ASSERT_TRUE(first);
  EXPECT_FALSE(listen());
  EXPECT_EQ(Client(path).ask("x"), "got x");
  std::filesystem::remove(path);
  auto second = listen(); // somebody has removed the first one's
  first.reset();
  EXPECT_EQ(Client(path).ask("x"), "got x");
  second.reset();
  std::ofstream(path) << "somebody's file";
  EXPECT_FALSE(listen());
  EXPECT_EQ(std::filesystem::file_size(path), 15u);
  EXPECT_FALSE(LineServer::listen(folder / std::string(200, 'd'), {}, limits, isSameUser));
}

} // namespace
} // namespace korvell

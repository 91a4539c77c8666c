// The keeper's socket among clients that mean harm or don't know better.

#include "App/LineServer.h"
#include "Base/LocalAddress.h"

#include "Tests/Fakes/TemporaryFolder.h"

#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <future>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>

namespace korvell {
namespace {

class Client {
public:
  explicit Client(const std::string& path) : socket_(connectLocal(path)) {
    if (socket_) fcntl(socket_.get(), F_SETFL, 0); // blocking
  }
  explicit operator bool() const { return bool(socket_); }
  bool send(std::string_view bytes) const {
    while (!bytes.empty()) {
      const auto count = write(socket_.get(), bytes.data(), bytes.size());
      if (count <= 0) return false;
      bytes.remove_prefix(std::size_t(count));
    }
    return true;
  }
  /// The next line; "<gone>" when the server hung up instead.
  std::string line() const {
    std::string line;
    for (char byte = 0; waitReadable() && read(socket_.get(), &byte, 1) == 1;) {
      if (byte == '\n') return line;
      line += byte;
    }
    return "<gone>";
  }
  void close() { socket_.reset(); }

private:
  bool waitReadable() const {
    pollfd polled{socket_.get(), POLLIN, 0};
    return poll(&polled, 1, 20'000) == 1;
  }
  Descriptor socket_;
};

struct LineServerTests : testing::Test {
  LineServerTests() { std::signal(SIGPIPE, SIG_IGN); } // as the tool's main does
  TemporaryFolder folder;
  const std::string path = folder / "runtime/keeper.sock";
  LineServer::Limits limits{.clients = 3, .line = 1000, .patience = Seconds{60}};
  std::atomic<bool> allowed = true;
  std::promise<LineServer::Reply> kept; ///< of the line "keep"

  std::unique_ptr<LineServer> listen() {
    return LineServer::listen(
        path,
        [this](std::string line, LineServer::Reply reply) {
          if (line == "keep") return kept.set_value(std::move(reply));
          reply(line == "much" ? std::string(20'000'000, 'x') : "got " + line);
        },
        limits, [this](int socket) { return allowed && isSameUser(socket); });
  }
};

TEST_F(LineServerTests, linesAreAnsweredOneAfterTheOther) {
  const auto server = listen();
  ASSERT_TRUE(server);
  struct stat info {};
  ASSERT_EQ(stat(path.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0600u);
  ASSERT_EQ(stat((folder / "runtime").c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0700u);

  Client client(path);
  ASSERT_TRUE(client.send("one\ntwo\nthr"));
  EXPECT_EQ(client.line(), "got one");
  EXPECT_EQ(client.line(), "got two");
  ASSERT_TRUE(client.send("ee\n\n"));
  EXPECT_EQ(client.line(), "got three");
  EXPECT_EQ(client.line(), "got ");
}

TEST_F(LineServerTests, strangersAndWhoSendsTooMuchAreDisconnectedAndNobodyElse) {
  const auto server = listen();
  allowed = false; // of another user
  Client stranger(path);
  stranger.send("x\n");
  EXPECT_EQ(stranger.line(), "<gone>");
  allowed = true;
  Client polite(path);
  ASSERT_TRUE(polite.send("a\n"));
  EXPECT_EQ(polite.line(), "got a");
  Client longest(path), tooLong(path);
  ASSERT_TRUE(longest.send(std::string(999, 'x') + "\n"));
  EXPECT_EQ(longest.line(), "got " + std::string(999, 'x'));
  tooLong.send(std::string(1000, 'x') + "\n");
  EXPECT_EQ(tooLong.line(), "<gone>");
  Client endless(path);
  while (endless.send(std::string(100'000, 'y'))) {
  }
  ASSERT_TRUE(polite.send("b\n"));
  EXPECT_EQ(polite.line(), "got b");
}

TEST_F(LineServerTests, thereAreOnlySoManyClients) {
  const auto server = listen();
  std::vector<Client> clients;
  for (int i = 0; i < 3; ++i) {
    clients.emplace_back(path);
    ASSERT_TRUE(clients.back().send("x\n"));
    EXPECT_EQ(clients.back().line(), "got x");
  }
  for (int i = 0; i < 20; ++i) {
    Client surplus(path);
    EXPECT_EQ(surplus.line(), "<gone>");
  }
  clients[1].close();
  // The place is free once the server has noticed; whoever comes too early is sent away.
  std::string answer = "<gone>";
  for (int i = 0; i < 10'000 && answer == "<gone>"; ++i) {
    Client next(path);
    next.send("y\n");
    answer = next.line();
  }
  EXPECT_EQ(answer, "got y");
}

TEST_F(LineServerTests, patienceIsLimited) {
  limits.patience = Seconds{0.05};
  const auto server = listen();
  Client silent(path), halting(path), greedy(path);
  ASSERT_TRUE(halting.send("half a li"));
  ASSERT_TRUE(greedy.send("much\n")); // and never fetches it
  EXPECT_EQ(silent.line(), "<gone>");
  EXPECT_EQ(halting.line(), "<gone>");
  EXPECT_EQ(greedy.line(), "<gone>");
}

TEST_F(LineServerTests, answersMayComeLateOrTooLate) {
  limits.patience = Seconds{0.05};
  auto server = listen();
  Client client(path);
  ASSERT_TRUE(client.send("keep\n"));
  auto reply = kept.get_future().get();
  // Whoever waits for an answer is not hurried: another client comes and is sent away for its silence first.
  EXPECT_EQ(Client(path).line(), "<gone>");
  std::thread([&] { reply("at last"); }).join();
  EXPECT_EQ(client.line(), "at last");

  kept = {};
  Client leaving(path);
  ASSERT_TRUE(leaving.send("keep\n"));
  reply = kept.get_future().get();
  leaving.close();
  reply("nobody is there");
  server.reset();
  reply("nor is the server");
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_FALSE(Client(path));
}

TEST_F(LineServerTests, oneThatTakesNoConnectionsIsNotWaitedFor) {
  std::filesystem::create_directories(folder / "runtime");
  const Descriptor hung(::socket(AF_UNIX, SOCK_STREAM, 0));
  ASSERT_TRUE(LocalAddress::of(path)->bind(hung.get()));
  ASSERT_EQ(::listen(hung.get(), 0), 0);
  const Descriptor first = connectLocal(path), second = connectLocal(path);
  EXPECT_FALSE(connectLocal(path));
}

TEST_F(LineServerTests, onlyASocketThatNobodyListensAtIsReplaced) {
  std::filesystem::create_directories(folder / "runtime");
  { std::ofstream(path) << "somebody's file"; }
  EXPECT_FALSE(listen());
  EXPECT_EQ(std::filesystem::file_size(path), 15u);
  std::filesystem::remove(path);
  const Descriptor ended(::socket(AF_UNIX, SOCK_STREAM, 0)); // as a process that was killed leaves it
  ASSERT_TRUE(LocalAddress::of(path)->bind(ended.get()));
  auto first = listen();
  ASSERT_TRUE(first);
  EXPECT_FALSE(listen());
  Client client(path);
  ASSERT_TRUE(client.send("x\n"));
  EXPECT_EQ(client.line(), "got x");
  std::filesystem::remove(path);
  const auto second = listen(); // somebody has removed the first one's
  first.reset();
  EXPECT_TRUE(Client(path));

  const auto tooLong = folder / (std::string(200, 'd') + "/keeper.sock");
  EXPECT_FALSE(LineServer::listen(tooLong, {}, limits, isSameUser));
}

} // namespace
} // namespace korvell

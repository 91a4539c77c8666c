#include "Agents/MetricsListener.h"
#include "Base/Text.h"

#include <arpa/inet.h>
#include <csignal>
#include <gmock/gmock.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace korvell {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

std::string body(MetricsFormat format) { return format == MetricsFormat::openMetrics ? "open\n" : "plain\n"; }

TEST(MetricsRequestTests, onlyTheFiguresAndOnlyForThisMachine) {
  const auto answer = [](const std::string& head) { return answerToScrape(head, body); };
  const std::string host = "Host: 127.0.0.1:9494\r\n";
  EXPECT_THAT(answer("GET /metrics HTTP/1.1\r\n" + host + "\r\n"),
              AllOf(StartsWith("HTTP/1.1 200 OK\r\nContent-Type: text/plain; version=0.0.4"),
                    HasSubstr("Content-Length: 6\r\n"), EndsWith("\r\n\r\nplain\n")));
  EXPECT_THAT(answer("GET /metrics?x=1 HTTP/1.0\r\n" + host +
                     "ACCEPT: application/openmetrics-text;version=1.0.0,*/*;q=0.1\r\n\r\n"),
              AllOf(HasSubstr("application/openmetrics-text"), EndsWith("open\n")));
  EXPECT_THAT(answer("HEAD /metrics HTTP/1.1\r\n" + host + "\r\n"),
              AllOf(HasSubstr("200 OK"), HasSubstr("Content-Length: 6\r\n"), EndsWith("\r\n\r\n")));
  const std::pair<std::string, const char*> refused[] = {
      {"GET / HTTP/1.1\r\n" + host, "404"},
      {"GET /metrics/ HTTP/1.1\r\n" + host, "404"},
      {"POST /metrics HTTP/1.1\r\n" + host, "405"},
      {"GET /metrics HTTP/1.1\r\n", "400"},
      {"GET /metrics HTTP/1.1\r\n" + host + host, "400"},
      {"GET /metrics\r\n" + host, "400"},
      {"GET /metrics HTTP/2\r\n" + host, "400"},
      {"\x16\x03\x01", "400"},
      {"", "400"},
      {"GET /metrics HTTP/1.1\r\nHost: example.com\r\n", "403"},
      {"GET /metrics HTTP/1.1\r\nHost: 127.0.0.1.example.com\r\n", "403"},
      {"GET /metrics HTTP/1.1\r\nHost: 127.0.0.1:9494@example.com\r\n", "403"},
      {"GET /metrics HTTP/1.1\r\nHost: 10.0.0.1\r\n", "403"},
  };
  for (const auto& [head, status] : refused)
    EXPECT_THAT(answer(head + "\r\n"), StartsWith("HTTP/1.1 " + std::string(status))) << head;
  for (const char* loopback : {"localhost", "LocalHost:1", "127.9.9.9:80", "[::1]", "[::1]:9"})
    EXPECT_TRUE(isLoopbackHost(loopback)) << loopback;
  EXPECT_THAT(answerToScrape("GET /metrics HTTP/1.1\r\n" + host + "\r\n", [](auto) { return ""; }),
              StartsWith("HTTP/1.1 503"));
}

struct MetricsListenerTests : testing::Test {
  Result<MetricsListener> listener = MetricsListener::listen("127.0.0.1:0", body, {.clients = 4});
  WakePipe end;
  std::thread thread;

  MetricsListenerTests() {
    std::signal(SIGPIPE, SIG_IGN); // as the tool's main does
    thread = std::thread([this] { listener->run(end); });
  }
  ~MetricsListenerTests() override {
    end.wake();
    thread.join();
  }
  Descriptor connected() const {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const auto& name = listener->address();
    address.sin_port =
        htons(*parseInteger<std::uint16_t>(std::string_view(name).substr(name.rfind(':') + 1)));
    Descriptor socket(::socket(AF_INET, SOCK_STREAM, 0));
    EXPECT_EQ(connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    return socket;
  }
  static void send(const Descriptor& socket, std::string_view bytes) {
    EXPECT_EQ(write(socket.get(), bytes.data(), bytes.size()), ssize_t(bytes.size()));
  }
  /// All until the other end closes.
  static std::string received(const Descriptor& socket) {
    std::string all;
    char buffer[4096];
    for (ssize_t count = 0; (count = read(socket.get(), buffer, sizeof buffer)) > 0;)
      all.append(buffer, std::size_t(count));
    return all;
  }
};

TEST_F(MetricsListenerTests, whoIsSlowMakesRoom) {
  std::vector<Descriptor> slow;
  for (int i = 0; i < 20; ++i) {
    slow.push_back(connected());
    if (i % 2 == 0) send(slow.back(), "GET /metr");
  }
  const auto scraper = connected();
  send(scraper, "GET /metrics HTTP/1.1\r\nHost: localhost\r\n");
  send(scraper, "\r\n");
  EXPECT_THAT(received(scraper), AllOf(StartsWith("HTTP/1.1 200 OK"), EndsWith("plain\n")));
  EXPECT_EQ(received(slow.front()), "") << "it was there for longest and went first";
}

TEST_F(MetricsListenerTests, aHeadWithoutAnEndIsNotReadToTheEnd) {
  const auto client = connected();
  send(client, "GET /metrics HTTP/1.1\r\n" + std::string(9000, 'x'));
  EXPECT_THAT(received(client), testing::AnyOf(StartsWith("HTTP/1.1 431"), testing::IsEmpty()));
}

TEST(MetricsAddressTests, onlyTheLoopback) {
  for (const char* address : {"0.0.0.0:9494", ":9494", "9494", "10.0.0.1:1", "127.0.0.1", "[::]:1",
                              "example.com:1", "127.0.0.1:99999", "localhost:"})
    EXPECT_THAT(MetricsListener::listen(address, body).reason(), HasSubstr("this machine alone")) << address;
  const auto first = MetricsListener::listen("localhost:0", body);
  ASSERT_TRUE(first);
  EXPECT_THAT(MetricsListener::listen(first->address(), body).reason(), HasSubstr("can't listen at"));
}

} // namespace
} // namespace korvell

#pragma once
// Answers scrapers on a loopback address. One thread, which sleeps while nobody is connected.
//
// Everything that a client can take is bounded: their number, the bytes and the time of a request, the time
// to fetch the answer. Where there are too many, the one that has been at it for longest makes room, so that
// those who are slow never keep a scraper out.

#include "Agents/MetricsRequest.h"
#include "Base/Date.h"
#include "Base/Descriptor.h"
#include "Base/Result.h"
#include "Base/WakePipe.h"

#include <list>
#include <string>

namespace korvell {

class MetricsListener {
public:
  struct Limits {
    std::size_t clients = 32;
    std::size_t request = 8 << 10; ///< bytes
    Seconds patience{5};           ///< for a request, and again for its answer
  };

  /// Why it listens nowhere but at "127.0.0.1:9494", "[::1]:9494" or "localhost:9494", whatever their port;
  /// empty for such an address.
  static std::string refusal(std::string_view address);
  /// Port 0 is any that is free. Fails with a sentence: what refusal() says, or that the address is taken.
  static Result<MetricsListener> listen(std::string_view address, MetricsBody body, Limits limits);
  static Result<MetricsListener> listen(std::string_view address, MetricsBody body) {
    return listen(address, std::move(body), Limits());
  }

  /// Where it listens, with the port that it got: "127.0.0.1:9494".
  const std::string& address() const { return address_; }
  /// Answers until somebody wakes the pipe. The body is asked for on this thread.
  void run(const WakePipe& end);

private:
  struct Client {
    Descriptor socket;
    Seconds deadline;
    std::string in{}, out{};
  };
  MetricsListener(Descriptor listener, std::string address, MetricsBody body, Limits limits)
      : listener_(std::move(listener)), address_(std::move(address)), body_(std::move(body)),
        limits_(limits) {}
  void accept();
  bool serve(Client& client); ///< false when it is done with
  bool receive(Client& client);
  static bool send(Client& client);

  Descriptor listener_;
  std::string address_;
  MetricsBody body_;
  Limits limits_;
  SystemClock clock_;
  std::list<Client> clients_; ///< those that came first, first
  Seconds noAcceptBefore_{0}; ///< out of descriptors: asking again at once would only spin
};

} // namespace korvell

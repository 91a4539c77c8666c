#pragma once
// Requests and answers of one line each over a socket in the file system, for processes of the same user.
//
// Runs on a thread of its own, which sleeps while nobody is connected. A client sends a line and waits for
// its answer before the next is read. A client that has subscribed only listens from then on: lines are
// pushed to it, and it is disconnected when it sends anything. Everything a client can take is bounded: their
// number, the length of a line, the time to send or fetch one, one pushed line at a time; whoever goes beyond
// is disconnected, and nobody else notices. The process ignores SIGPIPE.

#include "Base/Date.h"
#include "Base/Descriptor.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace korvell {

class LineServer {
public:
  struct Limits {
    std::size_t clients = 16;
    std::size_t line = 64 << 10; ///< bytes of a request
    Seconds patience{10};        ///< for a client to send a line or fetch an answer
  };
  class Loop;
  enum class Pushed {
    taken, ///< it is on its way
    busy,  ///< the client has not fetched the one before; this one was dropped
    gone,  ///< there is no such client any more
  };
  /// The way back to a client whose request is answered; from any thread, also after the client or the server
  /// went. Lines without their line feed.
  class Peer {
  public:
    /// Once for each request.
    void answer(std::string line) const;
    /// The answer to a subscribing request.
    void subscribe(std::string line) const;
    Pushed push(std::string line) const;
    /// `told` once, on the server's thread, when the client has disconnected, also if it has already; never
    /// when the server ends. In place of what was to be told before.
    void whenGone(std::function<void()> told) const;

  private:
    friend class Loop;
    Peer(std::weak_ptr<Loop> loop, std::uint64_t client) : loop_(std::move(loop)), client_(client) {}
    std::weak_ptr<Loop> loop_;
    std::uint64_t client_;
  };
  /// Called on the server's thread with a line without its line feed.
  using Handler = std::function<void(std::string line, Peer peer)>;
  using PeerCheck = std::function<bool(int socket)>;

  /// Listens at a path in a private folder, which is made if need be; a socket that an earlier process left
  /// there is replaced. Nothing when that fails: the path may be too long for a socket's address.
  static std::unique_ptr<LineServer> listen(const std::string& path, Handler handler, Limits limits,
                                            PeerCheck isAllowed);
  /// Disconnects everybody and removes the socket.
  ~LineServer();
  LineServer(const LineServer&) = delete;
  LineServer& operator=(const LineServer&) = delete;

private:
  LineServer(std::string path, std::shared_ptr<Loop> loop);

  std::string path_;
  std::uint64_t file_ = 0;     ///< number of the socket's file, which somebody may replace
  std::shared_ptr<Loop> loop_; ///< outlives the server while answers are on their way
  std::thread thread_;
};

/// A connected socket that does not block; nothing when nobody listens there, or nobody takes the connection.
Descriptor connectLocal(const std::string& path);
/// True for a process of the user who runs this one.
bool isSameUser(int socket);

} // namespace korvell

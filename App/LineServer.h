#pragma once
// Requests and answers of one line each over a socket in the file system, for processes of the same user.
//
// Runs on a thread of its own, which sleeps while nobody is connected. A client sends a line and waits for
// its answer before the next is read. Everything a client can take is bounded: their number, the length of a
// line, the time to send or fetch one; whoever goes beyond is disconnected, and nobody else notices. The
// process ignores SIGPIPE.

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
  /// Takes the answer, without its line feed; from any thread, once, also after the client or the server
  /// went.
  using Reply = std::function<void(std::string answer)>;
  /// Called on the server's thread with a line without its line feed.
  using Handler = std::function<void(std::string line, Reply reply)>;
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
  class Loop;
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

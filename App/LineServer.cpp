#include "App/LineServer.h"

#include "Base/LocalAddress.h"
#include "Base/ThreadControl.h"
#include "Base/UserFolders.h"
#include "Base/WakePipe.h"
#include "Platform/PeerUser.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <list>
#include <map>
#include <mutex>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace korvell {

namespace {

void makePrivate(int descriptor) {
  fcntl(descriptor, F_SETFD, FD_CLOEXEC);
  fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) | O_NONBLOCK);
}

/// Whether a process listens there, even one that answers nobody.
bool isInUse(const LocalAddress& address) {
  const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM, 0));
  if (!socket) return false;
  makePrivate(socket.get());
  return address.connect(socket.get()) || errno == EAGAIN;
}

Descriptor listenAt(const std::string& path) {
  const auto address = LocalAddress::of(path);
  if (!address || !ensurePrivateFolder(path.substr(0, path.rfind('/')))) return {};
  struct stat info {};
  if (lstat(path.c_str(), &info) == 0 && S_ISSOCK(info.st_mode)) {
    if (isInUse(*address)) return {}; // by the keeper of another data folder
    unlink(path.c_str());
  }
  Descriptor socket(::socket(AF_UNIX, SOCK_STREAM, 0));
  if (!socket) return {};
  makePrivate(socket.get());
  // Nobody can connect before listen(), so the mode may be set in between.
  if (!address->bind(socket.get()) || chmod(path.c_str(), 0600) != 0 || ::listen(socket.get(), 16) != 0)
    return {};
  return socket;
}

} // namespace

Descriptor connectLocal(const std::string& path) {
  const auto address = LocalAddress::of(path);
  Descriptor socket(address ? ::socket(AF_UNIX, SOCK_STREAM, 0) : -1);
  if (!socket) return {};
  makePrivate(socket.get()); // before connecting, which would wait for a listener with a full backlog
  if (!address->connect(socket.get())) return {};
  return socket;
}

bool isSameUser(int socket) { return peerUser(socket) == std::uint32_t(geteuid()); }

/// What the server's thread works with; lines for clients come in from other threads.
class LineServer::Loop : public std::enable_shared_from_this<Loop> {
public:
  Loop(Descriptor listener, Handler handler, Limits limits, PeerCheck isAllowed)
      : listener_(std::move(listener)), handler_(std::move(handler)), limits_(limits),
        isAllowed_(std::move(isAllowed)) {}
  bool isReady() const { return bool(wake_); }

  void run();
  void stop() {
    {
      std::lock_guard lock(mutex_);
      stopping_ = true;
    }
    wake_.wake();
  }

  void answer(std::uint64_t client, std::string text, bool subscribes) {
    {
      std::lock_guard lock(mutex_);
      if (subscribes) subscribers_[client] = true;
      lines_.push_back({client, std::move(text), subscribes});
    }
    wake_.wake();
  }
  void whenGone(std::uint64_t client, std::function<void()> told) {
    {
      std::lock_guard lock(mutex_);
      watches_.push_back({client, std::move(told)});
    }
    wake_.wake();
  }
  Pushed push(std::uint64_t client, std::string text) {
    {
      std::lock_guard lock(mutex_);
      const auto subscriber = subscribers_.find(client);
      if (subscriber == subscribers_.end()) return Pushed::gone;
      if (std::exchange(subscriber->second, true)) return Pushed::busy;
      lines_.push_back({client, std::move(text), false});
    }
    wake_.wake();
    return Pushed::taken;
  }

private:
  struct Client {
    std::uint64_t number;
    Descriptor socket;
    Seconds deadline;        ///< for what it is expected to do now
    std::string in{};        ///< received, not yet a line
    std::string out{};       ///< to be sent
    bool isAnswered = false; ///< its answer is being made: nothing is expected of it
    bool isSubscribed = false;
    std::function<void()> gone{}; ///< told when it has disconnected
    bool isExpected() const { return !out.empty() || !(isAnswered || isSubscribed); }
  };
  struct Line {
    std::uint64_t client;
    std::string text;
    bool subscribes;
  };
  struct Watch {
    std::uint64_t client;
    std::function<void()> told;
  };

  bool takeLines(); ///< false when it is time to stop
  void takeWatches();
  void forget(const Client& client);
  void accept();
  bool serve(Client& client, short events); ///< false when the client is to be disconnected
  bool receive(Client& client);
  bool send(Client& client);
  bool handleLine(Client& client);
  std::vector<pollfd> interests() const;
  int waitMilliseconds() const;

  Descriptor listener_;
  const Handler handler_;
  const Limits limits_;
  const PeerCheck isAllowed_;
  const SystemClock clock_;
  const WakePipe wake_;
  std::list<Client> clients_;
  std::uint64_t nextClient_ = 0;
  Seconds noAcceptBefore_{0}; ///< out of descriptors: asking again at once would only spin

  std::mutex mutex_;
  // Guarded by mutex_.
  bool stopping_ = false;
  std::vector<Line> lines_;
  std::vector<Watch> watches_;
  std::map<std::uint64_t, bool> subscribers_; ///< whether a line is on its way to them
};

void LineServer::Loop::run() {
  while (takeLines()) {
    takeWatches();
    auto polled = interests();
    if (poll(polled.data(), nfds_t(polled.size()), waitMilliseconds()) < 0 && errno != EINTR) return;
    wake_.drain();
    const Seconds now = clock_.monotonic();
    auto events = polled.begin() + 2;
    for (auto client = clients_.begin(); client != clients_.end(); ++events) {
      const bool late = client->isExpected() && now >= client->deadline;
      const bool stays = !late && serve(*client, events->revents);
      if (!stays) forget(*client);
      client = stays ? std::next(client) : clients_.erase(client);
    }
    if (polled[1].revents != 0) accept();
  }
}

bool LineServer::Loop::takeLines() {
  std::lock_guard lock(mutex_);
  for (auto& line : std::exchange(lines_, {})) {
    const auto client = std::ranges::find(clients_, line.client, &Client::number);
    if (client == clients_.end()) {
      subscribers_.erase(line.client);
      continue;
    }
    client->out = std::move(line.text) + "\n";
    client->isAnswered = false;
    client->isSubscribed |= line.subscribes;
    client->deadline = clock_.monotonic() + limits_.patience;
  }
  return !stopping_;
}

void LineServer::Loop::takeWatches() {
  std::vector<Watch> watches;
  {
    std::lock_guard lock(mutex_);
    watches.swap(watches_);
  }
  for (auto& watch : watches) {
    const auto client = std::ranges::find(clients_, watch.client, &Client::number);
    if (client == clients_.end())
      watch.told();
    else
      client->gone = std::move(watch.told);
  }
}

void LineServer::Loop::forget(const Client& client) {
  {
    std::lock_guard lock(mutex_);
    subscribers_.erase(client.number);
  }
  if (client.gone) client.gone();
}

std::vector<pollfd> LineServer::Loop::interests() const {
  const bool accepting = clock_.monotonic() >= noAcceptBefore_;
  std::vector<pollfd> polled{{wake_.descriptor(), POLLIN, 0}, {accepting ? listener_.get() : -1, POLLIN, 0}};
  for (const Client& client : clients_) {
    const short wanted = !client.out.empty() ? POLLOUT : client.isAnswered ? 0 : POLLIN;
    polled.push_back({client.socket.get(), wanted, 0});
  }
  return polled;
}

int LineServer::Loop::waitMilliseconds() const {
  const Seconds now = clock_.monotonic();
  std::optional<Seconds> next;
  const auto consider = [&](Seconds deadline) { next = std::min(next.value_or(deadline), deadline); };
  for (const Client& client : clients_)
    if (client.isExpected()) consider(client.deadline);
  if (now < noAcceptBefore_) consider(noAcceptBefore_);
  if (!next) return -1;
  return int(std::clamp((*next - now).count() * 1000 + 1, 0.0, 60'000.0));
}

void LineServer::Loop::accept() {
  Descriptor socket(::accept(listener_.get(), nullptr, nullptr));
  if (!socket) {
    if (errno == EMFILE || errno == ENFILE || errno == ENOMEM || errno == ENOBUFS)
      noAcceptBefore_ = clock_.monotonic() + Seconds{1};
    return;
  }
  if (clients_.size() >= limits_.clients || !isAllowed_(socket.get())) return;
  makePrivate(socket.get());
  clients_.push_back({.number = nextClient_++,
                      .socket = std::move(socket),
                      .deadline = clock_.monotonic() + limits_.patience});
}

bool LineServer::Loop::serve(Client& client, short events) {
  if (events == 0) return true;
  if (!client.out.empty()) return send(client);
  if (client.isAnswered) return false; // it hung up while its answer was being made
  return receive(client);
}

bool LineServer::Loop::receive(Client& client) {
  char buffer[4096];
  const auto count = read(client.socket.get(), buffer, sizeof buffer);
  if (count < 0) return errno == EAGAIN || errno == EINTR;
  if (count == 0) return false;
  if (client.isSubscribed) return false;
  client.in.append(buffer, std::size_t(count));
  return handleLine(client);
}

bool LineServer::Loop::handleLine(Client& client) {
  const auto end = client.in.find('\n');
  if (end == std::string::npos) return client.in.size() < limits_.line;
  if (end >= limits_.line) return false;
  auto line = client.in.substr(0, end);
  client.in.erase(0, end + 1);
  client.isAnswered = true;
  handler_(std::move(line), Peer(weak_from_this(), client.number));
  return true;
}

bool LineServer::Loop::send(Client& client) {
  const auto count = write(client.socket.get(), client.out.data(), client.out.size());
  if (count < 0) return errno == EAGAIN || errno == EINTR;
  client.out.erase(0, std::size_t(count));
  if (!client.out.empty()) return true;
  client.out.shrink_to_fit();
  client.deadline = clock_.monotonic() + limits_.patience;
  if (client.isSubscribed) {
    std::lock_guard lock(mutex_);
    subscribers_[client.number] = false;
    return client.in.empty();
  }
  return handleLine(client); // it may have sent the next line already
}

void LineServer::Peer::answer(std::string line) const {
  if (const auto loop = loop_.lock()) loop->answer(client_, std::move(line), false);
}

void LineServer::Peer::subscribe(std::string line) const {
  if (const auto loop = loop_.lock()) loop->answer(client_, std::move(line), true);
}

LineServer::Pushed LineServer::Peer::push(std::string line) const {
  const auto loop = loop_.lock();
  return loop ? loop->push(client_, std::move(line)) : Pushed::gone;
}

void LineServer::Peer::whenGone(std::function<void()> told) const {
  if (const auto loop = loop_.lock()) loop->whenGone(client_, std::move(told));
}

std::unique_ptr<LineServer> LineServer::listen(const std::string& path, Handler handler, Limits limits,
                                               PeerCheck isAllowed) {
  auto listener = listenAt(path);
  if (!listener) return nullptr;
  auto loop = std::make_shared<Loop>(std::move(listener), std::move(handler), limits, std::move(isAllowed));
  if (!loop->isReady()) return nullptr;
  return std::unique_ptr<LineServer>(new LineServer(path, std::move(loop)));
}

LineServer::LineServer(std::string path, std::shared_ptr<Loop> loop)
    : path_(std::move(path)), loop_(std::move(loop)), thread_([loop = loop_] {
        nameCurrentThread("Korvell.keeper");
        loop->run();
      }) {
  struct stat info {};
  if (lstat(path_.c_str(), &info) == 0) file_ = info.st_ino;
}

LineServer::~LineServer() {
  struct stat info {};
  if (lstat(path_.c_str(), &info) == 0 && info.st_ino == file_) unlink(path_.c_str());
  loop_->stop();
  thread_.join();
}

} // namespace korvell

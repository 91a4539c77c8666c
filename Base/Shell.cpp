#include "Base/Shell.h"

#include "Base/Descriptor.h"
#include "Base/Spawn.h"
#include "Base/Text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>

namespace korvell {

namespace {

constexpr size_t mostOutput = size_t{16} << 20;
/// How long a program has to end after each of the two signals.
constexpr Seconds grace{1};
/// How often it is looked whether the caller cancelled.
constexpr Seconds cancellationInterval{0.1};
/// How often a child is looked at where the system gives no notice of its end.
constexpr Seconds lookInterval{0.01};

struct Pipe {
  Descriptor reading, writing;
};

/// The ends are moved above the standard descriptors, which the child's set-up replaces one by one.
std::optional<Pipe> makeOutputPipe() {
  int ends[2];
  if (!makePrivatePipe(ends)) return std::nullopt;
  const Pipe low{Descriptor(ends[0]), Descriptor(ends[1])};
  Pipe pipe{Descriptor(fcntl(ends[0], F_DUPFD_CLOEXEC, 3)), Descriptor(fcntl(ends[1], F_DUPFD_CLOEXEC, 3))};
  if (!pipe.reading || !pipe.writing) return std::nullopt;
  fcntl(pipe.reading.get(), F_SETFL, O_NONBLOCK);
  return pipe;
}

bool holdsNUL(const std::string& text) { return text.find('\0') != std::string::npos; }

/// Starts the program in a session of its own, with default signals; -1 when it can't be.
pid_t spawn(const std::string& path, const std::vector<std::string>& arguments, int output) {
  std::vector<char*> argv{const_cast<char*>(path.c_str())};
  for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  const short more = closeOtherDescriptors(actions);

  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t none, all;
  sigemptyset(&none);
  sigfillset(&all);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setsigdefault(&attributes, &all);
  posix_spawnattr_setflags(&attributes,
                           short(POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSID | more));

  pid_t child = -1;
  const int error = posix_spawn(&child, path.c_str(), &actions, &attributes, argv.data(), environmentBlock());
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  return error == 0 ? child : -1;
}

/// Keeps what the program wrote up to the most that is kept, and drops the rest.
class Collector {
public:
  explicit Collector(Descriptor pipe) : pipe_(std::move(pipe)) {}

  int descriptor() const { return pipe_.get(); } ///< -1 after the end
  std::string& output() { return output_; }

  /// Takes at most `most` of the bytes that are there; how many it took.
  size_t read(size_t most = SIZE_MAX) {
    if (!pipe_) return 0;
    std::array<char, 65536> buffer;
    const auto count = ::read(pipe_.get(), buffer.data(), std::min(buffer.size(), most));
    if (count > 0) {
      output_.append(buffer.data(), std::min(size_t(count), mostOutput - output_.size()));
      return size_t(count);
    }
    if (count == 0 || (errno != EAGAIN && errno != EINTR)) pipe_.reset();
    return 0;
  }

  /// What stands in the pipe when the program has ended. Not up to the end of the file: a child of the
  /// program may keep the pipe open, or write for ever.
  void readRest() {
    int left = 0;
    if (!pipe_ || ioctl(pipe_.get(), FIONREAD, &left) != 0) return;
    for (size_t count = 1; count > 0 && left > 0; left -= int(count)) count = read(size_t(left));
  }

private:
  Descriptor pipe_;
  std::string output_;
};

/// A started program. It is signalled only while it has not been waited for, so that its id is still its own.
class Program {
public:
  explicit Program(pid_t pid) : pid_(pid), notice_(openExitNotice(pid)) {}

  int notice() const { return notice_.get(); }

  bool hasEnded() {
    siginfo_t info{};
    const int result = waitid(P_PID, id_t(pid_), &info, WEXITED | WNOHANG | WNOWAIT);
    lost_ = result != 0 && errno == ECHILD; // someone else in this process has waited for it
    return lost_ || (result == 0 && info.si_pid == pid_);
  }

  /// To the program and to those of its children that stayed in its group.
  void signal(int number) const {
    if (lost_) return;
    kill(-pid_, number);
    kill(pid_, number);
  }

  /// Has it reaped whenever it ends, without anybody waiting for it.
  void leave() const {
    try {
      std::thread([pid = pid_] { reap(pid); }).detach();
    } catch (const std::system_error&) { // no more threads: it stays as a zombie while this process runs
    }
  }

  /// After its end: the exit code, 128 + the signal, or -1 when it is not known.
  int wait() {
    const auto status = reap(pid_);
    if (!status) return -1;
    return WIFSIGNALED(*status) ? 128 + WTERMSIG(*status) : WEXITSTATUS(*status);
  }

private:
  static std::optional<int> reap(pid_t pid) {
    int status = 0;
    while (waitpid(pid, &status, 0) < 0)
      if (errno != EINTR) return std::nullopt;
    return status;
  }

  pid_t pid_;
  Descriptor notice_;
  bool lost_ = false;
};

void waitForNews(const Program& program, const Collector& collector, Seconds longest) {
  if (program.notice() < 0) longest = std::min(longest, lookInterval);
  const double milliseconds = std::clamp(std::ceil(longest.count() * 1000), 0.0, 3'600'000.0);
  pollfd descriptors[] = {{program.notice(), POLLIN, 0}, {collector.descriptor(), POLLIN, 0}};
  poll(descriptors, 2, int(milliseconds));
}

/// Returns when the program has ended, by itself or made to, or when even killing it did not help.
void runToItsEnd(Program& program, Collector& collector, Seconds timeout, const Cancellation& cancellation,
                 ShellResult& result) {
  constexpr Seconds never{1e12};
  const SystemClock clock;
  int sent = 0; ///< the last signal
  auto limit = clock.monotonic() + std::clamp(timeout, Seconds{0}, never);
  while (!program.hasEnded()) {
    const auto now = clock.monotonic();
    const bool cancelled = sent == 0 && cancellation.isCancelled();
    if (cancelled || now >= limit) {
      result.lingers = sent == SIGKILL;
      if (result.lingers) return;
      if (sent == 0) (cancelled ? result.interrupted : result.timedOut) = true;
      sent = sent == 0 ? SIGTERM : SIGKILL;
      program.signal(sent);
      limit = now + grace;
    }
    waitForNews(program, collector, std::min(limit - now, cancellationInterval));
    collector.read();
  }
}

} // namespace

std::optional<ShellResult> Shell::run(const std::string& path, const std::vector<std::string>& arguments,
                                      Seconds timeout, const Cancellation& cancellation) {
  if (path.empty() || path.front() != '/' || holdsNUL(path)) return std::nullopt;
  if (std::any_of(arguments.begin(), arguments.end(), holdsNUL)) return std::nullopt;
  ShellResult result;
  if (cancellation.isCancelled()) {
    result.exitStatus = -1;
    result.interrupted = true;
    return result;
  }
  auto pipe = makeOutputPipe();
  if (!pipe) return std::nullopt;
  const pid_t pid = spawn(path, arguments, pipe->writing.get());
  if (pid < 0) return std::nullopt;
  pipe->writing.reset();

  Program program(pid);
  Collector collector(std::move(pipe->reading));
  runToItsEnd(program, collector, timeout, cancellation, result);
  collector.readRest();
  if (result.lingers) {
    result.exitStatus = -1;
    program.leave();
  } else {
    if (result.timedOut || result.interrupted) program.signal(SIGKILL); // children that would outlive it
    result.exitStatus = program.wait();
  }
  result.output = repairedUTF8(collector.output());
  return result;
}

} // namespace korvell

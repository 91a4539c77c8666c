// To be loaded into a program before its libraries (LD_PRELOAD): its clocks run KORVELL_CLOCK_FACTOR times as
// fast from the instant KORVELL_CLOCK_BASE on (Unix time in nanoseconds), and its waits end so much sooner.
// Time used on a processor is left as it is. Each SIGUSR2 is an hour in which the machine sleeps: the clocks
// that stand still meanwhile notice nothing.

#include <atomic>
#include <csignal>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <poll.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

std::int64_t fromEnvironment(const char* name) {
  const char* text = getenv(name);
  return text ? std::strtoll(text, nullptr, 10) : 0;
}

std::int64_t nanoseconds(const timespec& time) { return time.tv_sec * 1'000'000'000LL + time.tv_nsec; }
timespec fromNanoseconds(std::int64_t time) { return {time / 1'000'000'000, time % 1'000'000'000}; }

std::int64_t realTime(clockid_t clock) {
  timespec now{};
  syscall(SYS_clock_gettime, clock, &now);
  return nanoseconds(now);
}

const std::int64_t factor = fromEnvironment("KORVELL_CLOCK_FACTOR");
const std::int64_t base = fromEnvironment("KORVELL_CLOCK_BASE");

/// The same instant on another clock.
std::int64_t baseOf(clockid_t clock) { return base - realTime(CLOCK_REALTIME) + realTime(clock); }
const std::int64_t monotonicBase = baseOf(CLOCK_MONOTONIC), bootBase = baseOf(CLOCK_BOOTTIME);

std::int64_t start(clockid_t clock) {
  return clock == CLOCK_REALTIME ? base : clock == CLOCK_MONOTONIC ? monotonicBase : bootBase;
}
std::atomic<std::int64_t> asleep = 0; // nanoseconds
const bool sleeps = [] {
  if (factor <= 0) return false;
  struct sigaction action {};
  action.sa_handler = [](int) { asleep += 3'600'000'000'000; };
  action.sa_flags = SA_RESTART;
  return sigaction(SIGUSR2, &action, nullptr) == 0;
}();

bool isCompressed(clockid_t clock) {
  return factor > 0 && (clock == CLOCK_REALTIME || clock == CLOCK_MONOTONIC || clock == CLOCK_BOOTTIME);
}
std::int64_t compressed(clockid_t clock, std::int64_t time) {
  return start(clock) + (time - start(clock)) * factor;
}
timespec expanded(clockid_t clock, const timespec& time) {
  return fromNanoseconds(start(clock) + (nanoseconds(time) - start(clock)) / factor);
}

} // namespace

extern "C" {

int clock_gettime(clockid_t clock, timespec* time) {
  if (!isCompressed(clock)) return int(syscall(SYS_clock_gettime, clock, time));
  *time =
      fromNanoseconds(compressed(clock, realTime(clock)) + (clock == CLOCK_MONOTONIC ? 0 : asleep.load()));
  return 0;
}

int gettimeofday(timeval* time, void*) {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  *time = {now.tv_sec, now.tv_nsec / 1000};
  return 0;
}

time_t time(time_t* result) {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  if (result) *result = now.tv_sec;
  return now.tv_sec;
}

int pthread_cond_clockwait(pthread_cond_t* condition, pthread_mutex_t* mutex, clockid_t clock,
                           const timespec* until) {
  using Wait = int (*)(pthread_cond_t*, pthread_mutex_t*, clockid_t, const timespec*);
  static const auto wait = reinterpret_cast<Wait>(dlsym(RTLD_NEXT, "pthread_cond_clockwait"));
  const timespec real = isCompressed(clock) ? expanded(clock, *until) : *until;
  return wait(condition, mutex, clock, &real);
}

/// How late a wait may end.
int prctl(int option, ...) {
  va_list rest;
  va_start(rest, option);
  unsigned long first = va_arg(rest, unsigned long);
  const unsigned long second = va_arg(rest, unsigned long), third = va_arg(rest, unsigned long),
                      fourth = va_arg(rest, unsigned long);
  va_end(rest);
  if (option == PR_SET_TIMERSLACK && factor > 0) first = first / static_cast<unsigned long>(factor) + 1;
  return int(syscall(SYS_prctl, option, first, second, third, fourth));
}

int poll(pollfd* files, nfds_t count, int milliseconds) {
  const std::int64_t real = milliseconds > 0 && factor > 0 ? milliseconds * 1'000'000LL / factor : 0;
  const timespec limit = fromNanoseconds(real);
  return ppoll(files, count, milliseconds < 0 ? nullptr : &limit, nullptr);
}
}

// korvell metrics: the current figures for Prometheus and whoever reads its formats.

#include "Agents/Metrics.h"
#include "Agents/MetricsListener.h"
#include "App/Assembly.h"
#include "App/EndSignals.h"
#include "App/KeeperLock.h"
#include "Base/Files.h"
#include "Base/Text.h"
#include "Tool/AskKeeper.h"
#include "Tool/Commands.h"
#include "Tool/Version.h"

#include <cerrno>
#include <cstring>
#include <map>
#include <thread>

namespace korvell {

namespace {

/// A scraper waits ten seconds.
constexpr Seconds scrapePatience{2};
/// Scrapers that come more often than that get the same figures.
constexpr Seconds freshness{1};

enum class FormatChoice { prometheus, openmetrics };

} // namespace

template <>
struct EnumTable<FormatChoice> {
  static constexpr EnumCase<FormatChoice> cases[] = {
      {FormatChoice::prometheus, "prometheus", "Prometheus"},
      {FormatChoice::openmetrics, "openmetrics", "OpenMetrics"}};
};

namespace {

MetricsFormat formatOf(const Arguments& arguments) {
  const auto choice = fromRawValue<FormatChoice>(arguments.text("--format").value_or(""));
  return choice == FormatChoice::openmetrics ? MetricsFormat::openMetrics : MetricsFormat::prometheus;
}

/// A keeper's figures; without one those that a sampler of its own measures, over the time since it was asked
/// last.
class Source {
public:
  explicit Source(Context& context) : context_(context), assembly_(context.host, context.clock) {}

  std::string text(MetricsFormat format) {
    auto& [text, made] = texts_[format];
    const Seconds now = context_.clock.monotonic();
    if (text.empty() || now - made >= freshness) {
      text = metricsText(reading(), format, version);
      made = context_.clock.monotonic();
    }
    return text;
  }

private:
  MetricsReading reading() {
    auto reading = kept();
    if (!reading) reading = measured();
    addKept(*reading, *context_.host.defaults);
    return std::move(*reading);
  }
  std::optional<MetricsReading> kept() {
    const auto state =
        askKeeper(context_, {"snapshot", "known", "report", "privileged", "sensors", "peripherals",
                             "projects", "alerts", "aiUsage", "historyProblem"});
    auto reading = state ? metricsReading(*state, *context_.host.zone, context_.clock.now()) : std::nullopt;
    if (!reading) return std::nullopt;
    sampler_.reset();
    const auto said = keeperAnnouncement(context_.host.folders);
    reading->keeper = said ? ProcessID(said->pid) : 0;
    return reading;
  }
  MetricsReading measured() {
    if (!sampler_) {
      sampler_ = assembly_.makeSampler(nullptr);
      tick();
      std::this_thread::sleep_for(std::chrono::seconds(1)); // rates take two readings
    }
    auto measured = tick();
    auto& host = context_.host;
    MetricsReading reading{
        .now = context_.clock.now(), .known = measured.known, .privileged = measured.privileged};
    reading.report = HealthReport::make(measured.snapshot, measured.sensors, measured.cpuTenMinuteAverage,
                                        projects_, startupItems_, *host.state, reading.now);
    reading.snapshot = std::move(measured.snapshot);
    return reading;
  }
  Tick tick() {
    auto measured = syncResult(sampler_->queue(), [this] { return sampler_->tick(); });
    if (measured.projects) projects_ = *measured.projects;
    if (measured.startupItems) startupItems_ = *measured.startupItems;
    return measured;
  }

  Context& context_;
  Assembly assembly_;
  std::unique_ptr<Sampler> sampler_; ///< null while a keeper answers
  std::vector<DevProject> projects_;
  std::vector<StartupItem> startupItems_;
  std::map<MetricsFormat, std::pair<std::string, Seconds>> texts_;
};

int writeFile(Context& context, const std::string& path) {
  if (replaceFile(path, Source(context).text(MetricsFormat::prometheus), Readers::everybody)) return exitOK;
  const InLanguage people(context.language);
  return fail(context, localized("The metrics could not be written to {path}: {reason}",
                                 {{"path", escapedControls(path)}, {"reason", std::strerror(errno)}}));
}

int serve(Context& context, const std::string& address) {
  context.keeperPatience = scrapePatience;
  Source source(context);
  const WakePipe ending;
  auto listener = [&] {
    const InLanguage people(context.language); // of what standard error is told
    return MetricsListener::listen(address, [&](MetricsFormat format) { return source.text(format); });
  }();
  if (!listener) return fail(context, listener.reason());
  const EndSignals signals(ending);
  context.out.line(localized("Listening at http://{address}/metrics. An interrupt (Ctrl-C) ends it.",
                             {{"address", listener->address()}}));
  context.out.flush();
  listener->run(ending);
  return exitOK;
}

int runMetrics(Context& context, const Arguments& arguments) {
  const auto path = arguments.text("--textfile"), address = arguments.text("--listen");
  {
    const InLanguage people(context.language);
    if (path && address)
      return fail(context, localized("--textfile and --listen exclude each other."), exitUsage);
    if (const auto why = address ? MetricsListener::refusal(*address) : ""; !why.empty())
      return fail(context, why, exitUsage);
  }
  if (path) return writeFile(context, *path);
  if (address) return serve(context, *address);
  context.out.writeRaw(Source(context).text(formatOf(arguments)));
  return exitOK;
}

} // namespace

Command metricsCommand() {
  return {"metrics",
          "Print the figures for Prometheus, write them into a file, or answer scrapers",
          {{"--format", Option::Kind::text, "Of what is printed (prometheus)", choicesOf<FormatChoice>()},
           {"--textfile",
            Option::Kind::text,
            "Write this file for a collector, at once and whole; the setting metrics.textfile has the keeper "
            "do so",
            {},
            false,
            nullptr,
            true},
           {"--listen", Option::Kind::text,
            "Answer scrapers at this address, 127.0.0.1:9494, until interrupted"}},
          runMetrics};
}

} // namespace korvell

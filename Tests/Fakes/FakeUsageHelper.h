#pragma once
// A helper whose status and answers the test decides, and that remembers what was asked. Time never passes in
// it: an answer is there when it is waited for, or it is late.

#include "Platform/UsageHelper.h"

#include <utility>
#include <vector>

namespace korvell {

class FakeUsageHelper final : public UsageHelperService {
public:
  enum class Manner { answersAtOnce, answersWhileWaitedFor, isSlow };

  UsageHelperStatus current = UsageHelperStatus::enabled;
  Manner manner = Manner::answersWhileWaitedFor;
  UsageHelperAnswer answer = std::vector<std::uint8_t>{};
  bool refuses = false; ///< nobody to connect to
  bool offered = true;
  bool lies = false; ///< installed without being on
  std::string groupThere;
  std::function<void()> whileAsked; ///< run while a request is waited for
  std::optional<Failure> failure;   ///< of enable() and disable()

  int statusQuestions = 0;
  int connections = 0;
  int live = 0; ///< connections that were not destroyed
  std::vector<std::vector<ProcessID>> asked;
  std::vector<Seconds> awaited;
  std::vector<UsageHelperConnection::Handler> late; ///< handlers that were not called yet
  std::vector<std::function<void()>> lost;          ///< of each connection

  UsageHelperStatus status() override {
    ++statusQuestions;
    return current;
  }
  std::shared_ptr<UsageHelperConnection> connect(std::function<void()> onLost) override {
    if (refuses) return nullptr;
    ++connections;
    lost.push_back(std::move(onLost));
    return std::make_shared<Connection>(*this);
  }
  bool isInstalled() override { return lies || UsageHelperService::isInstalled(); }
  std::string group() override { return groupThere; }
  bool isOffered() override { return offered; }
  Outcome enable() override { return turn(UsageHelperStatus::enabled); }
  Outcome disable() override { return turn(UsageHelperStatus::notEnabled); }
  void openApprovalSettings() override {}

private:
  class Connection final : public UsageHelperConnection {
  public:
    explicit Connection(FakeUsageHelper& helper) : helper_(helper) { ++helper_.live; }
    ~Connection() override { --helper_.live; }
    void request(std::span<const ProcessID> pids, Handler handler) override {
      helper_.asked.emplace_back(pids.begin(), pids.end());
      helper_.late.push_back(std::move(handler));
      if (helper_.manner == Manner::answersAtOnce) answerLast();
    }
    void await(Seconds timeout) override {
      helper_.awaited.push_back(timeout);
      if (helper_.whileAsked) helper_.whileAsked();
      if (helper_.manner == Manner::answersWhileWaitedFor) answerLast();
    }

  private:
    void answerLast() {
      const auto handler = std::move(helper_.late.back());
      helper_.late.pop_back();
      handler(helper_.answer);
    }
    FakeUsageHelper& helper_;
  };

  Outcome turn(UsageHelperStatus to) {
    if (failure) return *failure;
    current = to;
    lies = false;
    return success();
  }
};

} // namespace korvell

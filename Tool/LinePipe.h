#pragma once
// Lines that come in on one descriptor and go out on another, for a program at the other end. It reads no
// further than its own lines are fetched: whoever sends without reading waits, and takes no memory.

#include "Agents/RPCMessages.h"
#include "Tool/HeadlessLoop.h"

#include <functional>
#include <string>
#include <string_view>

namespace korvell {

class LinePipe final : public LoopGuest {
public:
  /// `ended`: nobody sends any more, or nobody reads.
  LinePipe(int in, int out, std::size_t longest, LineBuffer::Take take, std::function<void()> ended)
      : in_(in), out_(out), lines_(longest), take_(std::move(take)), ended_(std::move(ended)) {}

  void send(std::string_view line);
  /// Once nothing is left to be fetched, or nobody fetches it.
  void whenFetched(Task task);

  std::vector<pollfd> polled() override;
  void ready(const std::vector<pollfd>& polled) override;

private:
  void read();
  void write();
  void end();

  static constexpr std::size_t mostPending = std::size_t{1} << 20;
  const int in_, out_;
  LineBuffer lines_;
  const LineBuffer::Take take_;
  const std::function<void()> ended_;
  std::string pending_;
  Task fetched_;
  bool isReading_ = true, isBroken_ = false;
};

} // namespace korvell

#pragma once
// The client's end of the helper's socket. An answer that does not come in time closes the connection, so
// that it can't be taken for the answer to a later request.

#include "Base/Descriptor.h"
#include "Platform/Formats/UsagePackets.h"
#include "Platform/UsageHelper.h"

#include <memory>
#include <string>

namespace korvell {

class HelperSocket final : public UsageHelperConnection {
public:
  enum class Answer { nobody, forbidden, listening };
  /// Who would answer at `path`: nobody behind a socket whose owner has ended.
  static Answer probe(const std::string& path);
  /// Null when nobody listens at `path` or this user may not connect. `lost` as for
  /// UsageHelperService::connect().
  static std::shared_ptr<HelperSocket> connect(const std::string& path, std::function<void()> lost);

  void request(std::span<const ProcessID> pids, Handler handler) override;
  /// Reads the answer; without this nothing is read.
  void await(Seconds timeout) override;

private:
  HelperSocket(Descriptor socket, std::function<void()> lost)
      : socket_(std::move(socket)), lost_(std::move(lost)) {}
  UsageAnswerReader::State readPackets();
  void give(UsageHelperAnswer answer);
  void close();

  Descriptor socket_;
  std::function<void()> lost_;
  Handler handler_; ///< of the request whose answer is still to come
  UsageAnswerReader answer_;
};

} // namespace korvell

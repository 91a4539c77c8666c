#pragma once
// The helper's service: answers with the usage of the processes asked about, as far as it could be read, and
// does nothing else. The same object serves every system; how a process is read is given to it.

#include "Base/Date.h"
#include "Helper/Shared/RusageSample.h"

#include <functional>
#include <optional>
#include <span>

namespace korvell {

class RusageService {
public:
  /// A request's further processes are ignored.
  static constexpr std::size_t mostProcesses = 8192;

  /// Nothing when the process is gone or can't be read.
  using Reader = std::function<std::optional<RusageSample>(ProcessID)>;

  /// `onRequest` is run at the start of every request.
  RusageService(Reader reader, std::function<void()> onRequest);

  /// Ids below 1 and processes that can't be read are skipped.
  RusageSample::Map rusage(std::span<const ProcessID> pids) const;

  void noteRequest() const { onRequest_(); }
  /// A part of a request: the same without the limit and the note.
  RusageSample::Map read(std::span<const ProcessID> pids) const;

private:
  Reader reader_;
  std::function<void()> onRequest_;
};

} // namespace korvell

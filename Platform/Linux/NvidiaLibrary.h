#pragma once
// NVIDIA's management library, opened at run time where the driver is installed.
//
// Asking it wakes a suspended card, so callers read the card's power state first; release() lets go of the
// driver when every card is asleep. The first reading may take tens of milliseconds. The six functions are
// declared here by hand: their names, arguments and record layouts are the library's stable interface.

#include "Platform/MachineCounters.h"

#include <memory>
#include <optional>
#include <string>

namespace korvell {

class NvidiaLibrary {
public:
  /// `file` as for the dynamic linker: "libnvidia-ml.so.1".
  explicit NvidiaLibrary(std::string file);
  ~NvidiaLibrary();
  NvidiaLibrary(const NvidiaLibrary&) = delete;
  NvidiaLibrary& operator=(const NvidiaLibrary&) = delete;

  /// Of the card at a PCI address, "0000:01:00.0". Nothing when the library is missing or refuses.
  std::optional<GPUCounters> read(const std::string& address);
  /// Degrees Celsius of the card at a PCI address.
  std::optional<double> celsius(const std::string& address);
  void release();

private:
  struct Functions;
  bool start();

  std::string file_;
  void* library_ = nullptr;
  std::unique_ptr<Functions> functions_;
  bool missing_ = false; ///< the library could not be loaded: not tried again
  bool started_ = false;
};

} // namespace korvell

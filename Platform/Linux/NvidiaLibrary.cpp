#include "Platform/Linux/NvidiaLibrary.h"

#include <algorithm>
#include <dlfcn.h>

namespace korvell {

namespace {

using Device = struct nvmlDevice_st*;
struct Utilization {
  unsigned gpu = 0; ///< percent of the last sample period
  unsigned memory = 0;
};
struct Memory {
  unsigned long long total = 0;
  unsigned long long free = 0;
  unsigned long long used = 0;
};

} // namespace

struct NvidiaLibrary::Functions {
  int (*init)() = nullptr;
  int (*shutdown)() = nullptr;
  int (*deviceAt)(const char* address, Device*) = nullptr;
  int (*utilization)(Device, Utilization*) = nullptr;
  int (*memory)(Device, Memory*) = nullptr;
  int (*temperature)(Device, int sensor, unsigned*) = nullptr;

  bool load(void* library) {
    const auto find = [&](auto& function, const char* name) {
      function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(::dlsym(library, name));
      return function != nullptr;
    };
    return find(init, "nvmlInit_v2") && find(shutdown, "nvmlShutdown") &&
           find(deviceAt, "nvmlDeviceGetHandleByPciBusId_v2") &&
           find(utilization, "nvmlDeviceGetUtilizationRates") && find(memory, "nvmlDeviceGetMemoryInfo") &&
           find(temperature, "nvmlDeviceGetTemperature");
  }
};

NvidiaLibrary::NvidiaLibrary(std::string file) : file_(std::move(file)) {}

NvidiaLibrary::~NvidiaLibrary() {
  release();
  if (library_) ::dlclose(library_);
}

bool NvidiaLibrary::start() {
  if (started_) return true;
  if (missing_) return false;
  if (!functions_) {
    library_ = ::dlopen(file_.c_str(), RTLD_NOW | RTLD_LOCAL);
    functions_ = std::make_unique<Functions>();
    missing_ = !library_ || !functions_->load(library_);
    if (missing_) return false;
  }
  started_ = functions_->init() == 0;
  return started_;
}

void NvidiaLibrary::release() {
  if (started_) functions_->shutdown();
  started_ = false;
}

std::optional<GPUCounters> NvidiaLibrary::read(const std::string& address) {
  if (!start()) return std::nullopt;
  Device device = nullptr;
  if (functions_->deviceAt(address.c_str(), &device) != 0) return std::nullopt;
  Utilization utilization;
  Memory memory;
  GPUCounters counters;
  if (functions_->utilization(device, &utilization) == 0)
    counters.utilization = std::min(double(utilization.gpu), 100.0);
  if (functions_->memory(device, &memory) == 0) counters.memoryInUse = memory.used;
  if (!counters.utilization && !counters.memoryInUse) return std::nullopt;
  return counters;
}

std::optional<double> NvidiaLibrary::celsius(const std::string& address) {
  constexpr int onTheDie = 0;
  Device device = nullptr;
  unsigned celsius = 0;
  if (!start() || functions_->deviceAt(address.c_str(), &device) != 0 ||
      functions_->temperature(device, onTheDie, &celsius) != 0 || celsius == 0)
    return std::nullopt;
  return double(celsius);
}

} // namespace korvell

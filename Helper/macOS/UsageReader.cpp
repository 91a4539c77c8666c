#include "Helper/macOS/UsageReader.h"

#include <libproc.h>
#include <sys/resource.h>

namespace korvell {

std::optional<RusageSample> readUsage(ProcessID pid) {
  rusage_info_v6 info{};
  if (proc_pid_rusage(pid, RUSAGE_INFO_V6, reinterpret_cast<rusage_info_t*>(&info)) != 0) return std::nullopt;
  return RusageSample{.footprint = info.ri_phys_footprint,
                      .cpuTime = info.ri_user_time + info.ri_system_time,
                      .diskRead = info.ri_diskio_bytesread,
                      .diskWritten = info.ri_diskio_byteswritten,
                      .energy = info.ri_energy_nj,
                      .start = info.ri_proc_start_abstime};
}

} // namespace korvell

#pragma once
// A /proc in a temporary folder, written in the formats that proc(5) documents, with CPU clocks beside it.
// What is read again shows by what a test changed behind the clock's back.

#include "Platform/Formats/ProcessFiles.h"
#include "Platform/ProcessTable.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <fmt/format.h>
#include <map>

namespace korvell {

struct ProcTree {
  struct Process {
    std::string comm = "app";
    char state = 'S';
    ProcessID parent = 1;
    unsigned flags = 0x400000;
    std::uint64_t childFaults = 0;
    std::uint64_t ticks = 0;
    std::uint64_t start = 1000;
    std::uint64_t anonymousPages = 0;
    std::uint64_t swapKiB = 0;
    ProcessIO io;
    std::uint32_t user = 1000;
    std::string controlGroup = "/", environment, executable;
  };

  TemporaryFolder folder;
  std::map<ProcessID, std::uint64_t> clocks; ///< nanoseconds

  ProcTree() { writeMeminfo({}); }

  void write(const std::string& name, std::string_view text) const { folder.write(name, text); }
  struct KiB {
    std::uint64_t anonymous = 1'000'000, swapTotal = 0, swapFree = 0;
  };
  void writeMeminfo(const KiB& memory) const {
    write("meminfo",
          fmt::format("MemTotal: 16000000 kB\nAnonPages: {:8} kB\nSwapTotal: {} kB\nSwapFree: {} kB\n",
                      memory.anonymous, memory.swapTotal, memory.swapFree));
  }
  void writeIO(const std::string& name, const ProcessIO& io) const {
    write(name, fmt::format("rchar: 1\nwchar: 2\nsyscr: 3\nsyscw: 4\nread_bytes: {}\nwrite_bytes: {}\n"
                            "cancelled_write_bytes: 0\n",
                            io.read, io.written));
  }
  /// Writes the files; the clock moves only when `clock` says so.
  void put(ProcessID pid, const Process& p) const {
    const auto at = std::to_string(pid) + "/";
    write(at + "stat",
          fmt::format("{} ({}) {} {} 5 5 0 -1 {} 10 {} 0 0 {} 0 0 0 20 0 1 0 {} 1000 5 18446744073709551615"
                      " 1 1 0 0 0 0 0\n",
                      pid, p.comm, p.state, p.parent, p.flags, p.childFaults, p.ticks, p.start));
    write(at + "statm", fmt::format("9999 {} 7 1 0 2 0\n", p.anonymousPages + 7));
    write(at + "status",
          fmt::format("Name:\t{}\nUmask:\t0022\nUid:\t{}\t{}\t0\t0\nVmSwap:\t{} kB\nRssAnon:\t{} kB\n", "x",
                      0, p.user, p.swapKiB, p.anonymousPages * 4));
    writeIO(at + "io", p.io);
    write(at + "cmdline", "");
    write(at + "cgroup", "0::" + p.controlGroup + "\n");
    write(at + "environ", p.environment);
    if (!p.executable.empty()) {
      std::filesystem::remove(folder.path() / (at + "exe"));
      std::filesystem::create_symlink(p.executable, folder.path() / (at + "exe"));
    }
  }
  void add(ProcessID pid, const Process& p, std::uint64_t clock = 1) {
    put(pid, p);
    clocks[pid] = clock;
  }
  void remove(ProcessID pid) {
    std::filesystem::remove_all(folder.path() / std::to_string(pid));
    clocks.erase(pid);
  }
};

} // namespace korvell

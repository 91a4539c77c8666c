#pragma once
// SQLite's default file system with a clock and with disk faults of a test's making; nobody sleeps while
// another holds a lock. While one exists, every database that is opened goes through it.

#include "Base/Date.h"

#include <algorithm>
#include <map>
#include <sqlite3.h>

namespace korvell {

class TestVFS {
public:
  explicit TestVFS(const Clock& clock) : clock_(&clock), original_(sqlite3_vfs_find(nullptr)) {
    current() = this;
    vfs_ = *original_;
    vfs_.zName = "korvell-test";
    vfs_.xOpen = open;
    vfs_.xCurrentTimeInt64 = now;
    vfs_.xSleep = [](sqlite3_vfs*, int microseconds) { return microseconds; };
    sqlite3_vfs_register(&vfs_, 1);
  }
  ~TestVFS() {
    sqlite3_vfs_unregister(&vfs_);
    current() = nullptr;
  }
  TestVFS(const TestVFS&) = delete;
  TestVFS& operator=(const TestVFS&) = delete;

  int writeError = SQLITE_OK; ///< what every write to a file answers instead of writing
  int readError = SQLITE_OK;
  int openError = SQLITE_OK;
  int calls = 0; ///< reads and writes that still go well before the errors begin

private:
  struct Methods {
    sqlite3_io_methods patched;
    const sqlite3_io_methods* original;
  };
  static TestVFS*& current() {
    static TestVFS* vfs = nullptr;
    return vfs;
  }
  static int open(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* outFlags) {
    auto& self = *current();
    file->pMethods = nullptr;
    if (self.openError != SQLITE_OK) return self.openError;
    const int code = self.original_->xOpen(self.original_, name, file, flags, outFlags);
    if (code != SQLITE_OK || !file->pMethods) return code;
    auto& methods = self.methods_[file->pMethods];
    methods.original = file->pMethods;
    methods.patched = *file->pMethods;
    methods.patched.xWrite = write;
    methods.patched.xRead = read;
    methods.patched.xFetch = nullptr; // read, not mapped
    methods.patched.iVersion = std::min(methods.patched.iVersion, 2);
    file->pMethods = &methods.patched;
    return code;
  }
  static int read(sqlite3_file* file, void* bytes, int count, sqlite3_int64 offset) {
    if (current()->readError != SQLITE_OK && --current()->calls < 0) return current()->readError;
    return reinterpret_cast<const Methods*>(file->pMethods)->original->xRead(file, bytes, count, offset);
  }
  static int write(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 offset) {
    if (current()->writeError != SQLITE_OK && --current()->calls < 0) return current()->writeError;
    return reinterpret_cast<const Methods*>(file->pMethods)->original->xWrite(file, bytes, count, offset);
  }
  static int now(sqlite3_vfs*, sqlite3_int64* julianMilliseconds) {
    *julianMilliseconds = 210'866'760'000'000 + sqlite3_int64(current()->clock_->now().sinceEpoch * 1000);
    return SQLITE_OK;
  }

  const Clock* clock_;
  sqlite3_vfs* original_;
  sqlite3_vfs vfs_;
  std::map<const sqlite3_io_methods*, Methods> methods_;
};

} // namespace korvell

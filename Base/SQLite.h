#pragma once
// A thin handle on SQLite 3. Errors are values: every call answers with SQLite's result code or a bool, and
// the caller decides. A handle is used by one thread at a time.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace korvell {

/// One prepared statement. Columns and parameters are numbered as in SQLite: columns from 0, parameters
/// from 1. A default-made statement does nothing and steps to an error.
class Statement {
public:
  Statement() = default;
  explicit operator bool() const { return statement_ != nullptr; }

  void bind(int index, std::int64_t value);
  void bind(int index, int value) { bind(index, std::int64_t{value}); }
  void bind(int index, double value);
  void bind(int index, std::string_view value);     ///< copied
  void bindBlob(int index, std::string_view bytes); ///< copied
  void bindNull(int index);
  /// For an SQL function of our own, which asks for the pointer by `type`, a string that lives for ever.
  void bindPointer(int index, void* pointer, const char* type);
  template <class T>
  void bind(int index, const std::optional<T>& value) {
    value ? bind(index, *value) : bindNull(index);
  }

  /// SQLITE_ROW (100), SQLITE_DONE (101) or an error code.
  int step();
  bool stepRow(); ///< true while there is a row
  /// Steps to the end and resets; true when it got there without an error.
  bool run();
  /// The same, with the bindings kept: only what differs has to be bound for the next time.
  bool runKeepingBindings();
  void reset(); ///< ready to bind and step again; bindings are cleared

  bool isNull(int column) const;
  std::int64_t integer(int column) const;
  double real(int column) const;
  std::string text(int column) const;

private:
  friend class Database;
  struct Finalize {
    void operator()(sqlite3_stmt* statement) const;
  };
  std::unique_ptr<sqlite3_stmt, Finalize> statement_;
};

class Database {
public:
  enum class Mode { readWriteCreate, readWrite, readOnly };

  Database() = default; ///< not open
  /// Opens a file. Without success the handle is not open and `lastError` tells SQLite's code.
  static Database open(const std::string& path, Mode mode, int* errorCode = nullptr);

  explicit operator bool() const { return db_ != nullptr; }
  /// Runs a script of statements, stopping at the first that fails; SQLite's code.
  int exec(const char* sql);
  Statement prepare(std::string_view sql);
  /// How long a call waits for another process's lock before it fails with SQLITE_BUSY (5).
  void setBusyTimeout(int milliseconds);
  int lastErrorCode() const;
  std::string lastErrorMessage() const;
  /// True between a BEGIN and its end; some errors end a transaction by themselves.
  bool inTransaction() const;
  std::int64_t changes() const;
  void close() { db_.reset(); }
  sqlite3* handle() const { return db_.get(); }

private:
  struct Close {
    void operator()(sqlite3* db) const;
  };
  std::unique_ptr<sqlite3, Close> db_;
};

} // namespace korvell

#include "Base/SQLite.h"

#include <sqlite3.h>

namespace korvell {

void Statement::Finalize::operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
void Database::Close::operator()(sqlite3* db) const { sqlite3_close_v2(db); }

void Statement::bind(int index, std::int64_t value) { sqlite3_bind_int64(statement_.get(), index, value); }
void Statement::bind(int index, double value) { sqlite3_bind_double(statement_.get(), index, value); }
void Statement::bind(int index, std::string_view value) {
  const char* text = value.data() ? value.data() : ""; // a null pointer would bind NULL
  sqlite3_bind_text64(statement_.get(), index, text, value.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}
void Statement::bindBlob(int index, std::string_view bytes) {
  sqlite3_bind_blob64(statement_.get(), index, bytes.data(), bytes.size(), SQLITE_TRANSIENT);
}
void Statement::bindNull(int index) { sqlite3_bind_null(statement_.get(), index); }
void Statement::bindPointer(int index, void* pointer, const char* type) {
  sqlite3_bind_pointer(statement_.get(), index, pointer, type, nullptr);
}

int Statement::step() { return statement_ ? sqlite3_step(statement_.get()) : SQLITE_MISUSE; }
bool Statement::stepRow() { return step() == SQLITE_ROW; }

bool Statement::runKeepingBindings() {
  int code = step();
  while (code == SQLITE_ROW) code = step();
  sqlite3_reset(statement_.get());
  return code == SQLITE_DONE;
}

bool Statement::run() {
  const bool done = runKeepingBindings();
  reset();
  return done;
}

void Statement::reset() {
  if (!statement_) return;
  sqlite3_reset(statement_.get());
  sqlite3_clear_bindings(statement_.get());
}

bool Statement::isNull(int column) const {
  return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
}
std::int64_t Statement::integer(int column) const { return sqlite3_column_int64(statement_.get(), column); }
double Statement::real(int column) const { return sqlite3_column_double(statement_.get(), column); }

std::string Statement::text(int column) const {
  const auto* bytes = sqlite3_column_text(statement_.get(), column);
  const auto size = sqlite3_column_bytes(statement_.get(), column);
  return bytes ? std::string(reinterpret_cast<const char*>(bytes), size_t(size)) : std::string();
}

Database Database::open(const std::string& path, Mode mode, int* errorCode) {
  int flags = SQLITE_OPEN_NOMUTEX;
  switch (mode) {
  case Mode::readWriteCreate:
    flags |= SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    break;
  case Mode::readWrite:
    flags |= SQLITE_OPEN_READWRITE;
    break;
  case Mode::readOnly:
    flags |= SQLITE_OPEN_READONLY;
    break;
  }
  sqlite3* raw = nullptr;
  const int code = sqlite3_open_v2(path.c_str(), &raw, flags, nullptr);
  Database database;
  database.db_.reset(raw);
  if (errorCode) *errorCode = code;
  if (code != SQLITE_OK) database.close();
  return database;
}

int Database::exec(const char* sql) {
  return db_ ? sqlite3_exec(db_.get(), sql, nullptr, nullptr, nullptr) : SQLITE_MISUSE;
}

Statement Database::prepare(std::string_view sql) {
  Statement statement;
  if (!db_) return statement;
  sqlite3_stmt* raw = nullptr;
  sqlite3_prepare_v2(db_.get(), sql.data(), int(sql.size()), &raw, nullptr);
  statement.statement_.reset(raw);
  return statement;
}

void Database::setBusyTimeout(int milliseconds) {
  if (db_) sqlite3_busy_timeout(db_.get(), milliseconds);
}
int Database::lastErrorCode() const { return db_ ? sqlite3_errcode(db_.get()) : SQLITE_MISUSE; }
std::string Database::lastErrorMessage() const { return db_ ? sqlite3_errmsg(db_.get()) : "not open"; }
bool Database::inTransaction() const { return db_ && sqlite3_get_autocommit(db_.get()) == 0; }
std::int64_t Database::changes() const { return db_ ? sqlite3_changes64(db_.get()) : 0; }

} // namespace korvell

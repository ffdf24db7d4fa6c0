#include "tools/community_server/Database.h"

#include <sqlite3.h>

namespace community_server {

namespace {

sqlite3* open(const std::filesystem::path& folder)
{
    std::filesystem::create_directories(folder);
    sqlite3* handle = nullptr;
    // The handle is there even where opening fails, and tells why.
    sqlite3_open_v2((folder / "library.sqlite").c_str(), &handle,
                    SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    return handle;
}

} // namespace

Database::Database(const std::filesystem::path& folder) : handle_(open(folder), sqlite3_close)
{
    if (!handle_)
        throw DatabaseError("no memory for the database");
    if (sqlite3_errcode(handle()) != SQLITE_OK)
        fail();
    sqlite3_busy_timeout(handle(), kPatienceMs);
    // Readers and the writer do not wait for each other, and a commit returns when it is on the disk.
    Statement mode(*this, "PRAGMA journal_mode = WAL");
    if (!mode.step() || mode.text(0) != "wal")
        throw DatabaseError("the database cannot keep a write-ahead log where it lies");
    execute("PRAGMA synchronous = FULL; PRAGMA foreign_keys = ON; PRAGMA trusted_schema = OFF");
}

void Database::execute(const char* sql)
{
    if (sqlite3_exec(handle(), sql, nullptr, nullptr, nullptr) != SQLITE_OK)
        fail();
}

std::int64_t Database::lastRowId() const
{
    return sqlite3_last_insert_rowid(handle());
}

std::int64_t Database::changes() const
{
    return sqlite3_changes(handle());
}

void Database::fail() const
{
    throw DatabaseError(sqlite3_errmsg(handle()));
}

Statement::Statement(Database& database, const char* sql, std::nullptr_t)
    : database_(database), statement_(nullptr, sqlite3_finalize)
{
    sqlite3_stmt* statement = nullptr;
    check(sqlite3_prepare_v2(database.handle(), sql, -1, &statement, nullptr));
    statement_.reset(statement);
}

bool Statement::step()
{
    const int result = sqlite3_step(statement_.get());
    if (result != SQLITE_ROW && result != SQLITE_DONE)
        check(result);
    return result == SQLITE_ROW;
}

std::string_view Statement::text(int column) const
{
    // Before the size, which is that of the form asked for last.
    const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement_.get(), column));
    return {bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column))};
}

std::int64_t Statement::integer(int column) const
{
    return sqlite3_column_int64(statement_.get(), column);
}

bool Statement::isNull(int column) const
{
    return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
}

void Statement::bind(int index, std::string_view text)
{
    // An empty view may have no address, which would be a null.
    check(sqlite3_bind_text64(statement_.get(), index, text.empty() ? "" : text.data(), text.size(), SQLITE_TRANSIENT,
                              SQLITE_UTF8));
}

void Statement::bind(int index, Blob blob)
{
    check(sqlite3_bind_blob64(statement_.get(), index, blob.bytes.empty() ? "" : blob.bytes.data(), blob.bytes.size(),
                              SQLITE_TRANSIENT));
}

void Statement::bind(int index, std::int64_t number)
{
    check(sqlite3_bind_int64(statement_.get(), index, number));
}

void Statement::bind(int index, std::nullopt_t)
{
    check(sqlite3_bind_null(statement_.get(), index));
}

void Statement::check(int result) const
{
    if (result != SQLITE_OK)
        database_.fail();
}

Transaction::Transaction(Database& database) : database_(database)
{
    // Waits for other writers here, once, and so never in the middle.
    database.execute("BEGIN IMMEDIATE");
}

Transaction::~Transaction()
{
    // Some errors have undone it already.
    if (isOpen_ && sqlite3_get_autocommit(database_.handle()) == 0)
        sqlite3_exec(database_.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
}

void Transaction::commit()
{
    database_.execute("COMMIT");
    isOpen_ = false;
}

} // namespace community_server

#pragma once
// A connection to the library's SQLite file. What goes wrong is thrown as a DatabaseError; whoever answers a client
// says so, and nothing was stored. A connection belongs to one thread at a time; any number may be open on a file.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace community_server {

struct DatabaseError : std::runtime_error {
    using runtime_error::runtime_error;
};

/// Bytes that are no text.
struct Blob {
    std::string_view bytes;
};

class Database {
public:
    /// How long a write waits for another program's.
    static constexpr int kPatienceMs = 5000;

    /// Opens "library.sqlite" in the folder, making both where there is none.
    explicit Database(const std::filesystem::path& folder);

    /// Runs statements without values, one after the other.
    void execute(const char* sql);
    /// Runs one statement to its end and returns the number of rows that it changed.
    template <typename... Values>
    std::int64_t run(const char* sql, const Values&... values);
    std::int64_t lastRowId() const;

    sqlite3* handle() const { return handle_.get(); }
    [[noreturn]] void fail() const;

private:
    std::int64_t changes() const;

    std::unique_ptr<sqlite3, int (*)(sqlite3*)> handle_;
};

/// A prepared statement with its values bound, in order.
class Statement {
public:
    template <typename... Values>
    Statement(Database& database, const char* sql, const Values&... values) : Statement(database, sql, nullptr)
    {
        int index = 0;
        (bind(++index, values), ...);
    }

    /// Whether there is another row.
    bool step();
    /// Values of the row; a null reads as empty or 0. Views hold until the next step.
    std::string_view text(int column) const;
    std::int64_t integer(int column) const;
    bool isNull(int column) const;

private:
    Statement(Database& database, const char* sql, std::nullptr_t);
    void bind(int index, std::string_view text);
    void bind(int index, Blob blob);
    void bind(int index, std::int64_t number);
    void bind(int index, std::nullopt_t null);
    template <typename Value>
    void bind(int index, const std::optional<Value>& value)
    {
        value ? bind(index, *value) : bind(index, std::nullopt);
    }
    void check(int result) const;

    Database& database_;
    std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement_;
};

/// Everything from its making to commit(), or nothing: what is not committed is undone when it goes.
class Transaction {
public:
    explicit Transaction(Database& database);
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction();

    /// When this returns, all of it is on the disk.
    void commit();

private:
    Database& database_;
    bool isOpen_ = true;
};

template <typename... Values>
std::int64_t Database::run(const char* sql, const Values&... values)
{
    Statement statement(*this, sql, values...);
    while (statement.step()) {
    }
    return changes();
}

} // namespace community_server

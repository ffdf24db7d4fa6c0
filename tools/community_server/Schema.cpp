#include "tools/community_server/Schema.h"

#include "platform/files/Files.h"
#include "tools/community_server/Library.h"
#include "tools/community_server/Pins.h"

#include <algorithm>
#include <stdexcept>

namespace community_server {

namespace {

namespace fs = std::filesystem;

constexpr std::int64_t kVersion = 1;

constexpr char kTables[] = R"(
    CREATE TABLE account (
        id INTEGER PRIMARY KEY,
        name TEXT NOT NULL UNIQUE,      -- as it is shown
        nameKey TEXT UNIQUE,            -- null for an earlier library's that is no name or whose key is taken
        skeleton TEXT UNIQUE,           -- null where the key is
        email TEXT NOT NULL,
        pin TEXT,                       -- hashed; null when nobody can log in
        banned INTEGER NOT NULL DEFAULT 0,
        quota INTEGER,                  -- uploads a day; null for the library's
        created INTEGER NOT NULL) STRICT;
    CREATE TABLE login (
        account INTEGER NOT NULL REFERENCES account,
        address TEXT NOT NULL,
        at INTEGER NOT NULL,
        PRIMARY KEY (account, address)) STRICT, WITHOUT ROWID;
    CREATE TABLE file (
        hash BLOB PRIMARY KEY,
        bytes BLOB NOT NULL) STRICT;
    CREATE TABLE mapping (
        patchID INTEGER PRIMARY KEY AUTOINCREMENT,
        plugin TEXT NOT NULL,
        account INTEGER NOT NULL REFERENCES account,
        comments TEXT NOT NULL,
        hash BLOB REFERENCES file,      -- null for an earlier library's whose file was lost
        fileName TEXT NOT NULL UNIQUE,
        uploaded INTEGER NOT NULL,
        downloads INTEGER NOT NULL DEFAULT 0,
        deleted INTEGER NOT NULL DEFAULT 0,
        UNIQUE (plugin, account, hash)) STRICT;
    CREATE INDEX listed ON mapping (plugin, uploaded DESC, patchID DESC) WHERE deleted = 0 AND hash IS NOT NULL;
    CREATE INDEX mappingOfAccount ON mapping (account);
    CREATE INDEX mappingOfFile ON mapping (hash);
    CREATE TABLE usage (
        day INTEGER NOT NULL,
        what TEXT NOT NULL,
        count INTEGER NOT NULL,
        PRIMARY KEY (day, what)) STRICT, WITHOUT ROWID;
)";

std::int64_t versionOf(Database& database)
{
    Statement version(database, "PRAGMA user_version");
    version.step();
    return version.integer(0);
}

/// The accounts and mappings of the library that kept its files in a folder.
std::vector<std::string> takeOver(Database& database, const fs::path& folder)
{
    std::vector<std::string> problems;
    Statement accounts(database, "SELECT userName, email, salt, hash FROM oldAccount ORDER BY rowid");
    while (accounts.step()) {
        const std::int64_t id = accountNamed(database, std::string(accounts.text(0)), 0);
        database.run("UPDATE account SET email = ?, pin = ? WHERE id = ?", accounts.text(1),
                     keptFromPbkdf2(accounts.text(2), accounts.text(3)), id);
    }
    Statement mappings(database, "SELECT patchID, plugin, userName, comments, fileName, "
                                 "CAST(strftime('%s', uploaded) AS INTEGER) * 1000, downloads "
                                 "FROM oldMapping ORDER BY patchID");
    while (mappings.step()) {
        const std::string fileName(mappings.text(4));
        const auto bytes = platform::files::read(folder / "files" / fileName);
        std::optional<std::string> hash;
        if (bytes)
            hash = keepFile(database, *bytes);
        else
            problems.push_back("the file of mapping " + std::to_string(mappings.integer(0)) + ", " + fileName +
                               ", cannot be read, so the mapping is not listed");
        // The same shared again takes the place of the earlier one, whose downloads count on.
        database.run("INSERT INTO mapping (patchID, plugin, account, comments, hash, fileName, uploaded, downloads) "
                     "VALUES (?, ?, ?, ?, ?, ?, ?, ?) ON CONFLICT (plugin, account, hash) DO UPDATE SET "
                     "comments = excluded.comments, fileName = excluded.fileName, uploaded = excluded.uploaded, "
                     "downloads = downloads + excluded.downloads",
                     mappings.integer(0), mappings.text(1),
                     accountNamed(database, std::string(mappings.text(2)), mappings.integer(5)), mappings.text(3),
                     hash ? std::optional(Blob{*hash}) : std::nullopt, fileName, mappings.integer(5),
                     mappings.integer(6));
    }
    return problems;
}

/// Whether an earlier library made a file of this name: 32 hexadecimal digits, or one in the making.
bool isOldName(const std::string& name)
{
    const std::size_t start = name.starts_with('~') ? 1 : 0;
    return name.size() >= start + 38 && name.compare(start + 32, 6, ".plist") == 0 &&
           name.find_first_not_of("0123456789abcdef", start) == start + 32 && (start == 1 || name.size() == 38);
}

/// Removes what lies in the folder of an earlier library but for files that are shared and not in the database.
void clear(Database& database, const fs::path& files)
{
    std::error_code problem;
    for (const auto& entry : fs::directory_iterator(files, problem)) {
        const std::string name = entry.path().filename().native();
        Statement lost(database, "SELECT 1 FROM mapping WHERE fileName = ? AND hash IS NULL", name);
        if (isOldName(name) && !lost.step())
            platform::files::remove(entry.path());
    }
    fs::remove(files, problem); // where nothing else lies in it
}

} // namespace

std::vector<std::string> bringUpToDate(Database& database, const fs::path& folder)
{
    std::vector<std::string> problems;
    Transaction transaction(database);
    const std::int64_t version = versionOf(database);
    if (version > kVersion)
        throw std::runtime_error("the library was made by a later version of this program");
    if (version < kVersion) {
        const bool isOld = Statement(database, "SELECT 1 FROM sqlite_schema WHERE name = 'account'").step();
        if (isOld)
            database.execute("ALTER TABLE account RENAME TO oldAccount; ALTER TABLE mapping RENAME TO oldMapping; "
                             "DROP INDEX IF EXISTS mappingsOfPlugin");
        database.execute(kTables);
        if (isOld) {
            problems = takeOver(database, folder);
            database.execute("DROP TABLE oldAccount; DROP TABLE oldMapping");
        }
        database.execute(("PRAGMA user_version = " + std::to_string(kVersion)).c_str());
    }
    transaction.commit();
    clear(database, folder / "files");
    return problems;
}

bool isUpToDate(Database& database)
{
    return versionOf(database) == kVersion;
}

} // namespace community_server

#include "tools/community_server/Library.h"

#include "platform/files/Files.h"
#include "platform/plist/PropertyList.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/rand.h>
#include <sqlite3.h>

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <stdexcept>

namespace {

constexpr int kHashRounds = 100'000;
constexpr std::size_t kHashSize = 32;

constexpr char kTables[] = R"(
    CREATE TABLE IF NOT EXISTS account (
        userName TEXT PRIMARY KEY, email TEXT NOT NULL, salt BLOB NOT NULL, hash BLOB NOT NULL);
    CREATE TABLE IF NOT EXISTS mapping (
        patchID INTEGER PRIMARY KEY AUTOINCREMENT, plugin TEXT NOT NULL, userName TEXT NOT NULL, comments TEXT NOT NULL,
        fileName TEXT NOT NULL, uploaded TEXT NOT NULL DEFAULT (datetime('now')), downloads INTEGER NOT NULL DEFAULT 0);
    CREATE INDEX IF NOT EXISTS mappingsOfPlugin ON mapping (plugin);
)";

/// A prepared statement with its values bound, in order.
class Statement {
public:
    Statement(sqlite3* database, const char* sql, std::initializer_list<std::string_view> values) : database_(database)
    {
        check(sqlite3_prepare_v2(database, sql, -1, &statement_, nullptr));
        int index = 0;
        for (const std::string_view value : values)
            check(
                sqlite3_bind_text(statement_, ++index, value.data(), static_cast<int>(value.size()), SQLITE_TRANSIENT));
    }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    ~Statement() { sqlite3_finalize(statement_); }

    /// Whether there is another row.
    bool step()
    {
        const int result = sqlite3_step(statement_);
        if (result != SQLITE_ROW && result != SQLITE_DONE)
            check(result);
        return result == SQLITE_ROW;
    }
    std::string column(int index) const
    {
        return {static_cast<const char*>(sqlite3_column_blob(statement_, index)),
                static_cast<std::size_t>(sqlite3_column_bytes(statement_, index))};
    }

private:
    void check(int result) const
    {
        if (result != SQLITE_OK)
            throw std::runtime_error(sqlite3_errmsg(database_));
    }

    sqlite3* database_;
    sqlite3_stmt* statement_ = nullptr;
};

std::string randomBytes(std::size_t count)
{
    std::string bytes(count, '\0');
    if (RAND_bytes(reinterpret_cast<unsigned char*>(bytes.data()), static_cast<int>(count)) != 1)
        throw std::runtime_error("no random numbers");
    return bytes;
}

std::string randomPin()
{
    std::uint64_t number = 0;
    std::memcpy(&number, randomBytes(sizeof number).data(), sizeof number);
    return std::to_string(1'000'000 + number % 1'000'000).substr(1);
}

std::string hashOf(const std::string& pin, const std::string& salt)
{
    std::string hash(kHashSize, '\0');
    PKCS5_PBKDF2_HMAC(pin.data(), static_cast<int>(pin.size()), reinterpret_cast<const unsigned char*>(salt.data()),
                      static_cast<int>(salt.size()), kHashRounds, EVP_sha256(), static_cast<int>(hash.size()),
                      reinterpret_cast<unsigned char*>(hash.data()));
    return hash;
}

/// Whether the bytes are a property list with a parameter order in it.
bool isMapping(std::string_view bytes)
{
    const auto document = platform::plist::parse(bytes);
    const auto* root = document ? document->root.asDictionary() : nullptr;
    const auto* order = root ? root->find("ControlSurfaceParameterOrder") : nullptr;
    return order && order->asArray();
}

} // namespace

Library::Library(std::filesystem::path folder) : folder_(std::move(folder))
{
    std::filesystem::create_directories(folder_ / "files");
    sqlite3* database = nullptr;
    const int result = sqlite3_open_v2((folder_ / "library.sqlite").c_str(), &database,
                                       SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX, nullptr);
    database_.reset(database, sqlite3_close);
    sqlite3_busy_timeout(database, 5000); // milliseconds
    if (result != SQLITE_OK || sqlite3_exec(database, kTables, nullptr, nullptr, nullptr) != SQLITE_OK)
        throw std::runtime_error(sqlite3_errmsg(database));
}

std::optional<std::string> Library::createAccount(const std::string& userName, const std::string& email)
{
    const std::string pin = randomPin();
    const std::string salt = randomBytes(16);
    const std::string hash = hashOf(pin, salt);
    Statement insert(database_.get(),
                     "INSERT INTO account VALUES (?, ?, CAST(? AS BLOB), CAST(? AS BLOB)) "
                     "ON CONFLICT DO NOTHING RETURNING userName",
                     {userName, email, salt, hash});
    return insert.step() ? std::optional(pin) : std::nullopt;
}

bool Library::hasAccount(const std::string& userName)
{
    return Statement(database_.get(), "SELECT 1 FROM account WHERE userName = ?", {userName}).step();
}

bool Library::isPinOf(const std::string& userName, const std::string& pin)
{
    Statement select(database_.get(), "SELECT salt, hash FROM account WHERE userName = ?", {userName});
    if (!select.step())
        return false;
    const std::string hash = select.column(1);
    return hash.size() == kHashSize && CRYPTO_memcmp(hashOf(pin, select.column(0)).data(), hash.data(), kHashSize) == 0;
}

bool Library::share(const std::string& userName, const std::string& plugin, const std::string& comments,
                    std::string_view file)
{
    if (file.size() > kLargestFile || !isMapping(file))
        return false;
    Statement random(database_.get(), "SELECT lower(hex(randomblob(16))) || '.plist'", {});
    random.step();
    const std::string name = random.column(0);
    if (!platform::files::writeAtomically(folder_ / "files" / name, file))
        throw std::runtime_error("cannot write " + name);
    Statement(database_.get(), "INSERT INTO mapping (plugin, userName, comments, fileName) VALUES (?, ?, ?, ?)",
              {plugin, userName, comments, name})
        .step();
    return true;
}

std::string Library::listing(const std::string& plugin)
{
    Statement select(database_.get(),
                     "SELECT json_group_array(json_object('patchID', patchID, 'fileLocation', 'files/' || fileName, "
                     "'userComments', comments, 'uploader', userName, 'uploadDate', date(uploaded), 'downloads', "
                     "downloads)) FROM (SELECT * FROM mapping WHERE plugin = ? ORDER BY patchID DESC)",
                     {plugin});
    select.step();
    return select.column(0);
}

bool Library::countDownload(const std::string& patchId)
{
    return Statement(database_.get(),
                     "UPDATE mapping SET downloads = downloads + 1 WHERE patchID = ? RETURNING patchID", {patchId})
        .step();
}

std::optional<std::string> Library::file(const std::string& name)
{
    // A name that is listed is one of our own making, and so no path.
    if (!Statement(database_.get(), "SELECT 1 FROM mapping WHERE fileName = ?", {name}).step())
        return std::nullopt;
    return platform::files::read(folder_ / "files" / name, kLargestFile);
}

void Library::seed(const std::filesystem::path& folder)
{
    if (Statement(database_.get(), "SELECT 1 FROM mapping", {}).step())
        return;
    const auto list = platform::files::read(folder / "mappings.json");
    if (!list)
        throw std::runtime_error("cannot read " + (folder / "mappings.json").native());
    // All or nothing, so that a seeding that was cut off is done anew the next time.
    Statement(database_.get(), "BEGIN IMMEDIATE", {}).step();
    Statement entries(database_.get(),
                      "SELECT value ->> 'user', value ->> 'plugin', value ->> 'comments', value ->> 'file' "
                      "FROM json_each(?)",
                      {*list});
    while (entries.step()) {
        const auto bytes = platform::files::read(folder / entries.column(3), kLargestFile);
        if (!bytes || !share(entries.column(0), entries.column(1), entries.column(2), *bytes))
            throw std::runtime_error("no mapping: " + (folder / entries.column(3)).native());
    }
    Statement(database_.get(), "COMMIT", {}).step();
}

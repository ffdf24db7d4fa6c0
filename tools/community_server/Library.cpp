#include "tools/community_server/Library.h"

#include "platform/Files.h"
#include "platform/PropertyList.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/rand.h>
#include <sqlite3.h>

#include <initializer_list>
#include <stdexcept>

namespace {

namespace files = platform::files;

constexpr int kHashRounds = 100'000;
constexpr std::size_t kHashSize = 32;
constexpr std::size_t kNameBytes = 16;

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
        const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement_, index));
        return {bytes ? bytes : "", static_cast<std::size_t>(sqlite3_column_bytes(statement_, index))};
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

std::string randomName()
{
    std::string name;
    for (const char byte : randomBytes(kNameBytes)) {
        name += "0123456789abcdef"[(byte >> 4) & 0xf];
        name += "0123456789abcdef"[byte & 0xf];
    }
    return name + ".plist";
}

std::string randomPin()
{
    std::string pin;
    while (pin.size() < 6) {
        const auto byte = static_cast<unsigned char>(randomBytes(1)[0]);
        if (byte < 250) // every digit as often
            pin += static_cast<char>('0' + byte % 10);
    }
    return pin;
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

/// A name as `randomName` makes them, and so no path.
bool isFileName(std::string_view name)
{
    return name.size() == 2 * kNameBytes + 6 && name.ends_with(".plist") &&
           name.find_first_not_of("0123456789abcdef") == 2 * kNameBytes;
}

} // namespace

void Library::Close::operator()(sqlite3* database) const
{
    sqlite3_close(database);
}

Library::Library(std::filesystem::path folder) : folder_(std::move(folder))
{
    std::filesystem::create_directories(folder_ / "files");
    sqlite3* database = nullptr;
    const int result = sqlite3_open((folder_ / "library.sqlite").c_str(), &database);
    database_.reset(database);
    if (result != SQLITE_OK || sqlite3_exec(database, kTables, nullptr, nullptr, nullptr) != SQLITE_OK)
        throw std::runtime_error(sqlite3_errmsg(database));
}

std::optional<std::string> Library::createAccount(const std::string& userName, const std::string& email)
{
    const std::string pin = randomPin();
    const std::string salt = randomBytes(16);
    const std::string hash = hashOf(pin, salt);
    const std::lock_guard lock(mutex_);
    Statement insert(database_.get(),
                     "INSERT INTO account VALUES (?, ?, CAST(? AS BLOB), CAST(? AS BLOB)) "
                     "ON CONFLICT DO NOTHING RETURNING userName",
                     {userName, email, salt, hash});
    return insert.step() ? std::optional(pin) : std::nullopt;
}

bool Library::hasAccount(const std::string& userName)
{
    const std::lock_guard lock(mutex_);
    return Statement(database_.get(), "SELECT 1 FROM account WHERE userName = ?", {userName}).step();
}

bool Library::isPinOf(const std::string& userName, const std::string& pin)
{
    std::string salt;
    std::string hash(kHashSize, '\0');
    {
        const std::lock_guard lock(mutex_);
        Statement select(database_.get(), "SELECT salt, hash FROM account WHERE userName = ?", {userName});
        if (!select.step())
            return false;
        salt = select.column(0);
        hash = select.column(1);
    }
    return hash.size() == kHashSize && CRYPTO_memcmp(hashOf(pin, salt).data(), hash.data(), kHashSize) == 0;
}

bool Library::share(const std::string& userName, const std::string& plugin, const std::string& comments,
                    std::string_view file)
{
    if (file.size() > kLargestFile || !isMapping(file))
        return false;
    const std::string name = randomName();
    if (!files::writeAtomically(folder_ / "files" / name, file))
        throw std::runtime_error("cannot write " + name);
    const std::lock_guard lock(mutex_);
    Statement(database_.get(), "INSERT INTO mapping (plugin, userName, comments, fileName) VALUES (?, ?, ?, ?)",
              {plugin, userName, comments, name})
        .step();
    return true;
}

std::string Library::listing(const std::string& plugin)
{
    const std::lock_guard lock(mutex_);
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
    const std::lock_guard lock(mutex_);
    return Statement(database_.get(),
                     "UPDATE mapping SET downloads = downloads + 1 WHERE patchID = ? RETURNING patchID", {patchId})
        .step();
}

std::optional<std::string> Library::file(const std::string& name)
{
    return isFileName(name) ? files::read(folder_ / "files" / name, kLargestFile) : std::nullopt;
}

void Library::seed(const std::filesystem::path& folder)
{
    if (Statement(database_.get(), "SELECT 1 FROM mapping", {}).step())
        return;
    const auto list = files::read(folder / "mappings.json");
    if (!list)
        throw std::runtime_error("cannot read " + (folder / "mappings.json").native());
    Statement entries(database_.get(),
                      "SELECT value ->> 'user', value ->> 'plugin', value ->> 'comments', value ->> 'file' "
                      "FROM json_each(?)",
                      {*list});
    while (entries.step()) {
        const auto bytes = files::read(folder / entries.column(3), kLargestFile);
        if (!bytes || !share(entries.column(0), entries.column(1), entries.column(2), *bytes))
            throw std::runtime_error("no mapping: " + (folder / entries.column(3)).native());
    }
}

#include "tools/community_server/Library.h"

#include "platform/files/Files.h"
#include "tools/community_server/Pins.h"
#include "tools/community_server/UserName.h"

#include <sodium.h>

#include <stdexcept>

namespace community_server {

Library::Outcome Library::share(const Account& account, const std::string& plugin, const std::string& comments,
                                std::string_view file, const std::string& address, const Quotas& quotas,
                                std::int64_t now)
{
    Transaction transaction(database_);
    if (!countUse(database_, "uploads of " + std::to_string(account.id), account.quota.value_or(quotas.uploadsOfUser),
                  now))
        return Outcome::tooManyOfUser;
    if (!countUse(database_, "uploads from " + address, quotas.uploadsOfAddress, now))
        return Outcome::tooManyOfAddress;
    const Outcome outcome = store(account.id, plugin, comments, file, now);
    if (outcome == Outcome::done)
        transaction.commit();
    return outcome;
}

Library::Outcome Library::store(std::int64_t account, const std::string& plugin, const std::string& comments,
                                std::string_view file, std::int64_t now)
{
    const std::int64_t stored = database_.run(
        "INSERT INTO mapping (plugin, account, comments, hash, fileName, uploaded) VALUES (?, ?, ?, ?, ?, ?) "
        "ON CONFLICT (plugin, account, hash) DO UPDATE SET comments = excluded.comments, uploaded = excluded.uploaded "
        "WHERE deleted = 0",
        plugin, account, comments, Blob{keepFile(database_, file)}, randomName() + ".plist", now);
    return stored == 1 ? Outcome::done : Outcome::deleted;
}

std::string Library::listing(const std::string& plugin)
{
    Statement select(database_,
                     "SELECT json_object('patchID', patchID, 'fileLocation', 'files/' || fileName, 'userComments', "
                     "comments, 'uploader', name, 'uploadDate', date(uploaded / 1000, 'unixepoch'), 'downloads', "
                     "downloads) FROM mapping JOIN account ON account.id = mapping.account "
                     "WHERE plugin = ? AND deleted = 0 AND hash IS NOT NULL "
                     "ORDER BY uploaded DESC, patchID DESC LIMIT ?",
                     plugin, std::int64_t{kMostListed});
    std::string list = "[";
    while (select.step()) {
        const std::string_view entry = select.text(0);
        if (list.size() + entry.size() + 2 > kLongestListing)
            break;
        if (list.size() > 1)
            list += ',';
        list += entry;
    }
    list += ']';
    return list;
}

bool Library::countDownload(std::int64_t patchId)
{
    return database_.run("UPDATE mapping SET downloads = downloads + 1 "
                         "WHERE patchID = ? AND deleted = 0 AND hash IS NOT NULL",
                         patchId) == 1;
}

std::optional<std::string> Library::file(const std::string& name)
{
    Statement select(database_, "SELECT bytes FROM mapping JOIN file USING (hash) WHERE fileName = ? AND deleted = 0",
                     name);
    return select.step() ? std::optional(std::string(select.text(0))) : std::nullopt;
}

bool Library::setDeleted(std::int64_t patchId, bool isDeleted)
{
    return database_.run("UPDATE mapping SET deleted = ? WHERE patchID = ?", std::int64_t{isDeleted}, patchId) == 1;
}

void Library::seed(const std::filesystem::path& folder, std::int64_t now)
{
    // All or nothing, so that a seeding that was cut off is done anew the next time.
    Transaction transaction(database_);
    if (Statement(database_, "SELECT 1 FROM mapping").step())
        return;
    const auto list = platform::files::read(folder / "mappings.json");
    if (!list)
        throw std::runtime_error("cannot read " + (folder / "mappings.json").native());
    Statement entries(database_,
                      "SELECT value ->> 'user', value ->> 'plugin', value ->> 'comments', value ->> 'file' "
                      "FROM json_each(?)",
                      *list);
    while (entries.step()) {
        const std::filesystem::path path = folder / entries.text(3);
        const auto bytes = platform::files::read(path, kLargestFile);
        if (!bytes || !isMapping(*bytes))
            throw std::runtime_error("no mapping: " + path.native());
        store(accountNamed(database_, std::string(entries.text(0)), now), std::string(entries.text(1)),
              std::string(entries.text(2)), *bytes, now);
    }
    transaction.commit();
}

std::int64_t accountNamed(Database& database, const std::string& name, std::int64_t now)
{
    Statement known(database, "SELECT id FROM account WHERE name = ?", name);
    if (known.step())
        return known.integer(0);
    const auto userName = userNameIn(name);
    std::optional<std::string> key, skeleton;
    // Of accounts whose names look alike, the first keeps the others out.
    if (userName && !Statement(database, "SELECT 1 FROM account WHERE nameKey = ? OR skeleton = ?", userName->key,
                               userName->skeleton)
                         .step()) {
        key = userName->key;
        skeleton = userName->skeleton;
    }
    database.run("INSERT INTO account (name, nameKey, skeleton, email, created) VALUES (?, ?, ?, '', ?)", name, key,
                 skeleton, now);
    return database.lastRowId();
}

std::string keyOfFile(std::string_view bytes)
{
    std::string hash(crypto_hash_sha256_BYTES, '\0');
    crypto_hash_sha256(reinterpret_cast<unsigned char*>(hash.data()),
                       reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
    return hash;
}

std::string keepFile(Database& database, std::string_view bytes)
{
    std::string hash = keyOfFile(bytes);
    database.run("INSERT INTO file (hash, bytes) VALUES (?, ?) ON CONFLICT DO NOTHING", Blob{hash}, Blob{bytes});
    return hash;
}

} // namespace community_server

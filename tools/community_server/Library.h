#pragma once
// Shared mappings. Texts are UTF-8, moments milliseconds since 1970. A mapping of which the library lacks the file (an
// earlier library's that was lost), or that the host deleted, is in no listing and its file is given to nobody.

#include "tools/community_server/Accounts.h"
#include "tools/community_server/Database.h"
#include "tools/community_server/Quotas.h"
#include "tools/community_server/SharedFile.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace community_server {

inline constexpr std::size_t kLongestListing = std::size_t{4} << 20;
inline constexpr int kMostListed = 500;

class Library {
public:
    explicit Library(Database& database) : database_(database) {}

    enum class Outcome { done, tooManyOfUser, tooManyOfAddress, deleted };
    /// Shares a mapping. The same one of the same account for the same plug-in takes the place of the earlier one and
    /// is the newest again; one that the host deleted stays deleted.
    Outcome share(const Account& account, const std::string& plugin, const std::string& comments, std::string_view file,
                  const std::string& address, const Quotas& quotas, std::int64_t now);
    /// The mappings shared for a plug-in as a JSON array, newest first: at most kMostListed, and no more than
    /// kLongestListing bytes.
    std::string listing(const std::string& plugin);
    /// Counts a download. False when there is no such mapping.
    bool countDownload(std::int64_t patchId);
    /// A shared file's bytes, by the name that the listing gave behind "files/".
    std::optional<std::string> file(const std::string& name);

    // For the host. False when there is no such mapping.
    bool setDeleted(std::int64_t patchId, bool isDeleted);

    /// Shares what "mappings.json" in the folder lists, unless anything is shared already. Throws std::runtime_error.
    void seed(const std::filesystem::path& folder, std::int64_t now);

private:
    Outcome store(std::int64_t account, const std::string& plugin, const std::string& comments, std::string_view file,
                  std::int64_t now);

    Database& database_;
};

/// Number of the account with exactly this name; one that nobody can log in to is made where there is none. To be
/// called within a transaction.
std::int64_t accountNamed(Database& database, const std::string& name, std::int64_t now);
/// The key under which a file is kept.
std::string keyOfFile(std::string_view bytes);
/// Keeps the bytes, once however often they are shared, and returns the key under which they are kept.
std::string keepFile(Database& database, std::string_view bytes);

} // namespace community_server

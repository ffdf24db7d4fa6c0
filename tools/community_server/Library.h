#pragma once
// Accounts and shared mappings in one folder: a database, and the files under names of the library's own making. Safe
// to use from several threads. Texts are UTF-8.

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct sqlite3;

class Library {
public:
    static constexpr std::size_t kLargestFile = std::size_t{1} << 20;

    /// Opens the library in `folder`, making both where there is none. Throws std::runtime_error.
    explicit Library(std::filesystem::path folder);

    /// Creates an account and returns its PIN, which is not kept; none when the name is taken.
    std::optional<std::string> createAccount(const std::string& userName, const std::string& email);
    bool hasAccount(const std::string& userName);
    bool isPinOf(const std::string& userName, const std::string& pin);

    /// Stores a mapping. False when the bytes are no mapping or more than kLargestFile.
    bool share(const std::string& userName, const std::string& plugin, const std::string& comments,
               std::string_view file);
    /// The mappings shared for a plug-in as a JSON array, newest first.
    std::string listing(const std::string& plugin);
    /// Counts a download. False when there is no such mapping.
    bool countDownload(const std::string& patchId);
    /// A shared file's bytes, by the name that the listing gave.
    std::optional<std::string> file(const std::string& name);

    /// Shares what "mappings.json" in `folder` lists, unless anything is shared already. Throws std::runtime_error.
    void seed(const std::filesystem::path& folder);

private:
    std::filesystem::path folder_;
    std::shared_ptr<sqlite3> database_;
};

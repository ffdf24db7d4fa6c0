#include "platform/UserPreferences.h"

#include "platform/files/Directory.h"
#include "platform/files/Files.h"
#include "platform/plist/PropertyList.h"

#include <cstdlib>

#include <sys/stat.h>

namespace platform {

namespace {

constexpr auto kOwnerOnly = std::filesystem::perms::owner_read | std::filesystem::perms::owner_write;
constexpr std::size_t kLargestFile = std::size_t{1} << 20;

std::filesystem::path folder()
{
    const char* config = std::getenv("XDG_CONFIG_HOME");
    if (config && *config == '/') // a relative one is to be ignored
        return config;
    const char* home = std::getenv("HOME");
    return std::filesystem::path(home ? home : "/") / ".config";
}

plist::Document readDocument(const std::filesystem::path& file)
{
    const auto bytes = files::read(file, kLargestFile);
    auto document = bytes ? plist::parse(*bytes) : std::nullopt;
    if (!document || !document->root.asDictionary())
        return {plist::Value(plist::Dictionary()), plist::Form::xml};
    return std::move(*document);
}

} // namespace

UserPreferences::UserPreferences(std::string bundleIdentifier) : bundleIdentifier_(std::move(bundleIdentifier)) {}

std::optional<std::string> UserPreferences::text(std::string_view key) const
{
    const plist::Document document = readDocument(folder() / (bundleIdentifier_ + ".plist"));
    const plist::Value* value = document.root.asDictionary()->find(key);
    const std::string* text = value ? value->asString() : nullptr;
    return text ? std::optional(*text) : std::nullopt;
}

void UserPreferences::setTexts(const std::vector<Entry>& entries)
{
    files::createDirectories(folder().parent_path());
    ::mkdir(folder().c_str(), 0700);
    const auto file = folder() / (bundleIdentifier_ + ".plist");
    plist::Document document = readDocument(file);
    for (const auto& [key, text] : entries)
        document.root.asDictionary()->set(key, text);
    files::writeAtomically(file, plist::write(document), kOwnerOnly);
}

} // namespace platform

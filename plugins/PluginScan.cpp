#include "plugins/PluginScan.h"

#include "platform/files/Files.h"
#include "platform/files/FolderWalk.h"

namespace plugins {

namespace {

constexpr std::string_view kOrderFile = "CSParameterOrder.plist";
constexpr std::string_view kLogicFolder = "Plug-In Settings";
constexpr std::string_view kBuiltIn = "Logic Built-In";

/// The last component of a path, which is cut off together with its slash.
std::string_view takeLastComponent(std::string_view& path)
{
    const auto slash = path.rfind('/');
    const std::string_view component = slash == std::string_view::npos ? path : path.substr(slash + 1);
    path = slash == std::string_view::npos ? std::string_view() : path.substr(0, slash);
    return component;
}

/// Whether a run of the program that was killed while it wrote may have left the file.
bool isLeftPart(std::string_view path)
{
    const char last = path.back();
    return last >= '0' && last <= '9' && platform::files::isPartOf(kOrderFile, takeLastComponent(path));
}

} // namespace

std::optional<platform::Record> rowForFile(std::string_view path)
{
    if (!path.ends_with(kOrderFile)) // hardly any of hundreds of thousands does
        return std::nullopt;
    std::string_view rest = path;
    if (takeLastComponent(rest) != kOrderFile)
        return std::nullopt;
    const std::string_view plugin = takeLastComponent(rest);
    std::string_view type = takeLastComponent(rest);
    if (type == kLogicFolder)
        type = kBuiltIn;
    static const platform::Record kAlike = {{kType, ""}, {kPlugin, ""}, {kState, ""}, {kFileLocation, ""}};
    return platform::Record(kAlike, {std::string(type), std::string(plugin), "Editable", std::string(path)});
}

std::vector<platform::Record> scanFolder(const std::string& root, platform::Log& log)
{
    std::vector<platform::Record> rows;
    const auto item = [&](const platform::WalkedItem& walked) {
        log.write(walked.path);
        if (walked.kind == platform::WalkedItem::Kind::unknown) {
            log.write("Error Here");
            return;
        }
        if (walked.kind == platform::WalkedItem::Kind::folder)
            return;
        if (auto row = rowForFile(walked.path))
            rows.push_back(std::move(*row));
        else if (isLeftPart(walked.path))
            platform::files::clearLeftPart(walked.path);
    };
    const auto unreadable = [&](const std::string& path, const std::string& reason) {
        log.write("Cannot read " + path + ": " + reason);
    };
    platform::walkFolder(root, {item, unreadable});
    return rows;
}

} // namespace plugins

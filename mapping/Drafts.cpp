#include "mapping/Drafts.h"

#include "mapping/ParameterOrder.h"
#include "platform/files/Directory.h"
#include "platform/files/Retried.h"
#include "platform/plist/PropertyList.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <optional>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

namespace mapping {

namespace files = platform::files;
namespace plist = platform::plist;
using Path = std::filesystem::path;

namespace {

constexpr char kEnding[] = ".draft";
constexpr std::size_t kLargestFile = std::size_t{256} << 20; // more than the largest mapping that is read
constexpr auto kOwnerOnly = std::filesystem::perms::owner_read | std::filesystem::perms::owner_write;

constexpr char kPlugin[] = "Plugin";
constexpr char kOrder[] = "Order";
constexpr char kTotalPages[] = "TotalPages";
constexpr char kPage[] = "Page";
constexpr char kMode[] = "Mode";
constexpr char kMadeAt[] = "MadeAt";

/// What the names of a plug-in's drafts begin with: a path itself would be too long for a name.
std::string prefixOf(std::string_view plugin)
{
    std::uint64_t hash = 14695981039346656037U; // FNV-1a
    for (const char c : plugin)
        hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211U;
    char text[18];
    std::snprintf(text, sizeof text, "%016llx-", static_cast<unsigned long long>(hash));
    return text;
}

std::string bytesOf(const Draft& draft)
{
    plist::Dictionary root;
    root.set(kPlugin, plist::Data{draft.plugin}); // a path need not be UTF-8
    root.set(kOrder, plist::Array(draft.order.begin(), draft.order.end()));
    root.set(kTotalPages, plist::Integer(draft.totalPages));
    root.set(kPage, plist::Integer(draft.curPage));
    root.set(kMode, plist::Integer(draft.mode));
    root.set(kMadeAt, plist::Integer(static_cast<std::int64_t>(draft.madeAt)));
    return plist::write({std::move(root), plist::Form::binary});
}

/// A whole number of a range; none when there is another value.
std::optional<std::int64_t> numberAt(const plist::Dictionary& root, std::string_view key, std::int64_t least,
                                     std::int64_t most)
{
    const plist::Value* value = root.find(key);
    const auto* integer = value ? std::get_if<plist::Integer>(&value->held) : nullptr;
    if (!integer)
        return std::nullopt;
    const auto number = static_cast<std::int64_t>(integer->bits);
    const bool isInRange = integer->negative == (number < 0) && number >= least && number <= most;
    return isInRange ? std::optional(number) : std::nullopt;
}

std::optional<Draft> draftIn(std::string_view bytes)
{
    const auto document = plist::parse(bytes);
    const plist::Dictionary* root = document ? document->root.asDictionary() : nullptr;
    const plist::Value* plugin = root ? root->find(kPlugin) : nullptr;
    const auto* path = plugin ? std::get_if<plist::Data>(&plugin->held) : nullptr;
    const plist::Value* order = root ? root->find(kOrder) : nullptr;
    if (!path || !order || !order->asArray())
        return std::nullopt;
    Draft draft;
    draft.plugin = path->bytes;
    for (const plist::Value& element : *order->asArray()) {
        if (!element.asString())
            return std::nullopt;
        draft.order.push_back(*element.asString());
    }
    const auto pages = numberAt(*root, kTotalPages, 1, static_cast<std::int64_t>(draft.order.size() / kPotsPerPage));
    const auto page = numberAt(*root, kPage, 1, pages.value_or(0));
    const auto mode = numberAt(*root, kMode, kModeInsertEffect, kModeInstrument);
    const auto madeAt = numberAt(*root, kMadeAt, 0, std::numeric_limits<std::int64_t>::max());
    if (!pages || !page || !mode || !madeAt)
        return std::nullopt;
    draft.totalPages = static_cast<std::int32_t>(*pages);
    draft.curPage = static_cast<std::int32_t>(*page);
    draft.mode = static_cast<std::int32_t>(*mode);
    draft.madeAt = static_cast<std::time_t>(*madeAt);
    return draft;
}

Path with(const Path& file, const char* ending)
{
    return Path(file) += ending;
}

/// What a draft's name begins with; empty where it is another file's.
std::string_view prefixIn(std::string_view name)
{
    return name.ends_with(kEnding) ? name.substr(0, name.find('-') + 1) : std::string_view();
}

} // namespace

Drafts::Drafts(Path folder)
    : folder_(std::move(folder)),
      instance_(std::to_string(::getpid()) + "." +
                std::to_string(std::chrono::system_clock::now().time_since_epoch().count()))
{}

void Drafts::makeFolder() const
{
    if (files::exists(folder_))
        return;
    files::createDirectories(folder_);
    files::retried([this] { return ::chmod(folder_.c_str(), 0700); });
}

bool Drafts::keep(const Draft& draft)
{
    makeFolder();
    if (!std::exchange(isCleared_, true))
        files::clearLeftParts(folder_);
    const std::string prefix = prefixOf(draft.plugin);
    if (!current_.filename().native().starts_with(prefix))
        current_ = folder_ / (prefix + instance_ + "-" + std::to_string(++written_) + kEnding);
    // Not flushed to the drive, which would hold up the program: it has to outlast the program, not the power.
    refused_ = draft;
    if (!files::writeAtomically(current_, bytesOf(draft), kOwnerOnly, files::Flush::none))
        return false;
    refused_.reset();
    lock_.emplace(current_); // without it a draft is still better than none
    return true;
}

bool Drafts::keepHeld()
{
    if (!held_.empty())
        makeFolder();
    std::erase_if(held_, [](const KeptDraft& held) {
        return files::writeAtomically(held.file, bytesOf(held.draft), kOwnerOnly, files::Flush::none);
    });
    return held_.empty();
}

void Drafts::drop()
{
    refused_.reset();
    if (!current_.empty())
        files::remove(current_);
    leave();
}

void Drafts::leave()
{
    if (refused_)
        held_.push_back({current_, *std::exchange(refused_, {})});
    current_.clear();
    lock_.reset();
}

std::vector<Path> Drafts::filesLeft(std::string_view prefix) const
{
    std::vector<Path> found;
    for (const Path& file : files::entriesOf(folder_)) {
        const std::string name = file.filename().native();
        const std::string_view its = prefixIn(name);
        if (!its.empty() && its.starts_with(prefix) && file != current_ && !files::Lock(file).isOthers())
            found.push_back(file);
    }
    return found;
}

std::vector<KeptDraft> Drafts::leftOf(std::string_view plugin) const
{
    std::vector<KeptDraft> left;
    std::set<Path> held; // newer than what was written of them
    for (const KeptDraft& one : held_) {
        held.insert(one.file);
        if (one.draft.plugin == plugin)
            left.push_back(one);
    }
    for (const Path& file : filesLeft(prefixOf(plugin))) {
        if (held.contains(file))
            continue;
        const auto bytes = files::read(file, kLargestFile);
        if (!bytes)
            continue; // perhaps the next time
        auto draft = draftIn(*bytes);
        if (!draft)
            files::rename(file, with(file, ".damaged"));
        else if (draft->plugin == plugin)
            left.push_back({file, std::move(*draft)});
    }
    std::sort(left.begin(), left.end(), [](const KeptDraft& one, const KeptDraft& other) {
        return std::pair(one.draft.madeAt, one.file.native()) > std::pair(other.draft.madeAt, other.file.native());
    });
    return left;
}

void Drafts::discard(const Path& file)
{
    files::remove(file);
    std::erase_if(held_, [&](const KeptDraft& held) { return held.file == file; });
}

void Drafts::look()
{
    left_.clear();
    for (const Path& file : filesLeft({}))
        left_.emplace(prefixIn(file.filename().native()));
    for (const KeptDraft& held : held_)
        left_.emplace(prefixOf(held.draft.plugin));
}

bool Drafts::isLeftOf(std::string_view plugin) const
{
    return left_.contains(prefixOf(plugin));
}

} // namespace mapping

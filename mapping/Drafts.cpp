#include "mapping/Drafts.h"

#include "mapping/ParameterOrder.h"
#include "platform/files/Directory.h"
#include "platform/files/Files.h"
#include "platform/plist/PropertyList.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace mapping {

namespace files = platform::files;
namespace plist = platform::plist;
using Path = std::filesystem::path;

namespace {

constexpr char kEnding[] = ".draft";
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

/// Opens the file that a running instance keeps locked; -1 where it cannot be had.
int openLock(const Path& file, int flags)
{
    const int lock = ::open(file.c_str(), flags | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (lock >= 0 && ::flock(lock, LOCK_EX | LOCK_NB) != 0) {
        ::close(lock);
        return -1;
    }
    return lock;
}

} // namespace

Drafts::Drafts(Path folder)
    : folder_(std::move(folder)),
      instance_(std::to_string(::getpid()) + "." +
                std::to_string(std::chrono::system_clock::now().time_since_epoch().count()))
{}

Drafts::~Drafts()
{
    if (lock_ < 0)
        return;
    files::remove(folder_ / (instance_ + ".lock"));
    ::close(lock_);
}

bool Drafts::makeFolder()
{
    if (lock_ >= 0)
        return true;
    files::createDirectories(folder_);
    ::chmod(folder_.c_str(), 0700);
    lock_ = openLock(folder_ / (instance_ + ".lock"), O_RDWR | O_CREAT);
    return lock_ >= 0;
}

bool Drafts::keep(const Draft& draft)
{
    makeFolder(); // without a lock of its own a draft is still better than none
    const std::string prefix = prefixOf(draft.plugin);
    if (!current_.filename().native().starts_with(prefix))
        current_ = folder_ / (prefix + instance_ + "-" + std::to_string(++written_) + kEnding);
    // Not flushed to the drive, which would hold up the program: it has to outlast the program, not the power.
    return files::writeAtomically(current_, bytesOf(draft), kOwnerOnly, files::Flush::none);
}

void Drafts::drop()
{
    if (!current_.empty())
        files::remove(std::exchange(current_, {}));
}

bool Drafts::isOthers(std::string_view name) const
{
    const std::size_t from = name.find('-') + 1;
    const std::string instance(name.substr(from, name.rfind('-') - from));
    if (instance == instance_)
        return false;
    const Path lock = folder_ / (instance + ".lock");
    if (files::isMissing(lock))
        return false;
    const int free = openLock(lock, O_RDWR);
    if (free < 0)
        return true;
    files::remove(lock); // its owner was killed
    ::close(free);
    return false;
}

std::vector<Path> Drafts::filesOf(std::string_view plugin) const
{
    const std::string prefix = prefixOf(plugin);
    std::vector<Path> found;
    std::error_code failure;
    std::filesystem::directory_iterator entry(folder_, failure);
    for (; !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure)) {
        const std::string name = entry->path().filename().native();
        if (name.starts_with(prefix) && name.ends_with(kEnding) && entry->path() != current_ && !isOthers(name))
            found.push_back(entry->path());
    }
    return found;
}

std::vector<KeptDraft> Drafts::leftOf(std::string_view plugin) const
{
    std::vector<KeptDraft> left;
    for (const Path& file : filesOf(plugin)) {
        const auto bytes = files::read(file);
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

bool Drafts::isLeftOf(std::string_view plugin) const
{
    return !filesOf(plugin).empty();
}

void Drafts::discard(const Path& file)
{
    files::remove(file);
}

void Drafts::supersede(std::string_view plugin)
{
    const auto left = leftOf(plugin);
    for (auto draft = left.rbegin(); draft != left.rend(); ++draft) // the newest comes last and stays
        files::rename(draft->file, folder_ / (prefixOf(plugin) + "superseded"));
}

} // namespace mapping

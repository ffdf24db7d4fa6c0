#pragma once
// Unsaved edits, kept in a folder of their own until they are saved, taken back or discarded. While a plug-in is edited
// one draft of it is written again and again; once it is left, that draft stays as it is and further edits get another.
// The draft that a second running instance of the program is writing is not seen until it is left, too.

#include "platform/files/Files.h"

#include <cstdint>
#include <ctime>
#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace mapping {

/// A mapping with what is shown of it.
struct Draft {
    std::string plugin;             ///< path of the plug-in's parameter-order file
    std::vector<std::string> order; ///< an element a slot, those behind the counted pages too
    std::int32_t totalPages = 1;
    std::int32_t curPage = 1; ///< from 1
    std::int32_t mode = 0;
    std::time_t madeAt = 0; ///< of the latest edit in it

    bool operator==(const Draft&) const = default;
};

/// A draft as it lies in the folder.
struct KeptDraft {
    std::filesystem::path file;
    Draft draft;
};

class Drafts {
public:
    /// The folder is made when there is something to keep.
    explicit Drafts(std::filesystem::path folder);
    Drafts(const Drafts&) = delete;
    Drafts& operator=(const Drafts&) = delete;

    /// Writes the draft being edited, readable by nobody else; false when it could not be written, and then the one
    /// written before is still there.
    bool keep(const Draft& draft);
    /// Tries again to write those that were left although they could not be written; false while one cannot.
    bool keepHeld();
    /// What is being edited needs no draft: it is saved, or as the file has it.
    void drop();
    /// What is edited next gets a draft of its own; this one stays, in memory where it could not be written.
    void leave();

    /// What was left of the plug-in, the newest first. A file that cannot be understood is set aside as ".damaged".
    std::vector<KeptDraft> leftOf(std::string_view plugin) const;
    /// Deletes a draft that was left.
    void discard(const std::filesystem::path& file);

    /// Finds out which plug-ins drafts were left of, without reading them.
    void look();
    /// Whether one was left of the plug-in when the folder was looked at.
    bool isLeftOf(std::string_view plugin) const;

private:
    std::vector<std::filesystem::path> filesLeft(std::string_view prefix) const;
    void makeFolder() const;

    std::filesystem::path folder_;
    std::string instance_;                      ///< who writes; part of the names of its files
    bool isCleared_ = false;                    ///< of what ended programs had not finished
    int written_ = 0;                           ///< how many drafts this instance has begun
    std::filesystem::path current_;             ///< empty until something is kept
    std::optional<Draft> refused_;              ///< what could not be written of the current one
    std::vector<KeptDraft> held_;               ///< left without having been written
    std::optional<platform::files::Lock> lock_; ///< on the current one; tells other instances that it is being edited
    std::set<std::string, std::less<>> left_;   ///< what the names of the drafts begin with
};

} // namespace mapping

#pragma once
// A plug-in's folder, and runs of trust_driver on it that a preloaded FileFaults brings to an early end or into
// trouble.

#include "tests/support/InMemory.h"
#include "tests/support/TemporaryFolder.h"

#include <csignal>
#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include <sys/types.h>

namespace test {

inline constexpr char kFile[] = "CSParameterOrder.plist";
inline constexpr char kOriginal[] = "CSParameterOrder.plist.original";
inline constexpr char kPrevious[] = "CSParameterOrder.plist.prev";
inline constexpr char kUnreadable[] = "CSParameterOrder.plist.unreadable";
inline constexpr char kChart[] = "CSParameterOrder.plist.html";
inline constexpr char kDownloaded[] = "CSParameterOrder.plist.downloaded";

/// Content of the files of a folder, by name.
using Files = std::map<std::string, std::string>;

/// What is done, and what stands in the folder before.
struct Scenario {
    const char* name;
    std::vector<std::string> operation;
    /// What clears up when the operation was cut off.
    std::vector<std::string> later;
    /// Operations that were done before, each by a run of its own.
    std::vector<std::vector<std::string>> history;
    /// What the plug-in's file holds instead of what the history left there.
    std::string spoilt = {};
};

inline void PrintTo(const Scenario& scenario, std::ostream* stream)
{
    *stream << scenario.name;
}

/// The operations that the tests go through.
const std::vector<Scenario>& scenarios();

struct Fault {
    long at = 0;   ///< number of the operation, 0 for none
    int error = 0; ///< 0 sends the signal
    bool lasts = false;
    /// What stands in the way for real, as trust_driver names it.
    std::string obstacle = {};
    int signal = SIGKILL;
};

struct DriverRun {
    bool isKilled = false;
    bool wasStopped = false;
    int status = 0;                  ///< 0 when it came to its end
    std::vector<std::string> output; ///< lines that the driver wrote
    std::vector<std::string> trace;  ///< "NUMBER OPERATION PATH", a line for each that was counted

    bool goesOn() const { return status == 0 && !output.empty() && output.back() == "goes on"; }
    bool wrote(const std::string& line) const;
};

/// A trust_driver that is loaded at the first run and then has a process of each.
class Driver {
public:
    Driver() = default;
    Driver(const Driver&) = delete;
    Driver& operator=(const Driver&) = delete;
    ~Driver();

    /// The child that a run takes place in.
    pid_t start(const std::vector<std::string>& settings, const std::vector<std::string>& arguments);

private:
    void load();

    pid_t process_ = 0;
    int requests_ = -1;
    int answers_ = -1;
};

class Folder {
public:
    Folder();

    const Path& path() const { return folder_; }
    /// Where the program keeps unsaved edits.
    Path drafts() const;
    /// Makes the folder what it was before the scenario's operation.
    void prepare(const Scenario& scenario);
    /// The folder then holds these alone, and there are no drafts.
    void put(const Files& files) const;
    Files files() const;
    /// Does one of trust_driver's operations. Where the fault stops it, `meanwhile` is done before it goes on.
    DriverRun run(const std::vector<std::string>& operation, const Fault& fault = {},
                  const std::function<void()>& meanwhile = {}) const;

private:
    InMemory inMemory_;
    TemporaryFolder root_;
    Path folder_;
    mutable Driver driver_;
};

/// Whether a name is that of a file in the making, which nobody reads.
bool isPartial(const std::string& name);
/// Whether a content stands in the file, in one of its backups or under the name of what is no dictionary.
bool isKept(const Files& files, const std::string& content);

} // namespace test

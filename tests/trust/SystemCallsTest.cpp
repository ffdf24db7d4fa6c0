// What the program asks of the file system, counted call by call.

#include "tests/trust/DriverRuns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

namespace test {

namespace {

class SystemCalls : public testing::Test {
protected:
    /// Calls of an operation, of one name or of all.
    static long count(const DriverRun& run, const std::string& name = {})
    {
        return std::count_if(run.trace.begin(), run.trace.end(),
                             [&](const std::string& line) { return line.find(" " + name) != line.npos; });
    }

    const Folder folder_;
    const Fault countAll_{0, EIO, false, {}}; ///< an operation that could fail with it counts
};

TEST_F(SystemCalls, AScanOpensEveryFolderOnceAndLooksAtNoFile)
{
    constexpr int kFolders = 30;
    constexpr int kFiles = 40;
    Files files;
    for (int file = 0; file < kFiles; ++file)
        files["Setting " + std::to_string(file) + ".pst"] = "";
    folder_.put(files);
    for (int folder = 1; folder < kFolders; ++folder)
        std::filesystem::copy(folder_.path(), folder_.path() / std::to_string(folder));
    const DriverRun run = folder_.run({"scan"}, countAll_);
    ASSERT_TRUE(run.goesOn());
    EXPECT_EQ(count(run, "open "), kFolders + 3)
        << "Logic's folder above them, and those of the presets and of the drafts";
    EXPECT_LE(count(run), 4 * kFolders);
}

TEST_F(SystemCalls, AScanFindsEverythingWhicheverCallIsInterrupted)
{
    folder_.put({{kFile, ""}});
    long at = 1;
    for (;; ++at) {
        const DriverRun run = folder_.run({"scan"}, {at, EINTR, false, {}, 0});
        if (static_cast<long>(run.trace.size()) < at)
            break;
        EXPECT_TRUE(run.goesOn() && run.wrote("found 1")) << run.trace[static_cast<std::size_t>(at - 1)];
    }
    EXPECT_GT(at, 3);
}

TEST_F(SystemCalls, ASaveFlushesAndRenamesEachFileThatItWrites)
{
    Folder folder;
    folder.prepare({"later_save", {"save", "4"}, {}, {{"save", "2"}, {"save", "3"}}});
    const DriverRun run = folder.run({"save", "4"});
    ASSERT_TRUE(run.goesOn());
    EXPECT_EQ(count(run, "rename "), 2) << "the mapping and the backup of the one before";
    EXPECT_EQ(count(run, "fsync "), 4) << "each file and then its folder";
    EXPECT_EQ(count(run, "open "), 2) << "nothing else is written";
}

} // namespace

} // namespace test

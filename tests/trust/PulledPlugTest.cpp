// The program is killed at every single thing it does to a plug-in's files, the writes in the middle. Afterwards every
// name holds what it held before, what it holds after a whole run, or nothing.

#include "tests/trust/DriverRuns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <utility>

namespace test {

namespace {

class PulledPlug : public testing::TestWithParam<Scenario> {
protected:
    PulledPlug()
    {
        folder_.prepare(GetParam());
        before_ = folder_.files();
        whole_ = folder_.run(GetParam().operation);
        after_ = folder_.files();
    }

    const std::string& operation() const { return GetParam().operation.front(); }

    /// What a name holds: "old", "new", "-" or, what must not be, "torn".
    std::string stateOf(const Files& files, const std::string& name) const
    {
        const auto found = files.find(name);
        if (found == files.end())
            return "-";
        const auto isIn = [&](const Files& other) {
            const auto same = other.find(name);
            return same != other.end() && same->second == found->second;
        };
        return isIn(before_) ? "old" : isIn(after_) ? "new" : "torn";
    }

    /// A row of the table in docs/quality.md, from the second column on.
    std::string row(const Files& files) const
    {
        std::string text;
        for (const char* name : {kFile, kPrevious, kOriginal, kChart, kDownloaded})
            text += " " + stateOf(files, name) + " |";
        const bool hasPartial =
            std::any_of(files.begin(), files.end(), [](const auto& file) { return isPartial(file.first); });
        return text + (hasPartial ? " yes |" : " - |");
    }

    void expectNothingTorn(const Files& files) const
    {
        for (const auto& [name, content] : files) {
            EXPECT_TRUE(isPartial(name) || stateOf(files, name) != "torn") << name;
        }
        if (before_.contains(kOriginal)) {
            EXPECT_EQ(stateOf(files, kOriginal), "old");
        }
        // What stood there before the first save is what nobody could bring back.
        EXPECT_TRUE(files.contains(kOriginal) || !files.contains(kPrevious));
    }

    /// The like once more, with a file to do it to, must leave nothing of the killed process.
    void expectALaterRunClears(Files files)
    {
        if (!files.contains(kFile))
            files[kFile] = before_.at(kFile);
        folder_.put(files);
        EXPECT_TRUE(folder_.run(GetParam().later).goesOn());
        const Files cleared = folder_.files();
        for (const auto& [name, content] : cleared)
            EXPECT_FALSE(isPartial(name)) << name;
        EXPECT_EQ(cleared.at(kFile), after_.at(kFile));
    }

    /// Whether the file was deleted by an operation before the one that was not carried out any more.
    static bool isDeleted(const DriverRun& run)
    {
        return std::any_of(run.trace.begin(), run.trace.end() - 1, [](const std::string& line) {
            return line.find(" unlink ") != line.npos && line.ends_with(std::string("/") + kFile);
        });
    }

    struct Step {
        std::string operation;
        Path path;
    };
    /// What the whole run did.
    std::vector<Step> steps() const
    {
        std::vector<Step> all;
        for (const std::string& line : whole_.trace) {
            const auto operation = line.find(' ') + 1;
            const auto path = line.find(' ', operation) + 1;
            all.push_back({line.substr(operation, path - 1 - operation), line.substr(path)});
        }
        return all;
    }

    Folder folder_;
    Files before_;
    Files after_;
    DriverRun whole_;
};

TEST_P(PulledPlug, LeavesEveryFileOldOrNewOrAbsent)
{
    ASSERT_TRUE(whole_.goesOn());
    ASSERT_GT(whole_.trace.size(), 3U);
    std::string last;
    for (long at = 1;; ++at) {
        folder_.put(before_);
        const DriverRun run = folder_.run(GetParam().operation, {at});
        const Files files = folder_.files();
        if (!run.isKilled) {
            EXPECT_TRUE(run.goesOn());
            EXPECT_EQ(files, after_);
            std::cout << GetParam().name << ": killed at " << at - 1 << " operations\n";
            break;
        }
        SCOPED_TRACE("killed at " + run.trace.back());
        expectNothingTorn(files);
        // Marking deletes before it writes and has no backup yet; until then, and everywhere else, the content is
        // somewhere.
        const bool isLost = !isKept(files, before_.at(kFile)) && !isKept(files, after_.at(kFile));
        EXPECT_TRUE(!isLost || (operation() == "mark" && isDeleted(run)));
        if (std::exchange(last, row(files)) != row(files))
            std::cout << "| " << GetParam().name << " | " << run.trace.back() << " |" << row(files)
                      << (isLost ? " lost |" : " kept |") << '\n';
        expectALaterRunClears(files);
    }
}

// Power that fails takes what the system had not written yet, and a name may be on the disk before the content is.
TEST_P(PulledPlug, FindsContentOnTheDiskBeforeItsNameAndTheNameSoonAfter)
{
    const std::vector<Step> all = steps();
    int renames = 0;
    for (std::size_t at = 0; at < all.size(); ++at) {
        if (all[at].operation != "rename")
            continue;
        ++renames;
        std::size_t last = at - 1;
        while (all[last].operation == "close")
            --last;
        EXPECT_EQ(all[last].operation, "fsync") << all[at].path;
        EXPECT_TRUE(isPartial(all[last].path.filename())) << all[last].path;
        ASSERT_LT(at + 1, all.size());
        EXPECT_EQ(all[at + 1].operation, "fsync") << all[at].path;
        EXPECT_EQ(all[at + 1].path, folder_.path());
    }
    EXPECT_GT(renames, 0);
}

INSTANTIATE_TEST_SUITE_P(, PulledPlug, testing::ValuesIn(scenarios()),
                         [](const auto& test) { return std::string(test.param.name); });

} // namespace

} // namespace test

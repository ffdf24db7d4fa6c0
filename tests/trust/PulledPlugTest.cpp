// The program is killed at every single thing it does to a plug-in's files, the writes in the middle. Afterwards every
// name holds what it held before or what it holds after a whole run, and no content is lost. Nor does it come to harm
// by a signal that asks it to end, by one that interrupts a call, or by another program that does the like meanwhile.

#include "tests/trust/DriverRuns.h"

#include "tests/support/OrderFiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
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

    const std::vector<std::string>& operation() const { return GetParam().operation; }

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
        for (const char* name : {kFile, kPrevious, kOriginal, kUnreadable, kChart, kDownloaded})
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
        for (const auto& [name, content] : before_) { // the file shared before is removed at once, and meant to be
            EXPECT_TRUE(files.contains(name) || !after_.contains(name) || name == kDownloaded) << name;
        }
        EXPECT_TRUE(isKept(files, before_.at(kFile)) || isKept(files, contentAfter()));
        // What stood there before the first save is what nobody could bring back.
        EXPECT_TRUE(files.contains(kOriginal) || !files.contains(kPrevious));
    }

    /// The like once more, with a file to do it to, must leave nothing of the killed process.
    void expectALaterRunClears(Files files)
    {
        if (!isDictionary())
            files[kFile] = orderBytes(numbered(40)); // as the plug-in host writes it
        folder_.put(files);
        EXPECT_TRUE(folder_.run(GetParam().later).goesOn());
        const Files cleared = folder_.files();
        for (const auto& [name, content] : cleared)
            EXPECT_FALSE(isPartial(name)) << name;
        if (isDictionary()) {
            EXPECT_EQ(cleared.at(kFile), after_.at(kFile));
        }
    }

    /// Whether a whole run leaves a file, and not only what was moved out of the way.
    bool isDictionary() const { return after_.contains(kFile); }
    const std::string& contentAfter() const { return after_.at(isDictionary() ? kFile : kUnreadable); }

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

TEST_P(PulledPlug, LeavesEveryFileOldOrNew)
{
    ASSERT_TRUE(whole_.goesOn());
    ASSERT_GT(whole_.trace.size(), 1U);
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
        if (std::exchange(last, row(files)) != row(files))
            std::cout << "| " << GetParam().name << " | " << run.trace.back() << " |" << row(files) << '\n';
        expectALaterRunClears(files);
    }
}

// Power that fails takes what the system had not written yet, and a name may be on the disk before the content is.
TEST_P(PulledPlug, FindsContentOnTheDiskBeforeItsNameAndTheNameSoonAfter)
{
    const std::vector<Step> all = steps();
    int renames = 0;
    for (std::size_t at = 0; at < all.size(); ++at) {
        if (all[at].operation != "rename" || all[at].path.filename() == kUnreadable) // that is no new content
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
    EXPECT_TRUE(renames > 0 || !isDictionary());
}

class Disturbed : public PulledPlug {};

TEST_P(Disturbed, ByOneSignalItDoesItsWorkToTheEnd)
{
    for (long at = 1;; ++at) {
        folder_.put(before_);
        const DriverRun run = folder_.run(operation(), {at, 0, false, {}, SIGTERM});
        EXPECT_TRUE(run.goesOn());
        EXPECT_EQ(folder_.files(), after_) << "after operation " << at;
        if (!run.wrote("signal " + std::to_string(SIGTERM)))
            break;
    }
}

TEST_P(Disturbed, ByTheSameSignalTwiceItLeavesEveryFileOldOrNew)
{
    for (long at = 1;; ++at) {
        folder_.put(before_);
        const DriverRun run = folder_.run(operation(), {at, 0, true, {}, SIGTERM});
        SCOPED_TRACE("after operation " + std::to_string(at));
        const Files files = folder_.files();
        expectNothingTorn(files);
        if (!run.isKilled)
            break;
        expectALaterRunClears(files);
    }
}

TEST_P(Disturbed, ByAnInterruptedCallItDoesTheSame)
{
    long at = 1;
    for (;; ++at) {
        folder_.put(before_);
        const DriverRun run = folder_.run(operation(), {at, EINTR, false, {}, 0});
        if (static_cast<long>(run.trace.size()) < at)
            break;
        EXPECT_TRUE(run.goesOn());
        EXPECT_EQ(folder_.files(), after_) << run.trace[static_cast<std::size_t>(at - 1)];
    }
    EXPECT_GT(at, 5);
}

// Neither clears what the other is just making, and each finishes what it began.
TEST_P(Disturbed, ByAnotherProgramThatDoesTheLikeMeanwhileItDoesTheSame)
{
    for (long at = 1;; ++at) {
        folder_.put(before_);
        const DriverRun run = folder_.run(operation(), {at, 0, false, {}, SIGSTOP}, [&] {
            EXPECT_TRUE(folder_.run(GetParam().later).goesOn() || !isDictionary());
        });
        if (!run.wasStopped)
            break;
        SCOPED_TRACE("stopped at operation " + std::to_string(at));
        EXPECT_TRUE(run.goesOn());
        EXPECT_EQ(run.wrote("unsaved"), whole_.wrote("unsaved"));
        const Files files = folder_.files();
        for (const auto& [name, content] : files)
            EXPECT_FALSE(isPartial(name)) << name;
        if (isDictionary()) {
            EXPECT_EQ(files.at(kFile), after_.at(kFile));
        }
        EXPECT_TRUE(isKept(files, before_.at(kFile)) || isKept(files, contentAfter()));
    }
}

INSTANTIATE_TEST_SUITE_P(, PulledPlug, testing::ValuesIn(scenarios()),
                         [](const auto& test) { return std::string(test.param.name); });

// Downloads are disturbed by each other.
INSTANTIATE_TEST_SUITE_P(, Disturbed, testing::ValuesIn(scenarios().begin(), scenarios().end() - 2),
                         [](const auto& test) { return std::string(test.param.name); });

} // namespace

} // namespace test

// Instead of ending, the program meets trouble: each of its file operations fails, once or from there on, in every way
// the system can let it fail; or something real stands in the way. It goes on and tells what it always tells.

#include "tests/trust/DriverRuns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <iostream>

namespace test {

namespace {

struct Trouble {
    const char* name;
    int error;
};

// One that passes: an access or a block that is refused once.
constexpr Trouble kPassing[] = {
    {"full disk", ENOSPC}, {"file-size limit", EFBIG}, {"read-only", EROFS}, {"forbidden", EACCES}, {"unreadable", EIO},
};
constexpr Trouble kStaying[] = {
    {"full disk", ENOSPC}, {"quota", EDQUOT},   {"file-size limit", EFBIG}, {"read-only", EROFS},
    {"forbidden", EACCES}, {"unreadable", EIO}, {"vanished", ENOENT},
};

class Obstacles : public testing::TestWithParam<Scenario> {
protected:
    Obstacles()
    {
        folder_.prepare(GetParam());
        before_ = folder_.files();
        isPrepared_ = folder_.run(GetParam().operation).goesOn();
        after_ = folder_.files();
    }

    bool is(const char* operation) const { return GetParam().operation.front().starts_with(operation); }

    /// What the user is told whether or not it is so. A backup that cannot be seen counts as missing.
    bool isToldAsAlways(const DriverRun& run) const
    {
        if (is("save") || is("spoilt"))
            return run.wrote("told New Mapping has been saved");
        if (is("recall"))
            return run.wrote("told Recalled mapping has been applied") || run.wrote("told Recall file does not exist");
        if (is("chart"))
            return run.wrote("opened CSParameterOrder.plist.html");
        if (is("download"))
            return run.wrote("told OK Done") || run.wrote("logged Download failed!");
        return true;
    }

    /// What is told of a download or a recall must be so, and what is not in the file stays marked as unsaved.
    void expectNoLie(const DriverRun& run, const Files& files) const
    {
        const auto content = [](const Files& all, const char* name) {
            return all.contains(name) ? std::optional(all.at(name)) : std::nullopt;
        };
        if (run.wrote("told OK Done")) {
            EXPECT_EQ(content(files, kDownloaded), content(after_, kDownloaded));
        }
        if (is("save") || is("spoilt")) {
            EXPECT_EQ(run.wrote("unsaved"), is("spoilt") || content(files, kFile) != content(after_, kFile));
        }
        if (run.wrote("told Recall file does not exist")) {
            EXPECT_EQ(files, before_);
        }
    }

    void expectOldOrNew(const Files& files) const
    {
        for (const auto& [name, content] : files) {
            const auto holds = [&, file = &name, bytes = &content](const Files& other) {
                const auto found = other.find(*file);
                return found != other.end() && found->second == *bytes;
            };
            EXPECT_TRUE(isPartial(name) || holds(before_) || holds(after_)) << name;
        }
        for (const auto& [name, content] : before_) { // a chart or a download that failed must not look like a new one
            EXPECT_TRUE(files.contains(name) || !after_.contains(name) || name == kChart || name == kDownloaded)
                << name;
        }
        if (before_.contains(kOriginal)) {
            EXPECT_TRUE(files.contains(kOriginal) && files.at(kOriginal) == before_.at(kOriginal));
        }
    }

    bool isLost(const Files& files) const
    {
        return !isKept(files, before_.at(kFile)) && !isKept(files, after_.contains(kFile) ? after_.at(kFile) : "");
    }

    /// Where nothing can be deleted any more, a file in the making cannot be either.
    static bool mayLeavePartial(const Fault& fault)
    {
        return fault.lasts &&
               (fault.error == EROFS || fault.error == EACCES || fault.error == EIO || fault.error == ENOENT);
    }

    static bool hasPartial(const Files& files)
    {
        return std::any_of(files.begin(), files.end(), [](const auto& file) { return isPartial(file.first); });
    }

    /// Runs the program once for each of its operations that can fail in this way. Prints a row of the table in
    /// docs/quality.md: how many there are, and after how many the mapping was lost.
    void letFail(const Trouble& trouble, bool lasts)
    {
        int lost = 0;
        long at = 1;
        for (;; ++at) {
            folder_.put(before_);
            const Fault fault{at, trouble.error, lasts};
            const DriverRun run = folder_.run(GetParam().operation, fault);
            if (static_cast<long>(run.trace.size()) < at)
                break;
            SCOPED_TRACE(std::string(trouble.name) + (lasts ? " from " : " at ") +
                         run.trace[static_cast<std::size_t>(at - 1)]);
            EXPECT_TRUE(run.goesOn());
            EXPECT_TRUE(isToldAsAlways(run));
            const Files files = folder_.files();
            expectNoLie(run, files);
            expectOldOrNew(files);
            EXPECT_FALSE(isLost(files));
            EXPECT_TRUE(!hasPartial(files) || mayLeavePartial(fault));
            lost += isLost(files) ? 1 : 0;
        }
        EXPECT_TRUE(at > 1 || trouble.error == EFBIG) << "nothing that is written could be too large";
        std::cout << "| " << GetParam().name << " | " << trouble.name << " | " << (lasts ? "stays" : "passes") << " | "
                  << at - 1 << " | " << lost << " |\n";
    }

    Folder folder_;
    Files before_;
    Files after_;
    bool isPrepared_ = false;
};

TEST_P(Obstacles, AreSurvivedOnceAtEveryOperation)
{
    ASSERT_TRUE(isPrepared_);
    for (const Trouble& trouble : kPassing)
        letFail(trouble, false);
}

TEST_P(Obstacles, AreSurvivedFromEveryOperationOn)
{
    ASSERT_TRUE(isPrepared_);
    for (const Trouble& trouble : kStaying)
        letFail(trouble, true);
}

TEST_P(Obstacles, OfTheRealKindLeaveWhatWasThere)
{
    ASSERT_TRUE(isPrepared_);
    for (const char* obstacle : {"read-only", "forbidden", "vanished"}) {
        SCOPED_TRACE(obstacle);
        const Path elsewhere = folder_.path().native() + " elsewhere";
        std::filesystem::remove_all(elsewhere);
        folder_.put(before_);
        const DriverRun run = folder_.run(GetParam().operation, {0, 0, false, obstacle});
        EXPECT_TRUE(run.goesOn());
        EXPECT_TRUE(isToldAsAlways(run));
        if (std::filesystem::exists(elsewhere)) {
            EXPECT_FALSE(std::filesystem::exists(folder_.path()));
            std::filesystem::rename(elsewhere, folder_.path());
        }
        EXPECT_EQ(folder_.files(), before_);
        expectNoLie(run, before_);
    }
}

TEST_P(Obstacles, SuchAsASizeLimitDoNotEndTheProgram)
{
    ASSERT_TRUE(isPrepared_);
    for (const char* limit : {"limit:0", "limit:512"}) {
        SCOPED_TRACE(limit);
        folder_.put(before_);
        const DriverRun run = folder_.run(GetParam().operation, {0, 0, false, limit});
        EXPECT_TRUE(run.goesOn());
        EXPECT_TRUE(isToldAsAlways(run));
        const Files files = folder_.files();
        expectNoLie(run, files);
        expectOldOrNew(files);
        EXPECT_FALSE(hasPartial(files));
    }
}

INSTANTIATE_TEST_SUITE_P(, Obstacles, testing::ValuesIn(scenarios()),
                         [](const auto& test) { return std::string(test.param.name); });

} // namespace

} // namespace test

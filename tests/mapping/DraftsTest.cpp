#include "mapping/Drafts.h"

#include "platform/files/Files.h"
#include "tests/support/FilesIn.h"
#include "tests/support/Obstacles.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <ctime>
#include <filesystem>
#include <string>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using mapping::Draft;
using mapping::Drafts;
using test::Path;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace fs = std::filesystem;

Draft draftOf(const std::string& plugin, std::time_t madeAt = 1'000)
{
    return {plugin, {"1 Cutoff", "-1", "3 Größe\nzwei", "-1", "-1", "-1", "-1", "8 a  b", "-1"}, 1, 1, 1, madeAt};
}

class DraftsTest : public testing::Test {
protected:
    Path folder() const { return home_.path() / "state/app/drafts"; }
    std::vector<Path> files() const { return test::filesIn(folder()); }
    Path onlyFile() const
    {
        EXPECT_THAT(files(), SizeIs(1));
        return files().at(0);
    }
    std::vector<Draft> leftOf(const std::string& plugin) const
    {
        std::vector<Draft> drafts;
        for (const mapping::KeptDraft& left : drafts_.leftOf(plugin))
            drafts.push_back(left.draft);
        return drafts;
    }
    void leave(const Draft& draft)
    {
        EXPECT_TRUE(drafts_.keep(draft));
        drafts_.leave();
    }

    test::TemporaryFolder home_;
    Drafts drafts_{folder()};
};

TEST_F(DraftsTest, WhatIsKeptIsReadBackByALaterRun)
{
    Draft draft = draftOf("/a/b.plist");
    draft.order.resize(40, "-1");
    draft.totalPages = 5;
    draft.curPage = 4;
    {
        Drafts earlier(folder());
        EXPECT_TRUE(earlier.keep(draft));
    }
    EXPECT_THAT(leftOf("/a/b.plist"), ElementsAre(draft));
    EXPECT_THAT(leftOf("/a/c.plist"), IsEmpty());
}

TEST_F(DraftsTest, APathNeedNotBeUtf8)
{
    leave(draftOf("/a/\xff\xfe.plist"));
    EXPECT_THAT(leftOf("/a/\xff\xfe.plist"), SizeIs(1));
    EXPECT_THAT(leftOf("/a/\xff\xff.plist"), IsEmpty());
}

TEST_F(DraftsTest, OnlyTheOwnerCanReadThem)
{
    const mode_t mask = ::umask(0);
    EXPECT_TRUE(drafts_.keep(draftOf("a")));
    EXPECT_TRUE(drafts_.keep(draftOf("a", 2'000)));
    ::umask(mask);
    EXPECT_EQ(fs::status(onlyFile()).permissions(), fs::perms(0600));
    EXPECT_EQ(fs::status(folder()).permissions(), fs::perms(0700));
}

TEST_F(DraftsTest, TheOneBeingEditedIsReplacedAndNotYetLeft)
{
    EXPECT_TRUE(drafts_.keep(draftOf("a", 1)));
    EXPECT_TRUE(drafts_.keep(draftOf("a", 2)));
    EXPECT_THAT(leftOf("a"), IsEmpty());
    drafts_.look();
    EXPECT_FALSE(drafts_.isLeftOf("a"));
    drafts_.leave();
    EXPECT_THAT(leftOf("a"), ElementsAre(draftOf("a", 2)));
}

TEST_F(DraftsTest, DroppingRemovesTheOneBeingEditedOnly)
{
    leave(draftOf("a", 1));
    EXPECT_TRUE(drafts_.keep(draftOf("a", 2)));
    drafts_.drop();
    drafts_.drop();
    EXPECT_THAT(leftOf("a"), ElementsAre(draftOf("a", 1)));
}

TEST_F(DraftsTest, EachThatWasLeftStaysBesideTheOthersTheNewestFirst)
{
    for (const std::time_t madeAt : {2, 3, 1})
        leave(draftOf("a", madeAt));
    EXPECT_TRUE(drafts_.keep(draftOf("b")));
    EXPECT_THAT(leftOf("a"), ElementsAre(draftOf("a", 3), draftOf("a", 2), draftOf("a", 1)));
    drafts_.discard(drafts_.leftOf("a").at(0).file);
    EXPECT_THAT(leftOf("a"), ElementsAre(draftOf("a", 2), draftOf("a", 1)));
}

TEST_F(DraftsTest, AnotherPluginGetsADraftOfItsOwn)
{
    EXPECT_TRUE(drafts_.keep(draftOf("a")));
    EXPECT_TRUE(drafts_.keep(draftOf("b")));
    drafts_.leave();
    EXPECT_THAT(leftOf("a"), SizeIs(1));
    EXPECT_THAT(leftOf("b"), SizeIs(1));
}

TEST_F(DraftsTest, ALookTellsOfWhichPluginsSomethingIsLeft)
{
    leave(draftOf("a"));
    EXPECT_FALSE(drafts_.isLeftOf("a")) << "nobody looked";
    drafts_.look();
    EXPECT_TRUE(drafts_.isLeftOf("a"));
    EXPECT_FALSE(drafts_.isLeftOf("b"));
    drafts_.discard(onlyFile());
    drafts_.look();
    EXPECT_FALSE(drafts_.isLeftOf("a"));
}

TEST_F(DraftsTest, WhatAnotherInstanceIsWritingIsItsOwnUntilItIsLeft)
{
    Drafts other(folder());
    EXPECT_TRUE(other.keep(draftOf("a", 1)));
    EXPECT_TRUE(other.keep(draftOf("a", 2)));
    EXPECT_TRUE(drafts_.keep(draftOf("a", 3)));
    drafts_.look();
    EXPECT_FALSE(drafts_.isLeftOf("a"));
    EXPECT_THAT(leftOf("a"), IsEmpty());
    other.leave();
    EXPECT_THAT(leftOf("a"), ElementsAre(draftOf("a", 2)));
    EXPECT_THAT(files(), SizeIs(2));
}

TEST_F(DraftsTest, WhatAKilledInstanceWroteIsLeft)
{
    const pid_t process = ::fork();
    if (process == 0) {
        Drafts killed(folder());
        killed.keep(draftOf("a"));
        ::kill(::getpid(), SIGKILL);
    }
    ::waitpid(process, nullptr, 0);
    test::write(folder() / ("~0000.draft." + std::to_string(process) + "-1"), "unfinished");
    EXPECT_THAT(leftOf("a"), SizeIs(1));
    EXPECT_TRUE(drafts_.keep(draftOf("b")));
    EXPECT_THAT(files(), SizeIs(2)) << "what it had not finished is cleared";
}

TEST_F(DraftsTest, ADamagedOneIsSetAside)
{
    leave(draftOf("a"));
    const std::string whole = test::read(onlyFile());
    const Path file = onlyFile();
    for (const std::string& bytes :
         {std::string(), std::string("<plist/>"), whole.substr(0, whole.size() / 2), std::string(1000, '\0')}) {
        test::write(file, bytes);
        EXPECT_THAT(leftOf("a"), IsEmpty());
        EXPECT_EQ(test::read(onlyFile()), bytes);
        EXPECT_EQ(onlyFile(), Path(file.native() + ".damaged"));
        drafts_.look();
        EXPECT_FALSE(drafts_.isLeftOf("a"));
        fs::remove(onlyFile());
    }
}

TEST_F(DraftsTest, ADraftThatNoProgramCouldHaveKeptIsDamaged)
{
    const auto change = [](auto damage) {
        Draft draft = draftOf("a");
        damage(draft);
        return draft;
    };
    for (const Draft& draft : {change([](Draft& d) { d.totalPages = 0; }), change([](Draft& d) { d.totalPages = 2; }),
                               change([](Draft& d) { d.curPage = 0; }), change([](Draft& d) { d.curPage = 2; }),
                               change([](Draft& d) { d.mode = 2; }), change([](Draft& d) { d.mode = -1; }),
                               change([](Draft& d) { d.order.resize(7); }), change([](Draft& d) { d.madeAt = -1; })}) {
        leave(draft);
        EXPECT_THAT(leftOf("a"), IsEmpty());
        EXPECT_TRUE(onlyFile().native().ends_with(".damaged"));
        fs::remove(onlyFile());
    }
}

TEST_F(DraftsTest, OneThatCannotBeReadJustNowIsLeftAlone)
{
    leave(draftOf("a"));
    const Path file = onlyFile();
    {
        const test::Forbidden forbidden(home_.path(), fs::perms::none);
        EXPECT_THAT(leftOf("a"), IsEmpty());
    }
    EXPECT_EQ(onlyFile(), file);
    EXPECT_THAT(leftOf("a"), SizeIs(1));
}

TEST_F(DraftsTest, OneThatCannotBeWrittenLeavesTheOneBefore)
{
    EXPECT_TRUE(drafts_.keep(draftOf("a", 1)));
    {
        const test::FullDisk disk(10);
        EXPECT_FALSE(drafts_.keep(draftOf("a", 2)));
        drafts_.leave();
        EXPECT_FALSE(drafts_.keepHeld());
    }
    EXPECT_THAT(leftOf("a"), ElementsAre(draftOf("a", 2))); // from memory, in the place of what was written
    const Drafts later(folder());
    ASSERT_THAT(later.leftOf("a"), SizeIs(1));
    EXPECT_EQ(later.leftOf("a").front().draft, draftOf("a", 1));
    EXPECT_TRUE(drafts_.keepHeld());
    EXPECT_EQ(later.leftOf("a").front().draft, draftOf("a", 2));
    EXPECT_THAT(leftOf("a"), ElementsAre(draftOf("a", 2)));
    EXPECT_THAT(files(), SizeIs(1));
}

TEST_F(DraftsTest, OneThatCouldNotBeWrittenIsForgottenOnceItIsSavedOrKept)
{
    {
        const test::FullDisk disk(10);
        EXPECT_FALSE(drafts_.keep(draftOf("a", 1)));
        drafts_.drop();
        EXPECT_FALSE(drafts_.keep(draftOf("a", 2)));
    }
    EXPECT_TRUE(drafts_.keep(draftOf("a", 3)));
    drafts_.leave();
    EXPECT_TRUE(drafts_.keepHeld());
    EXPECT_THAT(leftOf("a"), ElementsAre(draftOf("a", 3)));
}

TEST_F(DraftsTest, WithoutAFolderTheyAreKeptInMemoryUntilThereIsOne)
{
    test::write(home_.path() / "state", "a file in its place");
    EXPECT_FALSE(drafts_.keep(draftOf("a")));
    drafts_.leave();
    drafts_.look();
    EXPECT_THAT(leftOf("a"), ElementsAre(draftOf("a")));
    EXPECT_TRUE(drafts_.isLeftOf("a"));
    fs::remove(home_.path() / "state");
    EXPECT_TRUE(drafts_.keepHeld());
    EXPECT_EQ(Drafts(folder()).leftOf("a").size(), 1U);
}

} // namespace

#include "platform/files/Files.h"

#include "platform/Utf8.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <optional>
#include <set>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <grp.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#if defined(__linux__)
#include <sched.h>
#include <sys/mount.h>
#include <sys/xattr.h>
#endif

namespace {

namespace files = platform::files;
namespace fs = std::filesystem;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// Names in a folder.
std::set<std::string> namesIn(const fs::path& folder)
{
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.insert(entry.path().filename().native());
    return names;
}

unsigned modeOf(const fs::path& path)
{
    struct stat status = {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

/// The one file of a folder that is in the making.
fs::path partIn(const fs::path& folder)
{
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (entry.path().filename().native().front() == '~')
            return entry.path();
    }
    return {};
}

/// Does something that must come out true in a process of its own.
template <typename Deed>
void inAnotherProcess(Deed deed)
{
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0)
        ::_exit(deed() ? 0 : 1);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

/// While it lives, no file can grow beyond so many bytes: writes come out short, then fail.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : formerHandler_(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &former_);
        const rlimit limit = {bytes, former_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &former_);
        std::signal(SIGXFSZ, formerHandler_);
    }

private:
    rlimit former_ = {};
    void (*formerHandler_)(int);
};

class FilesTest : public testing::Test {
protected:
    test::TemporaryFolder folder_;
    const fs::path file_ = folder_ / "CSParameterOrder.plist";
};

// Looking

TEST_F(FilesTest, ExistsSaysWhetherSomethingStandsThere)
{
    test::write(file_, "x");
    fs::create_directory(folder_ / "folder");
    fs::create_symlink("CSParameterOrder.plist", folder_ / "link");
    fs::create_symlink("missing", folder_ / "dangling");
    fs::create_symlink("loop", folder_ / "loop");
    ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
    struct Row {
        const char* name;
        bool exists;
    };
    for (const Row& row : {Row{"CSParameterOrder.plist", true}, Row{"csparameterorder.plist", false},
                           Row{"folder", true}, Row{"link", true}, Row{"dangling", false}, Row{"loop", false},
                           Row{"pipe", true}, Row{"missing", false}, Row{"CSParameterOrder.plist/below", false}})
        EXPECT_EQ(files::exists(folder_ / row.name), row.exists) << row.name;
    EXPECT_FALSE(files::exists(""));
}

// Reading

TEST_F(FilesTest, ReadsEveryByte)
{
    std::string every;
    for (int byte = 0; byte < 256; ++byte)
        every += static_cast<char>(byte);
    std::string large;
    while (large.size() < 3'000'000)
        large += every;
    for (const std::string& bytes : {std::string(), std::string("x"), every, large}) {
        test::write(file_, bytes);
        EXPECT_TRUE(files::read(file_) == bytes) << bytes.size() << " bytes";
    }
}

TEST_F(FilesTest, ReadsThroughALink)
{
    test::write(file_, "content");
    fs::create_symlink(file_, folder_ / "link");
    EXPECT_EQ(files::read(folder_ / "link"), "content");
}

TEST_F(FilesTest, ReadRefusesWhatIsNoRegularFile)
{
    ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
    fs::create_symlink("missing", folder_ / "dangling");
    EXPECT_EQ(files::read(folder_ / "pipe"), std::nullopt); // and does not wait for a writer
    EXPECT_EQ(files::read(folder_.path()), std::nullopt);
    EXPECT_EQ(files::read(folder_ / "missing"), std::nullopt);
    EXPECT_EQ(files::read(folder_ / "dangling"), std::nullopt);
    EXPECT_EQ(files::read("/dev/null"), std::nullopt);
    EXPECT_EQ(files::read(""), std::nullopt);
}

TEST_F(FilesTest, ReadRefusesWhatIsOverItsLimit)
{
    test::write(file_, "12345");
    EXPECT_EQ(files::read(file_, 4), std::nullopt);
    EXPECT_EQ(files::read(file_, 5), "12345");
    EXPECT_EQ(files::read(file_, 6), "12345");
    EXPECT_EQ(files::read(file_, 0), std::nullopt);
    test::write(file_, "");
    EXPECT_EQ(files::read(file_, 0), "");
}

TEST_F(FilesTest, ReadDoesNotLoadAHugeFileToFindItTooLarge)
{
    test::write(file_, "");
    ASSERT_EQ(::truncate(file_.c_str(), off_t{1} << 40), 0); // takes no room on disk
    EXPECT_EQ(files::read(file_, std::size_t{64} << 20), std::nullopt);
}

#if defined(__linux__)
TEST_F(FilesTest, ReadsAFileThatIsLargerThanTheSystemSaid)
{
    // The system gives these files no size, as if each had grown since it was asked.
    const auto bytes = files::read("/proc/self/smaps");
    ASSERT_TRUE(bytes);
    EXPECT_GT(bytes->size(), 1000u);
    EXPECT_NE(bytes->find('\n'), std::string::npos);
    EXPECT_EQ(bytes->find('\0'), std::string::npos);
    EXPECT_EQ(files::read("/proc/self/smaps", 1000), std::nullopt);
}
#endif

// Removing

TEST_F(FilesTest, RemovesAFile)
{
    test::write(file_, "x");
    EXPECT_TRUE(files::remove(file_));
    EXPECT_THAT(namesIn(folder_.path()), IsEmpty());
    EXPECT_FALSE(files::remove(file_));
}

TEST_F(FilesTest, RemovesTheLinkNotItsTarget)
{
    test::write(folder_ / "target", "kept");
    fs::create_symlink("target", folder_ / "link");
    fs::create_symlink("missing", folder_ / "dangling");
    EXPECT_TRUE(files::remove(folder_ / "link"));
    EXPECT_TRUE(files::remove(folder_ / "dangling"));
    EXPECT_THAT(namesIn(folder_.path()), UnorderedElementsAre("target"));
    EXPECT_EQ(test::read(folder_ / "target"), "kept");
}

TEST_F(FilesTest, RemovesNoFolder)
{
    fs::create_directory(folder_ / "folder");
    EXPECT_FALSE(files::remove(folder_ / "folder"));
    EXPECT_TRUE(fs::is_directory(folder_ / "folder"));
}

// Writing

TEST_F(FilesTest, WritesExactlyTheBytesAndNothingBesides)
{
    const std::string odd("a\0b\r\n\xff", 6);
    for (const std::string& bytes : {std::string("new"), std::string(), odd, std::string(5'000'000, 'x')}) {
        EXPECT_TRUE(files::writeAtomically(file_, bytes));
        EXPECT_TRUE(test::read(file_) == bytes) << bytes.size() << " bytes";
        EXPECT_THAT(namesIn(folder_.path()), UnorderedElementsAre("CSParameterOrder.plist"));
    }
}

TEST_F(FilesTest, WriteReplacesTheFileInsteadOfChangingIt)
{
    test::write(file_, "the old content");
    std::ifstream reader(file_);
    EXPECT_TRUE(files::writeAtomically(file_, "new"));
    std::string seen;
    std::getline(reader, seen);
    EXPECT_EQ(seen, "the old content"); // who had it open reads the old file to its end
    EXPECT_EQ(test::read(file_), "new");
}

TEST_F(FilesTest, WriteReplacesALinkAndLeavesItsTarget)
{
    test::write(folder_ / "target", "kept");
    fs::create_symlink("target", file_);
    EXPECT_TRUE(files::writeAtomically(file_, "new"));
    EXPECT_FALSE(fs::is_symlink(file_));
    EXPECT_EQ(test::read(file_), "new");
    EXPECT_EQ(test::read(folder_ / "target"), "kept");
}

TEST_F(FilesTest, AWayThroughLinksLeadsToTheirLastTarget)
{
    fs::create_directory(folder_ / "inner");
    test::write(folder_ / "inner/file", "x");
    fs::create_symlink("../second", folder_ / "inner/first");
    fs::create_symlink("inner/file", folder_ / "second");
    fs::create_symlink(folder_ / "inner/none", folder_ / "dangling");
    fs::create_symlink("loop", folder_ / "loop");
    ASSERT_TRUE(files::followed(folder_ / "inner/first"));
    EXPECT_TRUE(fs::equivalent(*files::followed(folder_ / "inner/first"), folder_ / "inner/file"));
    EXPECT_FALSE(fs::is_symlink(*files::followed(folder_ / "inner/first")));
    EXPECT_EQ(files::followed(folder_ / "dangling"), folder_ / "inner/none");
    EXPECT_EQ(files::followed(folder_ / "inner/file"), folder_ / "inner/file");
    EXPECT_EQ(files::followed(folder_ / "missing"), folder_ / "missing");
    EXPECT_EQ(files::followed(folder_ / "loop"), std::nullopt);
}

TEST_F(FilesTest, WriteSetsThePermissionBitsGiven)
{
    const mode_t mask = ::umask(027);
    for (const unsigned mode : {0600u, 0644u, 0777u, 0400u}) {
        EXPECT_TRUE(files::writeAtomically(file_, "x", static_cast<fs::perms>(mode)));
        EXPECT_EQ(modeOf(file_), mode);
    }
    ::umask(mask);
}

TEST_F(FilesTest, ANewFileFollowsTheProcessMask)
{
    for (const unsigned mask : {022u, 077u, 002u}) {
        const mode_t former = ::umask(static_cast<mode_t>(mask));
        EXPECT_TRUE(files::writeAtomically(file_, "x"));
        ::umask(former);
        EXPECT_EQ(modeOf(file_), 0666u & ~mask);
        fs::remove(file_);
    }
}

TEST_F(FilesTest, WriteKeepsThePermissionBitsOfTheFile)
{
    const mode_t mask = ::umask(077);
    for (const unsigned mode : {0644u, 0600u, 0777u, 0440u}) {
        test::write(file_, "old");
        ::chmod(file_.c_str(), static_cast<mode_t>(mode));
        EXPECT_TRUE(files::writeAtomically(file_, "new"));
        EXPECT_EQ(modeOf(file_), mode);
        fs::remove(file_);
    }
    ::umask(mask);
}

TEST_F(FilesTest, WhatReplacesAFileIsNeverOpenToOthersBeforeItIsWhole)
{
    test::write(file_, "old");
    ::chmod(file_.c_str(), 0644);
    const int former = ::open(file_.c_str(), O_RDONLY);
    files::PartialFile file(file_, fs::perms(0600));
    file.takeAfter(former);
    ::close(former);
    file.append("new");
    EXPECT_EQ(modeOf(partIn(folder_.path())), 0600u);
    EXPECT_TRUE(file.finish());
    EXPECT_EQ(modeOf(file_), 0644u);
}

TEST_F(FilesTest, WriteAndCopyKeepTheOwnerWherePermitted)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root may give files away";
    test::write(file_, "old");
    ASSERT_EQ(::chown(file_.c_str(), 65534, 12345), 0);
    ::chmod(file_.c_str(), 0640);
    EXPECT_TRUE(files::writeAtomically(file_, "new"));
    EXPECT_TRUE(files::copy(file_, folder_ / "copy"));
    for (const char* name : {"CSParameterOrder.plist", "copy"}) {
        struct stat status = {};
        ASSERT_EQ(::stat((folder_ / name).c_str(), &status), 0);
        EXPECT_EQ(status.st_uid, 65534u) << name;
        EXPECT_EQ(status.st_gid, 12345u) << name;
        EXPECT_EQ(modeOf(folder_ / name), 0640u) << name;
    }
}

TEST_F(FilesTest, AGroupThatCannotBeKeptIsNotPutInPlaceByAnotherWithItsRights)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can make a file of somebody else's";
    struct Row {
        unsigned before, after;
    };
    for (const Row& row : {Row{0664, 0644}, Row{0644, 0644}, Row{0660, 0600}, Row{0775, 0755}}) {
        test::write(file_, "old");
        ASSERT_EQ(::chown(file_.c_str(), 65534, 12345), 0);
        ::chmod(file_.c_str(), static_cast<mode_t>(row.before));
        ::chmod(folder_.path().c_str(), 0777);
        inAnotherProcess([&] {
            const gid_t group = 65534;
            return ::setgroups(0, &group) == 0 && ::setgid(group) == 0 && ::setuid(65534) == 0 &&
                   files::writeAtomically(file_, "new");
        });
        EXPECT_EQ(test::read(file_), "new");
        EXPECT_EQ(modeOf(file_), row.after);
        fs::remove(file_);
    }
}

#if defined(__linux__)
TEST_F(FilesTest, WriteAndCopyKeepExtendedAttributes)
{
    test::write(file_, "old");
    const std::string value("a\0b", 3);
    if (::setxattr(file_.c_str(), "user.origin", value.data(), value.size(), 0) != 0)
        GTEST_SKIP() << "the file system knows none";
    ::setxattr(file_.c_str(), "user.empty", "", 0, 0);
    ::setxattr(file_.c_str(), "user.long", std::string(1000, 'x').data(), 1000, 0);
    ::chmod(file_.c_str(), 0440);
    EXPECT_TRUE(files::writeAtomically(file_, "new"));
    EXPECT_TRUE(files::copy(file_, folder_ / "copy"));
    for (const char* name : {"CSParameterOrder.plist", "copy"}) {
        char bytes[2000];
        EXPECT_EQ(::getxattr((folder_ / name).c_str(), "user.origin", bytes, sizeof bytes), 3) << name;
        EXPECT_EQ(std::string(bytes, 3), value) << name;
        EXPECT_EQ(::getxattr((folder_ / name).c_str(), "user.empty", bytes, sizeof bytes), 0) << name;
        EXPECT_EQ(::getxattr((folder_ / name).c_str(), "user.long", bytes, sizeof bytes), 1000) << name;
    }
}
#endif

TEST_F(FilesTest, WritesInTheCurrentFolderToo)
{
    const fs::path former = fs::current_path();
    fs::current_path(folder_.path());
    EXPECT_TRUE(files::writeAtomically("plain name", "x"));
    fs::current_path(former);
    EXPECT_THAT(namesIn(folder_.path()), UnorderedElementsAre("plain name"));
}

TEST_F(FilesTest, WriteClearsWhatEndedProgramsLeft)
{
    // Of this process's number, of one that lives, and of one that has never been.
    for (const std::string& process : {std::to_string(::getpid()), std::string("1"), std::string("99999999")}) {
        test::write(folder_ / ("~CSParameterOrder.plist." + process + "-1"), "half of a much longer, never finish");
        ::chmod((folder_ / ("~CSParameterOrder.plist." + process + "-1")).c_str(), 0400);
    }
    EXPECT_TRUE(files::writeAtomically(file_, "new"));
    EXPECT_EQ(test::read(file_), "new");
    EXPECT_THAT(namesIn(folder_.path()), UnorderedElementsAre("CSParameterOrder.plist"));
}

TEST_F(FilesTest, WriteClearsNothingElse)
{
    const std::set<std::string> names = {
        "~CSParameterOrder.plist",        "~CSParameterOrder.plist.",          "~CSParameterOrder.plist.12",
        "~CSParameterOrder.plist.12-",    "~CSParameterOrder.plist.-12",       "~CSParameterOrder.plist.12-3x",
        "~CSParameterOrder.plist.12-3-4", "~CSParameterOrder.plist.prev.12-3", "~Other.12-3",
        "CSParameterOrder.plist.12-3",    "~CSParameterOrder.plist.backup-1"};
    for (const std::string& name : names)
        test::write(folder_ / name, name);
    fs::create_directory(folder_ / "~CSParameterOrder.plist.1-1");
    fs::create_symlink("~Other.12-3", folder_ / "~CSParameterOrder.plist.2-1");
    ASSERT_EQ(::mkfifo((folder_ / "~CSParameterOrder.plist.3-1").c_str(), 0600), 0);
    const std::set<std::string> before = namesIn(folder_.path());
    EXPECT_TRUE(files::writeAtomically(file_, "new"));
    EXPECT_TRUE(files::remove(file_));
    EXPECT_EQ(namesIn(folder_.path()), before);
    for (const std::string& name : names)
        EXPECT_EQ(test::read(folder_ / name), name);
}

TEST_F(FilesTest, NeitherThisNorAnotherProcessClearsWhatIsStillBeingMade)
{
    test::write(file_, "old");
    files::PartialFile first(file_);
    files::PartialFile second(file_);
    ASSERT_TRUE(first.isOpen() && second.isOpen());
    EXPECT_TRUE(first.append("first"));
    EXPECT_TRUE(second.append("second"));
    inAnotherProcess([&] { return files::writeAtomically(file_, "third"); });
    EXPECT_EQ(test::read(file_), "third");
    EXPECT_TRUE(first.finish());
    EXPECT_EQ(test::read(file_), "first");
    EXPECT_TRUE(second.finish());
    EXPECT_EQ(test::read(file_), "second");
    EXPECT_THAT(namesIn(folder_.path()), UnorderedElementsAre("CSParameterOrder.plist"));
}

TEST_F(FilesTest, APartIsCreatedAndNeverOneThatStandsThere)
{
    // What stands under the next names cannot be cleared.
    test::write(folder_ / "elsewhere", "not ours");
    files::PartialFile(file_).append("x");
    std::set<std::string> links;
    {
        const files::PartialFile last(file_);
        const std::string name = partIn(folder_.path()).filename().native();
        const std::size_t dash = name.rfind('-') + 1;
        for (int next = 1; next <= 3; ++next) {
            const std::string link = name.substr(0, dash) + std::to_string(std::stoi(name.substr(dash)) + next);
            fs::create_symlink("elsewhere", folder_ / link);
            links.insert(link);
        }
    }
    EXPECT_TRUE(files::writeAtomically(file_, "new"));
    EXPECT_EQ(test::read(file_), "new");
    EXPECT_FALSE(fs::is_symlink(file_));
    EXPECT_EQ(test::read(folder_ / "elsewhere"), "not ours");
    links.insert({"CSParameterOrder.plist", "elsewhere"});
    EXPECT_EQ(namesIn(folder_.path()), links);
}

TEST_F(FilesTest, AKilledWriteIsClearedByTheNext)
{
    test::write(file_, "old");
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const rlimit core = {0, 0};
        ::setrlimit(RLIMIT_CORE, &core);
        std::signal(SIGXFSZ, SIG_DFL);
        const rlimit limit = {100'000, 100'000};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        files::writeAtomically(file_, std::string(1'000'000, 'x')); // dies in the middle of it
        ::_exit(0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(test::read(file_), "old");
    EXPECT_EQ(namesIn(folder_.path()).size(), 2u);
    EXPECT_EQ(modeOf(partIn(folder_.path())), 0600u) << "until it is whole";
    EXPECT_TRUE(files::writeAtomically(file_, "new"));
    EXPECT_EQ(test::read(file_), "new");
    EXPECT_THAT(namesIn(folder_.path()), UnorderedElementsAre("CSParameterOrder.plist"));
}

// Writes that fail

TEST_F(FilesTest, AWriteCutShortLeavesTheOldContentAndNoPartialFile)
{
    test::write(file_, "old");
    {
        const FileSizeLimit limit(100'000);
        EXPECT_FALSE(files::writeAtomically(file_, std::string(1'000'000, 'x')));
        EXPECT_FALSE(files::writeAtomically(file_, std::string(100'001, 'x')));
    }
    EXPECT_EQ(test::read(file_), "old");
    EXPECT_THAT(namesIn(folder_.path()), UnorderedElementsAre("CSParameterOrder.plist"));
    const FileSizeLimit limit(100'000);
    EXPECT_TRUE(files::writeAtomically(file_, std::string(100'000, 'x')));
}

TEST_F(FilesTest, AWriteBelowAFileFails)
{
    test::write(file_, "old");
    EXPECT_FALSE(files::writeAtomically(file_ / "below", "new"));
    EXPECT_EQ(test::read(file_), "old");
    EXPECT_THAT(namesIn(folder_.path()), UnorderedElementsAre("CSParameterOrder.plist"));
}

TEST_F(FilesTest, AWriteInAMissingFolderFailsAndMakesNone)
{
    EXPECT_FALSE(files::writeAtomically(folder_ / "missing/file", "new"));
    EXPECT_THAT(namesIn(folder_.path()), IsEmpty());
}

TEST_F(FilesTest, AWriteOverAFolderFails)
{
    test::write(file_ / "inside", "kept");
    EXPECT_FALSE(files::writeAtomically(file_, "new"));
    EXPECT_EQ(test::read(file_ / "inside"), "kept");
    EXPECT_THAT(namesIn(folder_.path()), UnorderedElementsAre("CSParameterOrder.plist"));
}

TEST_F(FilesTest, AWriteOfANameTooLongForItsFileSystemFails)
{
    EXPECT_FALSE(files::writeAtomically(folder_ / std::string(300, 'n'), "new"));
    EXPECT_THAT(namesIn(folder_.path()), IsEmpty());
}

TEST_F(FilesTest, AWriteInAReadOnlyFolderLeavesTheOldContent)
{
    test::write(file_, "old");
    ::chmod(folder_.path().c_str(), 0555);
    inAnotherProcess([&] {
        return (::getuid() != 0 || ::setuid(65534) == 0) && !files::writeAtomically(file_, "new") &&
               !files::remove(file_) && !files::rename(file_, folder_ / "other");
    });
    ::chmod(folder_.path().c_str(), 0700);
    EXPECT_EQ(test::read(file_), "old");
    EXPECT_THAT(namesIn(folder_.path()), UnorderedElementsAre("CSParameterOrder.plist"));
}

#if defined(__linux__)
/// A disk of so many bytes at a folder, for this process; gone with it.
bool mountSmallDisk(const fs::path& folder, const char* size)
{
    return ::unshare(CLONE_NEWNS) == 0 && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("tmpfs", folder.c_str(), "tmpfs", 0, size) == 0;
}

TEST_F(FilesTest, AWriteToAFullDiskLeavesTheOldContent)
{
    enum Outcome { asExpected, written, contentLost, partialLeft, noDisk };
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        if (!mountSmallDisk(folder_.path(), "size=64k"))
            ::_exit(noDisk);
        test::write(file_, "old");
        if (files::writeAtomically(file_, std::string(1'000'000, 'x')))
            ::_exit(written);
        if (files::read(file_) != "old")
            ::_exit(contentLost);
        ::_exit(namesIn(folder_.path()).size() == 1 ? asExpected : partialLeft);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == noDisk)
        GTEST_SKIP() << "no disk can be mounted here";
    EXPECT_EQ(WEXITSTATUS(status), asExpected);
}
#endif

// Renaming

TEST_F(FilesTest, RenamesAFileOrALinkOverWhatStandsThere)
{
    test::write(file_, "new");
    test::write(folder_ / "other", "old");
    EXPECT_TRUE(files::rename(file_, folder_ / "other"));
    EXPECT_EQ(test::read(folder_ / "other"), "new");
    fs::create_symlink("other", file_);
    EXPECT_TRUE(files::rename(file_, folder_ / "link"));
    EXPECT_TRUE(fs::is_symlink(folder_ / "link"));
    EXPECT_THAT(namesIn(folder_.path()), UnorderedElementsAre("link", "other"));
    EXPECT_FALSE(files::rename(file_, folder_ / "other"));
    EXPECT_EQ(test::read(folder_ / "other"), "new");
}

// Copying

TEST_F(FilesTest, CopiesContentAndPermissionBits)
{
    for (const unsigned mode : {0644u, 0600u, 0755u, 0444u}) {
        const std::string bytes("a\0b", 3);
        test::write(file_, bytes);
        ASSERT_EQ(::chmod(file_.c_str(), static_cast<mode_t>(mode)), 0);
        const mode_t mask = ::umask(077);
        EXPECT_TRUE(files::copy(file_, folder_ / "copy"));
        ::umask(mask);
        EXPECT_EQ(test::read(folder_ / "copy"), bytes);
        EXPECT_EQ(modeOf(folder_ / "copy"), mode);
        EXPECT_EQ(test::read(file_), bytes);
        EXPECT_THAT(namesIn(folder_.path()), UnorderedElementsAre("CSParameterOrder.plist", "copy"));
        fs::remove(file_);
    }
}

TEST_F(FilesTest, CopyReplacesWhatStandsThere)
{
    test::write(file_, "new");
    test::write(folder_ / "copy", "old and longer");
    EXPECT_TRUE(files::copy(file_, folder_ / "copy"));
    EXPECT_EQ(test::read(folder_ / "copy"), "new");
}

TEST_F(FilesTest, CopyOfALinkIsAFileWithItsTargetsContent)
{
    test::write(folder_ / "target", "content");
    fs::create_symlink("target", file_);
    EXPECT_TRUE(files::copy(file_, folder_ / "copy"));
    EXPECT_FALSE(fs::is_symlink(folder_ / "copy"));
    EXPECT_EQ(test::read(folder_ / "copy"), "content");
}

TEST_F(FilesTest, CopyReplacesALinkAndLeavesItsTarget)
{
    test::write(file_, "new");
    test::write(folder_ / "target", "kept");
    fs::create_symlink("target", folder_ / "copy");
    EXPECT_TRUE(files::copy(file_, folder_ / "copy"));
    EXPECT_FALSE(fs::is_symlink(folder_ / "copy"));
    EXPECT_EQ(test::read(folder_ / "target"), "kept");
}

TEST_F(FilesTest, ACopyOfWhatIsNoFileFailsAndLeavesTheTargetAlone)
{
    test::write(folder_ / "copy", "old");
    fs::create_directory(folder_ / "folder");
    ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
    for (const char* from : {"missing", "folder", "pipe"}) {
        EXPECT_FALSE(files::copy(folder_ / from, folder_ / "copy")) << from;
        EXPECT_EQ(test::read(folder_ / "copy"), "old") << from;
    }
}

TEST_F(FilesTest, ACopyCutShortLeavesTheTargetAlone)
{
    test::write(file_, std::string(1'000'000, 'x'));
    test::write(folder_ / "copy", "old");
    {
        const FileSizeLimit limit(100'000);
        EXPECT_FALSE(files::copy(file_, folder_ / "copy"));
    }
    EXPECT_EQ(test::read(folder_ / "copy"), "old");
    EXPECT_THAT(namesIn(folder_.path()), UnorderedElementsAre("CSParameterOrder.plist", "copy"));
}

TEST_F(FilesTest, MissingIsOnlyWhatIsCertainlyNotThere)
{
    test::write(folder_ / "file", "x");
    fs::create_symlink(folder_ / "loop", folder_ / "loop");
    fs::create_symlink(folder_ / "nowhere", folder_ / "dangling");
    EXPECT_FALSE(files::isMissing(folder_ / "file"));
    EXPECT_TRUE(files::isMissing(folder_ / "other"));
    EXPECT_TRUE(files::isMissing(folder_ / "file/below"));
    EXPECT_TRUE(files::isMissing(folder_ / "dangling"));
    EXPECT_FALSE(files::isMissing(folder_ / "loop")) << "nobody can say";
    EXPECT_FALSE(files::exists(folder_ / "loop"));
}

// Names

TEST_F(FilesTest, EveryNameTheFileSystemAllowsCanBeUsed)
{
    const std::string names[] = {" ",
                                 " leading and trailing ",
                                 "a#b?c%20d&e",
                                 "\"'\\`$(x)",
                                 "line\nbreak\t\x7f",
                                 "caf\xE9\xFF",
                                 "\xC3\x89"
                                 "cho d\xE2\x80\x99\xC3\xA9t\xC3\xA9",
                                 "-rf",
                                 ".hidden",
                                 "CSParameterOrder.plist.original",
                                 std::string(250, 'n')};
    for (const std::string& name : names) {
        std::error_code refused; // by file systems that know UTF-8 only
        if (!fs::create_directory(folder_ / name, refused))
            continue;
        fs::remove(folder_ / name);
        EXPECT_TRUE(files::writeAtomically(folder_ / name, name)) << name;
        EXPECT_TRUE(files::exists(folder_ / name)) << name;
        EXPECT_EQ(files::read(folder_ / name), name);
        EXPECT_TRUE(files::copy(folder_ / name, folder_ / (name + ".prev"))) << name;
        EXPECT_EQ(files::read(folder_ / (name + ".prev")), name);
        EXPECT_TRUE(files::remove(folder_ / name)) << name;
        EXPECT_THAT(namesIn(folder_.path()), UnorderedElementsAre(name + ".prev"));
        EXPECT_TRUE(files::remove(folder_ / (name + ".prev"))) << name;
    }
}

TEST_F(FilesTest, TheLongestNamesCanBeReplaced)
{
    std::string accents;
    while (accents.size() < 250)
        accents += "\xC3\xA9";
    for (const std::string& name : {std::string(255, 'n'), "x" + accents, "xy" + accents}) {
        test::write(folder_ / name, "old");
        files::PartialFile file(folder_ / name);
        ASSERT_TRUE(file.isOpen());
        std::string part;
        for (const std::string& each : namesIn(folder_.path()))
            part = each != name ? each : part;
        EXPECT_TRUE(platform::isUtf8(part)) << part;
        EXPECT_TRUE(file.append("new") && file.finish());
        EXPECT_EQ(test::read(folder_ / name), "new");
        EXPECT_THAT(namesIn(folder_.path()), UnorderedElementsAre(name));
        fs::remove(folder_ / name);
    }
}

} // namespace

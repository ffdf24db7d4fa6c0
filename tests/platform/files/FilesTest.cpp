#include "platform/files/Files.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <optional>
#include <set>
#include <string>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#if defined(__linux__)
#include <sched.h>
#include <sys/mount.h>
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

TEST_F(FilesTest, PermissionsAreThoseOfARegularFile)
{
    for (const unsigned mode : {0644u, 0600u, 0755u, 0444u, 0u, 0777u}) {
        test::write(file_, "x");
        ASSERT_EQ(::chmod(file_.c_str(), static_cast<mode_t>(mode)), 0);
        EXPECT_EQ(files::permissions(file_), std::optional(static_cast<fs::perms>(mode)));
        fs::remove(file_);
    }
    EXPECT_EQ(files::permissions(file_), std::nullopt);
    EXPECT_EQ(files::permissions(folder_.path()), std::nullopt);
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

TEST_F(FilesTest, WriteSetsThePermissionBitsGiven)
{
    const mode_t mask = ::umask(027);
    for (const unsigned mode : {0600u, 0644u, 0777u, 0400u}) {
        EXPECT_TRUE(files::writeAtomically(file_, "x", static_cast<fs::perms>(mode)));
        EXPECT_EQ(modeOf(file_), mode);
    }
    ::umask(mask);
}

TEST_F(FilesTest, WriteFollowsTheProcessMaskWithoutPermissionBits)
{
    for (const unsigned mask : {022u, 077u, 002u}) {
        const mode_t former = ::umask(static_cast<mode_t>(mask));
        test::write(file_, "old");
        ::chmod(file_.c_str(), 0755);
        EXPECT_TRUE(files::writeAtomically(file_, "x"));
        ::umask(former);
        EXPECT_EQ(modeOf(file_), 0666u & ~mask);
    }
}

TEST_F(FilesTest, WritesInTheCurrentFolderToo)
{
    const fs::path former = fs::current_path();
    fs::current_path(folder_.path());
    EXPECT_TRUE(files::writeAtomically("plain name", "x"));
    fs::current_path(former);
    EXPECT_THAT(namesIn(folder_.path()), UnorderedElementsAre("plain name"));
}

TEST_F(FilesTest, WriteClearsWhatAKilledRunLeft)
{
    test::write(files::partialName(file_), "half of a much longer, never finish");
    ::chmod(files::partialName(file_).c_str(), 0400);
    EXPECT_TRUE(files::writeAtomically(file_, "new"));
    EXPECT_EQ(test::read(file_), "new");
    EXPECT_THAT(namesIn(folder_.path()), UnorderedElementsAre("CSParameterOrder.plist"));
}

TEST_F(FilesTest, WriteIsNotLedAstrayByALinkInPlaceOfItsPartialFile)
{
    test::write(folder_ / "elsewhere", "not ours");
    fs::create_symlink("elsewhere", files::partialName(file_));
    EXPECT_TRUE(files::writeAtomically(file_, "new"));
    EXPECT_EQ(test::read(folder_ / "elsewhere"), "not ours");
    EXPECT_FALSE(fs::is_symlink(file_));
    EXPECT_THAT(namesIn(folder_.path()), UnorderedElementsAre("CSParameterOrder.plist", "elsewhere"));
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
    EXPECT_TRUE(fs::exists(files::partialName(file_)));
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

TEST_F(FilesTest, AWriteFailsWhereAFolderHasItsPartialName)
{
    test::write(file_, "old");
    fs::create_directory(files::partialName(file_));
    EXPECT_FALSE(files::writeAtomically(file_, "new"));
    EXPECT_EQ(test::read(file_), "old");
    EXPECT_TRUE(fs::is_directory(files::partialName(file_)));
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
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        if (::getuid() == 0 && ::setuid(65534) != 0)
            ::_exit(2);
        const bool written = files::writeAtomically(file_, "new");
        const bool removed = files::remove(file_);
        ::_exit(written || removed ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ::chmod(folder_.path().c_str(), 0700);
    EXPECT_EQ(status, 0);
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

TEST_F(FilesTest, APartialNameIsInTheSameFolderNoLongerAndAlwaysTheSame)
{
    for (const char* path : {"/a/b/CSParameterOrder.plist", "/a b/c#d.plist", "/a/caf\xE9\xFF", "name", "./x", "/x"}) {
        const fs::path partial = files::partialName(path);
        EXPECT_EQ(partial.parent_path(), fs::path(path).parent_path()) << path;
        EXPECT_EQ(partial.native().size(), fs::path(path).native().size()) << path;
        EXPECT_NE(partial, fs::path(path));
        EXPECT_EQ(partial, files::partialName(path)) << path;
    }
    EXPECT_NE(files::partialName("/a/CSParameterOrder.plist"), files::partialName("/a/CSParameterOrder.plist.prev"));
    EXPECT_NE(files::partialName("/a/x"), files::partialName("/b/x"));
}

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
                                 std::string(200, 'n')};
    for (const std::string& name : names) {
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

} // namespace

#include "platform/files/FolderWalk.h"

#include "tests/support/TemporaryFolder.h"
#include "tests/support/UnhelpfulFileSystem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using platform::WalkedItem;
using platform::walkFolder;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;
using testing::UnorderedElementsAre;

/// What a walk told, in its order; paths without the root.
struct Told {
    std::vector<std::string> items; ///< a folder with a slash at its end
    std::vector<std::pair<std::string, std::string>> unreadable;
};

using OnItem = std::function<void(const std::string& path)>;

Told walk(const fs::path& root, const OnItem& onItem = {})
{
    Told told;
    const std::string prefix = root.native() + "/";
    const auto relative = [&](const std::string& path) {
        return path.starts_with(prefix) ? path.substr(prefix.size()) : path;
    };
    walkFolder(root.native(), {[&](const WalkedItem& item) {
                                   const bool folder = item.kind == WalkedItem::Kind::folder;
                                   told.items.push_back(relative(item.path) + (folder ? "/" : ""));
                                   if (onItem)
                                       onItem(relative(item.path));
                               },
                               [&](const std::string& path, const std::string& reason) {
                                   told.unreadable.emplace_back(relative(path), reason);
                               }});
    return told;
}

/// The kinds of all items, by their names.
std::map<std::string, WalkedItem::Kind> kindsIn(const fs::path& root)
{
    std::map<std::string, WalkedItem::Kind> kinds;
    walkFolder(root.native(),
               {[&](const WalkedItem& item) { kinds[fs::path(item.path).filename().native()] = item.kind; },
                [](const std::string&, const std::string&) {}});
    return kinds;
}

/// While it lives, the process may open so many more descriptors.
class DescriptorLimit {
public:
    explicit DescriptorLimit(int spare)
    {
        int number = 0; // the system limits the highest number, not the count
        for (; spare > 0; ++number)
            spare -= ::fcntl(number, F_GETFD) == -1;
        ::getrlimit(RLIMIT_NOFILE, &former_);
        const rlimit limit = {static_cast<rlim_t>(number), former_.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
    DescriptorLimit(const DescriptorLimit&) = delete;
    DescriptorLimit& operator=(const DescriptorLimit&) = delete;
    ~DescriptorLimit() { ::setrlimit(RLIMIT_NOFILE, &former_); }

private:
    rlimit former_ = {};
};

int openDescriptors()
{
    int count = 0;
    for (int descriptor = 0; descriptor < 1024; ++descriptor)
        count += ::fcntl(descriptor, F_GETFD) != -1;
    return count;
}

/// Folders one inside the other, deeper than any path can say; made and removed a step at a time.
class DeepFolders {
public:
    DeepFolders(const fs::path& root, int depth) : root_(root), depth_(depth)
    {
        int folder = ::open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        for (int level = 1; level <= depth; ++level) {
            if (level % 100 == 1) // company for the folder that leads down, some of it before and some behind it
                for (const char* side : {"a", "f", "q", "z"})
                    makeSide(folder, side + std::to_string(level));
            ::mkdirat(folder, nameOf(level).c_str(), 0700);
            const int below = ::openat(folder, nameOf(level).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
            ::close(folder);
            folder = below;
        }
        ::close(::openat(folder, "leaf", O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
        ::close(folder);
    }
    DeepFolders(const DeepFolders&) = delete;
    DeepFolders& operator=(const DeepFolders&) = delete;
    ~DeepFolders()
    {
        int folder = ::open(root_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        int level = 0;
        while (level < depth_) {
            const int below = ::openat(folder, nameOf(level + 1).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
            ::close(folder);
            folder = below;
            ++level;
        }
        ::unlinkat(folder, "leaf", 0);
        for (; level > 0; --level) {
            const int above = ::openat(folder, "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
            ::close(folder);
            folder = above;
            ::unlinkat(folder, nameOf(level).c_str(), AT_REMOVEDIR);
            if (level % 100 == 1)
                for (const char* side : {"a", "f", "q", "z"})
                    removeSide(folder, side + std::to_string(level));
        }
        ::close(folder);
    }

    static std::string nameOf(int level) { return "level" + std::to_string(10000 + level); }

    /// Path of the folder so deep down, without the root.
    static std::string pathOf(int level)
    {
        std::string path;
        for (int l = 1; l <= level; ++l)
            path += nameOf(l) + "/";
        return path;
    }

private:
    static void makeSide(int folder, const std::string& name)
    {
        ::mkdirat(folder, name.c_str(), 0700);
        ::close(::openat(folder, (name + "/file").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    }

    static void removeSide(int folder, const std::string& name)
    {
        ::unlinkat(folder, (name + "/file").c_str(), 0);
        ::unlinkat(folder, name.c_str(), AT_REMOVEDIR);
    }

    fs::path root_;
    int depth_;
};

class FolderWalkTest : public testing::Test {
protected:
    test::TemporaryFolder temporary_;
    const fs::path root_ = temporary_ / "root";

    FolderWalkTest() { fs::create_directory(root_); }
};

// What is visited

TEST_F(FolderWalkTest, AnEmptyFolderHasNoItems)
{
    const Told told = walk(root_);
    EXPECT_THAT(told.items, IsEmpty());
    EXPECT_THAT(told.unreadable, IsEmpty());
}

TEST_F(FolderWalkTest, VisitsEveryItemOnceHiddenOnesIncluded)
{
    test::write(root_ / "file", "");
    test::write(root_ / ".hidden file", "");
    test::write(root_ / ".hidden/inside", "");
    test::write(root_ / "Maker/Synth X/CSParameterOrder.plist", "");
    fs::create_directory(root_ / "empty");
    ASSERT_EQ(::mkfifo((root_ / "pipe").c_str(), 0600), 0);
    const Told told = walk(root_);
    EXPECT_THAT(told.items,
                UnorderedElementsAre("file", ".hidden file", ".hidden/", ".hidden/inside", "Maker/", "Maker/Synth X/",
                                     "Maker/Synth X/CSParameterOrder.plist", "empty/", "pipe"));
    EXPECT_THAT(told.unreadable, IsEmpty());
}

TEST_F(FolderWalkTest, AFolderComesBeforeWhatIsInItAndItsContentStaysTogether)
{
    for (int a = 0; a < 5; ++a)
        for (int b = 0; b < 5; ++b)
            for (int c = 0; c < 5; ++c)
                test::write(root_ / std::to_string(a) / std::to_string(b) / std::to_string(c), "");
    const Told told = walk(root_);
    ASSERT_EQ(told.items.size(), 5u + 25u + 125u);
    std::vector<std::string> open; // the folders entered and not left yet
    std::set<std::string> left;
    for (const std::string& item : told.items) {
        while (!open.empty() && !item.starts_with(open.back())) {
            left.insert(open.back());
            open.pop_back();
        }
        const std::string parent = item.substr(0, item.find_last_of('/', item.size() - 2) + 1);
        EXPECT_EQ(parent, open.empty() ? "" : open.back()) << item;
        EXPECT_THAT(left, Not(Contains(parent)));
        if (item.back() == '/')
            open.push_back(item);
    }
}

TEST_F(FolderWalkTest, AnswersInTheOrderTheSystemYields)
{
    for (int n = 0; n < 50; ++n)
        test::write(root_ / ("file " + std::to_string(n * 7919 % 50)), "");
    std::vector<std::string> yielded;
    DIR* stream = ::opendir(root_.c_str());
    while (const dirent* entry = ::readdir(stream))
        yielded.push_back(entry->d_name);
    ::closedir(stream);
    std::erase(yielded, ".");
    std::erase(yielded, "..");
    EXPECT_EQ(walk(root_).items, yielded);
}

TEST_F(FolderWalkTest, KindsTellFoldersFromEverythingElse)
{
    test::write(root_ / "file", "");
    fs::create_directory(root_ / "CSParameterOrder.plist");
    fs::create_directory_symlink("CSParameterOrder.plist", root_ / "link to a folder");
    fs::create_symlink("missing", root_ / "dangling");
    EXPECT_THAT(kindsIn(root_), UnorderedElementsAre(Pair("file", WalkedItem::Kind::file),
                                                     Pair("CSParameterOrder.plist", WalkedItem::Kind::folder),
                                                     Pair("link to a folder", WalkedItem::Kind::file),
                                                     Pair("dangling", WalkedItem::Kind::file)));
}

TEST_F(FolderWalkTest, KindsAreAskedForWhereEntriesDoNotTellThem)
{
    for (const char* name : {"file", "gone", "folder/inside"})
        test::write(root_ / name, "");
    fs::create_directory_symlink("folder", root_ / "link");
    ASSERT_EQ(::mkfifo((root_ / "pipe").c_str(), 0600), 0);
    const test::UnhelpfulFileSystem fileSystem("gone");
    EXPECT_THAT(kindsIn(root_),
                UnorderedElementsAre(Pair("file", WalkedItem::Kind::file), Pair("gone", WalkedItem::Kind::unknown),
                                     Pair("folder", WalkedItem::Kind::folder), Pair("inside", WalkedItem::Kind::file),
                                     Pair("link", WalkedItem::Kind::file), Pair("pipe", WalkedItem::Kind::file)));
}

TEST_F(FolderWalkTest, AFolderNamedLikeAFileIsWalkedLikeAnyOther)
{
    test::write(root_ / "CSParameterOrder.plist/read me.txt", "");
    EXPECT_THAT(walk(root_).items, ElementsAre("CSParameterOrder.plist/", "CSParameterOrder.plist/read me.txt"));
}

TEST_F(FolderWalkTest, LinksToFoldersAreNotFollowed)
{
    test::write(temporary_ / "elsewhere/stranger", "");
    fs::create_directory_symlink("../elsewhere", root_ / "link");
    fs::create_directory_symlink(temporary_ / "elsewhere", root_ / "absolute link");
    const Told told = walk(root_);
    EXPECT_THAT(told.items, UnorderedElementsAre("link", "absolute link"));
    EXPECT_THAT(told.unreadable, IsEmpty());
}

TEST_F(FolderWalkTest, ALinkLoopEnds)
{
    test::write(root_ / "a/b/file", "");
    fs::create_directory_symlink("../..", root_ / "a/b/up");
    fs::create_directory_symlink(".", root_ / "here");
    fs::create_symlink("itself", root_ / "itself");
    EXPECT_THAT(walk(root_).items, UnorderedElementsAre("a/", "a/b/", "a/b/file", "a/b/up", "here", "itself"));
}

TEST_F(FolderWalkTest, NamesComeAsTheFileSystemHasThem)
{
    const std::string names[] = {"caf\xE9",
                                 "\xFF\xFE\x80",
                                 " ",
                                 " blanks ",
                                 "a#b?c%20d",
                                 "line\nbreak",
                                 "\x01\x1b[31m",
                                 "-rf",
                                 "...",
                                 "\xC3\x89"
                                 "cho",
                                 "E\xCC\x81"
                                 "cho",
                                 "back\\slash",
                                 std::string(255, 'n')};
    std::vector<std::string> expected;
    for (const std::string& name : names) {
        std::error_code refused; // by file systems that know UTF-8 only, and take both spellings of an accent for one
        if (!fs::create_directory(root_ / name, refused))
            continue;
        test::write(root_ / name / name, "");
        expected.push_back(name + "/");
        expected.push_back(name + "/" + name);
    }
    EXPECT_THAT(walk(root_).items, testing::UnorderedElementsAreArray(expected));
}

// The root

TEST_F(FolderWalkTest, AMissingRootIsUnreadableAndHasNoItems)
{
    const Told told = walk(temporary_ / "missing");
    EXPECT_THAT(told.items, IsEmpty());
    EXPECT_THAT(told.unreadable, ElementsAre(Pair((temporary_ / "missing").native(), "No such file or directory")));
}

TEST_F(FolderWalkTest, ARootThatIsNoFolderIsUnreadable)
{
    test::write(temporary_ / "file", "");
    const Told told = walk(temporary_ / "file");
    EXPECT_THAT(told.items, IsEmpty());
    EXPECT_THAT(told.unreadable, ElementsAre(Pair((temporary_ / "file").native(), "Not a directory")));
    EXPECT_THAT(walk("").items, IsEmpty());
    EXPECT_EQ(walk("").unreadable.size(), 1u);
}

TEST_F(FolderWalkTest, ARootThatIsALinkIsFollowed)
{
    test::write(root_ / "file", "");
    fs::create_directory_symlink("root", temporary_ / "link");
    EXPECT_THAT(walk(temporary_ / "link").items, ElementsAre("file"));
}

TEST_F(FolderWalkTest, SlashesBehindTheRootAreNotDoubled)
{
    test::write(root_ / "a/file", "");
    for (const char* slashes : {"", "/", "///"}) {
        std::vector<std::string> paths;
        walkFolder(root_.native() + slashes, {[&](const WalkedItem& item) { paths.push_back(item.path); },
                                              [](const std::string&, const std::string&) {}});
        EXPECT_THAT(paths, ElementsAre((root_ / "a").native(), (root_ / "a/file").native()));
    }
}

// Folders that vanish, change or cannot be read

TEST_F(FolderWalkTest, AFolderThatVanishesBeforeItIsReadIsToldAndTheWalkGoesOn)
{
    for (const char* name : {"a", "b", "c", "d", "e"})
        test::write(root_ / name / "file", "");
    std::string victim;
    const Told told = walk(root_, [&](const std::string& path) {
        if (!victim.empty())
            return;
        victim = path;
        fs::remove_all(root_ / path);
    });
    EXPECT_THAT(told.unreadable, ElementsAre(Pair(victim, "No such file or directory")));
    EXPECT_EQ(told.items.size(), 5u + 4u);
    EXPECT_THAT(told.items, Not(Contains(victim + "/file")));
}

TEST_F(FolderWalkTest, AFolderThatVanishesWhileItIsWalkedDoesNotStopTheWalk)
{
    for (const char* name : {"a", "b", "c"})
        for (const char* below : {"x", "y", "z"})
            test::write(root_ / name / below / "file", "");
    std::string victim;
    const Told told = walk(root_, [&](const std::string& path) {
        if (!victim.empty() || path.size() != 3)
            return;
        victim = path.substr(0, 1); // the folder that is being walked
        fs::remove_all(root_ / victim);
    });
    EXPECT_EQ(told.unreadable.size(), 3u); // what was below it
    EXPECT_EQ(told.items.size(), 3u + 9u + 6u);
}

TEST_F(FolderWalkTest, AFolderReplacedByALinkIsNotFollowed)
{
    test::write(temporary_ / "elsewhere/stranger", "");
    fs::create_directory(root_ / "folder");
    const Told told = walk(root_, [&](const std::string& path) {
        fs::remove(root_ / path);
        fs::create_directory_symlink(temporary_ / "elsewhere", root_ / path);
    });
    EXPECT_THAT(told.items, ElementsAre("folder/"));
    EXPECT_EQ(told.unreadable.size(), 1u);
}

TEST_F(FolderWalkTest, AFolderThatMayNotBeReadIsToldAndTheWalkGoesOn)
{
    test::write(root_ / "before/file", "");
    test::write(root_ / "closed/secret", "");
    test::write(root_ / "without entry/secret", "");
    test::write(root_ / "zebra/file", "");
    fs::permissions(root_ / "closed", fs::perms::none);
    fs::permissions(temporary_.path(), fs::perms(0755));
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const pid_t child = ::fork(); // the superuser may read everything, so somebody else walks
    ASSERT_GE(child, 0);
    if (child == 0) {
        std::string lines;
        if (::getuid() == 0 && ::setuid(65534) != 0)
            lines = "cannot become somebody else\n";
        const Told told = walk(root_);
        for (const std::string& item : told.items)
            lines += item + "\n";
        for (const auto& [path, reason] : told.unreadable)
            lines += path + ": " + reason + "\n";
        static_cast<void>(!::write(ends[1], lines.data(), lines.size()));
        ::_exit(0);
    }
    ::close(ends[1]);
    std::vector<std::string> lines(1);
    char character = 0;
    while (::read(ends[0], &character, 1) == 1) {
        if (character == '\n')
            lines.emplace_back();
        else
            lines.back() += character;
    }
    ::close(ends[0]);
    ::waitpid(child, nullptr, 0);
    fs::permissions(root_ / "closed", fs::perms::owner_all);
    lines.pop_back();
    EXPECT_THAT(lines,
                UnorderedElementsAre("before/", "before/file", "closed/", "without entry/", "without entry/secret",
                                     "zebra/", "zebra/file", "closed: Permission denied"));
}

// Size

TEST_F(FolderWalkTest, WalksThreeThousandLevelsWithFewDescriptors)
{
    constexpr int kDepth = 3000;
    const DeepFolders deep(root_, kDepth);
    const int before = openDescriptors();
    const DescriptorLimit limit(80);

    int level = 0;
    std::string expected = root_.native(); // the path of the deepest folder so far
    std::size_t wrongPaths = 0;
    std::size_t leaves = 0;
    std::size_t longest = 0;
    std::map<std::string, int> sides; // a side folder or its file, without the path to it, and how often it came
    std::size_t unreadable = 0;
    walkFolder(root_.native(),
               {[&](const WalkedItem& item) {
                    longest = std::max(longest, item.path.size());
                    const std::string name = item.path.substr(item.path.rfind('/') + 1);
                    if (name == DeepFolders::nameOf(level + 1) && item.kind == WalkedItem::Kind::folder) {
                        ++level;
                        expected += "/" + name;
                        wrongPaths += item.path != expected;
                    } else if (name == "leaf") {
                        ++leaves;
                        wrongPaths += item.path != expected + "/leaf" || level != kDepth;
                    } else {
                        const bool file = name == "file";
                        const std::string folder = file ? item.path.substr(0, item.path.rfind('/')) : item.path;
                        const std::string side = folder.substr(folder.rfind('/') + 1);
                        const std::string above =
                            root_.native() + "/" + DeepFolders::pathOf(std::stoi(side.substr(1)) - 1);
                        wrongPaths += folder != above + side;
                        ++sides[file ? side + "/file" : side + "/"];
                    }
                },
                [&](const std::string&, const std::string&) { ++unreadable; }});
    EXPECT_EQ(level, kDepth);
    EXPECT_EQ(leaves, 1u);
    EXPECT_EQ(wrongPaths, 0u);
    EXPECT_EQ(longest, (root_ / DeepFolders::pathOf(kDepth) / "leaf").native().size());
    EXPECT_GT(longest, 30'000u);
    EXPECT_EQ(sides.size(), 2u * 4u * 30u);
    EXPECT_TRUE(std::all_of(sides.begin(), sides.end(), [](const auto& side) { return side.second == 1; }));
    EXPECT_EQ(unreadable, 0u);
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(FolderWalkTest, EndsAndSaysSoWhenThereAreNoDescriptorsLeft)
{
    test::write(root_ / "1/2/3/4/5/6/7/8/9/10/file", "");
    test::write(root_ / "other", "");
    const int before = openDescriptors();
    constexpr int kNeeded = 11; // one for every level
    for (int spare = 0; spare < kNeeded; ++spare) {
        Told told;
        {
            const DescriptorLimit limit(spare);
            told = walk(root_);
        }
        ASSERT_EQ(told.unreadable.size(), 1u) << spare << " descriptors";
        EXPECT_EQ(told.unreadable.front().second, "Too many open files") << spare << " descriptors";
        EXPECT_EQ(openDescriptors(), before);
    }
    {
        const DescriptorLimit limit(kNeeded);
        EXPECT_THAT(walk(root_).unreadable, IsEmpty());
    }
}

/// Ten folders with a file in each, all but the one that the system lists first: the walk comes to the others after it.
std::string makeSides(const fs::path& folder)
{
    for (int side = 0; side < 10; ++side)
        fs::create_directories(folder / ("side" + std::to_string(side)));
    std::string first;
    for (const auto& entry : fs::directory_iterator(folder)) {
        const std::string name = entry.path().filename().native();
        if (first.empty())
            first = name;
        else
            test::write(entry.path() / "file", "");
    }
    return first;
}

TEST_F(FolderWalkTest, DoesNotStrayWhenAFolderIsMovedAwayBelowIt)
{
    constexpr int kAbove = 20;
    constexpr int kBelow = 80; // deeper than folders are kept open
    fs::path above;
    for (int level = 0; level < kAbove; ++level)
        above /= "d";
    const std::string moved = makeSides(root_ / above);
    fs::path bottom = above / moved;
    for (int level = 0; level < kBelow; ++level)
        bottom /= "d";
    test::write(root_ / bottom / "bottom", "");
    for (int side = 0; side < 10; ++side)
        test::write(temporary_ / "elsewhere" / ("side" + std::to_string(side)) / "stranger", "");
    fs::remove_all(temporary_ / "elsewhere" / moved);

    const Told told = walk(root_, [&](const std::string& item) {
        if (item.ends_with("bottom"))
            fs::rename(root_ / above / moved, temporary_ / "elsewhere" / moved);
    });
    EXPECT_THAT(told.items, Contains((bottom / "bottom").native()));
    int sides = 0;
    for (const std::string& item : told.items) {
        EXPECT_EQ(item.find("stranger"), std::string::npos) << item;
        const std::string folder = item.substr(0, item.size() - 1);
        if (item.find("side") == std::string::npos || item.starts_with((above / moved).native()) || item.back() != '/')
            continue;
        ++sides; // walked, or at least told of
        const bool walked = std::find(told.items.begin(), told.items.end(), item + "file") != told.items.end();
        const bool toldOf = std::any_of(told.unreadable.begin(), told.unreadable.end(),
                                        [&](const auto& one) { return one.first == folder; });
        EXPECT_NE(walked, toldOf) << folder;
    }
    EXPECT_EQ(sides, 9);
}

TEST_F(FolderWalkTest, ADeepFolderThatVanishesAroundTheWalkCostsNothingOutsideIt)
{
    const std::string vanishing = makeSides(root_);
    fs::path bottom = vanishing;
    for (int level = 0; level < 100; ++level)
        bottom /= "d";
    test::write(root_ / bottom / "bottom", "");
    const Told told = walk(root_, [&](const std::string& item) {
        if (item.ends_with("bottom"))
            fs::remove_all(root_ / vanishing);
    });
    EXPECT_THAT(told.items, Contains((bottom / "bottom").native()));
    EXPECT_EQ(std::count_if(told.items.begin(), told.items.end(),
                            [](const std::string& item) { return item.ends_with("/file"); }),
              9);
    EXPECT_THAT(told.unreadable, IsEmpty());
}

} // namespace

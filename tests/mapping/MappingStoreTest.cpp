#include "mapping/MappingStore.h"

#include "mapping/ParameterOrder.h"
#include "platform/files/Files.h"
#include "tests/support/Obstacles.h"
#include "tests/support/OrderFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#if defined(__linux__)
#include <sys/xattr.h>
#endif

namespace {

namespace fs = std::filesystem;
namespace plist = platform::plist;
using namespace mapping;
using test::Path;
using test::read;
using test::Texts;
using test::write;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

const char kHead[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
)";

/// While it lives, this process can open no file more.
class NoMoreFiles {
public:
    NoMoreFiles()
    {
        ::getrlimit(RLIMIT_NOFILE, &former_);
        const rlimit none = {0, former_.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &none);
    }
    NoMoreFiles(const NoMoreFiles&) = delete;
    NoMoreFiles& operator=(const NoMoreFiles&) = delete;
    ~NoMoreFiles() { ::setrlimit(RLIMIT_NOFILE, &former_); }

private:
    rlimit former_ = {};
};

class MappingStore : public testing::Test {
protected:
    // A user who may not write there still gets there.
    MappingStore() { fs::permissions(folder_.path(), fs::perms(0755)); }

    /// Names in the folder of the file.
    std::set<std::string> names() const
    {
        std::set<std::string> found;
        for (const auto& entry : fs::directory_iterator(folder_.path()))
            found.insert(entry.path().filename().native());
        return found;
    }

    static void save(const Path& file, const Texts& order, std::int32_t mode = 0)
    {
        saveMapping(file, mappingOf(order), mode);
    }

    test::TemporaryFolder folder_;
    const Path file_ = folder_ / "CSParameterOrder.plist";
    const Path original_ = folder_ / "CSParameterOrder.plist.original";
    const Path previous_ = folder_ / "CSParameterOrder.plist.prev";
    const Path unreadable_ = folder_ / "CSParameterOrder.plist.unreadable";
};

TEST_F(MappingStore, BackupsStandBesideTheFile)
{
    EXPECT_EQ(backupPath(file_, "original"), original_);
    EXPECT_EQ(backupPath(file_, "prev"), previous_);
    EXPECT_EQ(backupPath("/a b/caf\xE9.x/file", "prev").native(), "/a b/caf\xE9.x/file.prev");
}

// Marking

TEST_F(MappingStore, MarkingAddsTheCatalogueToTheByte)
{
    write(file_, std::string(kHead) + R"(<dict>
	<key>ControlSurfaceParameterOrder</key>
	<array>
		<string>12 Cutoff Freq</string>
		<string>-1</string>
		<string>7 R&amp;D</string>
		<string>12 Cutoff Freq</string>
	</array>
	<key>Version</key>
	<integer>2</integer>
</dict>
</plist>
)");
    markFile(file_);
    EXPECT_EQ(read(file_), std::string(kHead) + R"(<dict>
	<key>ControlSurfaceParameterOrder</key>
	<array>
		<string>12 Cutoff Freq</string>
		<string>-1</string>
		<string>7 R&amp;D</string>
		<string>12 Cutoff Freq</string>
	</array>
	<key>Version</key>
	<integer>2</integer>
	<key>KorvelCSUnique</key>
	<array>
		<string>-1</string>
		<string>12 Cutoff Freq</string>
		<string>7 R&amp;D</string>
	</array>
</dict>
</plist>
)");
    EXPECT_THAT(names(), UnorderedElementsAre("CSParameterOrder.plist"));
}

TEST_F(MappingStore, AMarkedFileIsNeverTouchedAgain)
{
    // Not as we would write it, so that any rewriting would be seen.
    const std::string bytes =
        "<plist><dict><key>KorvelCSUnique</key><array><string>1 Old</string></array>"
        "<key>ControlSurfaceParameterOrder</key><array><string>2 New</string></array></dict></plist>";
    write(file_, bytes);
    struct stat before = {};
    ::stat(file_.c_str(), &before);
    markFile(file_);
    struct stat after = {};
    ::stat(file_.c_str(), &after);
    EXPECT_EQ(read(file_), bytes);
    EXPECT_EQ(after.st_ino, before.st_ino);
}

TEST_F(MappingStore, TheCatalogueStaysAfterASaveWithFewerParameters)
{
    test::writeDictionary(file_, test::orderFile({"1 A", "2 B", "3 C"}));
    markFile(file_);
    save(file_, {"2 B"});
    markFile(file_);
    EXPECT_THAT(test::textsAt(file_, test::kCatalogue), ElementsAre("-1", "1 A", "2 B", "3 C"));
    Texts order(8, "-1");
    order.front() = "2 B";
    EXPECT_EQ(test::textsAt(file_, test::kOrder), order);
}

TEST_F(MappingStore, AFileWithoutAnOrderGetsACatalogueOfMinusOneAlone)
{
    test::writeDictionary(file_, {{"Version", plist::Integer(1)}});
    markFile(file_);
    EXPECT_EQ(test::readDictionary(file_),
              (plist::Dictionary{{"Version", plist::Integer(1)}, {"KorvelCSUnique", plist::Array{"-1"}}}));
}

TEST_F(MappingStore, MarkingMovesWhatIsNoDictionaryOutOfTheWay)
{
    const plist::Value array(plist::Array{"1 A"});
    for (const std::string& bytes :
         {std::string("no property list"), std::string(), plist::write({array, plist::Form::xml}),
          std::string("<plist><dict><key>"), std::string("bplist00")}) {
        write(file_, bytes);
        EXPECT_FALSE(markFile(file_).has_value());
        EXPECT_THAT(names(), UnorderedElementsAre("CSParameterOrder.plist.unreadable")) << bytes;
        EXPECT_EQ(read(unreadable_), bytes) << "in place of the one before";
    }
}

TEST_F(MappingStore, WhatCouldNotBeReadJustNowIsLeftAloneAndLoadsAsAnEmptyOne)
{
    write(file_, "no property list");
    const auto expectLeftAlone = [&] {
        EXPECT_EQ(orderOf(readMapping(file_, std::nullopt).entries), Texts(8, "-1"));
        EXPECT_FALSE(markFile(file_).has_value());
        EXPECT_FALSE(saveMapping(file_, mappingOf({"1 A"}), 0));
    };
    {
        const test::Forbidden forbidden(file_, fs::perms::none);
        expectLeftAlone();
    }
    {
        const NoMoreFiles none;
        expectLeftAlone();
    }
    EXPECT_THAT(names(), UnorderedElementsAre("CSParameterOrder.plist"));
    EXPECT_EQ(read(file_), "no property list");
}

TEST_F(MappingStore, AFileOfMoreThanSixtyFourMebibytesIsLeftAloneAndBackedUp)
{
    constexpr std::uintmax_t kMost = std::uintmax_t{64} << 20;
    write(file_, "no property list");
    fs::resize_file(file_, kMost + 1); // takes no room on disk
    EXPECT_EQ(orderOf(readMapping(file_, std::nullopt).entries), Texts(8, "-1"));
    EXPECT_FALSE(markFile(file_).has_value());
    EXPECT_FALSE(saveMapping(file_, mappingOf({"1 A"}), 0));
    EXPECT_EQ(fs::file_size(file_), kMost + 1);
    EXPECT_EQ(fs::file_size(previous_), kMost + 1);
    fs::resize_file(file_, kMost);
    EXPECT_FALSE(markFile(file_).has_value());
    EXPECT_EQ(fs::file_size(unreadable_), kMost);
    EXPECT_FALSE(fs::exists(file_));
}

TEST_F(MappingStore, WhatIsNoFileIsLeftAlone)
{
    ASSERT_EQ(::mkfifo(file_.c_str(), 0600), 0);
    markFile(file_);
    save(file_, {"1 A"});
    EXPECT_TRUE(fs::is_fifo(file_));
    fs::remove(file_);
    write(file_ / "inside", "kept");
    markFile(file_);
    save(file_, {"1 A"});
    EXPECT_EQ(read(file_ / "inside"), "kept");
    EXPECT_THAT(names(), UnorderedElementsAre("CSParameterOrder.plist"));
}

TEST_F(MappingStore, WhatCannotBeWrittenStaysAsItWas)
{
    test::writeDictionary(file_, test::orderFile({"1 A"}));
    const std::string before = read(file_);
    const auto expectKept = [&] {
        EXPECT_FALSE(markFile(file_).has_value());
        EXPECT_FALSE(saveMapping(file_, mappingOf({"2 B"}), 0));
    };
    {
        const test::FullDisk disk(10);
        expectKept();
    }
    {
        const test::Forbidden readOnly(folder_.path(), fs::perms(0555));
        expectKept();
    }
    EXPECT_THAT(names(), UnorderedElementsAre("CSParameterOrder.plist"));
    EXPECT_EQ(read(file_), before);

    write(file_, "no property list");
    {
        const test::Forbidden readOnly(folder_.path(), fs::perms(0555));
        expectKept();
    }
    EXPECT_THAT(names(), UnorderedElementsAre("CSParameterOrder.plist"));
    EXPECT_EQ(read(file_), "no property list");
}

TEST_F(MappingStore, AFileStaysWhoseMarkedContentCouldNotBeReadBack)
{
    // With dictionary, key and array so many values that those of a catalogue would be too many.
    const plist::Array values(1'000'000 - 3, true);
    test::writeDictionary(file_, {{"Values", values}}, plist::Form::binary);
    const std::string bytes = read(file_);
    EXPECT_FALSE(markFile(file_).has_value());
    EXPECT_TRUE(read(file_) == bytes);
}

TEST_F(MappingStore, MarkingAMissingFileMakesNone)
{
    markFile(file_);
    markFile(folder_ / "missing folder/CSParameterOrder.plist");
    markFile("");
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(MappingStore, MarkingKeepsTheFormAndThePermissionsOfTheFile)
{
    test::writeDictionary(file_, test::orderFile({"1 A"}), plist::Form::binary);
    fs::permissions(file_, fs::perms(0640));
    markFile(file_);
    EXPECT_EQ(read(file_).substr(0, 8), "bplist00");
    EXPECT_EQ(fs::status(file_).permissions(), fs::perms(0640));
    EXPECT_THAT(test::textsAt(file_, test::kCatalogue), ElementsAre("-1", "1 A"));
}

// Reading

TEST_F(MappingStore, ReadsAFileInEitherForm)
{
    for (const plist::Form form : {plist::Form::xml, plist::Form::binary}) {
        plist::Dictionary file = test::orderFile(test::numbered(9));
        file.set(test::kMode, plist::Array{"1"});
        test::writeDictionary(file_, file, form);
        const LoadedMapping loaded = readMapping(file_, std::nullopt);
        EXPECT_EQ(loaded.entries, mappingOf(test::numbered(9)));
        EXPECT_EQ(loaded.totalPages, 2);
        EXPECT_EQ(loaded.mode, 1);
        EXPECT_EQ(readMapping(file_, 0).mode, 0);
    }
}

TEST_F(MappingStore, WhatAMarkedFileHoldsIsKnownUntilItsBytesChange)
{
    for (const bool isMarked : {false, true}) {
        test::writeDictionary(file_, test::orderFile({"1 Gain", "2 Pan"}));
        if (isMarked)
            markFile(file_);
        auto known = markFile(file_);
        ASSERT_TRUE(known.has_value());
        EXPECT_EQ(known->bytes, read(file_));
        EXPECT_EQ(known->document.root, plist::parse(read(file_))->root);

        // Another document for the same bytes tells which of the two was taken.
        known->document.root = test::orderFile({"1 Known"});
        EXPECT_EQ(nameAt(readMapping(file_, std::nullopt, known).entries, 0), "Known");
        save(file_, {"3 Changed"});
        EXPECT_EQ(nameAt(readMapping(file_, std::nullopt, known).entries, 0), "Changed");
        fs::remove(file_);
        EXPECT_EQ(nameAt(readMapping(file_, std::nullopt, known).entries, 0), kEmptyName);
        fs::remove(original_);
        fs::remove(previous_);
    }
    write(file_, "no property list");
    EXPECT_FALSE(markFile(file_).has_value());
}

TEST_F(MappingStore, AFileThatCannotBeReadReadsAsAnEmptyOneAndStays)
{
    for (const char* bytes : {"no property list", "", "<plist><array><string>1 A</string></array></plist>"}) {
        write(file_, bytes);
        const LoadedMapping loaded = readMapping(file_, std::nullopt);
        EXPECT_EQ(orderOf(loaded.entries), Texts(8, "-1"));
        EXPECT_THAT(loaded.parameters, ElementsAre(emptyEntry(0, 0)));
        EXPECT_EQ(loaded.totalPages, 1);
        EXPECT_EQ(loaded.mode, 0);
        EXPECT_EQ(readMapping(file_, 1).mode, 1);
        EXPECT_EQ(read(file_), bytes);
    }
    for (const Path& path : {folder_ / "missing", folder_.path(), Path()})
        EXPECT_EQ(orderOf(readMapping(path, std::nullopt).entries), Texts(8, "-1"));
    EXPECT_THAT(names(), UnorderedElementsAre("CSParameterOrder.plist"));
}

// Saving

TEST_F(MappingStore, ASaveIsToTheByte)
{
    write(file_, std::string(kHead) + R"(<dict>
	<key>Comment</key>
	<string>R&amp;D &lt;b&gt; Écho</string>
	<key>ControlSurfaceParameterOrder</key>
	<array>
		<string>1 Old</string>
	</array>
	<key>KorvelCSUnique</key>
	<array>
		<string>-1</string>
		<string>1 Old</string>
		<string>3 Osc 1 Level</string>
	</array>
	<key>Made</key>
	<date>2014-05-06T07:08:09Z</date>
	<key>Version</key>
	<real>1.5</real>
</dict>
</plist>
)");
    save(file_, {"3 Osc 1 Level", "-1", "7 A & <b> 'c'"}, 1);
    EXPECT_EQ(read(file_), std::string(kHead) + R"(<dict>
	<key>Comment</key>
	<string>R&amp;D &lt;b&gt; Écho</string>
	<key>ControlSurfaceParameterOrder</key>
	<array>
		<string>3 Osc 1 Level</string>
		<string>-1</string>
		<string>7 A &amp; &lt;b&gt; 'c'</string>
		<string>-1</string>
		<string>-1</string>
		<string>-1</string>
		<string>-1</string>
		<string>-1</string>
	</array>
	<key>KorvelCSUnique</key>
	<array>
		<string>-1</string>
		<string>1 Old</string>
		<string>3 Osc 1 Level</string>
	</array>
	<key>Made</key>
	<date>2014-05-06T07:08:09Z</date>
	<key>Version</key>
	<real>1.5</real>
	<key>KorvelCSMode</key>
	<array>
		<string>1</string>
	</array>
</dict>
</plist>
)");
}

TEST_F(MappingStore, TheFirstSaveMakesBothBackupsOfTheFileAsItStood)
{
    const std::string before = "<plist><dict><key>Odd</key><string>layout</string></dict></plist>  ";
    write(file_, before);
    save(file_, {"1 A"});
    EXPECT_EQ(read(original_), before);
    EXPECT_EQ(read(previous_), before);
    EXPECT_NE(read(file_), before);
    EXPECT_THAT(names(), UnorderedElementsAre("CSParameterOrder.plist", "CSParameterOrder.plist.original",
                                              "CSParameterOrder.plist.prev"));
}

TEST_F(MappingStore, TheSecondSaveLeavesTheOriginalAndReplacesThePrevious)
{
    test::writeDictionary(file_, test::orderFile({"1 A"}));
    const std::string start = read(file_);
    save(file_, {"2 B"});
    const std::string first = read(file_);
    save(file_, {"3 C"});
    EXPECT_EQ(read(original_), start);
    EXPECT_EQ(read(previous_), first);
    EXPECT_EQ(test::textsAt(file_, test::kOrder).front(), "3 C");
    const std::string second = read(file_);
    save(file_, {"4 D"});
    EXPECT_EQ(read(original_), start);
    EXPECT_EQ(read(previous_), second);
}

TEST_F(MappingStore, AnOriginalThatIsThereAlreadyIsKept)
{
    test::writeDictionary(file_, test::orderFile({"1 A"}));
    write(original_, "somebody's own");
    save(file_, {"2 B"});
    EXPECT_EQ(read(original_), "somebody's own");
}

TEST_F(MappingStore, UnknownKeysAreKeptInTheirOrderInEitherForm)
{
    for (const plist::Form form : {plist::Form::xml, plist::Form::binary}) {
        plist::Dictionary file;
        file.set("zebra", plist::Integer(-5));
        file.set("ControlSurfaceParameterOrder", plist::Array{"1 A"});
        file.set("apple",
                 plist::Array{true, false, plist::Dictionary{{"b", ""}, {"a", plist::Data{std::string("\0\xff", 2)}}}});
        file.set("KorvelCSMode", plist::Array{"0"});
        file.set("", plist::Real(0.1));
        if (form == plist::Form::binary)
            file.set("reference", plist::Uid{7}); // XML has none
        test::writeDictionary(file_, file, form);
        save(file_, {"2 B"}, 1);
        plist::Dictionary expected = file;
        Texts order(8, "-1");
        order.front() = "2 B";
        expected.set("ControlSurfaceParameterOrder", plist::Array(order.begin(), order.end()));
        expected.set("KorvelCSMode", plist::Array{"1"});
        EXPECT_EQ(test::readDictionary(file_), expected);
        EXPECT_EQ(read(file_).starts_with("bplist00"), form == plist::Form::binary);
    }
}

TEST_F(MappingStore, SavingTwiceWritesTheSameBytes)
{
    for (const plist::Form form : {plist::Form::xml, plist::Form::binary}) {
        test::writeDictionary(file_, test::orderFile({"1 A"}), form);
        save(file_, {"2 B"});
        const std::string first = read(file_);
        save(file_, {"2 B"});
        EXPECT_EQ(read(file_), first);
        EXPECT_EQ(read(previous_), first);
    }
}

TEST_F(MappingStore, WhatIsNoDictionaryIsBackedUpThenMovedOutOfTheWay)
{
    write(file_, "no property list");
    write(unreadable_, "of another time");
    EXPECT_FALSE(saveMapping(file_, mappingOf({"1 A"}), 0));
    for (const Path& path : {original_, previous_, unreadable_})
        EXPECT_EQ(read(path), "no property list") << path;
    EXPECT_FALSE(fs::exists(file_));
}

TEST_F(MappingStore, SavingAMissingFileMakesNone)
{
    EXPECT_FALSE(saveMapping(file_, mappingOf({"1 A"}), 0));
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(MappingStore, SavingAMissingFileLeavesItsBackups)
{
    write(original_, "the original");
    write(previous_, "the one before");
    save(file_, {"1 A"});
    EXPECT_EQ(read(original_), "the original");
    EXPECT_EQ(read(previous_), "the one before");
    EXPECT_FALSE(fs::exists(file_));
}

TEST_F(MappingStore, ABackupThatCannotBeMadeStaysAsItWas)
{
    test::writeDictionary(file_, test::orderFile(test::numbered(300)));
    write(previous_, "the one before");
    {
        const test::FullDisk disk(2000); // there is room for the mapping of eight
        EXPECT_TRUE(saveMapping(file_, mappingOf({"1 A"}), 0));
    }
    EXPECT_EQ(read(previous_), "the one before");
    EXPECT_FALSE(fs::exists(original_));
}

TEST_F(MappingStore, SavingKeepsThePermissionsOfTheFileInItAndInItsBackups)
{
    for (const unsigned mode : {0644u, 0600u, 0664u, 0755u}) {
        test::writeDictionary(file_, test::orderFile({"1 A"}));
        fs::permissions(file_, fs::perms(mode));
        save(file_, {"2 B"});
        for (const Path& path : {file_, original_, previous_})
            EXPECT_EQ(fs::status(path).permissions(), fs::perms(mode)) << path;
        fs::remove(original_);
    }
}

#if defined(__linux__)
TEST_F(MappingStore, MarkingSavingAndRecallKeepExtendedAttributes)
{
    test::writeDictionary(file_, test::orderFile({"1 A"}));
    if (::setxattr(file_.c_str(), "user.origin", "here", 4, 0) != 0)
        GTEST_SKIP() << "the file system knows none";
    markFile(file_);
    save(file_, {"2 B"});
    recallBackup(file_, "original");
    for (const Path& path : {file_, original_, previous_}) {
        char bytes[10];
        EXPECT_EQ(::getxattr(path.c_str(), "user.origin", bytes, sizeof bytes), 4) << path;
    }
}
#endif

TEST_F(MappingStore, ALinkIsFollowedAndStays)
{
    const Path target = folder_ / "elsewhere/target";
    test::writeDictionary(target, test::orderFile({"1 A"}));
    fs::permissions(target, fs::perms(0640));
    fs::create_symlink("elsewhere/target", folder_ / "between");
    fs::create_symlink("between", file_);
    EXPECT_TRUE(markFile(file_).has_value());
    EXPECT_THAT(test::textsAt(target, test::kCatalogue), ElementsAre("-1", "1 A"));
    const std::string marked = read(target);
    EXPECT_TRUE(saveMapping(file_, mappingOf({"2 B"}), 0));
    EXPECT_EQ(test::textsAt(target, test::kOrder).front(), "2 B");
    EXPECT_TRUE(recallBackup(file_, "prev"));
    EXPECT_EQ(read(target), marked);
    EXPECT_EQ(fs::read_symlink(file_), "between");
    EXPECT_EQ(fs::read_symlink(folder_ / "between"), "elsewhere/target");
    for (const Path& backup : {original_, previous_}) {
        EXPECT_FALSE(fs::is_symlink(backup));
        EXPECT_EQ(read(backup), marked);
        EXPECT_EQ(fs::status(backup).permissions(), fs::perms(0640));
    }
    EXPECT_EQ(fs::status(target).permissions(), fs::perms(0640));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_ / "elsewhere"), {}), 1);
}

TEST_F(MappingStore, ALinkToNoDictionaryIsMovedOutOfTheWayWithoutItsTarget)
{
    write(folder_ / "target", "no property list");
    fs::create_symlink("target", file_);
    EXPECT_FALSE(markFile(file_).has_value());
    EXPECT_EQ(read(folder_ / "target"), "no property list");
    EXPECT_EQ(read(unreadable_), "no property list");
    EXPECT_FALSE(fs::is_symlink(file_));
}

TEST_F(MappingStore, LinksThatLeadNowhereAreLeftAlone)
{
    for (const char* target : {"missing", "CSParameterOrder.plist"}) {
        fs::create_symlink(target, file_);
        EXPECT_FALSE(markFile(file_).has_value());
        EXPECT_FALSE(saveMapping(file_, mappingOf({"1 A"}), 0));
        EXPECT_EQ(fs::read_symlink(file_), target);
        EXPECT_THAT(names(), UnorderedElementsAre("CSParameterOrder.plist"));
        fs::remove(file_);
    }
}

TEST_F(MappingStore, RecallThroughALinkThatLeadsNowhereMakesItsTarget)
{
    write(previous_, "the one before");
    fs::create_symlink("missing", file_);
    EXPECT_TRUE(recallBackup(file_, "prev"));
    EXPECT_EQ(read(folder_ / "missing"), "the one before");
    EXPECT_TRUE(fs::is_symlink(file_));
    fs::remove(file_);
    fs::create_symlink("CSParameterOrder.plist", file_); // in a circle
    EXPECT_TRUE(recallBackup(file_, "prev"));
    EXPECT_TRUE(fs::is_symlink(file_));
}

TEST_F(MappingStore, ABackupThatIsALinkIsReplacedSoThatNoOtherFileIsChanged)
{
    test::writeDictionary(file_, test::orderFile({"1 A"}));
    const std::string start = read(file_);
    save(file_, {"2 B"});
    const std::string first = read(file_);
    fs::remove(previous_);
    fs::create_symlink(original_, previous_);
    save(file_, {"3 C"});
    EXPECT_EQ(read(original_), start);
    EXPECT_EQ(read(previous_), first);
}

TEST_F(MappingStore, TwoInstancesSavingInTurnNeverMeetAPartOfTheOther)
{
    test::writeDictionary(file_, test::orderFile({"1 A"}));
    const std::string start = read(file_);
    std::string before = start;
    for (int turn = 1; turn <= 6; ++turn) {
        platform::files::PartialFile ours(file_); // that this instance is just making
        ASSERT_TRUE(ours.append("not whole yet"));
        const std::string order = std::to_string(turn) + " Theirs";
        const pid_t other = ::fork();
        ASSERT_GE(other, 0);
        if (other == 0)
            ::_exit(saveMapping(file_, mappingOf({order}), 0) ? 0 : 1);
        int status = 0;
        ASSERT_EQ(::waitpid(other, &status, 0), other);
        EXPECT_EQ(status, 0);
        EXPECT_EQ(names().size(), 4U) << "the part of this one stays";
        EXPECT_EQ(test::textsAt(file_, test::kOrder).front(), order);
        EXPECT_EQ(read(previous_), before);
        before = read(file_);
        EXPECT_TRUE(saveMapping(file_, mappingOf({"7 Ours"}), 0));
        EXPECT_EQ(read(previous_), before);
        before = read(file_);
    }
    EXPECT_EQ(read(original_), start);
    EXPECT_THAT(names(), UnorderedElementsAre("CSParameterOrder.plist", "CSParameterOrder.plist.original",
                                              "CSParameterOrder.plist.prev"));
}

TEST_F(MappingStore, SavesBelowFoldersOfAnyName)
{
    for (const char* name : {"caf\xE9\xFF", "Brindle <b> & Co", "a#b?c%20d",
                             "\xC3\x89"
                             "cho d\xE2\x80\x99\xC3\xA9t\xC3\xA9",
                             " "}) {
        const Path file = folder_ / name / "CSParameterOrder.plist";
        test::writeDictionary(file, test::orderFile({"1 A"}));
        save(file, {"2 B"});
        EXPECT_EQ(test::textsAt(file, test::kOrder).front(), "2 B");
        EXPECT_TRUE(fs::exists(backupPath(file, "original")));
        EXPECT_TRUE(fs::exists(backupPath(file, "prev")));
    }
}

TEST_F(MappingStore, EveryStepClearsWhatAKilledRunLeft)
{
    for (const char* ending : {"", ".original", ".prev"})
        write(folder_ / ("~CSParameterOrder.plist" + std::string(ending) + ".12345-1"), "of a killed run");
    test::writeDictionary(file_, test::orderFile({"1 A"}));
    markFile(file_);
    save(file_, {"2 B"});
    recallBackup(file_, "prev");
    EXPECT_THAT(names(), UnorderedElementsAre("CSParameterOrder.plist", "CSParameterOrder.plist.original",
                                              "CSParameterOrder.plist.prev"));
}

// Recall

TEST_F(MappingStore, RecallPutsEitherBackupInPlaceAndKeepsIt)
{
    test::writeDictionary(file_, test::orderFile({"1 A"}));
    const std::string start = read(file_);
    save(file_, {"2 B"});
    const std::string first = read(file_);
    save(file_, {"3 C"});
    EXPECT_TRUE(recallBackup(file_, "prev"));
    EXPECT_EQ(read(file_), first);
    EXPECT_EQ(read(previous_), first);
    EXPECT_TRUE(recallBackup(file_, "original"));
    EXPECT_EQ(read(file_), start);
    EXPECT_EQ(read(original_), start);
    EXPECT_EQ(read(previous_), first);
}

TEST_F(MappingStore, RecallingThePreviousAndSavingMovesTheRecalledStateThere)
{
    test::writeDictionary(file_, test::orderFile({"1 A"}));
    save(file_, {"2 B"});
    const std::string first = read(file_);
    save(file_, {"3 C"});
    recallBackup(file_, "prev");
    save(file_, {"4 D"});
    EXPECT_EQ(read(previous_), first);
    EXPECT_EQ(test::textsAt(file_, test::kOrder).front(), "4 D");
}

TEST_F(MappingStore, RecallBeforeAnySaveChangesNothing)
{
    write(file_, "whatever it holds");
    for (const char* suffix : {"original", "prev"}) {
        EXPECT_FALSE(recallBackup(file_, suffix));
        EXPECT_EQ(read(file_), "whatever it holds");
    }
    EXPECT_THAT(names(), UnorderedElementsAre("CSParameterOrder.plist"));
}

TEST_F(MappingStore, RecallBringsBackAMissingFile)
{
    test::writeDictionary(file_, test::orderFile({"1 A"}));
    const std::string start = read(file_);
    save(file_, {"2 B"});
    fs::remove(file_);
    EXPECT_TRUE(recallBackup(file_, "original"));
    EXPECT_EQ(read(file_), start);
}

TEST_F(MappingStore, ARecallThatFailsLeavesTheFile)
{
    write(file_, "the file");
    write(previous_, "a backup that the disk has no room for");
    {
        const test::FullDisk disk(10);
        EXPECT_TRUE(recallBackup(file_, "prev"));
    }
    {
        const test::Forbidden forbidden(previous_, fs::perms::none);
        EXPECT_TRUE(recallBackup(file_, "prev"));
    }
    EXPECT_EQ(read(file_), "the file");
    EXPECT_THAT(names(), UnorderedElementsAre("CSParameterOrder.plist", "CSParameterOrder.plist.prev"));
}

TEST_F(MappingStore, RecallBringsBackThePermissionsOfTheBackup)
{
    test::writeDictionary(file_, test::orderFile({"1 A"}));
    fs::permissions(file_, fs::perms(0640));
    save(file_, {"2 B"});
    fs::permissions(file_, fs::perms(0600));
    recallBackup(file_, "original");
    EXPECT_EQ(fs::status(file_).permissions(), fs::perms(0640));
}

} // namespace

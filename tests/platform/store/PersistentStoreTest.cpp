#include "platform/files/Files.h"
#include "platform/store/ManagedObjectModel.h"
#include "platform/store/PersistentStoreCoordinator.h"
#include "tests/support/Obstacles.h"
#include "tests/support/StoreModel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace platform::store;
using testing::HasSubstr;
using testing::StartsWith;

namespace plist = platform::plist;

namespace test {

namespace {

class PersistentStoreTest : public testing::Test {
protected:
    PersistentStoreTest() { writeStoreModel(folder_ / "model"); }

    std::shared_ptr<const ManagedObjectModel> model() const { return ManagedObjectModel::load(folder_ / "model"); }

    /// The code of the error that opening the store's file gives, 0 for none.
    int open() const
    {
        PersistentStoreCoordinator coordinator(model());
        const auto error = coordinator.addStore(file_);
        EXPECT_TRUE(!error || (error->domain == "StoreErrorDomain" && !error->userInfo.localizedFailureReason.empty()));
        return error ? error->code : 0;
    }

    TemporaryFolder folder_;
    Path file_ = folder_ / "some.storedata";
};

const ObjectGraph kObjects = {
    {"Note",
     {{"title", "Tom & <Jérôme>"}, {"count", plist::Integer(-7)}, {"weight", plist::Real(0.1)}, {"done", true}}},
    {"Marker", {}},
    {"Note", {{"picture", plist::Data{std::string("\0\xff", 2)}}}},
};

} // namespace

TEST_F(PersistentStoreTest, AMissingFileBecomesAnEmptyStore)
{
    EXPECT_EQ(open(), 0);
    EXPECT_THAT(read(file_), StartsWith("<?xml"));
    EXPECT_EQ(open(), 0);
}

TEST_F(PersistentStoreTest, ASecondCoordinatorFindsWhatTheFirstSaved)
{
    PersistentStoreCoordinator first(model());
    ASSERT_FALSE(first.addStore(file_));
    ASSERT_FALSE(first.save(kObjects));
    EXPECT_EQ(first.objects(), kObjects);

    PersistentStoreCoordinator second(model());
    ASSERT_FALSE(second.addStore(file_));
    EXPECT_EQ(second.objects(), kObjects);
    EXPECT_THAT(read(file_), StartsWith("<?xml"));
}

TEST_F(PersistentStoreTest, AStoreThatIsALinkStaysOne)
{
    const Path target = file_.parent_path() / "elsewhere.xml";
    std::filesystem::create_symlink(target, file_);
    EXPECT_EQ(open(), kStoreUnreadable) << "what a dangling link names may be on a disk that is away";
    EXPECT_FALSE(std::filesystem::exists(target));

    write(target, "<plist><dict><key>objects</key><array/></dict></plist>");
    PersistentStoreCoordinator coordinator(model());
    ASSERT_FALSE(coordinator.addStore(file_));
    ASSERT_FALSE(coordinator.save(kObjects));
    EXPECT_TRUE(std::filesystem::is_symlink(file_));
    EXPECT_THAT(read(target), HasSubstr("Tom &amp;"));
}

TEST_F(PersistentStoreTest, AStoreThatCannotBeExaminedIsNotReplaced)
{
    const Path folder = file_.parent_path() / "loop";
    std::filesystem::create_symlink(folder, folder); // every look at it fails, and not because nothing is there
    PersistentStoreCoordinator coordinator(model());
    const auto error = coordinator.addStore(folder / "store");
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, kStoreUnreadable);
}

TEST_F(PersistentStoreTest, WhatXmlCannotKeepIsNotSaved)
{
    PersistentStoreCoordinator coordinator(model());
    ASSERT_FALSE(coordinator.addStore(file_));
    ASSERT_FALSE(coordinator.save(kObjects));
    const std::string before = read(file_);
    for (const char* title : {"bell \a", "not UTF-8: \xff", "\xef\xbf\xbf"}) {
        const auto error = coordinator.save({{"Note", {{"title", title}}}});
        ASSERT_TRUE(error) << title;
        EXPECT_EQ(error->code, kStoreUnsuitable);
        EXPECT_EQ(read(file_), before);
        EXPECT_EQ(coordinator.objects(), kObjects);
    }
}

TEST_F(PersistentStoreTest, AStoreThatCannotBeParsedCannotBeOpened)
{
    const std::string intact = "<plist><dict><key>objects</key><array><dict><key>entity</key><string>Note</string>"
                               "<key>attributes</key><dict/></dict></array></dict></plist>";
    write(file_, intact);
    EXPECT_EQ(open(), 0);
    const std::string damaged[] = {
        "",
        "not a store",
        intact.substr(0, intact.size() - 8),
        "<plist><array/></plist>",
        "<plist><dict/></plist>",
        "<plist><dict><key>objects</key><dict/></dict></plist>",
        "<plist><dict><key>objects</key><array><true/></array></dict></plist>",
        "<plist><dict><key>objects</key><array><dict><key>entity</key><string>Note</string></dict></array></dict>"
        "</plist>",
        "<plist><dict><key>objects</key><array><dict><key>entity</key><true/><key>attributes</key><dict/></dict>"
        "</array></dict></plist>",
        "<!DOCTYPE plist [<!ENTITY a \"Note\">]><plist><dict><key>objects</key><array><dict><key>entity</key>"
        "<string>&a;</string><key>attributes</key><dict/></dict></array></dict></plist>",
    };
    for (const std::string& bytes : damaged) {
        write(file_, bytes);
        EXPECT_EQ(open(), kStoreMalformed) << bytes;
        EXPECT_EQ(read(file_), bytes);
    }
}

TEST_F(PersistentStoreTest, ABinaryPropertyListIsNoStore)
{
    write(file_, plist::write({plist::Dictionary{{"objects", plist::Array{}}}, plist::Form::binary}));
    EXPECT_EQ(open(), kStoreMalformed);
}

TEST_F(PersistentStoreTest, ObjectsThatTheModelDoesNotKnowAreRefused)
{
    write(file_, "<plist><dict><key>objects</key><array><dict><key>entity</key><string>Letter</string>"
                 "<key>attributes</key><dict/></dict></array></dict></plist>");
    EXPECT_EQ(open(), kStoreNotDescribed);
}

TEST_F(PersistentStoreTest, WithoutAModelOnlyAnEmptyStoreOpens)
{
    {
        PersistentStoreCoordinator coordinator(nullptr);
        EXPECT_FALSE(coordinator.addStore(file_));
    }
    PersistentStoreCoordinator full(model());
    ASSERT_FALSE(full.addStore(file_));
    ASSERT_FALSE(full.save(kObjects));
    PersistentStoreCoordinator coordinator(nullptr);
    const auto error = coordinator.addStore(file_);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, kStoreNotDescribed);
}

TEST_F(PersistentStoreTest, WhatCannotBeReadOrMadeCannotBeOpened)
{
    std::filesystem::create_directory(file_);
    EXPECT_EQ(open(), kStoreUnreadable);
    file_ = folder_ / "missing folder/some.storedata";
    EXPECT_EQ(open(), kStoreUnwritable);
}

TEST_F(PersistentStoreTest, AFullDiskLeavesTheStoreAsItWas)
{
    PersistentStoreCoordinator coordinator(model());
    ASSERT_FALSE(coordinator.addStore(file_));
    ASSERT_FALSE(coordinator.save(kObjects));
    const std::string before = read(file_);
    const auto names = [this] { return std::distance(std::filesystem::directory_iterator(file_.parent_path()), {}); };
    const auto namesBefore = names();
    {
        const FullDisk disk(1024);
        const auto error = coordinator.save({{"Note", {{"title", std::string(5000, 'x')}}}});
        ASSERT_TRUE(error);
        EXPECT_EQ(error->code, kStoreUnwritable);
        EXPECT_THAT(error->userInfo.localizedDescription, HasSubstr(file_.native()));
    }
    EXPECT_EQ(read(file_), before);
    EXPECT_EQ(names(), namesBefore) << "no part stays";
    EXPECT_EQ(coordinator.objects(), kObjects);
}

TEST_F(PersistentStoreTest, SavingKeepsTheFilesPermissions)
{
    PersistentStoreCoordinator coordinator(model());
    ASSERT_FALSE(coordinator.addStore(file_));
    std::filesystem::permissions(file_, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    ASSERT_FALSE(coordinator.save(kObjects));
    EXPECT_EQ(std::filesystem::status(file_).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

} // namespace test

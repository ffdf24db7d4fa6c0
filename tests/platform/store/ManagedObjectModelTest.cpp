#include "platform/store/ManagedObjectModel.h"
#include "tests/support/StoreModel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using platform::store::ManagedObjectModel;

namespace test {

TEST(ManagedObjectModelTest, KnowsItsEntities)
{
    const TemporaryFolder folder;
    writeStoreModel(folder.path());
    const auto model = ManagedObjectModel::load(folder.path());
    ASSERT_TRUE(model);
    EXPECT_THAT(model->entities, testing::ElementsAre("Marker", "Note"));
}

TEST(ManagedObjectModelTest, WhatIsNoModelIsNotLoaded)
{
    const TemporaryFolder folder;
    EXPECT_FALSE(ManagedObjectModel::load(folder / "missing.momd"));
    for (const char* document : {"", "<plist><string>model</string></plist>", "<plist><dict/></plist>",
                                 "<plist><dict><key>entities</key><array/></dict></plist>"}) {
        write(folder / "Model.plist", document);
        EXPECT_FALSE(ManagedObjectModel::load(folder.path())) << document;
    }
}

} // namespace test

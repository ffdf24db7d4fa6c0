#include "platform/store/ManagedObjectModel.h"
#include "tests/support/StoreModel.h"

#include <gtest/gtest.h>

using platform::store::ManagedObjectModel;

namespace plist = platform::plist;

namespace test {

TEST(ManagedObjectModelTest, AcceptsValuesOfTheAttributesType)
{
    const TemporaryFolder folder;
    writeStoreModel(folder.path());
    const auto model = ManagedObjectModel::load(folder.path());
    ASSERT_TRUE(model);
    EXPECT_TRUE(model->hasEntity("Note"));
    EXPECT_TRUE(model->hasEntity("Marker"));
    EXPECT_FALSE(model->hasEntity("note"));

    const std::pair<const char*, plist::Value> values[] = {
        {"title", "text"}, {"count", platform::plist::Integer(3)}, {"weight", plist::Real(0.5)},
        {"done", true},    {"picture", plist::Data{"\x01"}},
    };
    for (const auto& [attribute, ignored] : values) {
        for (const auto& [fitting, value] : values)
            EXPECT_EQ(model->accepts("Note", attribute, value), attribute == fitting) << attribute << " " << fitting;
    }
    EXPECT_FALSE(model->accepts("Note", "weight", plist::Real(0.5F)));
    EXPECT_FALSE(model->accepts("Note", "colour", "red"));
    EXPECT_FALSE(model->accepts("Marker", "title", "text"));
    EXPECT_FALSE(model->accepts("Nothing", "title", "text"));
    EXPECT_TRUE(model->describes({"Note", {{"title", "text"}, {"count", platform::plist::Integer(3)}}}));
    EXPECT_FALSE(model->describes({"Note", {{"title", "text"}, {"count", "3"}}}));
    EXPECT_FALSE(model->describes({"Nothing", {}}));
}

TEST(ManagedObjectModelTest, WhatIsNoModelIsNotLoaded)
{
    const TemporaryFolder folder;
    EXPECT_FALSE(ManagedObjectModel::load(folder / "missing.momd"));
    const char* const documents[] = {
        "",
        "<plist><string>model</string></plist>",
        "<plist><dict/></plist>",
        "<plist><dict><key>entities</key><array/></dict></plist>",
        "<plist><dict><key>entities</key><dict><key>A</key><true/></dict></dict></plist>",
        "<plist><dict><key>entities</key><dict><key>A</key><dict><key>b</key><true/></dict></dict></dict></plist>",
        "<plist><dict><key>entities</key><dict><key>A</key><dict><key>b</key><string>colour</string></dict></dict></"
        "dict></plist>",
    };
    for (const char* document : documents) {
        write(folder / "Model.plist", document);
        EXPECT_FALSE(ManagedObjectModel::load(folder.path())) << document;
    }
}

} // namespace test

// Much of everything: a library of 200,000 items, a listing as long as one may be, a thousand saves in a row.

#include "tests/support/InMemory.h"
#include "tests/support/ScriptedPeer.h"
#include "tests/support/TestBaseUrl.h"
#include "tests/support/WindowTest.h"
#include "tests/support/WindowlessTest.h"

#include <QApplication>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kIsMemoryMeasured = false; // what is freed is kept back to find who still uses it
#else
constexpr bool kIsMemoryMeasured = true;
#endif

class Load : test::InMemory, public test::WindowlessTest {};

// A library

constexpr int kPlugins = 5000;
constexpr int kFolders = 20000;
constexpr int kItems = 200000;

/// Every folder holds nine files, one in four folders is a plug-in's; the first half lies in Logic's own folder.
void makeLibrary(const fs::path& root)
{
    const fs::path logic = root / "Library/Application Support/Logic/Plug-In Settings";
    const fs::path presets = root / "home/Library/Audio/Presets";
    fs::create_directories(logic);
    fs::create_directories(presets);
    for (int number = 0; number < kFolders; ++number) {
        const bool isMakers = number % 40 == 0;
        const int maker = number / 40 * 40;
        const fs::path above = number < kFolders / 2 ? logic : presets;
        const fs::path folder = isMakers ? above / ("Maker " + std::to_string(maker))
                                         : above / ("Maker " + std::to_string(maker)) / std::to_string(number);
        ASSERT_EQ(::mkdir(folder.c_str(), 0777), 0);
        for (int file = 0; file < kItems / kFolders - 1; ++file) {
            const bool isPlugin = number % 4 == 1 && file == 4;
            const fs::path path = folder / (isPlugin ? "CSParameterOrder.plist" : "Setting " + std::to_string(file));
            ASSERT_EQ(::mknod(path.c_str(), S_IFREG | 0666, 0), 0);
        }
    }
}

TEST_F(Load, TwoHundredThousandItemsAreScannedInOrder)
{
    makeLibrary(home_.path());
    controller_.btnRunCheck();
    const auto list = controller_.myArrayController();
    EXPECT_EQ(list->arrangedCount(), kPlugins);
    EXPECT_EQ(logLines_.size(), static_cast<std::size_t>(kItems));
    EXPECT_EQ(std::set<std::string>(logLines_.begin(), logLines_.end()).size(), logLines_.size());

    // A folder's line comes before those of what it holds, Logic's folder before the presets, rows as their lines.
    std::set<std::string> seen = {home_ / "Library/Application Support/Logic/Plug-In Settings",
                                  home_ / "home/Library/Audio/Presets"};
    bool isAmongPresets = false;
    std::int32_t row = 0;
    for (const std::string& line : logLines_) {
        ASSERT_TRUE(seen.contains(fs::path(line).parent_path())) << line;
        if (!line.ends_with(".plist") && line.find("/Setting ") == line.npos)
            seen.insert(line);
        const bool isPreset = line.find("/Presets/") != line.npos;
        ASSERT_TRUE(isPreset || !isAmongPresets) << line;
        isAmongPresets = isPreset;
        if (line.ends_with("/CSParameterOrder.plist")) {
            ASSERT_EQ(list->arrangedObject(row)->text("fileLocation"), line);
            ++row;
        }
    }
    EXPECT_EQ(row, kPlugins);
}

// Saves

int openDescriptors()
{
    return static_cast<int>(std::distance(fs::directory_iterator("/proc/self/fd"), {}));
}

/// Memory in use, in kibibytes.
long residentMemory()
{
    long pages = 0;
    std::ifstream("/proc/self/statm").ignore(32, ' ') >> pages;
    return pages * ::sysconf(_SC_PAGESIZE) / 1024;
}

TEST_F(Load, AThousandSavesLeakNothing)
{
    if (!fs::exists("/proc/self/statm"))
        GTEST_SKIP() << "the system does not say what a process uses";
    const fs::path file = edit(test::numbered(300));
    const fs::path folder = file.parent_path();
    const std::string marked = test::read(file);
    const auto save = [&](int number) {
        selectParameter(number % 300 + 1);
        controller_.clickControl(number % 8);
        controller_.kvExportToPlist();
        alerts_.clear();
    };

    for (int number = 0; number < 100; ++number)
        save(number);
    const int descriptors = openDescriptors();
    const long memory = residentMemory();
    std::string previous;
    for (int number = 100; number < 1100; ++number) {
        previous = test::read(file);
        save(number);
    }
    EXPECT_EQ(openDescriptors(), descriptors);
    if (kIsMemoryMeasured) {
        EXPECT_LT(residentMemory() - memory, 4096);
    }
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.insert(entry.path().filename());
    EXPECT_EQ(names, (std::set<std::string>{"CSParameterOrder.plist", "CSParameterOrder.plist.original",
                                            "CSParameterOrder.plist.prev"}));
    EXPECT_EQ(test::read(folder / "CSParameterOrder.plist.original"), marked);
    EXPECT_EQ(test::read(folder / "CSParameterOrder.plist.prev"), previous);
    const test::Texts order = test::textsAt(file, test::kOrder);
    EXPECT_EQ(order.size(), 304U);
    // The last eight presses; 1,099 was the last one, on pot 4.
    for (int number = 1092; number < 1100; ++number) {
        const std::string parameter = std::to_string(number % 300 + 1);
        EXPECT_EQ(order[static_cast<std::size_t>(number % 8)], parameter + " Knob " + parameter);
    }
}

// Listings

class LongListing : public test::WindowTest {
protected:
    /// Entries of a hundred bytes and more, until they fill so many bytes to the last one.
    static std::string listingOf(std::size_t bytes, int& entries)
    {
        std::string text = "[";
        text.reserve(bytes);
        for (entries = 0; text.size() + 400 < bytes; ++entries) {
            const std::string number = std::to_string(entries);
            text += R"({"patchID": )" + number + R"(, "fileLocation": "files/)" + number +
                    R"(.plist", "userComments": "comment )" + number + R"(", "user_name": "someone"},)";
        }
        ++entries;
        text += R"({"patchID": "last", "userComments": ")";
        text.append(bytes - text.size() - 3, 'x');
        return text + "\"}]";
    }
    std::int32_t rowsOf(const std::string& listing)
    {
        peer_.play(test::reply(listing));
        click("kv_btn_cloudLibraryDownload");
        QApplication::processEvents();
        return controller().arrayController_downloadList()->arrangedCount();
    }

    test::ScriptedPeer peer_;
};

TEST_F(LongListing, OfThirtyTwoMebibytesIsShownAndALongerOneIsNone)
{
    home_.addPlugin("Maker", "A One", {"0 Cutoff"});
    test::setBaseUrl(peer_.url());
    peer_.play(test::reply("no"));
    launch();
    select("A One");
    constexpr std::size_t kLongest = std::size_t{32} << 20;
    int entries = 0;
    const std::string longest = listingOf(kLongest, entries);
    ASSERT_EQ(longest.size(), kLongest);
    EXPECT_EQ(rowsOf(longest), entries);
    EXPECT_EQ(controller().arrayController_downloadList()->arrangedObject(entries - 1)->text("patchID"), "last");
    EXPECT_EQ(rowsOf(listingOf(kLongest + 1, entries)), 0);
}

// Parameters: what is quadratic takes minutes here.

using ManyParameters = test::WindowTest;

TEST_F(ManyParameters, AHundredThousandLoadSearchAndMove)
{
    const fs::path file = builtIn("Huge");
    test::writeDictionary(file, test::orderFile(test::numbered(100'000)));
    launch();
    select("Huge");
    EXPECT_EQ(text("lab_PageCurrentlyDisplayed"), "Page 1 of 12500");
    typeInto("parameterSearch", "Knob 9999");
    EXPECT_EQ(columnOf("tablePlistOfSelectedPlugin", 1).size(), 20U); // 9999, 19999 to 89999, 99990 to 99999, none
    chooseParameter("Knob 99999");
    pressPot(1);
    click("kvMovePage_Last");
    EXPECT_EQ(text("lab_PageCurrentlyDisplayed"), "Page 12500 of 12500");
    alertsOf([this] { click("kvExportToPlist"); });
    EXPECT_EQ(test::textsAt(file, test::kOrder).at(99'992), "99999 Knob 99999");
}

} // namespace

// Much of everything: a library of 200,000 items, a listing as long as one may be, a thousand saves in a row.

#include "tests/support/FreshState.h"
#include "tests/support/OrderFiles.h"
#include "tests/support/Program.h"
#include "tests/support/ScriptedPeer.h"
#include "tests/support/TemporaryHome.h"
#include "tests/support/TestBaseUrl.h"
#include "tests/trust/Headless.h"
#include "tests/trust/InMemory.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <set>

#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

#if defined(__SANITIZE_ADDRESS__)
constexpr int kPatience = 10;             // as slow as it makes everything
constexpr bool kIsMemoryMeasured = false; // what is freed is kept back to find who still uses it
#else
constexpr int kPatience = 1;
constexpr bool kIsMemoryMeasured = true;
#endif

class Load : public testing::Test {
protected:
    static qint64 millisecondsOf(const std::function<void()>& action)
    {
        QElapsedTimer timer;
        timer.start();
        action();
        return timer.elapsed();
    }
    static void report(const char* what, qint64 number) { std::cout << what << ": " << number << '\n'; }

    const trust::InMemory inMemory_;
};

// A library

constexpr int kPlugins = 5000;
constexpr int kFolders = 20000;
constexpr int kItems = 200000;

/// Every folder holds nine files, one in four folders is a plug-in's; the first half lies in Logic's own folder.
void makeLibrary(const fs::path& root)
{
    const fs::path logic = root / "Application Support/Logic/Plug-In Settings";
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
    const test::TemporaryFolder root;
    report("ms to make the library", millisecondsOf([&] { makeLibrary(root.path()); }));
    test::startAnew();
    trust::Headless program(root.path());
    const qint64 took = millisecondsOf([&] { program.controller.btnRunCheck(); });
    report("ms to scan it", took);
    EXPECT_LT(took, 10000 * kPatience);

    const auto list = program.controller.myArrayController();
    EXPECT_EQ(list->arrangedCount(), kPlugins);
    const auto& lines = program.log.lines;
    EXPECT_EQ(lines.size(), static_cast<std::size_t>(kItems));
    EXPECT_EQ(std::set<std::string>(lines.begin(), lines.end()).size(), lines.size());

    // A folder's line comes before those of what it holds, Logic's folder before the presets, rows as their lines.
    std::set<std::string> seen = {root.path() / "Application Support/Logic/Plug-In Settings",
                                  root.path() / "home/Library/Audio/Presets"};
    bool isAmongPresets = false;
    std::int32_t row = 0;
    for (const std::string& line : lines) {
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
    const test::TemporaryFolder root;
    const fs::path folder = root / "Application Support/Logic/Plug-In Settings/EQ One";
    const fs::path file = folder / "CSParameterOrder.plist";
    test::writeDictionary(file, test::orderFile(test::numbered(300)));
    test::startAnew();
    trust::Headless program(root.path());
    program.controller.btnRunCheck();
    ASSERT_TRUE(program.select("EQ One"));
    const std::string marked = test::read(file);
    const auto parameters = program.controller.arrayControllerPlistSelected();
    const auto save = [&](int number) {
        parameters->setSelectionIndex(number % 300 + 1);
        program.controller.clickControl(number % 8);
        program.controller.kvExportToPlist();
        program.alerts.shown.clear();
    };

    for (int number = 0; number < 100; ++number)
        save(number);
    const int descriptors = openDescriptors();
    const long memory = residentMemory();
    std::string previous;
    const qint64 took = millisecondsOf([&] {
        for (int number = 100; number < 1100; ++number) {
            previous = test::read(file);
            save(number);
        }
    });
    report("ms for 1,000 saves of 300 parameters", took);
    report("KiB more afterwards", residentMemory() - memory);

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

class LongListing : public Load {
protected:
    LongListing()
    {
        support::setBaseUrl(peer_.url());
        home_.addPlugin("Maker", "A One", support::orderFile("0 Cutoff"));
        peer_.play(support::reply("no"));
        program_.start();
        program_.choosePlugin(0);
    }

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
    std::int32_t rows() { return program_.controller.arrayController_downloadList()->arrangedCount(); }
    qint64 browse(const std::string& listing)
    {
        peer_.play(support::reply(listing));
        return millisecondsOf([this] {
            program_.click("kv_btn_cloudLibraryDownload");
            QApplication::processEvents();
        });
    }

    const support::TemporaryHome home_;
    support::ScriptedPeer peer_;
    support::Program program_;
};

TEST_F(LongListing, OfSixteenMebibytesIsShownAndALongerOneIsNone)
{
    constexpr std::size_t kLongest = std::size_t{16} << 20;
    int entries = 0;
    const std::string longest = listingOf(kLongest, entries);
    ASSERT_EQ(longest.size(), kLongest);
    const qint64 took = browse(longest);
    report("entries", entries);
    report("ms until they are shown", took);
    EXPECT_LT(took, 15000 * kPatience);
    EXPECT_EQ(rows(), entries);
    EXPECT_EQ(program_.controller.arrayController_downloadList()->arrangedObject(entries - 1)->text("patchID"), "last");

    browse(listingOf(kLongest + 1, entries));
    EXPECT_EQ(rows(), 0);
}

} // namespace

// A disk that is really full, or nearly so, while every plug-in on it is clicked, saved and recalled.

#include "mapping/MappingFile.h"
#include "mapping/ParameterOrder.h"
#include "platform/plist/PropertyList.h"
#include "tests/support/OrderFiles.h"
#include "tests/trust/DriverRuns.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <sched.h>
#include <sys/mount.h>

namespace test {

namespace {

namespace fs = std::filesystem;

constexpr int kPlugins = 20;
constexpr std::size_t kPage = 4096; ///< of such a disk, which gives away no less

/// A disk of one MiB at a folder, seen by this process and those that it starts.
class SmallDisk {
public:
    explicit SmallDisk(const Path& folder) : folder_(folder)
    {
        isMounted_ = ::unshare(CLONE_NEWNS) == 0 && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                     ::mount("tmpfs", folder.c_str(), "tmpfs", 0, "size=1m") == 0;
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;
    ~SmallDisk()
    {
        if (isMounted_)
            ::umount2(folder_.c_str(), MNT_DETACH);
    }

    bool isMounted() const { return isMounted_; }
    std::size_t room() const { return fs::space(folder_).available; }
    /// Leaves so many bytes.
    void fill(std::size_t left) const
    {
        free();
        std::ofstream(folder_ / "filler", std::ios::binary) << std::string(room() - left, 'x');
        ASSERT_EQ(room(), left);
    }
    void free() const { fs::remove(folder_ / "filler"); }

private:
    Path folder_;
    bool isMounted_;
};

class FullDisk : public testing::Test {
protected:
    FullDisk()
    {
        folder_.put({});
        fs::remove(folder_.path());
    }

    Path settings() const { return folder_.path().parent_path(); }

    /// The plug-ins' files as their host wrote them, each of about a page.
    void writePlugins() const
    {
        for (int plugin = 1; plugin <= kPlugins; ++plugin)
            write(settings() / ("Plug-in " + std::to_string(plugin)) / kFile,
                  orderBytes(numbered(60 + plugin, "Knob of " + std::to_string(plugin))));
    }
    void clickAll() const { EXPECT_TRUE(folder_.run({"everything-everywhere"}).goesOn()); }

    /// Everything in the plug-ins' folders.
    Files files() const
    {
        Files found;
        for (const auto& entry : fs::recursive_directory_iterator(settings())) {
            if (entry.is_regular_file() && entry.path().filename() != "filler")
                found[fs::relative(entry.path(), settings()).native()] = read(entry.path());
        }
        return found;
    }

    /// Whether it is the plug-in's mapping, of which a save changes the first pot only.
    static bool isWhole(const std::string& content, const Files& before, const std::string& name)
    {
        const auto orderIn = [](const std::string& bytes) {
            const auto document = platform::plist::parse(bytes);
            auto order = document ? mapping::orderOf(mapping::loadMapping(*document->root.asDictionary(), 0).entries)
                                  : std::vector<std::string>();
            if (!order.empty())
                order.erase(order.begin());
            return order;
        };
        const auto whole = orderIn(before.at(name.substr(0, name.find('/')) + "/" + kFile));
        return whole.size() >= 60 && orderIn(content) == whole;
    }

    const Folder folder_;
};

TEST_F(FullDisk, KeepsEveryFileOfTwentyPluginsThatAreClicked)
{
    const SmallDisk disk(settings());
    if (!disk.isMounted())
        GTEST_SKIP() << "no disk can be mounted here";
    writePlugins();
    const Files before = files();
    ASSERT_EQ(before.size(), kPlugins);
    disk.fill(0);
    clickAll();
    EXPECT_EQ(files(), before);

    disk.free();
    clickAll();
    const Files after = files();
    EXPECT_EQ(after.size(), std::size_t{4} * kPlugins) << "a file, its two backups and a chart each";

    for (std::size_t left = kPage; left <= 10 * kPage; left += kPage) {
        SCOPED_TRACE(std::to_string(left) + " bytes left");
        for (const auto& [name, content] : after)
            fs::remove(settings() / name);
        writePlugins();
        disk.fill(left);
        clickAll();
        const Files found = files();
        for (const auto& [name, content] : before)
            EXPECT_TRUE(found.contains(name)) << name;
        for (const auto& [name, content] : found)
            EXPECT_TRUE(name.ends_with(".html") ? content.ends_with("</html>") : isWhole(content, before, name))
                << name;
    }
}

} // namespace

} // namespace test

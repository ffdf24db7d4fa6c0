// The program itself, started as the user starts it, and what the system may do to it.

#include "mapping/Drafts.h"
#include "tests/support/OrderFiles.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TemporaryHome.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace test {

namespace {

using test::Path;

class ProgramTest : public testing::Test {
protected:
    ~ProgramTest() override
    {
        if (process_ > 0) {
            ::kill(process_, SIGKILL);
            ::waitpid(process_, nullptr, 0);
        }
        closeTerminal();
    }

    Path presets() const { return home_ / "home/Library/Audio/Presets"; }

    /// Starts it; what the shell is to do before.
    void start(const std::string& before = ":")
    {
        openTerminal();
        process_ = ::fork();
        ASSERT_GE(process_, 0);
        if (process_ != 0)
            return;
        for (const int signal : {SIGHUP, SIGINT, SIGTERM}) // whatever started this test
            std::signal(signal, SIG_DFL);
        ::setenv("HOME", (home_ / "home").c_str(), 1);
        ::setenv("CFFIXED_USER_HOME", (home_ / "home").c_str(), 1);
        ::setenv("KV_LOCAL_LIBRARY", (home_ / "Library").c_str(), 1);
        ::setenv("XDG_CONFIG_HOME", (home_ / "config").c_str(), 1);
        ::setenv("XDG_DATA_HOME", (home_ / "data").c_str(), 1);
        ::setenv("XDG_STATE_HOME", (home_ / "state").c_str(), 1);
        ::setenv("XDG_RUNTIME_DIR", home_.path().c_str(), 1);
        ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
        ::dup2(::open(::ptsname(terminal_), O_RDWR | O_NOCTTY), STDERR_FILENO);
        ::execl("/bin/sh", "sh", "-c", (before + "; exec \"$0\"").c_str(), KV_PROGRAM, nullptr);
        ::_exit(127);
    }
    /// What it has written so far.
    const std::string& log()
    {
        char shown[4096];
        for (ssize_t count = 0; (count = ::read(terminal_, shown, sizeof shown)) > 0;)
            log_.append(shown, static_cast<std::size_t>(count));
        return log_;
    }
    void waitForLog(const std::string& text)
    {
        while (log().find(text) == std::string::npos && !hasEnded())
            ::usleep(10'000);
    }
    void send(int signal) const { ::kill(process_, signal); }
    bool hasEnded()
    {
        log(); // or the program would wait for room
        if (process_ > 0 && ::waitpid(process_, &status_, WNOHANG) == process_)
            process_ = 0;
        return process_ == 0;
    }
    /// How it ended, once it has: its exit status, or minus the signal that killed it.
    int exitStatus()
    {
        while (!hasEnded())
            ::usleep(10'000);
        return WIFEXITED(status_) ? WEXITSTATUS(status_) : -WTERMSIG(status_);
    }

    test::TemporaryFolder home_;

private:
    /// The log goes to a terminal on every system.
    void openTerminal()
    {
        log_.clear();
        closeTerminal();
        terminal_ = ::posix_openpt(O_RDWR | O_NOCTTY);
        ASSERT_TRUE(::grantpt(terminal_) == 0 && ::unlockpt(terminal_) == 0);
        ::fcntl(terminal_, F_SETFL, O_NONBLOCK);
        ::fcntl(terminal_, F_SETFD, FD_CLOEXEC);
        otherEnd_ = ::open(::ptsname(terminal_), O_RDWR | O_NOCTTY | O_CLOEXEC); // keeps what an ended program wrote
        termios settings = {};
        ::tcgetattr(otherEnd_, &settings);
        ::cfmakeraw(&settings); // lines end as they were written
        ::tcsetattr(otherEnd_, TCSANOW, &settings);
    }
    void closeTerminal()
    {
        for (int* end : {&terminal_, &otherEnd_}) {
            if (*end >= 0)
                ::close(std::exchange(*end, -1));
        }
    }

    pid_t process_ = 0;
    int terminal_ = -1;
    int otherEnd_ = -1;
    std::string log_;
    int status_ = 0;
};

TEST_F(ProgramTest, EndsWithTheStatusThatTellsOfTheSignal)
{
    const Path file = presets() / "Maker/Synth/CSParameterOrder.plist";
    test::write(file, "");
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        start();
        waitForLog(file.native() + "\n");
        send(signal);
        EXPECT_EQ(exitStatus(), 128 + signal);
    }
}

TEST_F(ProgramTest, DoesToItsEndWhatASignalComesUponAndLogsAllOfIt)
{
    constexpr int kFiles = 3'000;
    for (int file = 0; file < kFiles; ++file)
        test::write(presets() / "Maker" / std::to_string(file), "");
    start();
    waitForLog("Maker/"); // the log's first piece
    send(SIGTERM);
    EXPECT_EQ(exitStatus(), 128 + SIGTERM);
    const std::string lines = log();
    std::size_t files = 0;
    for (std::size_t at = 0; (at = lines.find("/Maker/", at)) != std::string::npos; ++at)
        ++files;
    EXPECT_EQ(files, kFiles);
    EXPECT_EQ(lines.back(), '\n');
}

/// The program on one plug-in, of which a pot is cleared as soon as its window is there.
class DraftOfProgramTest : public ProgramTest {
protected:
    DraftOfProgramTest() { test::writeDictionary(file_, test::orderFile(test::numbered(24))); }

    void startEditing(const std::string& before = "")
    {
        start("export QT_PLUGIN_PATH='" KV_TEST_PLUGINS "' QT_QPA_GENERIC_PLUGINS=kvedit; " + before + ":");
        waitForLog("edited\n");
    }
    Path folder() const { return test::draftsBelow(home_.path()); }
    /// The drafts that another run would find.
    std::vector<mapping::Draft> drafts() const
    {
        std::vector<mapping::Draft> found;
        for (auto& left : mapping::Drafts(folder()).leftOf(file_.native()))
            found.push_back(left.draft);
        return found;
    }
    static test::Texts edited()
    {
        test::Texts order = test::numbered(24);
        order.front() = "-1";
        return order;
    }
    /// Everything in the folder that is no whole draft.
    int unfinished() const
    {
        int count = 0;
        for (const auto& entry : std::filesystem::directory_iterator(folder()))
            count += entry.path().extension() == ".draft" ? 0 : 1;
        return count;
    }

    Path file_ = presets() / "Maker/Synth/CSParameterOrder.plist";
};

TEST_F(DraftOfProgramTest, ASignalLeavesTheEditMadeJustNow)
{
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        startEditing();
        send(signal);
        EXPECT_EQ(exitStatus(), 128 + signal);
        ASSERT_EQ(drafts().size(), 1U);
        EXPECT_EQ(drafts()[0].order, edited());
        std::filesystem::remove_all(folder());
    }
}

TEST_F(DraftOfProgramTest, AKillLeavesAnEditOfTwoSecondsAgo)
{
    startEditing();
    ::usleep(2'000'000);
    EXPECT_TRUE(drafts().empty()) << "it is still being edited";
    send(SIGKILL);
    EXPECT_EQ(exitStatus(), -SIGKILL);
    ASSERT_EQ(drafts().size(), 1U);
    EXPECT_EQ(drafts()[0].order, edited());
    EXPECT_EQ(std::filesystem::status(mapping::Drafts(folder()).leftOf(file_.native())[0].file).permissions(),
              std::filesystem::perms(0600));
}

TEST_F(DraftOfProgramTest, AKillAtAnyTimeLeavesWholeDraftsOnly)
{
    for (int run = 0; run < 4; ++run) {
        startEditing("export KV_PRESS_ON=1; ");
        ::usleep(static_cast<useconds_t>(980'000 + run * 30'000)); // about when the draft is written
        send(SIGKILL);
        EXPECT_EQ(exitStatus(), -SIGKILL);
        const std::size_t kept = drafts().size();
        EXPECT_LE(kept, static_cast<std::size_t>(run + 1));
        if (kept > 0) {
            EXPECT_EQ(drafts()[0].order.front(), "-1");
        }
    }
    EXPECT_GT(drafts().size(), 0U);
    // What the killed ones left unfinished, if anything, goes with the next draft.
    startEditing();
    send(SIGTERM);
    EXPECT_EQ(exitStatus(), 128 + SIGTERM);
    EXPECT_EQ(unfinished(), 0);
}

TEST_F(DraftOfProgramTest, TwoRunningAtATimeKeepTheirOwn)
{
    startEditing();
    ::usleep(1'500'000);
    mapping::Drafts other(folder());
    EXPECT_TRUE(other.keep({file_.native(), test::Texts(8, "7 Other"), 1, 1, 0, 1}));
    EXPECT_TRUE(other.leftOf(file_.native()).empty());
    send(SIGTERM);
    EXPECT_EQ(exitStatus(), 128 + SIGTERM);
    EXPECT_EQ(other.leftOf(file_.native()).size(), 1U);
    other.leave();
    EXPECT_EQ(drafts().size(), 2U);
}

TEST_F(ProgramTest, OutlivesTheTerminalWhenItWasAskedTo)
{
    const Path file = presets() / "Maker/Synth/CSParameterOrder.plist";
    test::write(file, "");
    start("trap '' HUP"); // as nohup does
    waitForLog(file.native() + "\n");
    send(SIGHUP);
    send(SIGTERM);
    EXPECT_EQ(exitStatus(), 128 + SIGTERM);
}

// What it writes first is its log.
TEST_F(ProgramTest, OutlivesALimitOnFileSizes)
{
    test::write(presets() / "Maker/Synth/CSParameterOrder.plist", "");
    start("exec 2>'" + (home_ / "log").native() + "'; ulimit -f 0");
    for (int tenths = 0; tenths < 20 && !hasEnded(); ++tenths)
        ::usleep(100'000);
    EXPECT_FALSE(hasEnded());
    send(SIGTERM);
    EXPECT_EQ(exitStatus(), 128 + SIGTERM);
}

} // namespace

} // namespace test

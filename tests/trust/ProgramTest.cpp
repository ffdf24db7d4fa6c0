// The program itself, started as the user starts it, and what the system may do to it.

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <fcntl.h>
#include <sys/wait.h>
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
    }

    Path presets() const { return home_ / "home/Library/Audio/Presets"; }

    /// Starts it; what the shell is to do before.
    void start(const std::string& before = ":")
    {
        std::filesystem::remove(home_ / "log");
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
        ::setenv("XDG_RUNTIME_DIR", home_.path().c_str(), 1);
        ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
        ::dup2(::open((home_ / "log").c_str(), O_WRONLY | O_CREAT, 0666), STDERR_FILENO);
        ::execl("/bin/sh", "sh", "-c", (before + "; exec \"$0\"").c_str(), KV_PROGRAM, nullptr);
        ::_exit(127);
    }
    std::string log() const { return std::filesystem::exists(home_ / "log") ? test::read(home_ / "log") : ""; }
    void waitForLog(const std::string& text)
    {
        while (log().find(text) == std::string::npos && !hasEnded())
            ::usleep(10'000);
    }
    void send(int signal) const { ::kill(process_, signal); }
    bool hasEnded()
    {
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

private:
    test::TemporaryFolder home_;
    pid_t process_ = 0;
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
    start("ulimit -f 0");
    for (int tenths = 0; tenths < 20 && !hasEnded(); ++tenths)
        ::usleep(100'000);
    EXPECT_FALSE(hasEnded());
    send(SIGTERM);
    EXPECT_EQ(exitStatus(), 128 + SIGTERM);
}

} // namespace

} // namespace test

#include "platform/StreamLog.h"
#include "platform/SystemLog.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using platform::StreamLog;

constexpr std::size_t kBuffer = std::size_t{1} << 16;

// As a shell starts a program, whatever started this one: the log itself has to keep a closed pipe from ending it.
const auto kFormerSigPipe = std::signal(SIGPIPE, SIG_DFL);

struct Ended {
    std::string log;
    int status = 0;
};

/// Runs an action in a process of its own with a log that leads here, and tells what came out and how it ended.
Ended inChild(const std::function<void(int descriptor)>& action)
{
    int ends[2];
    if (::pipe(ends) != 0)
        throw std::runtime_error("no pipe");
    std::fflush(nullptr); // or a child that exits writes it once more
    const pid_t child = ::fork();
    if (child < 0)
        throw std::runtime_error("no process");
    if (child == 0) {
        ::close(ends[0]);
        action(ends[1]);
        ::_exit(0);
    }
    ::close(ends[1]);
    Ended ended;
    char bytes[4096];
    for (ssize_t got = 0; (got = ::read(ends[0], bytes, sizeof bytes)) > 0;)
        ended.log.append(bytes, static_cast<std::size_t>(got));
    ::close(ends[0]);
    ::waitpid(child, &ended.status, 0);
    return ended;
}

class StreamLogTest : public testing::Test {
protected:
    StreamLogTest() : descriptor_(::open(path_.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600)) {}
    ~StreamLogTest() override { ::close(descriptor_); }

    std::string written() const { return test::read(path_); }

    /// What a log writes of these lines.
    std::string logOf(const std::vector<std::string>& lines)
    {
        static_cast<void>(!::ftruncate(descriptor_, 0));
        ::lseek(descriptor_, 0, SEEK_SET);
        StreamLog log(descriptor_);
        for (const std::string& line : lines)
            log.write(line);
        log.flush();
        return written();
    }

    test::TemporaryFolder folder_;
    const test::Path path_ = folder_ / "log.txt";
    int descriptor_;
};

// Lines

TEST_F(StreamLogTest, EveryCallIsOneLine)
{
    EXPECT_EQ(logOf({"first", "", "Error Here", " blanks "}), "first\n\nError Here\n blanks \n");
}

TEST_F(StreamLogTest, ControlCharactersAreEscaped)
{
    struct Row {
        std::string line;
        std::string written;
    };
    const Row rows[] = {
        {"a\nb", "a\\x0ab\n"},
        {"\r\n", "\\x0d\\x0a\n"},
        {"tab\there", "tab\\x09here\n"},
        {"\x1b[31mred", "\\x1b[31mred\n"},
        {"\x7f", "\\x7f\n"},
        {std::string("nul\0nul", 7), "nul\\x00nul\n"},
        {"C:\\x0a", "C:\\x0a\n"},
        {"\xC3\x89"
         "cho \xF0\x9F\x8C\x8A",
         "\xC3\x89"
         "cho \xF0\x9F\x8C\x8A\n"},
        {"caf\xE9\xFF", "caf\xE9\xFF\n"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(logOf({row.line}), row.written);
}

TEST_F(StreamLogTest, EveryOtherByteIsWrittenAsItIs)
{
    std::string line;
    std::string expected;
    for (int byte = 0; byte < 256; ++byte) {
        line += static_cast<char>(byte);
        char escaped[5];
        std::snprintf(escaped, sizeof escaped, "\\x%02x", static_cast<unsigned>(byte));
        expected += byte < 0x20 || byte == 0x7f ? escaped : std::string(1, static_cast<char>(byte));
    }
    EXPECT_EQ(logOf({line}), expected + "\n");
}

TEST_F(StreamLogTest, LinesOfAnyLengthComeWholeAndInOrder)
{
    for (const std::size_t before : {std::size_t{0}, std::size_t{1}, std::size_t{1000}, kBuffer - 2, kBuffer - 1}) {
        for (const std::size_t size :
             {kBuffer - 2, kBuffer - 1, kBuffer, kBuffer + 1, 2 * kBuffer, std::size_t{200'001}}) {
            const std::string first(before, 'a');
            const std::string longLine(size, 'b');
            const std::string last = "the end";
            EXPECT_TRUE(logOf({first, longLine, last}) == first + "\n" + longLine + "\n" + last + "\n")
                << before << " then " << size << " bytes";
        }
    }
}

TEST_F(StreamLogTest, ALongLineOfControlCharactersComesWhole)
{
    std::string expected;
    for (int n = 0; n < 100'000; ++n)
        expected += "\\x01";
    EXPECT_TRUE(logOf({std::string(100'000, '\x01')}) == expected + "\n");
}

// When lines come out

TEST_F(StreamLogTest, LinesAreGatheredUntilFlushed)
{
    StreamLog log(descriptor_);
    log.write("one");
    log.write("two");
    EXPECT_EQ(written(), "");
    log.flush();
    EXPECT_EQ(written(), "one\ntwo\n");
    log.flush();
    log.write("three");
    log.flush();
    EXPECT_EQ(written(), "one\ntwo\nthree\n");
}

TEST_F(StreamLogTest, DestructionWritesWhatIsGatheredAndLeavesTheDescriptorOpen)
{
    {
        StreamLog log(descriptor_);
        log.write("one");
    }
    EXPECT_EQ(written(), "one\n");
    EXPECT_EQ(::write(descriptor_, "still open\n", 11), 11);
    EXPECT_EQ(written(), "one\nstill open\n");
}

TEST_F(StreamLogTest, AFullBufferIsWrittenByItself)
{
    StreamLog log(descriptor_);
    for (std::size_t size = 0; size <= kBuffer; size += 1001)
        log.write(std::string(1000, 'x'));
    EXPECT_GT(written().size(), 60'000u);
}

TEST_F(StreamLogTest, AnExitWritesWhatIsGathered)
{
    const Ended ended = inChild([](int descriptor) {
        StreamLog log(descriptor);
        log.write("first");
        log.write("last words");
        std::exit(3);
    });
    EXPECT_EQ(ended.log, "first\nlast words\n");
    ASSERT_TRUE(WIFEXITED(ended.status));
    EXPECT_EQ(WEXITSTATUS(ended.status), 3);
}

// The system's

TEST(SystemLogTest, WritesToAStandardErrorThatIsATerminal)
{
    const Ended ended = inChild([](int descriptor) {
        const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
        if (terminal < 0 || ::grantpt(terminal) != 0 || ::unlockpt(terminal) != 0)
            ::_exit(2);
        ::dup2(::open(::ptsname(terminal), O_RDWR | O_NOCTTY), STDERR_FILENO);
        const auto log = platform::systemLog("net.kvorvanta.test");
        log->write("Error\nHere");
        log->flush();
        char shown[64];
        const ssize_t count = ::read(terminal, shown, sizeof shown);
        static_cast<void>(::write(descriptor, shown, static_cast<std::size_t>(std::max<ssize_t>(count, 0))) < 0);
    });
    EXPECT_EQ(ended.log, "Error\\x0aHere\r\n");
    EXPECT_EQ(ended.status, 0);
}

TEST(SystemLogTest, AStandardErrorThatIsNoTerminalIsTheLogWhereThereIsNoOther)
{
    const Ended ended = inChild([](int descriptor) {
        ::dup2(descriptor, STDERR_FILENO);
        const auto log = platform::systemLog("net.kvorvanta.test");
        log->write("Error Here");
        log->flush();
    });
#ifdef __APPLE__
    EXPECT_EQ(ended.log, ""); // it is in the unified log
#else
    EXPECT_EQ(ended.log, "Error Here\n");
#endif
}

// The other end

TEST_F(StreamLogTest, ASlowReaderGetsEverything)
{
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    std::string got;
    std::thread reader([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        char bytes[8192];
        for (ssize_t count = 0; (count = ::read(ends[0], bytes, sizeof bytes)) > 0;)
            got.append(bytes, static_cast<std::size_t>(count));
    });
    std::string expected;
    {
        StreamLog log(ends[1]);
        for (int n = 0; n < 20'000; ++n) {
            const std::string line = "line " + std::to_string(n) + std::string(static_cast<std::size_t>(n % 97), '.');
            log.write(line);
            expected += line + "\n";
        }
    }
    ::close(ends[1]);
    reader.join();
    ::close(ends[0]);
    EXPECT_TRUE(got == expected);
}

TEST_F(StreamLogTest, AReaderThatIsGoneDoesNoHarm)
{
    const Ended ended = inChild([](int descriptor) {
        int ends[2];
        if (::pipe(ends) != 0)
            ::_exit(2);
        ::close(ends[0]);
        {
            StreamLog log(ends[1]);
            for (int n = 0; n < 10'000; ++n)
                log.write("nobody reads this line");
            log.flush();
        }
        static_cast<void>(!::write(descriptor, "alive", 5));
    });
    EXPECT_EQ(ended.log, "alive");
    EXPECT_EQ(ended.status, 0);
}

TEST_F(StreamLogTest, AClosedDescriptorDoesNoHarm)
{
    StreamLog log(-1);
    for (int n = 0; n < 10'000; ++n)
        log.write("there is no such descriptor");
    log.flush();
}

} // namespace

#include "platform/StreamLog.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using platform::StreamLog;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

constexpr std::size_t kBuffer = std::size_t{1} << 16;

// As a shell starts a program, whatever started this one: the log itself has to keep a closed pipe from ending it.
const auto kFormerSigPipe = std::signal(SIGPIPE, SIG_DFL);
// And as a shell script starts one in the background: deaf to this.
const auto kFormerSigQuit = std::signal(SIGQUIT, SIG_IGN);

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
        const rlimit core = {0, 0};
        ::setrlimit(RLIMIT_CORE, &core);
        ::dup2(::open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO); // last words that are meant
        [&]() noexcept { action(ends[1]); }();
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

// Ways to die

struct WayToDie {
    const char* name;
    std::function<void()> die;
    int signal; ///< what ends the process; 0 for an exit
    int code = 0;
    bool sanitizersOwn = false; ///< a sanitizer reports this one instead of letting it pass
};

void throwOutOfANoexceptFunction()
{
    throw std::runtime_error("nobody catches this");
}

void writeToNull()
{
    volatile int* volatile nowhere = nullptr;
    *nowhere = 1;
}

int overflowTheStack(int depth)
{
    volatile char room[4096] = {};
    return depth == 0 ? 0 : overflowTheStack(depth + 1) + room[0];
}

class StreamLogDeathTest : public testing::TestWithParam<WayToDie> {};

TEST_P(StreamLogDeathTest, LosesNothing)
{
    const WayToDie& way = GetParam();
    if (kSanitized && way.sanitizersOwn)
        GTEST_SKIP() << "the sanitizer has a handler of its own";
    const Ended ended = inChild([&](int descriptor) {
        StreamLog log(descriptor);
        log.write("first");
        log.write("last words");
        way.die();
    });
    EXPECT_EQ(ended.log, "first\nlast words\n");
    if (way.signal != 0) {
        ASSERT_TRUE(WIFSIGNALED(ended.status)) << ended.status;
        EXPECT_EQ(WTERMSIG(ended.status), way.signal);
    } else {
        ASSERT_TRUE(WIFEXITED(ended.status)) << ended.status;
        EXPECT_EQ(WEXITSTATUS(ended.status), way.code);
    }
}

const WayToDie kWays[] = {
    {"Return", [] {}, 0},
    {"Exit", [] { std::exit(3); }, 0, 3},
    {"Abort", [] { std::abort(); }, SIGABRT},
    {"Terminate", [] { std::terminate(); }, SIGABRT},
    {"UncaughtException", [] { throwOutOfANoexceptFunction(); }, SIGABRT},
    {"UncaughtExceptionOfAThread", [] { std::thread([] { throw 1; }).join(); }, SIGABRT},
    {"WriteToNull", writeToNull, SIGSEGV, 0, true},
    {"Hangup", [] { ::raise(SIGHUP); }, SIGHUP},
    {"Interrupt", [] { ::raise(SIGINT); }, SIGINT},
    {"Term", [] { ::raise(SIGTERM); }, SIGTERM},
    {"StackOverflow", [] { overflowTheStack(1); }, SIGSEGV, 0, true},
    {"SegmentationFault", [] { ::raise(SIGSEGV); }, SIGSEGV, 0, true},
    {"BusError", [] { ::raise(SIGBUS); }, SIGBUS, 0, true},
    {"IllegalInstruction", [] { ::raise(SIGILL); }, SIGILL, 0, true},
    {"ArithmeticError", [] { ::raise(SIGFPE); }, SIGFPE, 0, true},
    {"CpuLimit", [] { ::raise(SIGXCPU); }, SIGXCPU},
    {"FileSizeLimit", [] { ::raise(SIGXFSZ); }, SIGXFSZ},
};

INSTANTIATE_TEST_SUITE_P(Ways, StreamLogDeathTest, testing::ValuesIn(kWays),
                         [](const auto& way) { return std::string(way.param.name); });

TEST_F(StreamLogTest, AFlushBeforeDyingWritesNothingTwice)
{
    const Ended ended = inChild([](int descriptor) {
        StreamLog log(descriptor);
        log.write("once");
        log.flush();
        std::abort();
    });
    EXPECT_EQ(ended.log, "once\n");
}

TEST_F(StreamLogTest, TheLogMadeLastIsTheOneWrittenOnDeath)
{
    const Ended ended = inChild([](int descriptor) {
        auto first = std::make_unique<StreamLog>(::open("/dev/null", O_WRONLY | O_CLOEXEC));
        StreamLog second(descriptor);
        second.write("second");
        first.reset(); // does not take the second one's place
        ::raise(SIGTERM);
    });
    EXPECT_EQ(ended.log, "second\n");
}

TEST_F(StreamLogTest, ASignalThatIsIgnoredStaysIgnored)
{
    const Ended ended = inChild([](int descriptor) {
        StreamLog log(descriptor);
        log.write("one");
        ::raise(SIGQUIT);
        log.write("two");
    });
    EXPECT_EQ(ended.log, "one\ntwo\n");
    EXPECT_EQ(ended.status, 0);
}

// The other end

class SlowReader : public StreamLogTest, public testing::WithParamInterface<bool> {};

TEST_P(SlowReader, GetsEverything)
{
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    if (const bool nonBlocking = GetParam(); nonBlocking)
        ::fcntl(ends[1], F_SETFL, O_NONBLOCK);
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

INSTANTIATE_TEST_SUITE_P(Pipe, SlowReader, testing::Bool(),
                         [](const auto& nonBlocking) { return nonBlocking.param ? "NonBlocking" : "Blocking"; });

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

// Speed

TEST_F(StreamLogTest, HundredsOfThousandsOfLinesCostLittle)
{
    constexpr int kLines = 220'000;
    const std::string path = "/Library/Application Support/Logic/Plug-In Settings/Wendlebrook EQ/Vocals/Lead Vocal ";
    std::string expected;
    for (int n = 0; n < kLines; ++n)
        expected += path + std::to_string(n) + ".pst\n";
    double best = 1e9; // seconds of this process, whatever else the machine is doing
    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(::ftruncate(descriptor_, 0), 0);
        ::lseek(descriptor_, 0, SEEK_SET);
        std::string line;
        const std::clock_t start = std::clock();
        StreamLog log(descriptor_);
        for (int n = 0; n < kLines; ++n) {
            line = path;
            line += std::to_string(n);
            line += ".pst";
            log.write(line);
        }
        log.flush();
        best = std::min(best, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
    }
    EXPECT_TRUE(written() == expected);
    EXPECT_LT(best, kSanitized ? 3.0 : 0.2);
}

} // namespace

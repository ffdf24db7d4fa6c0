#include "platform/TerminationSignals.h"

#include <gtest/gtest.h>

#include <csignal>
#include <functional>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using platform::catchTerminationSignals;
using platform::terminationSignal;

/// How a process of its own ended; without an exit of the action's own, with 0.
int statusOf(const std::function<void()>& action)
{
    const pid_t child = ::fork();
    if (child == 0) {
        for (const int signal : {SIGHUP, SIGINT, SIGTERM}) // whatever started this program
            std::signal(signal, SIG_DFL);
        action();
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return status;
}

bool isReadable(int descriptor)
{
    pollfd readable = {descriptor, POLLIN, 0};
    return ::poll(&readable, 1, 0) == 1;
}

TEST(TerminationSignals, AreNotedInsteadOfEndingTheProcess)
{
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        const int status = statusOf([signal] {
            const int descriptor = catchTerminationSignals();
            const bool isQuiet = !isReadable(descriptor) && terminationSignal() == 0;
            ::raise(signal);
            ::_exit(isQuiet && isReadable(descriptor) && terminationSignal() == signal ? 42 : 1);
        });
        ASSERT_TRUE(WIFEXITED(status)) << signal;
        EXPECT_EQ(WEXITSTATUS(status), 42) << signal;
    }
}

TEST(TerminationSignals, TheFirstOfSeveralCounts)
{
    const int status = statusOf([] {
        catchTerminationSignals();
        ::raise(SIGINT);
        ::raise(SIGTERM);
        ::_exit(terminationSignal());
    });
    EXPECT_EQ(WEXITSTATUS(status), SIGINT);
}

TEST(TerminationSignals, TheSameASecondTimeEndsTheProcess)
{
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        const int status = statusOf([signal] {
            catchTerminationSignals();
            ::raise(signal);
            ::raise(signal);
        });
        ASSERT_TRUE(WIFSIGNALED(status)) << signal;
        EXPECT_EQ(WTERMSIG(status), signal);
    }
}

TEST(TerminationSignals, OnesThatWereIgnoredStayIgnored)
{
    const int status = statusOf([] {
        std::signal(SIGHUP, SIG_IGN);
        const int descriptor = catchTerminationSignals();
        ::raise(SIGHUP);
        ::raise(SIGHUP);
        ::_exit(isReadable(descriptor) || terminationSignal() != 0 ? 1 : 42);
    });
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 42);
}

TEST(TerminationSignals, AreNoBusinessOfOtherPrograms)
{
    const int status = statusOf([] {
        const int descriptor = catchTerminationSignals();
        ::_exit((::fcntl(descriptor, F_GETFD) & FD_CLOEXEC) != 0 ? 42 : 1);
    });
    EXPECT_EQ(WEXITSTATUS(status), 42);
}

} // namespace

#include "platform/TerminationSignals.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <initializer_list>

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace platform {

namespace {

std::atomic<int> theFirst = 0;
int ends[2] = {-1, -1};

extern "C" void noteSignal(int signal)
{
    const int error = errno;
    int none = 0;
    theFirst.compare_exchange_strong(none, signal);
    static_cast<void>(!::write(ends[1], "", 1)); // one byte
    errno = error;
}

/// Sockets and no pipe, since sockets are what event loops on macOS promise to watch.
bool openEnds()
{
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0)
        return false;
    for (const int end : ends) {
        ::fcntl(end, F_SETFD, FD_CLOEXEC);
        ::fcntl(end, F_SETFL, O_NONBLOCK);
    }
    return true;
}

} // namespace

int catchTerminationSignals()
{
    if (ends[0] >= 0 || !openEnds())
        return ends[0];
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        struct sigaction action = {};
        ::sigaction(signal, nullptr, &action);
        if (action.sa_handler == SIG_IGN)
            continue;
        action.sa_handler = noteSignal;
        action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
        sigemptyset(&action.sa_mask);
        ::sigaction(signal, &action, nullptr);
    }
    return ends[0];
}

int terminationSignal()
{
    return theFirst;
}

} // namespace platform

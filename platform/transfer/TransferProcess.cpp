#include "platform/transfer/TransferProcess.h"

#include <cerrno>
#include <csignal>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern "C" char** environ;

namespace platform::transfer {

namespace {

using std::chrono::milliseconds;

constexpr char kEndedUnexpectedly[] = "The transfer ended unexpectedly";
/// By how much the process may be late with a sign of life.
constexpr milliseconds kGrace = std::chrono::seconds(3);

struct Pipe {
    int read = -1;
    int write = -1;
};

void close(int& descriptor)
{
    if (descriptor >= 0)
        ::close(std::exchange(descriptor, -1));
}

/// Above the standard streams, whose numbers the ends get in the process, and unseen by any other one.
int placed(int descriptor)
{
    const int placed = ::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    ::close(descriptor);
    return placed;
}

Pipe makePipe()
{
    int ends[2];
    if (::pipe(ends) != 0)
        return {};
    Pipe pipe;
    pipe.read = placed(ends[0]);
    pipe.write = placed(ends[1]);
    if (pipe.read >= 0 && pipe.write >= 0)
        return pipe;
    close(pipe.read);
    close(pipe.write);
    return {};
}

/// Negative when it could not be started.
pid_t start(const std::filesystem::path& program, int input, int output)
{
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    char* const arguments[] = {const_cast<char*>(program.c_str()), nullptr};
    pid_t process = -1;
    const bool isStarted = ::posix_spawn(&process, program.c_str(), &actions, nullptr, arguments, environ) == 0;
    ::posix_spawn_file_actions_destroy(&actions);
    return isStarted ? process : -1;
}

} // namespace

TransferProcess::TransferProcess(const std::filesystem::path& program)
{
    std::signal(SIGPIPE, SIG_IGN);
    Pipe requests = makePipe();
    Pipe replies = makePipe();
    if (requests.write >= 0 && replies.write >= 0)
        process_ = start(program, requests.read, replies.write);
    close(requests.read);
    close(replies.write);
    requests_ = requests.write;
    replies_ = replies.read;
    if (process_ < 0)
        fail("The transfer could not be started");
}

TransferProcess::~TransferProcess()
{
    close(requests_);
    close(replies_);
    if (process_ < 0)
        return;
    ::kill(process_, SIGKILL); // it has nothing to lose
    while (::waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
    }
}

void TransferProcess::send(const Request& request)
{
    address_ = request.address;
    patience_ = request.stallLimit + kGrace;
    ::fcntl(requests_, F_SETFL, O_NONBLOCK);
    if (outcome_)
        outcome_->address = address_;
    else if (!sendRequest(requests_, request))
        fail(kEndedUnexpectedly);
    heardAt_ = Clock::now();
}

bool TransferProcess::isReadable(milliseconds wait) const
{
    pollfd awaited = {replies_, POLLIN, 0};
    return ::poll(&awaited, 1, static_cast<int>(wait.count())) > 0;
}

void TransferProcess::failIfSilent()
{
    // What has come while nobody listened counts.
    if (!outcome_ && Clock::now() - heardAt_ > patience_ && !isReadable(milliseconds(0)))
        fail("The transfer does not answer");
}

void TransferProcess::receive(const Listener& listener)
{
    if (outcome_)
        return;
    char buffer[65536];
    const ssize_t got = ::read(replies_, buffer, sizeof buffer);
    if (got < 0 && errno == EINTR)
        return;
    if (got <= 0)
        return fail(kEndedUnexpectedly);
    heardAt_ = Clock::now();
    reader_.append({buffer, static_cast<std::size_t>(got)});
    while (const auto message = outcome_ ? std::nullopt : reader_.next())
        take(*message, listener);
    if (reader_.isBroken())
        fail(kEndedUnexpectedly);
}

void TransferProcess::take(const MessageReader::Message& message, const Listener& listener)
{
    switch (message.kind) {
    case MessageReader::Kind::head: {
        auto head = headIn(message.content);
        if (!head)
            return fail(kEndedUnexpectedly);
        address_ = std::move(head->address);
        listener.expected(head->size);
        break;
    }
    case MessageReader::Kind::body:
        if (!listener.body(message.content))
            fail(kNotWritten);
        break;
    case MessageReader::Kind::signOfLife: break;
    case MessageReader::Kind::outcome:
        outcome_ = outcomeIn(message.content);
        if (!outcome_)
            fail(kEndedUnexpectedly);
        break;
    }
}

void TransferProcess::fail(const char* description)
{
    outcome_ = Outcome{false, description, address_};
}

} // namespace platform::transfer

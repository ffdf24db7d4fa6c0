#include "platform/StreamLog.h"

#include "platform/files/Descriptors.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <exception>

#include <unistd.h>

namespace platform {

namespace {

std::atomic<StreamLog*> theDyingLog = nullptr;
std::terminate_handler formerTerminate = nullptr;

constexpr int kFatalSignals[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGABRT, SIGSEGV,
                                 SIGBUS, SIGILL, SIGFPE,  SIGXCPU, SIGXFSZ};

bool isControl(unsigned char byte)
{
    return (byte < 0x20) | (byte == 0x7f);
}

/// Looks at every byte, so that the compiler can look at many at once.
bool hasControls(std::string_view line)
{
    unsigned any = 0;
    for (const char c : line)
        any |= isControl(static_cast<unsigned char>(c));
    return any != 0;
}

void flushDyingLog() noexcept
{
    if (StreamLog* log = theDyingLog.exchange(nullptr))
        log->flushFromSignal();
}

extern "C" void writeLogAndDie(int signal)
{
    flushDyingLog();
    // The handler was reset to the default on entry, so this ends the process the way the signal would have.
    ::raise(signal);
}

void writeLogOnDeath()
{
    static const bool installed = [] {
        std::atexit([] { flushDyingLog(); });
        formerTerminate = std::set_terminate([] {
            flushDyingLog();
            formerTerminate();
        });
        static std::array<char, std::size_t{1} << 16> stack; // the program's own may be what overflowed
        const stack_t ownStack = {stack.data(), 0, stack.size()};
        ::sigaltstack(&ownStack, nullptr);
        for (const int signal : kFatalSignals) {
            struct sigaction action = {};
            if (::sigaction(signal, nullptr, &action) != 0 || action.sa_handler != SIG_DFL)
                continue; // ignored on purpose, or a sanitizer's
            action.sa_handler = writeLogAndDie;
            action.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER | SA_ONSTACK);
            ::sigemptyset(&action.sa_mask);
            ::sigaction(signal, &action, nullptr);
        }
        ::signal(SIGPIPE, SIG_IGN); // a closed log must not end the program
        return true;
    }();
    static_cast<void>(installed);
}

} // namespace

StreamLog::StreamLog(int descriptor) : descriptor_(descriptor)
{
    writeLogOnDeath();
    theDyingLog = this;
}

StreamLog::~StreamLog()
{
    flush();
    StreamLog* self = this;
    theDyingLog.compare_exchange_strong(self, nullptr);
}

void StreamLog::write(std::string_view line)
{
    if (!hasControls(line)) {
        append(line);
        append("\n");
        return;
    }
    static constexpr char kDigits[] = "0123456789abcdef";
    std::size_t start = 0;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const auto byte = static_cast<unsigned char>(line[i]);
        if (!isControl(byte))
            continue;
        append(line.substr(start, i - start));
        const char escaped[] = {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 0xf]};
        append({escaped, sizeof escaped});
        start = i + 1;
    }
    append(line.substr(start));
    append("\n");
}

void StreamLog::append(std::string_view bytes)
{
    if (bytes.size() > buffer_.size() - used_)
        flush();
    if (bytes.size() > buffer_.size()) {
        writeWhole(descriptor_, bytes); // or not at all, when nobody reads the log any more
        return;
    }
    std::memcpy(buffer_.data() + used_, bytes.data(), bytes.size());
    used_ += bytes.size();
}

void StreamLog::flush()
{
    writeWhole(descriptor_, {buffer_.data(), used_});
    used_ = 0;
}

void StreamLog::flushFromSignal() noexcept
{
    writeWhole(descriptor_, {buffer_.data(), used_});
    used_ = 0;
}

} // namespace platform

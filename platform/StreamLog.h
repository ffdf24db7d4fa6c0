#pragma once
// The log as lines on a file descriptor, gathered in a buffer so that hundreds of thousands of lines cost a few hundred
// writes. What is buffered is written when the buffer is full, on flush, when the log is destroyed, at exit, and when
// the process dies of a signal that can be caught or of an exception nobody caught.

#include "platform/Effects.h"

#include <array>
#include <cstddef>

namespace platform {

class StreamLog final : public Log {
public:
    /// `descriptor` stays open at least as long as the log. One log at a time is written when the process dies: the
    /// one made last.
    explicit StreamLog(int descriptor);
    StreamLog(const StreamLog&) = delete;
    StreamLog& operator=(const StreamLog&) = delete;
    ~StreamLog() override;

    /// Control characters are written as \xNN, so that one call is one line.
    void write(std::string_view line) override;
    void flush() override;

    /// Writes what is buffered with calls that are allowed in a signal handler only.
    void flushFromSignal() noexcept;

private:
    void append(std::string_view bytes);

    int descriptor_;
    std::size_t used_ = 0;
    std::array<char, std::size_t{1} << 16> buffer_;
};

} // namespace platform

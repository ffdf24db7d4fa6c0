#pragma once
// The log as lines of a buffered stream, so that hundreds of thousands of lines cost a few hundred writes. What is
// buffered is written when the buffer is full, on flush, when the log is destroyed and at exit. A crash may cost it.

#include "platform/Effects.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

namespace platform {

/// A text with its control characters written as \xNN, so that one call is one line.
std::string asOneLine(std::string_view text);

class StreamLog final : public Log {
public:
    /// Writes to a copy of the descriptor. Without one that can be written the lines go nowhere.
    explicit StreamLog(int descriptor);
    StreamLog(const StreamLog&) = delete;
    StreamLog& operator=(const StreamLog&) = delete;
    ~StreamLog() override;

    void write(std::string_view line) override;
    void flush() override;

private:
    std::array<char, std::size_t{1} << 16> buffer_;
    std::FILE* stream_; ///< none where the descriptor is none
};

} // namespace platform

#pragma once

// What the bytes of a file say, whatever encoding they are in.

#include <string>
#include <string_view>

namespace platform::plist {

// The UTF-8 of a file, without a byte-order mark. The encoding is the one of its mark (UTF-8, UTF-16, UTF-32); without
// a mark it is UTF-16 where one of the first two bytes is zero, else the one that an XML declaration names, else UTF-8.
class DecodedText {
public:
    // Refers to the bytes where they are UTF-8 as they stand.
    explicit DecodedText(std::string_view bytes);
    DecodedText(const DecodedText&) = delete;
    DecodedText& operator=(const DecodedText&) = delete;

    // Well-formed and of at most kMaxTextBytes. Where a byte is none of the encoding, what stands before it; nothing of
    // an encoding that the system does not know, or not fast enough for so many bytes.
    std::string_view text() const { return text_; }
    bool isWhole() const { return isWhole_; }

private:
    std::string converted_;
    std::string_view text_;
    bool isWhole_ = false;
};

} // namespace platform::plist

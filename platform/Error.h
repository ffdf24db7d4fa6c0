#pragma once
// What went wrong, in terms a program can test (domain and code) and in words for the user, with the error beneath it.

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

struct Error;

/// A way out that the user is offered with an error.
struct Recovery {
    std::string option;                            ///< the button's title
    std::function<std::optional<Error>()> attempt; ///< none when the error is overcome, else what stands in the way
};

struct Error {
    struct UserInfo {
        std::string localizedDescription;
        std::string localizedFailureReason;
        std::shared_ptr<const Error> underlyingError = {};
        std::optional<Recovery> recovery = {};
    };

    std::string domain;
    int code = 0;
    UserInfo userInfo;
};

/// Errors of the file system: their code is the system's own error number, or kNoSuchFile.
inline constexpr std::string_view kFileErrorDomain = "FileErrorDomain";
/// Nothing stands at the path that was to be read.
inline constexpr int kNoSuchFile = 260;

} // namespace platform

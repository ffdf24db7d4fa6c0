#pragma once
// A line for each request, in the common log format, without what is secret: of an address only the path is written,
// and of that only what no PIN, name or e-mail address can hide in.

#include <cstddef>
#include <ctime>
#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>

#include <sys/types.h>

namespace community_server {

struct Access {
    std::string address; ///< the client's
    std::string method;
    std::string target; ///< as it was sent, query included
    int status = 0;
    std::size_t bytes = 0; ///< of the reply's body
    std::time_t time = 0;
};

/// The line of a request, with a line feed at its end.
std::string accessLine(const Access& access);

/// Safe to use from several threads.
class AccessLog {
public:
    /// Appends to `file`, "-" being standard output; with an empty path it writes nothing. Throws std::runtime_error
    /// when the file cannot be opened.
    explicit AccessLog(std::filesystem::path file);
    AccessLog(const AccessLog&) = delete;
    AccessLog& operator=(const AccessLog&) = delete;
    ~AccessLog();

    /// Writes the line at once, and to a new file when the old one was moved away or removed.
    void write(const Access& access);

private:
    bool open();
    bool isMovedAway() const;
    void close();

    std::filesystem::path file_;
    std::mutex mutex_;
    int descriptor_ = -1;
};

} // namespace community_server

#pragma once
// What the library answers to a request. A reply of success is given when what it tells is on the disk; every refusal
// is a sentence that the client can show.

#include "tools/community_server/Attempts.h"
#include "tools/community_server/Database.h"
#include "tools/community_server/Quotas.h"
#include "tools/community_server/Workers.h"

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace community_server {

struct Request {
    std::string method; ///< as it was sent; HEAD is answered as GET
    std::string path;   ///< as it was sent, up to the first "?"
    std::string query;  ///< what follows that
    std::string contentType;
    std::string address; ///< of the client; of an IPv6 one, its network of 64 bits
    std::string body;    ///< of uploads alone
};

struct Reply {
    int status = 200;
    std::string body;
    std::string contentType = "text/plain; charset=utf-8";
    std::vector<std::pair<std::string, std::string>> headers = {}; ///< further ones
};

/// Texts for what never reaches the library.
inline constexpr char kTooLarge[] = "The file is too large, so it was not shared. A mapping has at most 1 MiB.";
inline constexpr char kNothingHere[] = "The library has nothing at this address.";
inline constexpr char kTextTooLong[] = "The text is too long. Please shorten it.";
inline constexpr char kBusy[] = "The library is busy. Please try again in a moment.";

struct ServiceSettings {
    std::filesystem::path data;
    Quotas quotas;
    std::string pathPrefix; ///< as in Options
};

class Service {
public:
    /// Opens the library, which has to be up to date.
    explicit Service(ServiceSettings settings);

    using Done = std::function<void(Reply)>;
    /// Answers from another thread, or from within when too many wait. `done` is called once and must not throw.
    void answer(Request request, Done done);
    /// From now on what waits is told that the library is busy, so that the server can end.
    void endSoon() { isEnding_ = true; }

private:
    struct Route;
    static const Route* routeOf(const Request& request);
    Reply safely(const Route& route, Database& database, const Request& request);

    Reply logIn(Database& database, const Request& request);
    Reply createAccount(Database& database, const Request& request);
    Reply takeUpload(Database& database, const Request& request);
    Reply list(Database& database, const Request& request);
    Reply countDownload(Database& database, const Request& request);
    Reply giveFile(Database& database, const Request& request);

    // For people and for what watches the server.
    Reply showPlugins(Database& database, const Request& request);
    Reply showPlugin(Database& database, const Request& request);
    Reply showMapping(Database& database, const Request& request);
    Reply giveStyleSheet(Database& database, const Request& request);
    Reply giveIcon(Database& database, const Request& request);
    Reply tellHealth(Database& database, const Request& request);

    const ServiceSettings settings_;
    std::atomic<bool> isEnding_ = false;
    Attempts attempts_; // of the one thread that looks at PINs
    // What reads does not wait for what writes, nor anything for PINs and pages, which take long.
    Workers reading_;
    Workers writing_;
    Workers pins_;
    Workers browsing_;
};

/// Milliseconds since 1970.
std::int64_t now();

} // namespace community_server

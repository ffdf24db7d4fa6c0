#include "tools/community_server/Service.h"

#include "tools/community_server/Accounts.h"
#include "tools/community_server/Library.h"
#include "tools/community_server/Pins.h"
#include "tools/community_server/Protocol.h"

#include <chrono>
#include <cstdio>
#include <exception>

namespace community_server {

namespace {

constexpr std::size_t kLongestName = 200;
constexpr std::size_t kLongestComments = 4000;
/// Nobody waits longer for a turn: the clients give up after a minute in all.
constexpr std::int64_t kLongestWaitMs = 20'000;

constexpr char kPleaseLogIn[] = "Please log in before you share a mapping.";
constexpr char kFilesPath[] = "/files/";

Reply text(std::string body)
{
    return {200, std::move(body)};
}

} // namespace

struct Service::Route {
    std::string_view method;
    std::string_view path; ///< of everything below it when it ends in a slash
    Workers Service::*workers;
    Reply (Service::*answer)(Database&, const Request&);
};

Service::Service(ServiceSettings settings)
    : settings_(std::move(settings)),
      reading_(settings_.data, 2),
      writing_(settings_.data, 1),
      pins_(settings_.data, 1),
      browsing_(settings_.data, 1)
{}

const Service::Route* Service::routeOf(const Request& request)
{
    static const Route routes[] = {
        {"POST", "/checkuser.php", &Service::pins_, &Service::logIn},
        {"POST", "/checkuserexists.php", &Service::pins_, &Service::createAccount},
        {"POST", "/kv_upload.php", &Service::writing_, &Service::takeUpload},
        {"POST", "/kv_listplists.php", &Service::reading_, &Service::list},
        {"POST", "/kv_downloadreg.php", &Service::writing_, &Service::countDownload},
        {"GET", kFilesPath, &Service::reading_, &Service::giveFile},
        {"GET", "/", &Service::browsing_, &Service::showPlugins},
        {"GET", "/plugin", &Service::browsing_, &Service::showPlugin},
        {"GET", "/mapping", &Service::browsing_, &Service::showMapping},
        {"GET", "/style.css", &Service::browsing_, &Service::giveStyleSheet},
        {"GET", "/icon.svg", &Service::browsing_, &Service::giveIcon},
        {"GET", "/healthz", &Service::reading_, &Service::tellHealth},
    };
    const std::string_view method = request.method == "HEAD" ? "GET" : std::string_view(request.method);
    for (const Route& route : routes)
        if (route.method == method &&
            (route.path.size() > 1 && route.path.ends_with('/') ? request.path.starts_with(route.path)
                                                                : request.path == route.path))
            return &route;
    return nullptr;
}

void Service::answer(Request request, Done done)
{
    const std::string& prefix = settings_.pathPrefix;
    const bool isGet = request.method == "GET" || request.method == "HEAD";
    if (!prefix.empty() && request.path == prefix && isGet) // the pages' addresses are relative to the slash
        return done({308, {}, "text/plain; charset=utf-8", {{"Location", prefix + "/"}}});
    const bool isBelow = request.path.starts_with(prefix + "/");
    request.path.erase(0, prefix.size());
    const Route* route = isBelow ? routeOf(request) : nullptr;
    if (!route)
        return done({404, kNothingHere});
    const std::int64_t asked = now();
    const std::string client = request.address;
    auto job = [this, route, asked, request = std::move(request), done](Database* database) {
        const bool isLate = !database || isEnding_ || now() - asked > kLongestWaitMs;
        done(isLate ? Reply{503, kBusy} : safely(*route, *database, request));
    };
    const bool isPosted = (this->*route->workers).post(client, std::move(job));
    if (!isPosted)
        done({503, kBusy});
}

Reply Service::safely(const Route& route, Database& database, const Request& request)
{
    try {
        return (this->*route.answer)(database, request);
    } catch (const std::exception& problem) {
        // Without the address, which may hold a PIN.
        std::fprintf(stderr, "community_server: %s: %s\n", route.path.data(), problem.what());
        return {503, "The library could not do that just now. Nothing was stored; please try again later."};
    }
}

Reply Service::logIn(Database& database, const Request& request)
{
    const auto [userName, pin] = accountQuery(request.query, "pinCode");
    Accounts accounts(database);
    const auto account = accounts.find(userName);
    const bool isKnownThere = account && accounts.isKnownAt(*account, request.address);
    // As it is shown where it is known, so that no other way to write a name gives further tries.
    const std::string name = account ? account->name : userName.substr(0, kLongestName);
    if (!attempts_.begin(name, request.address, isKnownThere, now()))
        return text("\nNO\n");
    if (!isPin(pin, account ? account->pin : std::string()))
        return text("\nNO\n");
    attempts_.succeeded(name, request.address, isKnownThere); // even where it cannot be noted
    accounts.noteLogIn(*account, pin, request.address, now());
    return text("\nOK\n");
}

Reply Service::createAccount(Database& database, const Request& request)
{
    const auto [userName, email] = accountQuery(request.query, "emailAddr");
    if (!isText(email, 1, kLongestName) || email.find('@') == email.npos)
        return text("Please give an e-mail address.");
    const auto made =
        Accounts(database).create(userName, email, request.address, settings_.quotas.accountsOfAddress, now());
    switch (made.outcome) {
    case Accounts::Outcome::noName:
        return text("Please choose another user name, one of 3 to 32 characters that can be seen.");
    case Accounts::Outcome::taken: return text("The user name " + made.name + " is taken. Please choose another one.");
    case Accounts::Outcome::looksTaken:
        return text("The user name " + made.name + " looks like one that is taken. Please choose another one.");
    case Accounts::Outcome::tooMany:
        return text("Too many accounts were made from your address today. Please try again tomorrow.");
    case Accounts::Outcome::done: break;
    }
    return text("Welcome, " + made.name + "! Your PIN is " + made.pin +
                ". Please write it down: it is not shown again.");
}

Reply Service::takeUpload(Database& database, const Request& request)
{
    const UploadQuery query = uploadQuery(request.query);
    Accounts accounts(database);
    const auto account = accounts.find(query.user);
    if (!account)
        return text(kPleaseLogIn);
    if (!isText(query.plugin, 1, kLongestName) || !isText(query.comments, 0, kLongestComments))
        return text("The name of the plug-in or the comments cannot be stored.");
    const auto file = fileInForm(request.contentType, request.body);
    if (!file)
        return text("There was no file in the upload.");
    if (file->size() > kLargestFile)
        return text(kTooLarge);
    if (!isMapping(*file))
        return text("The file is no mapping, so it was not shared. Save the mapping first.");
    if (!accounts.isLoggedIn(*account, request.address, now()))
        return text(kPleaseLogIn);
    if (account->isBanned)
        return text("The account " + account->name + " may not share mappings. Please ask the library's host.");
    switch (Library(database).share(*account, query.plugin, query.comments, *file, request.address, settings_.quotas,
                                    now())) {
    case Library::Outcome::tooManyOfUser:
        return text("You have shared as many mappings today as the library takes. Please go on tomorrow.");
    case Library::Outcome::tooManyOfAddress:
        return text("Too many mappings were shared from your address today. Please go on tomorrow.");
    case Library::Outcome::deleted:
        return text("The library's host has removed this mapping, so it was not shared again.");
    case Library::Outcome::done: break;
    }
    return text("Thank you, " + account->name + "! Your mapping for " + query.plugin + " is now shared.");
}

Reply Service::list(Database& database, const Request& request)
{
    return {200, Library(database).listing(onlyValue(request.query, "plugin")), "application/json"};
}

Reply Service::countDownload(Database& database, const Request& request)
{
    const auto patchId = patchIdIn(onlyValue(request.query, "patchID"));
    return text(patchId && Library(database).countDownload(*patchId) ? "\nOK\n" : "\nNO\n");
}

Reply Service::giveFile(Database& database, const Request& request)
{
    auto bytes = Library(database).file(request.path.substr(std::string_view(kFilesPath).size()));
    if (!bytes)
        return {404, kNothingHere};
    return {200, std::move(*bytes), "application/octet-stream"};
}

std::int64_t now()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

} // namespace community_server

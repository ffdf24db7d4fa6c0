// A libcurl that is older than the headers or refuses what the program needs: the function below stands before the
// library's. So does, on Linux, one of the system's that looks for a name without end.

#include "platform/files/FileUrl.h"
#include "platform/qt/CompletionGate.h"
#include "platform/qt/CurlHttp.h"
#include "tests/support/Alerts.h"
#include "tests/support/ScriptedPeer.h"
#include "tests/support/TemporaryHome.h"

#include <gtest/gtest.h>

#include <curl/curl.h>

#include <atomic>
#include <chrono>
#include <cstdarg>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <thread>

#include <dlfcn.h>
#include <netdb.h>

namespace {

std::set<CURLoption> refusedOptions;
std::set<CURLoption> options; ///< that were set

} // namespace

#undef curl_easy_setopt
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wvarargs" // the library does the same with this argument
extern "C" CURLcode curl_easy_setopt(CURL* handle, CURLoption option, ...)
{
    va_list arguments;
    va_start(arguments, option);
    void* const value = va_arg(arguments, void*); // what is none is passed as one is
    va_end(arguments);
    options.insert(option);
    if (refusedOptions.contains(option))
        return CURLE_UNKNOWN_OPTION;
    static const auto real =
        reinterpret_cast<CURLcode (*)(CURL*, CURLoption, ...)>(::dlsym(RTLD_NEXT, "curl_easy_setopt"));
    return real(handle, option, value);
}
#pragma GCC diagnostic pop

#ifdef __linux__
static std::atomic<int> endlessLookUps = 0;

extern "C" int getaddrinfo(const char* name, const char* service, const addrinfo* hints, addrinfo** found)
{
    if (name && std::string_view(name) == "endless.invalid") {
        ++endlessLookUps;
        std::this_thread::sleep_for(std::chrono::seconds(3));
        --endlessLookUps;
        return EAI_AGAIN;
    }
    static const auto real = reinterpret_cast<decltype(&getaddrinfo)>(::dlsym(RTLD_NEXT, "getaddrinfo"));
    return real(name, service, hints, found);
}
#endif

namespace platform::qt {

namespace {

using namespace std::chrono_literals;

constexpr char kUnknownOption[] = "An unknown option was passed in to libcurl";
constexpr char kNotHttp[] = "Unsupported protocol";

class Libcurl : public testing::Test {
protected:
    Libcurl() { test::write(secret_, "secret"); }
    ~Libcurl() override { refusedOptions.clear(); }

    std::optional<std::string> post() { return http_.post(peer_.url(), "text/plain", "body"); }
    /// What a download that ends told: its content, or why it failed.
    std::string download(const std::string& address)
    {
        std::optional<std::string> told;
        http_.download(
            address, file_,
            {[&] { told = test::read(file_); }, [&](const DownloadError& error) { told = error.description; }});
        EXPECT_TRUE(test::waitUntil([&] { return told.has_value(); }));
        return told.value_or("");
    }

    const test::TemporaryHome home_;
    const std::filesystem::path file_ = home_.path() / "file";
    const std::filesystem::path secret_ = home_.path() / "secret";
    CompletionGate gate_;
    CurlHttp http_{gate_};
    test::ScriptedPeer peer_;
};

TEST_F(Libcurl, KeepsToHttpWhereTheNewerOptionIsUnknown)
{
#if LIBCURL_VERSION_NUM >= 0x075500
    refusedOptions = {CURLOPT_PROTOCOLS_STR};
#endif
    peer_.play(test::reply("reply"));
    EXPECT_EQ(post(), "reply");
    EXPECT_EQ(download(fileUrl(secret_)), kNotHttp);
    EXPECT_EQ(http_.post(fileUrl(secret_), {}, {}), std::nullopt);
    for (const int status : {301, 302, 303, 307, 308}) {
        peer_.play(test::redirect(status, fileUrl(secret_)));
        EXPECT_EQ(download(peer_.url()), kNotHttp) << status;
        peer_.play(test::redirect(status, fileUrl(secret_)));
        EXPECT_EQ(post(), std::nullopt) << status;
    }
    EXPECT_EQ(peer_.requests().size(), 11u);
}

TEST_F(Libcurl, SendsNothingWhereNoOptionKeepsItToHttp)
{
    refusedOptions = {static_cast<CURLoption>(CURLOPTTYPE_LONG + 181)}; // CURLOPT_PROTOCOLS, without the warning
#if LIBCURL_VERSION_NUM >= 0x075500
    refusedOptions.insert(CURLOPT_PROTOCOLS_STR);
#endif
    EXPECT_EQ(post(), std::nullopt);
    EXPECT_EQ(download(peer_.url()), kUnknownOption);
    EXPECT_EQ(download(fileUrl(secret_)), kUnknownOption);
    EXPECT_TRUE(peer_.requests().empty());
}

/// Those that the program can do without: the first has an older form, the second only saves waiting.
bool isDispensable(CURLoption option)
{
#if LIBCURL_VERSION_NUM >= 0x075700
    return option == CURLOPT_PROTOCOLS_STR || option == CURLOPT_QUICK_EXIT;
#else
    return option == CURLOPT_LASTENTRY;
#endif
}

TEST_F(Libcurl, SendsNothingWhereAnyOptionIsRefused)
{
    for (const bool isPost : {true, false}) {
        options.clear();
        peer_.play(test::reply("reply"));
        EXPECT_EQ(isPost ? post() : download(peer_.url()), "reply");
        EXPECT_GT(options.size(), 10u);
        const std::size_t requests = peer_.requests().size();
        for (const CURLoption option : std::set(options)) {
            if (isDispensable(option))
                continue;
            refusedOptions = {option};
            if (isPost)
                EXPECT_EQ(post(), std::nullopt) << option;
            else
                EXPECT_EQ(download(peer_.url()), kUnknownOption) << option;
        }
        refusedOptions.clear();
        EXPECT_EQ(peer_.requests().size(), requests);
    }
}

TEST_F(Libcurl, FollowsNoRedirectWhereAnOptionIsRefused)
{
    refusedOptions = {CURLOPT_HTTPGET}; // which the POST needs not
    peer_.play(test::redirect(302, "/there"));
    EXPECT_EQ(post(), std::nullopt);
    EXPECT_EQ(peer_.requests().size(), 1u);
}

#if defined(__linux__) && LIBCURL_VERSION_NUM >= 0x075700
TEST_F(Libcurl, DoesNotWaitForANameThatIsLookedUp)
{
    CurlHttp impatient(gate_, {}, {300ms, 300ms, 1000, 1000});
    EXPECT_EQ(impatient.post("http://endless.invalid/", {}, {}), std::nullopt);
    EXPECT_EQ(endlessLookUps, 1);
    EXPECT_TRUE(test::waitUntil([] { return endlessLookUps == 0; }));
}
#endif

} // namespace

} // namespace platform::qt

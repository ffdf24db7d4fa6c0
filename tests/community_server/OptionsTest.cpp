#include "tools/community_server/Options.h"

#include <gtest/gtest.h>

#include <string>
#include <variant>
#include <vector>

namespace {

using namespace community_server;

using Texts = std::vector<std::string>;

Options options(const Texts& arguments, const Texts& environment = {})
{
    const auto read = readOptions(arguments, environment);
    if (const auto* ending = std::get_if<Ending>(&read)) {
        ADD_FAILURE() << ending->text;
        return {};
    }
    return std::get<Options>(read);
}

std::string refusal(const Texts& arguments, const Texts& environment = {})
{
    const auto read = readOptions(arguments, environment);
    const auto* ending = std::get_if<Ending>(&read);
    if (!ending) {
        ADD_FAILURE() << "taken";
        return {};
    }
    EXPECT_EQ(ending->status, 2);
    EXPECT_TRUE(ending->text.ends_with("\nTry \"community_server --help\".\n")) << ending->text;
    return ending->text.substr(0, ending->text.find('\n'));
}

TEST(Options, ServesThisMachineUnlessTold)
{
    const Options read = options({});
    EXPECT_EQ(read.host, "127.0.0.1");
    EXPECT_EQ(read.port, 8765);
    EXPECT_EQ(read.data, "community-data");
    EXPECT_EQ(read.seed, "");
    EXPECT_EQ(read.parent, "");
    EXPECT_EQ(read.pathPrefix, "");
    EXPECT_FALSE(read.isBehindProxy);
    EXPECT_EQ(read.accessLog, "");
}

TEST(Options, AreReadFromFlags)
{
    const Options read = options({"--host", "::1", "--port=0", "--data", "/var/lib/a b", "--seed=seed", "--with-parent",
                                  "42", "--path-prefix", "/library/", "--behind-proxy=yes", "--access-log", "-",
                                  "--uploads-of-user", "1", "--uploads-of-address=2", "--accounts-of-address", "0"});
    EXPECT_EQ(read.host, "::1");
    EXPECT_EQ(read.port, 0);
    EXPECT_EQ(read.data, "/var/lib/a b");
    EXPECT_EQ(read.seed, "seed");
    EXPECT_EQ(read.parent, "42");
    EXPECT_EQ(read.pathPrefix, "/library");
    EXPECT_TRUE(read.isBehindProxy);
    EXPECT_EQ(read.accessLog, "-");
    EXPECT_EQ(read.quotas.uploadsOfUser, 1);
    EXPECT_EQ(read.quotas.uploadsOfAddress, 2);
    EXPECT_EQ(read.quotas.accountsOfAddress, 0);
}

TEST(Options, AreReadFromTheEnvironmentUnlessAFlagIsGiven)
{
    const Texts environment = {"PATH=/bin",          "KV_COMMUNITY_PORT=80",  "KV_COMMUNITY_PATH_PREFIX=/a",
                               "KV_COMMUNITY_HOST=", "KV_COMMUNITY_DATA=a=b", "NOTHING"};
    Options read = options({}, environment);
    EXPECT_EQ(read.host, "127.0.0.1");
    EXPECT_EQ(read.port, 80);
    EXPECT_EQ(read.pathPrefix, "/a");
    EXPECT_EQ(read.data, "a=b");
    read = options({"--port", "81", "--path-prefix", "/"}, environment);
    EXPECT_EQ(read.port, 81);
    EXPECT_EQ(read.pathPrefix, "");
}

TEST(Options, AreRefusedInWords)
{
    const struct {
        Texts arguments;
        const char* says;
    } cases[] = {
        {{"--prot", "1"}, "there is no option \"--prot\"."},
        {{"serve"}, "there is no option \"serve\"."},
        {{"--"}, "there is no option \"--\"."},
        {{""}, "there is no option \"\"."},
        {{"--port"}, "--port needs a value."},
        {{"--port", ""}, "--port has to be a number from 0 to 65535, not \"\"."},
        {{"--port="}, "--port has to be a number from 0 to 65535, not \"\"."},
        {{"--port", "65536"}, "--port has to be a number from 0 to 65535, not \"65536\"."},
        {{"--port", "-1"}, "--port has to be a number from 0 to 65535, not \"-1\"."},
        {{"--port", "80 "}, "--port has to be a number from 0 to 65535, not \"80 \"."},
        {{"--host="}, "--host has to be an address, not \"\"."},
        {{"--behind-proxy", "10.0.0.1"}, "--behind-proxy has to be yes or no, not \"10.0.0.1\"."},
        {{"--data", ""}, "--data has to be a folder, not \"\"."},
        {{"--path-prefix", "library"}, "--path-prefix has to be a path that begins with a slash, not \"library\"."},
        {{"--path-prefix", "/a//b"}, "--path-prefix has to be a path that begins with a slash, not \"/a//b\"."},
        {{"--path-prefix", "/../b"}, "--path-prefix has to be a path that begins with a slash, not \"/../b\"."},
        {{"--path-prefix", "/a b"}, "--path-prefix has to be a path that begins with a slash, not \"/a b\"."},
        {{"--uploads-of-user", "many"}, "--uploads-of-user has to be a number, not \"many\"."},
        {{"--uploads-of-user", "9223372036854775808"},
         "--uploads-of-user has to be a number, not \"9223372036854775808\"."},
        {{"--with-parent", "x"}, "--with-parent has to be a process's number, not \"x\"."},
    };
    for (const auto& each : cases)
        EXPECT_EQ(refusal(each.arguments), std::string("community_server: ") + each.says);
    EXPECT_EQ(refusal({}, {"KV_COMMUNITY_PROT=80"}),
              "community_server: there is no option for the environment's KV_COMMUNITY_PROT.");
    EXPECT_EQ(refusal({}, {"KV_COMMUNITY_PORT=http"}),
              "community_server: KV_COMMUNITY_PORT has to be a number from 0 to 65535, not \"http\".");
}

TEST(Options, OfHelpAndVersionEndWell)
{
    const auto said = [](const char* option) {
        const auto ending = std::get<Ending>(readOptions({option}, {}));
        EXPECT_EQ(ending.status, 0);
        return ending.text;
    };
    EXPECT_EQ(said("--version"), "community_server " KV_VERSION "\n");
    const std::string help = said("--help");
    for (const char* option : {"host", "port", "data", "path-prefix", "behind-proxy", "access-log", "uploads-of-user",
                               "uploads-of-address", "accounts-of-address", "seed", "with-parent", "help", "version"})
        EXPECT_NE(help.find("\n  --" + std::string(option) + " "), std::string::npos) << option;
    for (std::size_t start = 0; start < help.size(); start = help.find('\n', start) + 1)
        EXPECT_LE(help.find('\n', start) - start, 80U);
}

} // namespace

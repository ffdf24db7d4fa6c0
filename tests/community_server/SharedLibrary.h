#pragma once
// A library in a folder of a test's own.

#include "tests/support/OrderFiles.h"
#include "tests/support/TemporaryFolder.h"
#include "tools/community_server/Accounts.h"
#include "tools/community_server/Database.h"
#include "tools/community_server/Library.h"
#include "tools/community_server/Schema.h"
#include "tools/community_server/Service.h"

#include <gtest/gtest.h>

#include <string>

namespace test {

class SharedLibrary : public testing::Test {
protected:
    SharedLibrary() { community_server::bringUpToDate(database_, folder_.path()); }

    /// Makes an account and returns its PIN.
    std::string addAccount(const std::string& name)
    {
        return community_server::Accounts(database_)
            .create(name, name + "@example.org", "127.0.0.1", 1'000'000, community_server::now())
            .pin;
    }
    community_server::Account account(const std::string& name)
    {
        return *community_server::Accounts(database_).find(name);
    }
    bool share(const std::string& user, const std::string& plugin, const std::string& comments = "",
               const Texts& order = {"0 Cutoff", "1 Resonance"})
    {
        return community_server::Library(database_).share(
                   account(user), plugin, comments, orderBytes(order), "127.0.0.1", {1'000'000, 1'000'000, 1'000'000},
                   community_server::now()) == community_server::Library::Outcome::done;
    }

    const TemporaryFolder folder_;
    community_server::Database database_{folder_.path()};
};

} // namespace test

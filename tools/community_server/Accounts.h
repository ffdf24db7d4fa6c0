#pragma once
// Accounts: who may share. Texts are UTF-8, moments milliseconds since 1970, addresses those of clients.

#include "tools/community_server/Database.h"
#include "tools/community_server/Quotas.h"

#include <cstdint>
#include <optional>
#include <string>

namespace community_server {

struct Account {
    std::int64_t id = 0;
    std::string name;
    std::string email;
    std::string pin; ///< as it is kept; empty when nobody can log in
    bool isBanned = false;
    std::optional<std::int64_t> quota; ///< uploads a day; none: the library's
};

class Accounts {
public:
    /// How long an upload is believed after a log-in from the same address.
    static constexpr std::int64_t kLogInLasts = 24LL * 3600 * 1000;

    explicit Accounts(Database& database) : database_(database) {}

    /// The account of a name as it was typed.
    std::optional<Account> find(const std::string& name);

    enum class Outcome { done, noName, taken, looksTaken, tooMany };
    struct Registration {
        Outcome outcome;
        std::string name; ///< as it is shown
        std::string pin;  ///< told once, and not kept
    };
    /// Makes an account. Slow, since it hashes a PIN.
    Registration create(const std::string& name, const std::string& email, const std::string& address,
                        std::int64_t allowedOfAddress, std::int64_t now);
    /// Notes a log-in, whose PIN was right, and hashes the PIN anew where that is due.
    void noteLogIn(const Account& account, const std::string& pin, const std::string& address, std::int64_t now);
    /// Whether the account logged in from the address, at all or lately.
    bool isKnownAt(const Account& account, const std::string& address);
    bool isLoggedIn(const Account& account, const std::string& address, std::int64_t now);

    // For the host. Each is stored when it returns.
    void setBanned(const Account& account, bool isBanned);
    void setQuota(const Account& account, std::optional<std::int64_t> uploadsADay);
    Outcome rename(const Account& account, const std::string& name);
    /// Gives a new PIN, and ends what the old one began.
    std::string resetPin(const Account& account);

private:
    Outcome nameable(const std::string& name, std::int64_t butFor);

    Database& database_;
};

} // namespace community_server

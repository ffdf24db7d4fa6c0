#include "tools/community_server/Accounts.h"

#include "tools/community_server/Pins.h"
#include "tools/community_server/UserName.h"

namespace community_server {

namespace {

/// How long an address is remembered as one from which an account logged in.
constexpr std::int64_t kAddressIsKnown = 90LL * 24 * 3600 * 1000;

Account accountIn(const Statement& row)
{
    Account account;
    account.id = row.integer(0);
    account.name = row.text(1);
    account.email = row.text(2);
    account.pin = row.text(3);
    account.isBanned = row.integer(4) != 0;
    if (!row.isNull(5))
        account.quota = row.integer(5);
    return account;
}

} // namespace

std::optional<Account> Accounts::find(const std::string& name)
{
    // An account of an earlier library may have a name that could not be taken today, and then no key.
    const auto userName = userNameIn(name);
    Statement select(database_,
                     "SELECT id, name, email, pin, banned, quota FROM account WHERE name = ?1 OR nameKey = ?2 "
                     "ORDER BY name = ?1 DESC LIMIT 1",
                     name, userName ? std::optional(userName->key) : std::nullopt);
    return select.step() ? std::optional(accountIn(select)) : std::nullopt;
}

Accounts::Registration Accounts::create(const std::string& name, const std::string& email, const std::string& address,
                                        std::int64_t allowedOfAddress, std::int64_t now)
{
    // Hashing takes too long to keep others from writing meanwhile, and is spared where it would be for nothing.
    const std::string use = "accounts of " + address;
    if (const Outcome outcome = nameable(name, 0); outcome != Outcome::done)
        return {outcome, name, {}};
    if (!hasUseLeft(database_, use, allowedOfAddress, now))
        return {Outcome::tooMany, name, {}};
    const std::string pin = randomPin();
    const std::string kept = hashOfPin(pin);
    const auto userName = userNameIn(name);
    Transaction transaction(database_);
    if (const Outcome outcome = nameable(name, 0); outcome != Outcome::done)
        return {outcome, name, {}};
    if (!countUse(database_, use, allowedOfAddress, now))
        return {Outcome::tooMany, name, {}};
    database_.run("INSERT INTO account (name, nameKey, skeleton, email, pin, created) VALUES (?, ?, ?, ?, ?, ?)",
                  userName->shown, userName->key, userName->skeleton, email, kept, now);
    transaction.commit();
    return {Outcome::done, userName->shown, pin};
}

void Accounts::noteLogIn(const Account& account, const std::string& pin, const std::string& address, std::int64_t now)
{
    const std::string kept = isOutdated(account.pin) ? hashOfPin(pin) : account.pin;
    Transaction transaction(database_);
    // Unless the host gave another one meanwhile.
    database_.run("UPDATE account SET pin = ? WHERE id = ? AND pin = ? AND pin <> ?1", kept, account.id, account.pin);
    database_.run("INSERT INTO login SELECT id, ?, ? FROM account WHERE id = ? AND pin = ? "
                  "ON CONFLICT DO UPDATE SET at = excluded.at",
                  address, now, account.id, kept);
    database_.run("DELETE FROM login WHERE account = ? AND at < ?", account.id, now - kAddressIsKnown);
    transaction.commit();
}

bool Accounts::isKnownAt(const Account& account, const std::string& address)
{
    return isLoggedIn(account, address, 0);
}

bool Accounts::isLoggedIn(const Account& account, const std::string& address, std::int64_t now)
{
    return Statement(database_, "SELECT 1 FROM login WHERE account = ? AND address = ? AND at > ?", account.id, address,
                     now - kLogInLasts)
        .step();
}

void Accounts::setBanned(const Account& account, bool isBanned)
{
    database_.run("UPDATE account SET banned = ? WHERE id = ?", std::int64_t{isBanned}, account.id);
}

void Accounts::setQuota(const Account& account, std::optional<std::int64_t> uploadsADay)
{
    database_.run("UPDATE account SET quota = ? WHERE id = ?", uploadsADay, account.id);
}

Accounts::Outcome Accounts::rename(const Account& account, const std::string& name)
{
    Transaction transaction(database_);
    if (const Outcome outcome = nameable(name, account.id); outcome != Outcome::done)
        return outcome;
    const auto userName = userNameIn(name);
    database_.run("UPDATE account SET name = ?, nameKey = ?, skeleton = ? WHERE id = ?", userName->shown, userName->key,
                  userName->skeleton, account.id);
    transaction.commit();
    return Outcome::done;
}

std::string Accounts::resetPin(const Account& account)
{
    const std::string pin = randomPin();
    const std::string kept = hashOfPin(pin);
    Transaction transaction(database_);
    database_.run("UPDATE account SET pin = ? WHERE id = ?", kept, account.id);
    database_.run("DELETE FROM login WHERE account = ?", account.id);
    transaction.commit();
    return pin;
}

Accounts::Outcome Accounts::nameable(const std::string& name, std::int64_t butFor)
{
    const auto userName = userNameIn(name);
    if (!userName)
        return Outcome::noName;
    Statement select(database_,
                     "SELECT name = ?1 OR nameKey = ?2 FROM account "
                     "WHERE (name = ?1 OR nameKey = ?2 OR skeleton = ?3) AND id <> ?4 ORDER BY 1 DESC LIMIT 1",
                     userName->shown, userName->key, userName->skeleton, butFor);
    if (!select.step())
        return Outcome::done;
    return select.integer(0) != 0 ? Outcome::taken : Outcome::looksTaken;
}

} // namespace community_server

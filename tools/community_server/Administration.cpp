#include "tools/community_server/Administration.h"

#include "tools/community_server/Accounts.h"
#include "tools/community_server/Database.h"
#include "tools/community_server/Library.h"
#include "tools/community_server/Pages.h"
#include "tools/community_server/PlainText.h"
#include "tools/community_server/Protocol.h"
#include "tools/community_server/Schema.h"
#include "tools/community_server/SharedFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace community_server {

namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

/// Where the library lies that the package's service keeps.
constexpr char kDataOfService[] = "/var/lib/kvorvantalogic-community";

struct Admin {
    Database& database;
    std::ostream& out;
    std::ostream& err;
};

std::string shown(std::string_view text, Lines lines = Lines::one)
{
    return withoutDirections(plainText(text, lines));
}

std::string counted(std::int64_t count, const std::string& what)
{
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::int64_t numberOf(Database& database, const char* sql)
{
    Statement select(database, sql);
    return select.step() ? select.integer(0) : 0;
}

int failed(Admin& admin, const std::string& why)
{
    admin.err << "community_admin: " << why << "\n";
    return kAdminFailed;
}

int notUnderstood(std::ostream& err, const std::string& why)
{
    err << "community_admin: " << why << "\nTry \"community_admin --help\".\n";
    return kAdminNotUnderstood;
}

int nothingThere(Admin& admin, const std::string& what)
{
    admin.err << "community_admin: " << what << "\n";
    return kAdminNothingThere;
}

// Mappings

int list(Admin& admin, const Texts& arguments)
{
    std::optional<std::string> plugin, user;
    std::int64_t deleted = 0;
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        const bool hasValue = argument + 1 != arguments.end();
        if (*argument == "--deleted")
            deleted = 1;
        else if (*argument == "--plugin" && hasValue)
            plugin = *++argument;
        else if (*argument == "--user" && hasValue)
            user = *++argument;
        else
            return notUnderstood(admin.err, "list takes --plugin NAME, --user NAME and --deleted.");
    }
    std::optional<std::int64_t> account;
    if (user) {
        const auto found = Accounts(admin.database).find(*user);
        if (!found)
            return nothingThere(admin, "There is no account " + *user + ".");
        account = found->id;
    }
    Statement rows(admin.database,
                   "SELECT patchID, date(uploaded / 1000, 'unixepoch'), downloads, name, plugin FROM mapping "
                   "JOIN account ON account.id = mapping.account WHERE deleted = ?1 AND (?2 IS NULL OR plugin = ?2) "
                   "AND (?3 IS NULL OR account = ?3) ORDER BY uploaded DESC, patchID DESC",
                   deleted, plugin, account);
    admin.out << "ID\tshared\tdownloads\tuser\tplug-in\n";
    while (rows.step())
        admin.out << rows.integer(0) << '\t' << rows.text(1) << '\t' << rows.integer(2) << '\t' << shown(rows.text(3))
                  << '\t' << shown(rows.text(4)) << '\n';
    return kAdminDone;
}

void showChart(Admin& admin, std::string_view file)
{
    const auto chart = pages::chartOf(file, pages::kPagesAlone);
    if (!chart)
        return;
    for (const auto& row : chart->table.rows) {
        admin.out << "Page " << row.front() << ": ";
        for (std::size_t pot = 1; pot < row.size(); ++pot)
            admin.out << (pot > 1 ? " | " : "") << shown(row[pot]);
        admin.out << '\n';
    }
    if (std::cmp_less(chart->table.rows.size(), chart->pages))
        admin.out << "and "
                  << counted(chart->pages - static_cast<std::int64_t>(chart->table.rows.size()), "further page")
                  << '\n';
}

int noMapping(Admin& admin, const std::string& id)
{
    return nothingThere(admin, "There is no mapping " + id + ".");
}

int show(Admin& admin, const Texts& arguments)
{
    const auto id = patchIdIn(arguments[0]);
    Statement row(admin.database,
                  "SELECT plugin, name, datetime(uploaded / 1000, 'unixepoch'), downloads, deleted, fileName, "
                  "length(bytes), comments, bytes FROM mapping JOIN account ON account.id = mapping.account "
                  "LEFT JOIN file USING (hash) WHERE patchID = ?",
                  id.value_or(0));
    if (!id || !row.step())
        return noMapping(admin, arguments[0]);
    admin.out << "Mapping " << *id << (row.integer(4) != 0 ? ", deleted" : "") << "\nPlug-in: " << shown(row.text(0))
              << "\nUser: " << shown(row.text(1)) << "\nShared: " << row.text(2)
              << " UTC\nDownloads: " << row.integer(3) << "\nFile: ";
    if (row.isNull(6))
        admin.out << "lost";
    else
        admin.out << "files/" << row.text(5) << ", " << counted(row.integer(6), "byte");
    admin.out << "\nComments: " << shown(row.text(7), Lines::several) << '\n';
    showChart(admin, row.text(8));
    return kAdminDone;
}

int setDeleted(Admin& admin, const Texts& arguments, bool isDeleted)
{
    int status = kAdminDone;
    for (const std::string& argument : arguments) {
        const auto id = patchIdIn(argument);
        if (id && Library(admin.database).setDeleted(*id, isDeleted))
            admin.out << "Mapping " << *id << (isDeleted ? " is deleted.\n" : " is restored.\n");
        else
            status = noMapping(admin, argument);
    }
    return status;
}

int deleteMappings(Admin& admin, const Texts& arguments)
{
    return setDeleted(admin, arguments, true);
}

int restoreMappings(Admin& admin, const Texts& arguments)
{
    return setDeleted(admin, arguments, false);
}

// Accounts

int users(Admin& admin, const Texts&)
{
    Statement rows(admin.database,
                   "SELECT name, date(created / 1000, 'unixepoch'), (SELECT count(*) FROM mapping WHERE account = "
                   "account.id AND deleted = 0), banned, quota, email, pin FROM account ORDER BY name");
    admin.out << "user\tcreated\tmappings\tstate\tquota\te-mail\n";
    while (rows.step()) {
        const char* state = rows.integer(3) != 0 ? "banned" : rows.isNull(6) ? "cannot log in" : "-";
        admin.out << shown(rows.text(0)) << '\t' << rows.text(1) << '\t' << rows.integer(2) << '\t' << state << '\t'
                  << (rows.isNull(4) ? "default" : std::to_string(rows.integer(4))) << '\t' << shown(rows.text(5))
                  << '\n';
    }
    return kAdminDone;
}

/// Does something with the account that the first argument names.
int withAccount(Admin& admin, const Texts& arguments, const auto& act)
{
    Accounts accounts(admin.database);
    const auto account = accounts.find(arguments[0]);
    if (!account)
        return nothingThere(admin, "There is no account " + arguments[0] + ".");
    return act(accounts, *account);
}

int setBanned(Admin& admin, const Texts& arguments, bool isBanned)
{
    return withAccount(admin, arguments, [&](Accounts& accounts, const Account& account) {
        accounts.setBanned(account, isBanned);
        admin.out << shown(account.name)
                  << (isBanned ? " is banned: it shares nothing more. What it shared stays until it is deleted.\n"
                               : " may share again.\n");
        return kAdminDone;
    });
}

int ban(Admin& admin, const Texts& arguments)
{
    return setBanned(admin, arguments, true);
}

int unban(Admin& admin, const Texts& arguments)
{
    return setBanned(admin, arguments, false);
}

int rename(Admin& admin, const Texts& arguments)
{
    return withAccount(admin, arguments, [&](Accounts& accounts, const Account& account) -> int {
        const std::string& name = arguments[1];
        switch (accounts.rename(account, name)) {
        case Accounts::Outcome::done:
            admin.out << shown(account.name) << " is now called " << shown(name) << ".\n";
            return kAdminDone;
        case Accounts::Outcome::taken: return failed(admin, "The name " + shown(name) + " is taken.");
        case Accounts::Outcome::looksTaken:
            return failed(admin, "The name " + shown(name) + " looks like one that is taken.");
        default: return failed(admin, "A name has 3 to 32 characters that can be seen.");
        }
    });
}

int resetPin(Admin& admin, const Texts& arguments)
{
    return withAccount(admin, arguments, [&](Accounts& accounts, const Account& account) {
        const std::string pin = accounts.resetPin(account);
        admin.out << "The new PIN of " << shown(account.name) << " is " << pin << ". It is not shown again.\n";
        return kAdminDone;
    });
}

int setQuota(Admin& admin, const Texts& arguments)
{
    std::optional<std::int64_t> quota;
    if (const std::string& text = arguments[1]; text != "default") {
        std::int64_t number = -1;
        const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (problem != std::errc() || end != text.data() + text.size() || number < 0)
            return notUnderstood(admin.err, "a quota is a number of uploads in a day, or \"default\".");
        quota = number;
    }
    return withAccount(admin, arguments, [&](Accounts& accounts, const Account& account) {
        accounts.setQuota(account, quota);
        admin.out << shown(account.name) << " may share "
                  << (quota ? counted(*quota, "mapping") + " a day.\n" : "as many mappings a day as others.\n");
        return kAdminDone;
    });
}

// The whole library

int statistics(Admin& admin, const Texts&)
{
    const std::pair<const char*, const char*> lines[] = {
        {"Accounts", "SELECT count(*) FROM account"},
        {"Banned accounts", "SELECT count(*) FROM account WHERE banned <> 0"},
        {"Plug-ins", "SELECT count(DISTINCT plugin) FROM mapping WHERE deleted = 0 AND hash IS NOT NULL"},
        {"Mappings", "SELECT count(*) FROM mapping WHERE deleted = 0 AND hash IS NOT NULL"},
        {"Deleted mappings", "SELECT count(*) FROM mapping WHERE deleted <> 0"},
        {"Downloads", "SELECT sum(downloads) FROM mapping"},
        {"Mappings shared in the last 24 hours",
         "SELECT count(*) FROM mapping WHERE uploaded > (CAST(strftime('%s', 'now') AS INTEGER) - 86400) * 1000"},
        {"Bytes of files", "SELECT sum(length(bytes)) FROM file"},
        {"Bytes of the database", "SELECT page_count * page_size FROM pragma_page_count(), pragma_page_size()"},
    };
    for (const auto& [name, sql] : lines)
        admin.out << name << ": " << numberOf(admin.database, sql) << '\n';
    return kAdminDone;
}

/// A file of nothing that only its owner can read.
bool create(const fs::path& file)
{
    const int descriptor = ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    return descriptor >= 0 && ::close(descriptor) == 0;
}

/// Whether all of a file has reached the drive.
bool flush(const fs::path& file)
{
    const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    const bool isFlushed = descriptor >= 0 && ::fsync(descriptor) == 0;
    if (descriptor >= 0)
        ::close(descriptor);
    return isFlushed;
}

int backUp(Admin& admin, const Texts& arguments)
{
    const fs::path file = arguments[0];
    fs::path part = file;
    part += ".part";
    if (fs::exists(file))
        return failed(admin, file.native() + " exists already; nothing was written.");
    fs::remove(part); // of a backup that was cut off
    try {
        // It holds e-mail addresses and the hashes of PINs.
        if (!create(part))
            throw std::runtime_error("cannot write " + part.native());
        admin.database.run("VACUUM INTO ?", part.native());
        if (!flush(part))
            throw std::runtime_error("cannot flush " + part.native());
        fs::rename(part, file);
    } catch (const std::exception& problem) {
        std::error_code ignored;
        fs::remove(part, ignored);
        return failed(admin, "the backup failed: " + std::string(problem.what()));
    }
    admin.out << "The library is backed up in " << file.native() << ", "
              << counted(static_cast<std::int64_t>(fs::file_size(file)), "byte") << ".\n";
    return kAdminDone;
}

int check(Admin& admin, const Texts&)
{
    std::int64_t problems = 0;
    const auto report = [&](const std::string& problem) {
        admin.out << problem << '\n';
        ++problems;
    };
    Statement integrity(admin.database, "PRAGMA integrity_check");
    while (integrity.step())
        if (integrity.text(0) != "ok")
            report("The database is damaged: " + shown(integrity.text(0)));
    Statement references(admin.database, "PRAGMA foreign_key_check");
    while (references.step())
        report("Row " + std::to_string(references.integer(1)) + " of " + shown(references.text(0)) +
               " refers to nothing.");
    Statement lost(admin.database, "SELECT patchID FROM mapping WHERE hash IS NULL");
    while (lost.step())
        report("Mapping " + std::to_string(lost.integer(0)) + " has lost its file and is not listed.");
    Statement files(admin.database,
                    "SELECT hash, bytes, (SELECT min(patchID) FROM mapping WHERE mapping.hash = file.hash) FROM file");
    std::int64_t count = 0;
    while (files.step()) {
        ++count;
        const std::string mapping = "Mapping " + std::to_string(files.integer(2));
        if (files.isNull(2))
            report("A file of " + counted(static_cast<std::int64_t>(files.text(1).size()), "byte") +
                   " belongs to no mapping.");
        else if (files.text(0) != keyOfFile(files.text(1)))
            report(mapping + " has a file that is not the one which was shared.");
        else if (!isMapping(files.text(1)))
            report(mapping + " has a file that is no mapping.");
    }
    if (problems > 0)
        return failed(admin, counted(problems, "problem") + ".");
    admin.out << "All is well with " << counted(numberOf(admin.database, "SELECT count(*) FROM mapping"), "mapping")
              << " and " << counted(count, "file") << ".\n";
    return kAdminDone;
}

struct Command {
    std::string_view name;
    std::string_view parameters;
    std::string_view help;
    std::size_t fewest;
    std::size_t most;
    int (*run)(Admin&, const Texts&);
};

constexpr std::size_t kAny = 1000;

constexpr Command kCommands[] = {
    {"list", "[--plugin NAME] [--user NAME] [--deleted]", "mappings, newest first", 0, kAny, list},
    {"show", "ID", "a mapping with its comments and its chart", 1, 1, show},
    {"delete", "ID...", "takes mappings out of all listings", 1, kAny, deleteMappings},
    {"restore", "ID...", "takes that back", 1, kAny, restoreMappings},
    {"users", "", "accounts", 0, 0, users},
    {"ban", "NAME", "lets an account share nothing more", 1, 1, ban},
    {"unban", "NAME", "takes that back", 1, 1, unban},
    {"rename", "NAME NEW-NAME", "gives an account another name", 2, 2, rename},
    {"reset-pin", "NAME", "gives an account another PIN, and tells it", 1, 1, resetPin},
    {"quota", "NAME NUMBER|default", "how many mappings it may share in a day", 2, 2, setQuota},
    {"statistics", "", "how much there is", 0, 0, statistics},
    {"backup", "FILE", "copies the whole library into a new file", 1, 1, backUp},
    {"check", "", "looks whether everything is as it should be", 0, 0, check},
};

void help(std::ostream& out)
{
    out << "Usage: community_admin [--data FOLDER] COMMAND [ARGUMENT]...\n"
           "Works on the community library in FOLDER, whether its server runs or not.\n\n";
    for (const Command& command : kCommands) {
        std::string line = "  " + std::string(command.name) + (command.parameters.empty() ? "" : " ");
        line += command.parameters;
        constexpr std::size_t kColumn = 32;
        if (line.size() + 2 > kColumn) {
            out << line << '\n';
            line.clear();
        }
        line.resize(kColumn, ' ');
        out << line << command.help << '\n';
    }
    out << "\nWithout --data the folder is that of the environment's KV_COMMUNITY_DATA, else\n"
        << kDataOfService << ".\n"
        << "Ends with 0 when all was done, 1 when something failed or is not as it should\n"
           "be, 2 when it was not understood, 3 when there is no such mapping or account.\n";
}

fs::path folderIn(const Texts& environment)
{
    constexpr std::string_view kVariable = "KV_COMMUNITY_DATA=";
    for (const std::string& variable : environment)
        if (variable.starts_with(kVariable) && variable.size() > kVariable.size())
            return variable.substr(kVariable.size());
    return kDataOfService;
}

} // namespace

int administer(const Texts& arguments, const Texts& environment, std::ostream& out, std::ostream& err)
{
    fs::path folder = folderIn(environment);
    auto argument = arguments.begin();
    for (; argument != arguments.end() && argument->starts_with("--"); ++argument) {
        if (*argument == "--help") {
            help(out);
            return kAdminDone;
        }
        if (*argument == "--version") {
            out << "community_admin " KV_VERSION "\n";
            return kAdminDone;
        }
        if (argument->starts_with("--data="))
            folder = argument->substr(7);
        else if (*argument == "--data" && argument + 1 != arguments.end())
            folder = *++argument;
        else
            return notUnderstood(err, "there is no option \"" + *argument + "\", or it needs a value.");
    }
    if (argument == arguments.end())
        return notUnderstood(err, "what is to be done?");
    const auto* command = std::ranges::find(kCommands, *argument, &Command::name);
    if (command == std::end(kCommands))
        return notUnderstood(err, "there is no command \"" + *argument + "\".");
    const Texts rest(argument + 1, arguments.end());
    if (rest.size() < command->fewest || rest.size() > command->most)
        return notUnderstood(err, std::string(command->name) + " takes " +
                                      (command->parameters.empty() ? "nothing" : std::string(command->parameters)) +
                                      ".");
    try {
        // Opening it would make one.
        if (!fs::exists(folder / "library.sqlite"))
            throw std::runtime_error("there is no library in " + folder.native() + ".");
        Database database(folder);
        if (!isUpToDate(database))
            throw std::runtime_error("the library is of another version; start its server of this version once.");
        Admin admin{database, out, err};
        return command->run(admin, rest);
    } catch (const std::exception& problem) {
        err << "community_admin: " << problem.what() << "\n";
        return kAdminFailed;
    }
}

} // namespace community_server

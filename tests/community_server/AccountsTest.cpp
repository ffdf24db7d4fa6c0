// Names, PINs, tries, and who is logged in where.

#include "tools/community_server/Accounts.h"
#include "tests/support/TemporaryFolder.h"
#include "tools/community_server/Attempts.h"
#include "tools/community_server/Pins.h"
#include "tools/community_server/Schema.h"
#include "tools/community_server/UserName.h"

#include <gtest/gtest.h>

namespace {

using namespace community_server;
using Outcome = Accounts::Outcome;

constexpr std::int64_t kSecond = 1000;
constexpr std::int64_t kDay = 24LL * 3600 * kSecond;

TEST(UserNames, AreThreeToThirtyTwoCharactersThatCanBeSeen)
{
    for (const std::string& name :
         {std::string("Ada"), std::string("Ada Ö"), std::string("李小龙"), std::string("Ada & Eve"), std::string("😀😀😀"),
          std::string(32, 'x'), std::string("ÖÖÖÖÖÖÖÖÖÖÖÖÖÖÖÖÖÖÖÖÖÖÖÖÖÖÖÖÖÖÖÖ")})
        EXPECT_TRUE(userNameIn(name)) << name;
    for (const std::string& name : {std::string(),
                                    std::string("Al"),
                                    std::string(33, 'x'),
                                    std::string("  a  "),
                                    std::string("\xff\xff\xff"),
                                    std::string("a\0bc", 4),
                                    std::string("Ada\n"),
                                    std::string("Ada\t1"),
                                    std::string("A\u200Bda"),
                                    std::string("A\u202Eda"),
                                    std::string("A\u00ADda"),
                                    std::string("Ada\uFE0F"),
                                    std::string("\uFEFFAda"),
                                    std::string("\u3164\u3164\u3164"),
                                    std::string("Ada\u2800"),
                                    std::string("A\U000E0041da"),
                                    std::string("Ad\uE000"),
                                    std::string("Ad\u2028a"),
                                    std::string("\u0301Ada"),
                                    std::string("NOONEHERE"),
                                    std::string("nooneHere"),
                                    std::string("N00NEHERE"),
                                    std::string("(null)"),
                                    std::string("(NULL)"),
                                    std::string("a&plugin=b"),
                                    std::string(100'000, 'x')})
        EXPECT_FALSE(userNameIn(name)) << name.substr(0, 40);
}

TEST(UserNames, AreShownInOneForm)
{
    EXPECT_EQ(userNameIn("  Ada \u00A0 O\u0308 ")->shown, "Ada Ö");
    EXPECT_EQ(userNameIn("Ａｄａ")->shown, "Ada");
    EXPECT_EQ(userNameIn("Straße")->key, userNameIn("STRASSE")->key);
    EXPECT_EQ(userNameIn("ADA ö")->key, userNameIn("ada Ö")->key);
    EXPECT_NE(userNameIn("Ada")->key, userNameIn("Adam")->key);
}

TEST(UserNames, LookAlike)
{
    const std::pair<const char*, const char*> alike[] = {{"paypal", "p\u0430yp\u0430l"},
                                                         {"paypal", "paypaI"},
                                                         {"paypal", "paypa1"},
                                                         {"Bob", "B0b"},
                                                         {"modern", "modem"},
                                                         {"wolf", "vvolf"},
                                                         {"Ada", "\u0391DA"},
                                                         {"mario", "MARI0"},
                                                         {"mario", "MARIO"}};
    for (const auto& [one, other] : alike)
        EXPECT_EQ(userNameIn(one)->skeleton, userNameIn(other)->skeleton) << one << " " << other;
    EXPECT_NE(userNameIn("Ada")->skeleton, userNameIn("\u00C0da")->skeleton); // an accent is seen
    EXPECT_NE(userNameIn("Ada 1")->skeleton, userNameIn("Ada 2")->skeleton);
}

TEST(Pins, AreSixDigits)
{
    for (int i = 0; i < 100; ++i) {
        const std::string pin = randomPin();
        EXPECT_EQ(pin.size(), 6U);
        EXPECT_EQ(pin.find_first_not_of("0123456789"), pin.npos);
    }
}

TEST(Pins, AreKeptHashedWithASaltOfTheirOwn)
{
    const std::string kept = hashOfPin("123456");
    EXPECT_TRUE(kept.starts_with("$argon2id$"));
    EXPECT_NE(kept, hashOfPin("123456"));
    EXPECT_TRUE(isPin("123456", kept));
    for (const char* wrong : {"", "123457", "12345", "1234567"})
        EXPECT_FALSE(isPin(wrong, kept)) << wrong;
    for (const char* nobodys : {"", "pbkdf2:", "pbkdf2:00", "pbkdf2:00:00", "nonsense"})
        EXPECT_FALSE(isPin("", nobodys)) << nobodys;
    EXPECT_FALSE(isOutdated(kept));
}

// Of Python's hashlib.pbkdf2_hmac("sha256", b"123456", bytes(range(16)), 100000).
constexpr char kOldHash[] = "3e3d2422f00f2cc1d1bad045819bfb8360117d59c588035c4294f3403ac097a5";

std::string bytesOf(const std::string& hex)
{
    std::string bytes;
    for (std::size_t i = 0; i < hex.size(); i += 2)
        bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    return bytes;
}

TEST(Pins, OfEarlierLibrariesAreKnownAndToBeHashedAnew)
{
    const std::string kept = keptFromPbkdf2(bytesOf("000102030405060708090a0b0c0d0e0f"), bytesOf(kOldHash));
    EXPECT_TRUE(isPin("123456", kept));
    EXPECT_FALSE(isPin("123457", kept));
    EXPECT_TRUE(isOutdated(kept));
}

TEST(Tries, WaitForLongerAndLonger)
{
    Attempts attempts;
    std::int64_t now = 0;
    int tried = 0;
    for (; now < 3600 * kSecond; now += kSecond)
        tried += attempts.begin("Ada", "1.1.1.1", false, now) ? 1 : 0;
    EXPECT_GE(tried, 10);
    EXPECT_LE(tried, 20);
    // Others are not concerned, and after a long quiet nothing is held against anybody.
    EXPECT_TRUE(attempts.begin("Ada", "2.2.2.2", false, now));
    EXPECT_TRUE(attempts.begin("Eve", "1.1.1.1", false, now));
    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(attempts.begin("Ada", "1.1.1.1", false, now + kDay)) << i;
}

TEST(Tries, OfOneAddressAreLimitedWhateverTheName)
{
    Attempts attempts;
    int tried = 0;
    for (int i = 0; i < 1000; ++i)
        tried += attempts.begin("Name " + std::to_string(i), "1.1.1.1", false, i) ? 1 : 0;
    EXPECT_EQ(tried, 20);
    EXPECT_TRUE(attempts.begin("Name 1", "2.2.2.2", false, 1000));
}

TEST(Tries, OfOneNameAreLimitedWhereverItIsTriedButWhereItIsKnown)
{
    Attempts attempts;
    int tried = 0;
    for (int i = 0; i < 1000; ++i)
        tried += attempts.begin("Ada", "address " + std::to_string(i), false, i) ? 1 : 0;
    EXPECT_EQ(tried, 50);
    EXPECT_TRUE(attempts.begin("Ada", "home", true, 1000));
    EXPECT_TRUE(attempts.begin("Ada", "away", false, 100 * kSecond));
}

TEST(Tries, ThatSucceedDoNotCount)
{
    Attempts attempts;
    for (int i = 0; i < 1000; ++i) {
        ASSERT_TRUE(attempts.begin("Ada", "1.1.1.1", false, i)) << i;
        attempts.succeeded("Ada", "1.1.1.1", false);
    }
    EXPECT_EQ(attempts.size(), 0U);
}

TEST(Tries, AreNotRenewedByAnAccountOfOnesOwn)
{
    Attempts attempts;
    std::int64_t now = 0;
    int tried = 0;
    for (; now < 3600 * kSecond; now += 500) {
        tried += attempts.begin("victim " + std::to_string(now), "1.1.1.1", false, now) ? 1 : 0;
        if (attempts.begin("mine", "1.1.1.1", false, now))
            attempts.succeeded("mine", "1.1.1.1", false);
    }
    EXPECT_LE(tried, 40);
}

TEST(Tries, OfANameThatHoldsAnAddressAreNotThoseOfTheAddress)
{
    Attempts attempts;
    for (int i = 0; i < 100; ++i)
        for (const char* name : {"\n1.1.1.1", "Ada\n1.1.1.1", "1.1.1.1\nAda", "1.1.1.1", "address 1.1.1.1"})
            attempts.begin(name, "address " + std::to_string(i), false, i);
    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(attempts.begin("Ada", "1.1.1.1", true, 100 + i)) << i;
}

TEST(Tries, TakeBoundedMemory)
{
    Attempts attempts;
    for (int i = 0; i < 5; ++i)
        attempts.begin("Ada", "1.1.1.1", false, i);
    for (std::size_t i = 0; i < 3 * Attempts::kMost; ++i)
        attempts.begin("name " + std::to_string(i), "address " + std::to_string(i), false, 10);
    EXPECT_LE(attempts.size(), Attempts::kMost + 2);
    // Those with many wrong ones are remembered longest.
    attempts.begin("Ada", "1.1.1.1", false, 20);
    EXPECT_FALSE(attempts.begin("Ada", "1.1.1.1", false, 30));
}

class AccountsOfALibrary : public testing::Test {
protected:
    void SetUp() override { bringUpToDate(database_, folder_.path()); }
    Outcome create(const std::string& name, std::int64_t now = 0)
    {
        made_ = accounts_.create(name, "a@b", "1.1.1.1", 3, now);
        return made_.outcome;
    }

    const test::TemporaryFolder folder_;
    Database database_{folder_.path()};
    Accounts accounts_{database_};
    Accounts::Registration made_;
};

TEST_F(AccountsOfALibrary, AreFoundByTheirNameHoweverItIsTyped)
{
    ASSERT_EQ(create("Ada Ö"), Outcome::done);
    for (const char* typed : {"Ada Ö", "ada ö", " ADA O\u0308"})
        EXPECT_TRUE(accounts_.find(typed)) << typed;
    EXPECT_EQ(accounts_.find("ada ö")->name, "Ada Ö");
    EXPECT_TRUE(isPin(made_.pin, accounts_.find("Ada Ö")->pin));
    EXPECT_FALSE(accounts_.find("Ada"));
}

TEST_F(AccountsOfALibrary, AreNotTakenTwice)
{
    ASSERT_EQ(create("paypal"), Outcome::done);
    EXPECT_EQ(create("PayPal"), Outcome::taken);
    EXPECT_EQ(create("paypa1"), Outcome::looksTaken);
    EXPECT_EQ(create("pa"), Outcome::noName);
}

TEST_F(AccountsOfALibrary, AreSoManyADay)
{
    for (const char* name : {"Ada", "Bob", "Eve"})
        EXPECT_EQ(create(name), Outcome::done);
    EXPECT_EQ(create("Dan"), Outcome::tooMany);
    EXPECT_EQ(create("Dan", kDay), Outcome::done);
}

TEST_F(AccountsOfALibrary, AreLoggedInForADayWhereTheyLoggedIn)
{
    create("Ada");
    const Account ada = *accounts_.find("Ada");
    EXPECT_FALSE(accounts_.isLoggedIn(ada, "1.1.1.1", 0));
    accounts_.noteLogIn(ada, made_.pin, "1.1.1.1", 1000);
    EXPECT_TRUE(accounts_.isLoggedIn(ada, "1.1.1.1", kDay));
    EXPECT_FALSE(accounts_.isLoggedIn(ada, "1.1.1.1", kDay + 1001));
    EXPECT_TRUE(accounts_.isKnownAt(ada, "1.1.1.1"));
    EXPECT_FALSE(accounts_.isLoggedIn(ada, "1.1.1.2", 2000));
}

TEST_F(AccountsOfALibrary, HaveTheirOldPinsHashedAnew)
{
    create("Ada");
    database_.run("UPDATE account SET pin = ?",
                  keptFromPbkdf2(bytesOf("000102030405060708090a0b0c0d0e0f"), bytesOf(kOldHash)));
    const Account ada = *accounts_.find("Ada");
    ASSERT_TRUE(isPin("123456", ada.pin));
    accounts_.noteLogIn(ada, "123456", "1.1.1.1", 0);
    EXPECT_FALSE(isOutdated(accounts_.find("Ada")->pin));
    EXPECT_TRUE(isPin("123456", accounts_.find("Ada")->pin));
    EXPECT_TRUE(accounts_.isLoggedIn(ada, "1.1.1.1", 0));
}

TEST_F(AccountsOfALibrary, AreChangedByTheHost)
{
    create("Ada");
    create("Bob");
    const Account ada = *accounts_.find("Ada");
    accounts_.noteLogIn(ada, made_.pin, "1.1.1.1", 0);
    accounts_.setBanned(ada, true);
    accounts_.setQuota(ada, 7);
    EXPECT_TRUE(accounts_.find("Ada")->isBanned);
    EXPECT_EQ(accounts_.find("Ada")->quota, 7);
    EXPECT_EQ(accounts_.rename(ada, "B0b"), Outcome::looksTaken);
    EXPECT_EQ(accounts_.rename(ada, "ADA"), Outcome::done);
    EXPECT_EQ(accounts_.rename(ada, "Eve"), Outcome::done);
    EXPECT_FALSE(accounts_.find("Ada"));
    const std::string pin = accounts_.resetPin(ada);
    EXPECT_TRUE(isPin(pin, accounts_.find("Eve")->pin));
    EXPECT_FALSE(accounts_.isLoggedIn(ada, "1.1.1.1", 1));
    EXPECT_FALSE(accounts_.find("Bob")->isBanned);
}

} // namespace

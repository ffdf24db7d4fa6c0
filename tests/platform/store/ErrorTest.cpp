#include "platform/Error.h"
#include "platform/files/Directory.h"
#include "tests/support/Obstacles.h"
#include "tests/support/WindowTest.h"

#include <cerrno>

using platform::Error;
using testing::ElementsAre;

namespace test {

namespace {

/// The alerts that presenting the error brought up, and whether it was recovered.
class ErrorTest : public WindowTest {
protected:
    std::vector<ShownAlert> present(const Error& error, const std::vector<std::string>& presses = {})
    {
        return alertsOf([&] { recovered_ = platform().errors.presentError(error); }, presses);
    }

    bool recovered_ = false;
};

int codeOf(const std::variant<bool, Error>& answer)
{
    const Error* error = std::get_if<Error>(&answer);
    return error ? error->code : 0;
}

} // namespace

TEST_F(ErrorTest, ShowsDescriptionReasonAndUnderlyingErrors)
{
    const auto deepest = std::make_shared<const Error>(Error{"B", 2, {"The <b>disk</b> is gone.", "Unplugged"}});
    const auto beneath = std::make_shared<const Error>(Error{"A", 1, {"The file is gone.", "No disk", deepest}});
    EXPECT_THAT(
        present({"D", 7, {"It failed", "For this reason.", beneath}}),
        ElementsAre(ShownAlert{"It failed", "For this reason.\n\nThe file is gone.\nNo disk\n\nThe <b>disk</b> is "
                                            "gone.\nUnplugged"}));
    EXPECT_FALSE(recovered_);
}

TEST_F(ErrorTest, ARecoveryThatWorksRecovers)
{
    const Error error{"D", 7, {"It failed", "Why", {}, platform::Recovery{"Repair", [] { return std::nullopt; }}}};
    EXPECT_THAT(present(error, {"Repair"}), ElementsAre(ShownAlert{"It failed", "Why", {"Repair", "Cancel"}}));
    EXPECT_TRUE(recovered_);
}

TEST_F(ErrorTest, ARecoveryNotTakenDoesNotRecover)
{
    bool attempted = false;
    const Error error{"D", 7, {"It failed", "Why", {}, platform::Recovery{"Repair", [&] {
                                                                              attempted = true;
                                                                              return std::nullopt;
                                                                          }}}};
    EXPECT_EQ(present(error, {"Cancel"}).size(), 1U);
    EXPECT_FALSE(recovered_);
    EXPECT_FALSE(attempted);
}

TEST_F(ErrorTest, ARecoveryThatFailsShowsWhy)
{
    const Error error{
        "D",
        7,
        {"It failed", "Why", {}, platform::Recovery{"Repair", [] {
                                                        return std::optional(Error{"D", 8, {"Still failing", "So"}});
                                                    }}}};
    EXPECT_THAT(present(error, {"Repair"}),
                ElementsAre(ShownAlert{"It failed", "Why", {"Repair", "Cancel"}}, ShownAlert{"Still failing", "So"}));
    EXPECT_FALSE(recovered_);
}

TEST_F(ErrorTest, FoldersAreToldFromFilesAndFromNothing)
{
    write(home_ / "file", "x");
    EXPECT_EQ(std::get<bool>(platform::files::isDirectory(home_.path())), true);
    EXPECT_EQ(std::get<bool>(platform::files::isDirectory(home_ / "file")), false);
    EXPECT_EQ(codeOf(platform::files::isDirectory(home_ / "nothing")), 260);
    EXPECT_EQ(codeOf(platform::files::isDirectory(home_ / "file/below")), ENOTDIR);
    const Forbidden folder(home_.path(), std::filesystem::perms::none);
    EXPECT_EQ(codeOf(platform::files::isDirectory(home_ / "file")), EACCES);
}

TEST_F(ErrorTest, FoldersAreMadeWithThoseAboveThem)
{
    EXPECT_FALSE(platform::files::createDirectories(home_ / "a/b/c"));
    EXPECT_TRUE(std::filesystem::is_directory(home_ / "a/b/c"));
    EXPECT_FALSE(platform::files::createDirectories(home_ / "a/b/c"));
    write(home_ / "file", "x");
    const auto error = platform::files::createDirectories(home_ / "file/below");
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain, "FileErrorDomain");
    EXPECT_EQ(error->code, ENOTDIR);
    EXPECT_EQ(error->userInfo.localizedFailureReason, "Not a directory");
}

} // namespace test

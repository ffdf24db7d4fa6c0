// The fuzzers' inputs that are worth keeping, replayed: those they begin with and those that once were a finding. What
// does not hold of one ends the process.

#include "fuzz/Targets.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <ostream>

namespace {

namespace fs = std::filesystem;

struct Target {
    const char* name;
    void (*run)(std::string_view);
};
void PrintTo(const Target& target, std::ostream* stream)
{
    *stream << target.name;
}

class Corpus : public testing::TestWithParam<Target> {
protected:
    /// Number of inputs in the folder of this target; each has been run.
    static std::size_t replay(const char* folder)
    {
        const fs::path inputs = fs::path(KV_FUZZ_DIR) / folder / GetParam().name;
        std::size_t count = 0;
        if (!fs::exists(inputs))
            return 0;
        for (const auto& input : fs::directory_iterator(inputs)) {
            SCOPED_TRACE(input.path());
            GetParam().run(test::read(input.path()));
            ++count;
        }
        return count;
    }
};

TEST_P(Corpus, HoldsWhatMustHold)
{
    EXPECT_GE(replay("corpus"), 5U);
    replay("regressions");
}

INSTANTIATE_TEST_SUITE_P(, Corpus,
                         testing::Values(Target{"propertyList", fuzz::propertyList},
                                         Target{"oldStyleList", fuzz::oldStyleList}, Target{"listing", fuzz::listing},
                                         Target{"replies", fuzz::replies}, Target{"mappingFile", fuzz::mappingFile}),
                         [](const auto& test) { return std::string(test.param.name); });

} // namespace

// The fuzzers' inputs that are worth keeping, replayed. What does not hold of one ends the process.

#include "fuzz/Targets.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

/// Number of inputs of the target, each of which was run.
int replay(const std::string& target, void (*run)(std::string_view))
{
    int count = 0;
    for (const char* kind : {"corpus", "regressions"}) {
        const test::Path folder = test::Path(KV_FUZZ_DIR) / kind / target;
        if (!std::filesystem::exists(folder))
            continue;
        for (const auto& input : std::filesystem::directory_iterator(folder)) {
            SCOPED_TRACE(input.path());
            run(test::read(input.path()));
            ++count;
        }
    }
    return count;
}

TEST(ServerCorpus, HoldsWhatMustHold)
{
    EXPECT_GE(replay("request", fuzz::request), 5);
    EXPECT_GE(replay("upload", fuzz::upload), 5);
}

} // namespace

// Unsaved edits that were kept outlast whatever comes between: the program is killed at everything it does while it
// keeps, leaves, brings back, discards or saves them, or its calls fail there. Afterwards every draft is whole, and
// what was kept is in one of them, or saved in the file.

#include "mapping/Drafts.h"
#include "mapping/MappingStore.h"
#include "mapping/ParameterOrder.h"
#include "tests/support/OrderFiles.h"
#include "tests/trust/DriverRuns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <iostream>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace test {

namespace {

namespace fs = std::filesystem;

/// What trust_driver does with drafts, with another one left before where `isOneLeft`.
struct DraftDeed {
    const char* name;
    bool isOneLeft;
};

void PrintTo(const DraftDeed& deed, std::ostream* stream)
{
    *stream << deed.name;
}

class DraftFaults : public testing::TestWithParam<DraftDeed> {
protected:
    DraftFaults()
    {
        kept_.front() = "2 Knob 2";
        edited_ = kept_;
        edited_.at(1) = "3 Knob 3";
        left_.at(7) = "-1";
    }

    struct Found {
        std::vector<Texts> drafts; ///< sorted
        Texts file;
        int unfinished = 0;

        bool has(const Texts& order) const { return std::ranges::find(drafts, order) != drafts.end(); }
        bool operator==(const Found&) const = default;
    };

    bool is(const char* deed) const { return std::string(GetParam().name) == deed; }
    Path file() const { return folder_.path() / kFile; }

    DriverRun run(const Fault& fault = {}) const
    {
        folder_.put({});
        write(file(), orderBytes(numbered(40)));
        write(folder_.path().parent_path() / "EQ Two" / kFile, orderBytes(numbered(8)));
        if (GetParam().isOneLeft) {
            EXPECT_TRUE(mapping::Drafts(folder_.drafts()).keep({file().native(), left_, 5, 1, 0, 1}));
        }
        return again(GetParam().name, fault);
    }
    DriverRun again(const char* deed, const Fault& fault = {}) const { return folder_.run({"draft", deed}, fault); }

    /// What a later run of the program has; every draft there must be one that it can read.
    Found found() const
    {
        Found all;
        for (const mapping::KeptDraft& left : mapping::Drafts(folder_.drafts()).leftOf(file().native()))
            all.drafts.push_back(left.draft.order);
        std::ranges::sort(all.drafts);
        all.file = mapping::orderOf(mapping::readMapping(file(), std::nullopt).entries);
        std::size_t names = 0;
        std::error_code none;
        for (const auto& entry : fs::directory_iterator(folder_.drafts(), none)) {
            const bool isUnfinished = isPartial(entry.path().filename());
            all.unfinished += isUnfinished ? 1 : 0;
            names += isUnfinished ? 0 : 1;
            EXPECT_TRUE(isUnfinished || entry.path().extension() == ".draft") << entry.path();
        }
        EXPECT_EQ(all.drafts.size(), names);
        return all;
    }

    void expectNothingLost(const Found& found) const
    {
        const bool isSaved = found.file == edited_;
        EXPECT_TRUE(isSaved ? is("save") : found.file == numbered(40));
        for (const Texts& order : found.drafts)
            EXPECT_TRUE(order == kept_ || order == edited_ || (order == left_ && GetParam().isOneLeft));
        EXPECT_TRUE(is("keep-first") || isSaved || found.has(kept_) || found.has(edited_));
        EXPECT_TRUE(!GetParam().isOneLeft || is("discard") || isSaved || found.has(left_));
    }

    void expectDone(const Found& found) const
    {
        std::vector<Texts> drafts = {is("discard") ? kept_ : edited_};
        if (is("bring-back"))
            drafts.push_back(left_);
        if (is("save"))
            drafts.clear();
        std::ranges::sort(drafts);
        EXPECT_EQ(found.drafts, drafts);
        EXPECT_EQ(found.file, is("save") ? edited_ : numbered(40));
        EXPECT_EQ(found.unfinished, 0);
    }

    /// One run for each call that can fail in this way.
    void letFail(const char* name, const Fault& kind) const
    {
        SCOPED_TRACE(name);
        Fault fault = kind;
        for (fault.at = 1;; ++fault.at) {
            const DriverRun run = this->run(fault);
            if (static_cast<long>(run.trace.size()) < fault.at)
                break;
            SCOPED_TRACE(run.trace[static_cast<std::size_t>(fault.at - 1)]);
            EXPECT_TRUE(run.goesOn());
            const Found found = this->found();
            expectNothingLost(found);
            if (fault.error == EINTR)
                expectDone(found);
            // Where nothing can be deleted any more, a file in the making cannot be either.
            EXPECT_TRUE(found.unfinished == 0 || (fault.lasts && fault.error == EACCES));
        }
        EXPECT_GT(fault.at, 1);
    }

    Folder folder_;
    Texts kept_ = numbered(40);
    Texts edited_;
    Texts left_ = numbered(40);
};

TEST_P(DraftFaults, AKillAtAnyOperationLosesNothingThatWasKept)
{
    for (long at = 1;; ++at) {
        const DriverRun run = this->run({at});
        const Found found = this->found();
        expectNothingLost(found);
        if (!run.isKilled) {
            EXPECT_TRUE(run.goesOn());
            expectDone(found);
            std::cout << GetParam().name << ": killed at " << at - 1 << " operations\n";
            EXPECT_GT(at, 1);
            break;
        }
        SCOPED_TRACE("killed at " + run.trace.back());
        if (found.unfinished > 0) {
            EXPECT_TRUE(again("keep").goesOn());
            EXPECT_EQ(this->found().unfinished, 0);
        }
    }
}

TEST_P(DraftFaults, ASizeLimitThatStopsASaveTooLosesNothingThatWasKept)
{
    EXPECT_TRUE(run({0, 0, false, "limit:0"}).goesOn());
    const Found found = this->found();
    expectNothingLost(found);
    EXPECT_EQ(found.file, numbered(40));
    EXPECT_EQ(found.unfinished, 0);
}

class DraftsRefused : public DraftFaults {};

TEST_P(DraftsRefused, LeaveWhatWasKept)
{
    letFail("full disk", {0, ENOSPC});
    letFail("full disk from there on", {0, ENOSPC, true});
    letFail("forbidden from there on", {0, EACCES, true});
    letFail("interrupted", {0, EINTR});
}

constexpr DraftDeed kDeeds[] = {{"save", true},    {"bring-back", true},  {"keep", false},
                                {"discard", true}, {"keep-first", false}, {"leave", false}};

std::string nameOf(const testing::TestParamInfo<DraftDeed>& deed)
{
    std::string name = deed.param.name;
    std::ranges::replace(name, '-', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(, DraftFaults, testing::ValuesIn(kDeeds), nameOf);
// The others do nothing that these do not.
INSTANTIATE_TEST_SUITE_P(, DraftsRefused, testing::ValuesIn(kDeeds, kDeeds + 3), nameOf);

} // namespace

} // namespace test

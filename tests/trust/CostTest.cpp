// What operations cost, counted: memory that they take, and requests. Replaces the allocator's way in, so it is a
// program of its own.

#include "tests/support/ScriptedPeer.h"
#include "tests/support/TestBaseUrl.h"
#include "tests/support/WindowTest.h"
#include "tests/support/WindowlessTest.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <new>

#include <malloc.h>

namespace {

std::atomic<long> taken{0}; ///< pieces of memory so far
std::atomic<long> inUse{0}; ///< bytes

} // namespace

void* operator new(std::size_t size)
{
    void* piece = std::malloc(size);
    if (!piece)
        throw std::bad_alloc();
    ++taken;
    inUse += static_cast<long>(::malloc_usable_size(piece));
    return piece;
}

void operator delete(void* piece) noexcept
{
    inUse -= static_cast<long>(::malloc_usable_size(piece));
    std::free(piece);
}

void operator delete(void* piece, std::size_t) noexcept
{
    operator delete(piece);
}

namespace test {

namespace {

class Cost : public WindowlessTest {
protected:
    static long piecesOf(const std::function<void()>& action)
    {
        const long before = taken;
        action();
        return taken - before;
    }
};

constexpr int kMany = 10'000;

TEST_F(Cost, APressCopiesNoMapping)
{
    edit(numbered(kMany));
    selectParameter(17);
    controller_.clickControl(0);
    const long pieces = piecesOf([this] { controller_.clickControl(1); });
    RecordProperty("pieces", static_cast<int>(pieces));
    EXPECT_LT(pieces, kMany / 4) << "a title for each page of the chart, and no copy of each entry";
}

TEST_F(Cost, AStepOfTheHistoryKeepsWhatItChanged)
{
    edit(numbered(kMany));
    const auto press = [this](int times) {
        for (int round = 0; round < times; ++round) {
            selectParameter(1 + round % 500);
            controller_.showPage(1 + round % 1250);
            controller_.clickControl(round % 8);
        }
    };
    press(10);
    const long before = inUse;
    press(200);
    const long perStep = (inUse - before) / 200;
    RecordProperty("bytesPerStep", static_cast<int>(perStep));
    EXPECT_LT(perStep, 4096);
    int steps = 0;
    for (; controller_.history().canUndo(); ++steps)
        controller_.undo();
    EXPECT_GT(steps, 180);
    EXPECT_EQ(order(), numbered(kMany));
}

using Requests = WindowTest;

TEST_F(Requests, OnlyTheStartAsksTheServerUnlessTheUserDoes)
{
    ScriptedPeer peer;
    setBaseUrl(peer.url());
    peer.play(reply("no"));
    writeDictionary(builtIn("Synth"), orderFile(numbered(9)));
    launch();
    select("Synth");
    pressPot(1);
    alertsOf([this] {
        click("kvExportToPlist");
        click("kvRecallOriginalMapping");
    });
    click("btnRunCheck");
    click("kvLoginToCloudAccount");
    EXPECT_EQ(peer.requests().size(), 1u);
}

} // namespace

} // namespace test

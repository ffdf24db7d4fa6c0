#pragma once
// A figure: what one piece of work costs beside a yardstick that is measured in turn with it, so that a busy machine
// slows both. Times are the processor's, which leaves out what else the machine does meanwhile, and of each side the
// least of all runs counts: whatever disturbs a run only adds to it. Where a figure says that its times are the wall
// clock's, luck takes away from them too, and the median counts.

#include <functional>
#include <string>
#include <utility>

#include <time.h>

namespace bench {

/// Does the work once and answers what it took, in the figure's unit.
using Measure = std::function<double()>;

struct Figure {
    std::string name;
    std::string yardstick;
    double limit; ///< 0 for a figure that is only told
    int runs;
    /// Makes both sides ready; called when the figure's turn comes. What the measures hold is gone after it.
    std::function<std::pair<Measure, Measure>()> prepare;
    std::string unit = "ms";
    enum class Clock { processor, wall } clock = Clock::processor;
    /// Of what there is at most: of the ratio of both sides, or of their difference.
    enum class Limit { ratio, difference } limitOf = Limit::ratio;
};

/// The same work at two sizes, the second ten times the first.
struct Growth {
    std::string name;
    int size;
    int runs;
    std::function<Measure(int size)> prepare;
};

/// What a clock of the system shows.
double millisecondsOn(clockid_t clock);
/// What one call has of the processor.
double millisecondsOf(const std::function<void()>& work);

/// Adds a benchmark that reports both sides and their ratio.
void add(const Figure& figure);
/// Adds a benchmark that reports both times and by how much the work grew.
void add(const Growth& growth);

/// Runs what was added, or what the command line picks, and prints a table. With --check in the command line, answers
/// whether all is within its limits.
bool runAll(int& argc, char** argv);

void addScanFigures();
void addPropertyListFigures();
void addEditingFigures();
void addCommunityFigures();
void addProgramFigures();

} // namespace bench

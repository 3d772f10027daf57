// bench: one measured row at a time.
//
// A row names a piece of work and the limit of the machine for it: a plain read, write or in-place stream over the
// bytes that the work must move. Limit, ours and the peers are run in turn, round after round, so that a disturbance
// of the machine meets all of them; what counts is the median of the rounds.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace bench {

using Work = std::function<void()>;

/// Fills the caches with something else.
void emptyCaches();

/// Computing is measured in processor time of the thread, so that other programs do not count; what waits for a disk
/// in elapsed time.
enum class Clock { processor, elapsed };

struct Row {
    std::string kernel;
    std::string size;
    double bytes = 0;  ///< of source, for the GB/s column; 0: no such column
    Clock clock = Clock::processor;
    bool fromMemory = true;  ///< the caches are filled with something else before every sample
    Work limit{};            ///< may be empty
    Work ours{};
    Work opencv{};  ///< empty: no such peer
    Work dcmtk{};
    int rounds = 21;  ///< at least nine
};

/// Medians in seconds; 0 where there was nothing to run.
struct Result {
    std::string kernel;
    std::string size;
    double bytes = 0;
    double limit = 0;
    double ours = 0;
    double opencv = 0;
    double dcmtk = 0;
    int rounds = 0;
};

Result measure(const Row& row);

/// Seconds of one call, the median of `rounds`; a short call is repeated until it can be measured.
double medianTime(const Work& work, int rounds, Clock clock);

/// What is measured but is no row: drawing per second, memory of a run.
struct Note {
    std::string name;
    double value = 0;
    std::string unit;
    std::string text;  ///< what it is compared with
};

struct Scaling {
    std::string kernel;
    std::vector<int> sides;
    std::vector<double> nanosecondsPerPixel;
};

struct Report {
    std::vector<Result> rows;
    std::vector<Note> notes;
    std::vector<Scaling> scaling;
    bool peers = false;
};

}  // namespace bench

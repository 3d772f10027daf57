// Medians of interleaved rounds.
#include "bench/bench.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <ctime>

namespace bench {

namespace {

constexpr double kShortest = 1e-3;  // a sample of less is repeated

double now(Clock clock) {
    if (clock == Clock::elapsed) {
        const auto since = std::chrono::steady_clock::now().time_since_epoch();
        return std::chrono::duration<double>(since).count();
    }
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

double timeOf(const Work& work, int repeats, Clock clock) {
    const double begin = now(clock);
    for (int i = 0; i < repeats; ++i) {
        work();
        benchmark::ClobberMemory();
    }
    return (now(clock) - begin) / repeats;
}

int repeatsFor(const Work& work, Clock clock) {
    const double once = std::max(timeOf(work, 1, clock), 1e-9);
    return std::clamp(static_cast<int>(kShortest / once), 1, 1000);
}

// One call of a row.
double sample(const Work& work, const Row& row, int repeats) {
    if (!row.fromMemory) return timeOf(work, repeats, row.clock);
    emptyCaches();
    return timeOf(work, 1, row.clock);
}

double median(std::vector<double> values) {
    if (values.empty()) return 0;
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

}  // namespace

void emptyCaches() {
    static std::vector<std::uint64_t> other(std::size_t{12} << 20);  // 96 MiB
    std::uint64_t sum = 0;
    for (std::uint64_t& word : other) sum += word++;
    benchmark::DoNotOptimize(sum);
}

double medianTime(const Work& work, int rounds, Clock clock) {
    const int repeats = repeatsFor(work, clock);
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) times.push_back(timeOf(work, repeats, clock));
    return median(times);
}

Result measure(const Row& row) {
    const std::array<const Work*, 4> works{&row.limit, &row.ours, &row.opencv, &row.dcmtk};
    std::array<int, 4> repeats{};
    std::array<std::vector<double>, 4> times;
    for (std::size_t i = 0; i < works.size(); ++i)
        if (*works[i]) repeats[i] = repeatsFor(*works[i], row.clock);
    for (int round = 0; round < row.rounds; ++round)
        for (std::size_t i = 0; i < works.size(); ++i)
            if (repeats[i] > 0) times[i].push_back(sample(*works[i], row, repeats[i]));
    return {row.kernel,       row.size,         row.bytes,        median(times[0]),
            median(times[1]), median(times[2]), median(times[3]), row.rounds};
}

}  // namespace bench

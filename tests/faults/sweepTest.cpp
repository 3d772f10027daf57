// Sweeps over the road: a fault at every allocation, in every file call, and a kill at every instant. Each point runs in
// a child process of its own; the parent counts what was injected, so that a sweep which injects nothing fails.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <new>
#include <sstream>

#include "tests/faults/faults.h"
#include "tests/faults/road.h"
#include "tests/support/temporaryFolder.h"

namespace {

namespace fs = std::filesystem;

// Every point; under the sanitizers, where a walk takes several times as long, about as many as are asked for.
#if defined(__SANITIZE_ADDRESS__)
#define QVR_SWEEPS_SOME_POINTS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QVR_SWEEPS_SOME_POINTS 1
#endif
#endif
long strideFor([[maybe_unused]] long calls, [[maybe_unused]] long points) {
#ifdef QVR_SWEEPS_SOME_POINTS
    return std::max(1L, calls / points);
#else
    return 1;
#endif
}

// Shared with the children.
struct Outcome {
    long seen = 0;
    long injected = 0;
    bool finished = false;
    char complaints[2000] = {};
    char hit[32] = {};
    road::Progress progress;
};

class Sweep : public testing::Test {
protected:
    Sweep() {
        void* const shared =
            ::mmap(nullptr, sizeof(Outcome), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        m_outcome = new (shared) Outcome;
        // Faces are found and cached before anything is counted.
        prepareFolder();
        road::Walk(m_folder.string()).run();
        road::Walk(m_folder.string()).run();
    }

    ~Sweep() override { ::munmap(m_outcome, sizeof(Outcome)); }

    void prepareFolder() const {
        fs::remove_all(m_folder);
        fs::create_directories(m_folder);
        const auto pixels = road::pixelsOf(20);
        std::ofstream(m_folder / "stored.raw", std::ios::binary)
            .write(reinterpret_cast<const char*>(pixels.data()),
                   static_cast<std::streamsize>(pixels.size() * 2));
    }

    // Runs `work` in a child. @return the child's wait status
    int inChild(const std::function<void()>& work) {
        new (m_outcome) Outcome;
        prepareFolder();
        const pid_t child = ::fork();
        if (child == 0) {
            [&]() noexcept {
                work();
            }();  // an exception out of the library ends the child, not this function
            m_outcome->finished = true;
            ::_exit(0);
        }
        int status = 0;
        while (::waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
        return status;
    }

    // One walk under a plan. What the library caches for good (faces) may grow the first time, a leak grows every time,
    // so memory is judged by a second walk under the same plan.
    void walkAndCheck(const faults::Plan& plan) {
        std::string complaints = walkOnce(plan);
        m_outcome->seen = faults::seen();
        m_outcome->injected = faults::injected();
        std::snprintf(m_outcome->hit, sizeof m_outcome->hit, "%s", faults::lastHit().c_str());
        const int descriptors = faults::openDescriptors();
        const std::size_t bytes = faults::allocatedBytes();
        complaints += walkOnce(plan);
        if (faults::openDescriptors() != descriptors) complaints += "file descriptors leak\n";
        if (faults::allocatedBytes() > bytes + 2 * complaints.capacity())
            complaints += "memory leaks: " + std::to_string(faults::allocatedBytes() - bytes) + " bytes\n";

        prepareFolder();
        road::Walk again(m_folder.string());
        again.run();
        complaints += again.complaints() + again.leftBehind();
        if (again.safeImages() != road::kNewImages + 1)
            complaints += "a walk without the fault does not succeed\n";
        std::snprintf(m_outcome->complaints, sizeof m_outcome->complaints, "%s", complaints.c_str());
    }

    std::string walkOnce(const faults::Plan& plan) {
        prepareFolder();
        road::Walk walk(m_folder.string());
        faults::arm(plan);
        walk.run();
        faults::disarm();
        // Where nothing can be deleted any more, temporaries stay.
        const bool deletes = plan.target != faults::Target::file || !plan.onward;
        return walk.complaints() + (deletes ? walk.leftBehind() : "");
    }

    struct Count {
        long points = 0;
        long injected = 0;
    };

    // Walks once for each point, up to the last call that such a fault can hit. Every point must be hit, since the way to
    // it is the same each time.
    Count sweep(faults::Plan plan, long stride) {
        Count count;
        for (plan.at = 1;; plan.at += stride) {
            const int status = inChild([&] { walkAndCheck(plan); });
            if (m_outcome->finished && m_outcome->seen < plan.at) break;  // there are no more calls
            std::ostringstream where;
            where << "fault at call " << plan.at << (plan.onward ? " and onward" : "") << " errno "
                  << plan.error << ' ' << m_outcome->hit;
            EXPECT_TRUE(WIFEXITED(status) && m_outcome->finished) << where.str() << ": the process died";
            EXPECT_STREQ(m_outcome->complaints, "") << where.str();
            ++count.points;
            count.injected += m_outcome->injected > 0 ? 1 : 0;
            if (HasFailure() && ++m_failures > 5) break;  // enough to see what is wrong
        }
        return count;
    }

    void expectHits(const Count& count, long atLeast) {
        EXPECT_EQ(count.injected, count.points);
        EXPECT_GE(count.points, atLeast);
    }

    long callsOf(faults::Target target) {
        inChild([&] {
            road::Walk walk(m_folder.string());
            faults::armCounting(target);
            walk.run();
            faults::disarm();
            m_outcome->seen = faults::seen();
        });
        return m_outcome->seen;
    }

    Outcome* m_outcome;
    const TemporaryFolder m_place{TemporaryFolder::quickPlace()};
    const fs::path m_folder = m_place / "road";
    int m_failures = 0;
};

TEST_F(Sweep, TheRoadItselfLosesNothingAndLeaksNothing) {
    faults::Plan never;
    never.at = 1L << 40;
    const int status = inChild([&] { walkAndCheck(never); });
    ASSERT_TRUE(WIFEXITED(status) && m_outcome->finished);
    EXPECT_STREQ(m_outcome->complaints, "");
    EXPECT_GT(m_outcome->seen, 150);
}

TEST_F(Sweep, NoAllocationThatFailsLosesAnImage) {
    faults::Plan plan;
    plan.target = faults::Target::allocation;
    expectHits(sweep(plan, strideFor(callsOf(plan.target), 200)), 150);
}

TEST_F(Sweep, NoEndOfMemoryLosesAnImage) {
    faults::Plan plan;
    plan.target = faults::Target::allocation;
    plan.onward = true;
    expectHits(sweep(plan, strideFor(callsOf(plan.target), 60)), 50);
}

class FileSweep : public Sweep, public testing::WithParamInterface<int> {};

TEST_P(FileSweep, NoFileCallThatFailsLosesAnImage) {
    faults::Plan plan;
    plan.target = faults::Target::file;
    plan.error = GetParam();
    expectHits(sweep(plan, strideFor(callsOf(plan.target), 70)), 60);
}
INSTANTIATE_TEST_SUITE_P(Errno, FileSweep, testing::Values(EIO, ENOSPC, EMFILE, EACCES, EINTR));

TEST_F(Sweep, NoBrokenDiskLosesAnImage) {
    faults::Plan plan;
    plan.target = faults::Target::file;
    plan.onward = true;
    for (const int error : {EIO, ENOSPC}) {
        plan.error = error;
        expectHits(sweep(plan, strideFor(callsOf(plan.target), 30)), 25);
    }
}

TEST_F(Sweep, NoShortCountLosesAnImage) {
    faults::Plan plan;
    plan.target = faults::Target::file;
    plan.way = faults::Way::shortCount;
    expectHits(sweep(plan, strideFor(callsOf(plan.target), 180)), 20);
}

TEST_F(Sweep, AKillAtAnyInstantLeavesEveryFileWholeOrShort) {
    // Kills at call after call until there are no more.
    const auto killFrom = [&](faults::Plan plan, long stride) {
        long killed = 0;
        for (plan.at = 1;; plan.at += stride) {
            const int status = inChild([&] {
                road::Walk walk(m_folder.string(), &m_outcome->progress);
                faults::arm(plan);
                walk.run();
            });
            if (!WIFSIGNALED(status)) return killed;
            EXPECT_EQ(WTERMSIG(status), SIGKILL);
            ++killed;
            EXPECT_EQ(road::complaintsAfterKill(m_folder.string(), m_outcome->progress), "")
                << "killed at call " << plan.at;
            if (HasFailure() && ++m_failures > 5) return killed;
        }
    };
    faults::Plan plan;
    plan.target = faults::Target::file;
    plan.way = faults::Way::killBefore;
    EXPECT_GE(killFrom(plan, strideFor(callsOf(plan.target), 120)), 100);
    plan.way = faults::Way::killInside;  // counts only writes
    for (const auto keep :
         {faults::Plan::Keep::nothing, faults::Plan::Keep::half, faults::Plan::Keep::allButOne}) {
        plan.keep = keep;
        EXPECT_GE(killFrom(plan, 1), 20);
    }
}

}  // namespace

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

namespace {

namespace fs = std::filesystem;

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
        // Memory-backed where there is such a folder: a sweep is thousands of synchronised files.
        const fs::path base =
            ::access("/dev/shm", W_OK) == 0 ? fs::path("/dev/shm") : fs::temp_directory_path();
        m_folder = base / ("qvr-sweep-" + std::to_string(::getpid()));
        fs::remove_all(m_folder);
        void* const shared =
            ::mmap(nullptr, sizeof(Outcome), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        m_outcome = new (shared) Outcome;
        // Faces are found and cached before anything is counted.
        prepareFolder();
        road::Walk(m_folder.string()).run();
        road::Walk(m_folder.string()).run();
    }

    ~Sweep() override {
        ::munmap(m_outcome, sizeof(Outcome));
        fs::remove_all(m_folder);
    }

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

    // Walks once for each point. @return how many faults were injected
    long sweep(faults::Plan plan, long first, long last, long step) {
        long injected = 0;
        for (plan.at = first; plan.at <= last; plan.at += step) {
            const int status = inChild([&] { walkAndCheck(plan); });
            std::ostringstream where;
            where << "fault at call " << plan.at << (plan.onward ? " and onward" : "") << " errno "
                  << plan.error << ' ' << m_outcome->hit;
            EXPECT_TRUE(WIFEXITED(status) && m_outcome->finished) << where.str() << ": the process died";
            EXPECT_STREQ(m_outcome->complaints, "") << where.str();
            injected += m_outcome->injected > 0 ? 1 : 0;
            if (HasFailure() && ++m_failures > 5) break;  // enough to see what is wrong
        }
        return injected;
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
    fs::path m_folder;
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
    const long calls = callsOf(faults::Target::allocation);
    faults::Plan plan;
    plan.target = faults::Target::allocation;
    const long step = std::max(1L, calls / 200);
    EXPECT_GE(sweep(plan, 1, calls, step), 120);
    plan.onward = true;
    EXPECT_GE(sweep(plan, 1, calls, std::max(1L, calls / 60)), 50);
}

TEST_F(Sweep, NoFileCallThatFailsLosesAnImage) {
    const long calls = callsOf(faults::Target::file);
    faults::Plan plan;
    plan.target = faults::Target::file;
    long injected = 0;
    for (const int error : {EIO, ENOSPC, EMFILE, EACCES, EINTR}) {
        plan.error = error;
        injected += sweep(plan, 1 + error % 3, calls, std::max(1L, calls / 70));
    }
    plan.onward = true;
    for (const int error : {EIO, ENOSPC}) {
        plan.error = error;
        injected += sweep(plan, 1, calls, std::max(1L, calls / 30));
    }
    plan = {};
    plan.target = faults::Target::file;
    plan.way = faults::Way::shortCount;
    injected += sweep(plan, 1, 120, 2);
    EXPECT_GE(injected, 400);
}

TEST_F(Sweep, AKillAtAnyInstantLeavesEveryFileWholeOrShort) {
    const long calls = callsOf(faults::Target::file);
    long killed = 0;
    const auto killAt = [&](const faults::Plan& plan) {
        const int status = inChild([&] {
            road::Walk walk(m_folder.string(), &m_outcome->progress);
            faults::arm(plan);
            walk.run();
        });
        if (!WIFSIGNALED(status)) return;
        EXPECT_EQ(WTERMSIG(status), SIGKILL);
        ++killed;
        EXPECT_EQ(road::complaintsAfterKill(m_folder.string(), m_outcome->progress), "")
            << "killed at call " << plan.at;
    };
    faults::Plan plan;
    plan.target = faults::Target::file;
    plan.way = faults::Way::killBefore;
    for (plan.at = 1; plan.at <= calls; plan.at += std::max(1L, calls / 120)) killAt(plan);
    plan.way = faults::Way::killInside;
    for (const auto keep :
         {faults::Plan::Keep::nothing, faults::Plan::Keep::half, faults::Plan::Keep::allButOne}) {
        plan.keep = keep;
        // Only writes are counted in this way.
        for (plan.at = 1; plan.at <= 40; ++plan.at) killAt(plan);
    }
    EXPECT_GE(killed, 100);
}

}  // namespace

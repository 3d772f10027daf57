// Faults for the library under test, from outside: this program's own allocation functions and file calls stand before
// those of the system, and let a chosen one fail. They are reached by the shared library as well, since the dynamic
// linker looks into the program first.
#pragma once

#include <cstddef>
#include <string>

namespace faults {

enum class Target { allocation, file };

/// How a file call fails.
enum class Way {
    error,       ///< returns an error (Plan::error), nothing is done
    shortCount,  ///< read and write move half of the bytes (at least 1); other calls are let through, uncounted
    killBefore,  ///< the process is killed instead of the call
    killInside  ///< write: Plan::keep bytes are written, then the process is killed; other calls are let through
};

struct Plan {
    Target target = Target::allocation;
    const char* only = nullptr;  ///< file calls whose name contains this; null: all
    long at = 1;                 ///< the n-th call, from 1
    bool onward = false;         ///< and every later one
    Way way = Way::error;
    int error = 5;  ///< errno for Way::error
    /// killInside: what part of the bytes is written first
    enum class Keep { nothing, half, allButOne } keep = Keep::nothing;
};

/// Counts calls and injects what the plan says, from now to disarm().
void arm(const Plan& plan);
/// Only counts.
void armCounting(Target target);
void disarm();
/// Marks the time that is spent in the library.
class Inside {
public:
    Inside();
    ~Inside();
};

/// Runs a call into the library: only what happens inside one is counted and can fail, never what the test does itself.
template <class Call>
decltype(auto) inLibrary(Call&& call) {
    const Inside inside;
    return call();
}

/// Calls of the plan's target since arm().
long seen();
/// Faults injected since arm().
long injected();
/// Name of the file call that was hit last.
std::string lastHit();

/// Bytes that the program has allocated through operator new and not given back.
std::size_t allocatedBytes();
/// Open file descriptors of the process.
int openDescriptors();

}  // namespace faults

/// A call into the library, with its result.
#define LIB(...) faults::inLibrary([&]() -> decltype(auto) { return __VA_ARGS__; })

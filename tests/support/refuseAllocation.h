// Missing memory: a program that links qvr_refuse_allocation has its own `operator new`, which can be told to fail.
#pragma once

/// While it lives, one allocation of this thread fails: the one after `skipped` others, and with it every later one.
class RefuseAllocation {
public:
    explicit RefuseAllocation(long skipped);
    ~RefuseAllocation();
    RefuseAllocation(const RefuseAllocation&) = delete;
    RefuseAllocation& operator=(const RefuseAllocation&) = delete;

    /// True once an allocation has failed.
    bool happened() const;
};

/// Runs `operation` with the first, the second, … allocation in it failing, until one run needs no more memory than it
/// gets; `prepare` before each run, and `check(result, refused)` behind it, have all the memory they want.
/// @return number of runs in which an allocation failed
template <class Prepare, class Operation, class Check>
long refuseEachAllocation(Prepare&& prepare, Operation&& operation, Check&& check) {
    for (long skipped = 0;; ++skipped) {
        prepare();
        int result = 0;
        bool refused = false;
        {
            const RefuseAllocation refusal(skipped);
            result = operation();
            refused = refusal.happened();
        }
        check(result, refused);
        if (!refused) return skipped;
    }
}

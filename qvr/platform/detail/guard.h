// The boundary: what runs inside guarded() lets no exception out.
#pragma once

#include <utility>

namespace qvr {

/// Runs `work` and returns its result, or `failure` when anything is thrown.
template <class Result, class Work>
Result guarded(Result failure, Work&& work) noexcept {
    try {
        return std::forward<Work>(work)();
    } catch (...) {
        return failure;
    }
}

/// Runs `work`; whatever it throws ends here.
template <class Work>
void guarded(Work&& work) noexcept {
    try {
        std::forward<Work>(work)();
    } catch (...) {
        return;
    }
}

}  // namespace qvr

// Assignment that either happens as a whole or not at all.
#pragma once

#include <type_traits>
#include <utility>

#include "qvr/platform/detail/guard.h"

namespace qvr {

/// Copies `source` aside and moves the copy in. @return true; false, with `target` as it was, when memory ends
template <class Value>
bool assignWhole(Value& target, const Value& source) noexcept {
    static_assert(std::is_nothrow_move_assignable_v<Value>);
    return guarded(false, [&] {
        Value copy(source);
        target = std::move(copy);
        return true;
    });
}

}  // namespace qvr

// Which of a kernel's versions is to run. The library always asks for the fastest; tests ask for each of them on one
// machine and hold the results equal.
#pragma once

namespace qvr {

enum class CodePath {
    fastest,   ///< what this processor is fastest with
    portable,  ///< plain loops, as the compiler vectorised them
    plain      ///< the rule itself, value by value
};

}  // namespace qvr

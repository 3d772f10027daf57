// One file after the other: errors, progress and the exit code of all of them together.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "console.h"
#include "errors.h"

namespace qvr::tool {

/// Does `work` for every file. A Failure is printed once and the next file follows; with --json a failed file has its
/// object too. Several files of which some failed end with a summary.
/// @param work  prints the results of a file and returns what its progress line says, without name and time
/// @throws Failure of an interruption
Exit forEachFile(const std::vector<std::string>& files, const Common& common, Console& console,
                 const std::function<std::string(const std::string& file)>& work);

}  // namespace qvr::tool

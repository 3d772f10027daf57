// Lines are as wide as the paths of the pictures need.
#include "tools/demo/check.h"

#include <cstdio>

namespace qvr {

void require(bool holds, const std::string& otherwise) {
    if (!holds) throw DemoFailure(otherwise);
}

void makeFolder(const std::filesystem::path& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    require(!error, folder.string() + ": the folder cannot be made: " + error.message());
}

void tellHeading(const std::string& heading) {
    std::printf("%s\n", heading.c_str());
}

void tell(const std::string& what, const std::string& result) {
    std::printf("  %-44s %s\n", what.c_str(), result.c_str());
}

std::string Stopwatch::text() const {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.1f ms", milliseconds());
    return buffer;
}

}  // namespace qvr

// What the verb exam does, one function per action.
#pragma once

#include <string>

#include "console.h"
#include "display.h"
#include "errors.h"
#include "loading.h"

namespace qvr::tool {

struct BuildRequest {
    std::string source;  ///< a folder, searched with everything below it
    std::string exam;
    Curve curve;
    bool newUid = false;  ///< instead of UIDs that are missing, unusable or taken
};
Exit buildExam(const BuildRequest& request, const WindowOptions& window, const Common& common,
               Console& console);

Exit listExam(const std::string& exam, const Common& common, Console& console);

struct ExportRequest {
    std::string exam;
    std::string folder;
    std::string format;  ///< one of exportFormats()
};
/// The formats that this build writes: name and what it holds.
const std::vector<std::pair<std::string, std::string>>& exportFormats();
Exit exportExam(const ExportRequest& request, const Common& common, Console& console);

}  // namespace qvr::tool

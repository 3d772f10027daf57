// What the tool and the library need of this machine.
#pragma once

#include <string>
#include <vector>

namespace qvr::tool {

struct Finding {
    enum class Grade { ok, warning, problem };
    Grade grade = Grade::ok;
    std::string topic;   ///< "fonts", "script Hebrew", "dictionary", …
    std::string found;   ///< what there is
    std::string advice;  ///< what to do; empty when all is well
};

/// The face that stands for Arial, and whether some face has the letters of each script.
std::vector<Finding> examineFonts();
/// DCMTK's dictionary and the compressions that can be read.
std::vector<Finding> examineDicom();
/// Whether files can be written into a folder, and how many images have room there.
std::vector<Finding> examineFolder(const std::string& folder);

}  // namespace qvr::tool

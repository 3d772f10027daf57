// What became of an exam's files, and what can be done about it.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "errors.h"
#include "examFolder.h"

namespace qvr::tool {

/// One image of the exam file.
struct ImageCheck {
    std::string uid;
    FileReport imageFile;
    FileReport rawCopy;
    std::string repaired;                ///< what was done, in words; empty when nothing was
    std::optional<Failure> notRestored;  ///< why a file could not be written
    bool whole() const { return imageFile.whole() && rawCopy.whole(); }
};

/// Files in the exam folder that belong to no image of the exam file.
struct StrayFile {
    enum class Kind {
        unknownImage,  ///< raw copy or image file of an image that the exam file does not know
        workFile,      ///< pixels that a host wrote out and never committed
        temporary,     ///< left behind by a write that was killed
        unfinished,  ///< folder of an exam that was to replace this one, left behind by a build that was killed
        replaced,    ///< folder of what this exam replaced
        other
    };
    Kind kind = Kind::other;
    std::string name;       ///< below the exam folder; of an unknown image its UID
    std::string described;  ///< "raw copy 12288 bytes, no image file"
    bool removed = false;
};

/// Looks at the files of one image, every byte of them.
ImageCheck checkImage(const ExamFolder& folder, const ImageRecord& image);

/// Brings a missing or short image file back from a whole raw copy, and a raw copy from an image file that has the same
/// pixels, each through a copy beside it; an image file that has the acquired pixels already is told of as such. A file of another content or length is left as it is: it may be newer than
/// the exam file. Afterwards `image` tells of the files as they are.
ImageCheck repairImage(const ExamFolder& folder, ImageRecord& image);

/// @param exam  may be empty, where there is no exam file. @throws Failure when a folder cannot be read
std::vector<StrayFile> strayFiles(const ExamFolder& folder, ExamRecord& exam);

/// Removes what a killed write or build left behind. @return true when it is gone
bool removeTemporary(const ExamFolder& folder, const StrayFile& file);

}  // namespace qvr::tool

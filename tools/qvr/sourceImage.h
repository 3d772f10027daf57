// An image as its file holds it, before it is adopted.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

class DcmDataset;

namespace qvr::tool {

/// What the bits of a stored pixel word mean.
struct PixelFormat {
    int bitsStored = 14;  ///< 1 … 16
    int highBit = 13;  ///< position of the highest of them; bits above and below do not belong to the value
    bool isSigned = false;  ///< two's complement
    bool inverse = false;   ///< low values are meant to be bright
    /// Values that stand for "no image here", lowest and highest, as stored.
    std::optional<std::pair<int, int>> padding;
};

/// A display window named by the file, in the file's output units.
struct StoredWindow {
    double center = 0;
    double width = 0;
};

struct SourceImage {
    std::string file;         ///< as named on the command line
    std::string kind;         ///< "DICOM", "PGM" or "raw"
    std::string compression;  ///< transfer syntax in words; empty for other files
    std::string photometric;  ///< as stored; empty when the file does not say
    std::string modality, bodyPart, view, laterality, sopInstanceUid;

    int columns = 0;
    int rows = 0;
    int frames = 1;
    int bitsAllocated = 16;
    PixelFormat format;
    bool bottomRowFirst = false;
    std::vector<std::uint16_t> words;  ///< columns * rows pixel words

    double slope = 1;  ///< output = slope * stored + intercept
    double intercept = 0;
    std::vector<StoredWindow> windows;
    std::optional<std::pair<double, double>> spacing;  ///< millimetres per column and per row
    std::string spacingSource;                         ///< the attribute it comes from

    std::shared_ptr<DcmDataset> header;  ///< of a DICOM file, without its pixels; null for other files

    std::vector<std::string> warnings;  ///< what a user should know about reading it
};

/// Why a SOP Instance UID cannot become part of a file name; empty when it can.
std::string unusableUidReason(const std::string& uid);

}  // namespace qvr::tool

// DICOM images as the tool writes them: MONOCHROME2, 14 of 16 bits, one frame, uncompressed, texts in UTF-8.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "display.h"

class DcmDataset;

namespace qvr::tool {

/// What is written. Everything but size, pixels and window may be left as it is.
struct DicomImage {
    int width = 0;
    int height = 0;
    std::span<const std::uint16_t> pixels;  ///< width * height values of 14 bits, row 0 being the BOTTOM row
    int windowCenter = 0;
    int windowWidth = 0;  ///< at least 1
    Curve curve;          ///< one that is not linear is stored as a VOI LUT beside the window

    /// Data set that describes the image: of the file it comes from, or made for it. Patient, study, series and
    /// acquisition are carried over; its pixels, if any, are not looked at. Null: a Secondary Capture.
    std::shared_ptr<DcmDataset> source;
    /// False: the values are those of the source, whose SOP Instance UID is kept. True: the image is DERIVED, has a new
    /// UID and refers to the source.
    bool pixelsChanged = true;
    bool marksBurned = false;
    bool negative = false;     ///< bones are dark
    std::string derivation;    ///< what was done, in words
    bool quarterTurn = false;  ///< rows of the source are columns now: its Pixel Spacing changes places
    std::optional<std::pair<double, double>>
        spacing;                                    ///< millimetres per column and per row, as they are now
    std::optional<std::string> patientOrientation;  ///< as it is now; otherwise as in the source
};

struct DicomFile {
    std::vector<std::uint8_t> bytes;
    std::string sopInstanceUid;
};
/// @throws Failure for a window below 1, pixels beyond 14 bits or more than 65535 rows or columns
DicomFile encodeDicom(const DicomImage& image);
/// The same; its sentences name the file that it is for.
DicomFile encodeDicom(const std::string& target, const DicomImage& image);

/// Writes the file as safeFile.h does; checkTarget comes first. @return its SOP Instance UID
std::string writeDicom(const std::string& target, const DicomImage& image, bool force);

}  // namespace qvr::tool

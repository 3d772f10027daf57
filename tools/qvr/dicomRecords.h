// Patient, study, series and image of a DICOM file as the records that a host hands to the library.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include <qvr/qvr.h>

#include "examFile.h"

namespace qvr::tool {

struct DicomRecords {
    std::string file;  ///< that they were read from
    QVR_ST_STUDY study;
    std::string patientName;                 ///< all of it, as in personName.h
    dcmStudy::Modality kind = dcmStudy::DX;  ///< CR for computed radiography, DX for everything else
    QVR_ST_SERIES series;
    QVR_ST_IMAGE image;  ///< attributes; size, window and pixels come from the adopted image
    int exposureIndex = 0;
    PixelHistory history;
};

/// Texts become UTF-8 where the file names its character set. @throws Failure
DicomRecords readRecords(const std::string& file, std::span<const std::uint8_t> bytes);

}  // namespace qvr::tool

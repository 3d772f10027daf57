// Exams for tests: images that can be told apart, as records and as DICOM files.
#pragma once

#include <string>

#include "dicomMaker.h"
#include "examBuild.h"
#include "support/temporaryFolder.h"

/// A picture of 14 bits whose values all depend on `number`; wider than high, with odd sides.
inline qvr::tool::AdoptedImage picture(int number, int width = 67, int height = 45) {
    qvr::tool::AdoptedImage image;
    image.width = width;
    image.height = height;
    for (int row = 0; row < height; ++row)
        for (int column = 0; column < width; ++column)
            image.pixels.push_back(static_cast<std::uint16_t>(500 * number + 7 * column + 3 * row));
    return image;
}

inline std::string uidOf(int number) {
    return "1.2.3." + std::to_string(number);
}

inline qvr::tool::DicomRecords recordsOf(int number) {
    qvr::tool::DicomRecords records;
    records.study.StudyInstanceUID = "1.2.9";
    records.study.PatientFamilyName = "Doe";
    records.study.StudyDateTime = COleDateTime(2024, 5, 31, 14, 30, 7);
    records.series.Modality = "DX";
    records.series.SeriesNumber = number;
    records.series.BodyPartExamined = "HAND";
    records.image.SOPInstanceUID = uidOf(number).c_str();
    records.image.InstanceNumber = number;
    records.image.Exposure = 1.25;
    records.image.ImageLaterality = "L";
    records.exposureIndex = 300 + number;
    return records;
}

/// `count` DICOM files of 96 x 64 pixels, 12 bits, in one study: "f01.dcm" with UID 1.2.3.1 and so on.
inline void writeDicoms(const std::string& folder, int count, int columns = 96, int rows = 64) {
    for (int number = 1; number <= count; ++number) {
        DicomSpec spec;
        spec.columns = columns;
        spec.rows = rows;
        spec.uid = uidOf(number);
        for (int i = 0; i < columns * rows; ++i)
            spec.words.push_back(static_cast<std::uint16_t>((100 * number + i * 31) % 4096));
        writeDicom(folder + (number < 10 ? "/f0" : "/f") + std::to_string(number) + ".dcm", spec);
    }
}

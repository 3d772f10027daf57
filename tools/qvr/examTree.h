// Between an exam file's records and the library's tree of an examination.
#pragma once

#include "examFolder.h"

namespace qvr::tool {

/// The rectangle that an exam's pictures are fitted into.
RECT displayOf(const ExamRecord& exam);

/// Takes what a user may have changed since the image was made into its record: window, curve and, where there is a
/// display, marks.
void takeState(dcmSeries& series, ImageRecord& image);

/// Sets curve and marks of a resident image as its record has them, and refreshes its pictures.
/// @throws Failure when a mark cannot be set as it was
void restoreState(dcmSeries& series, const ImageRecord& image, const RECT& display, CDC& surface);

/// Makes the studies and series of an exam file, without images.
/// @throws Failure without memory
void reopenRecords(dcmExam& exam, const ExamRecord& record);

/// Opens the image of a series that reopenRecords made.
/// @param read  the image becomes resident and has its pictures
/// @throws Failure when its image file is not whole or cannot be read
void reopenImage(dcmExam& exam, const ExamFolder& folder, const ExamRecord& record, const ExamImage& image,
                 bool read, CDC& surface);

}  // namespace qvr::tool

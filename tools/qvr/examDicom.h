// An image of an exam as a DICOM data set without pixels.
#pragma once

#include <memory>

#include "examFile.h"

class DcmDataset;

namespace qvr::tool {

/// What the exam file tells of patient, study, series and image. Exposure and exposure time are rounded to the whole
/// numbers that DICOM has for them.
std::shared_ptr<DcmDataset> dataSetOf(const StudyRecord& study, const SeriesRecord& series);

}  // namespace qvr::tool

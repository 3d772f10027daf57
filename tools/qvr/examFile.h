// The exam file: everything that an examination is reopened from, as JSON text.
//
// An exam folder holds it as exam.json beside the folder Cache with the pixels. It names no paths: the files of an
// image follow from its SOP Instance UID, so that no exam file can lead out of its folder. What it says about a pixel
// file is what a whole file must look like; whether the file is there is for others to find out.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <qvr/qvr.h>

namespace qvr::tool {

/// A text on an image, as it stands on the exam's display.
struct MarkRecord {
    std::string text;     ///< UTF-8
    int fontHeight = 30;  ///< 30, 40 or 50
    int left = 0;         ///< of its text box on the display
    int top = 0;
};

/// What a whole pixel file holds.
struct PixelFileRecord {
    int columns = 0;
    int rows = 0;
    std::uint32_t checksum = 0;  ///< of the bytes, see fileState.h
    std::uint64_t bytes() const {
        return 2 * static_cast<std::uint64_t>(columns) * static_cast<std::uint64_t>(rows);
    }
};

/// What the file that an image comes from says of its pixels, and no pixel shows. Empty: it says nothing.
struct PixelHistory {
    std::string burnedIn;                 ///< "YES" or "NO"
    std::string lossy;                    ///< "01" after a compression that lost something, else "00"
    std::string lossyRatio, lossyMethod;  ///< of each such compression, with backslashes between them
};

struct ImageRecord {
    /// Attributes, size and window; no pixels and no paths.
    QVR_ST_IMAGE attributes;
    int exposureIndex = 0;
    int curve = 0;  ///< display curve: type and its two parameters
    int curveK = 1;
    int curveC = 5;
    std::vector<MarkRecord> marks;  ///< at most three
    PixelFileRecord rawCopy;
    std::optional<PixelFileRecord> imageFile;  ///< nothing while it is not written
    PixelHistory history;
};

struct SeriesRecord {
    QVR_ST_SERIES attributes;
    ImageRecord image;
};

struct StudyRecord {
    QVR_ST_STUDY attributes;
    std::string patientName;  ///< all of it, as in personName.h; empty: the attributes have what is known
    dcmStudy::Modality modality = dcmStudy::DX;
    std::vector<SeriesRecord> series;
};

struct ExamRecord {
    /// Size of the display that the pictures are fitted into.
    CSize display{1024, 1024};
    std::vector<StudyRecord> studies;
};

/// The file's text. Texts that are not UTF-8 have U+FFFD where they are not.
std::string toText(const ExamRecord& exam);
/// Bytes of an exam file that is read.
constexpr std::size_t kLargestExamFile = std::size_t{1} << 26;

/// Reads the file's text. Nothing in it is trusted: types, sizes, dates and UIDs are checked.
/// @param file  its name, for sentences
/// @throws Failure
ExamRecord parseExam(const std::string& file, std::span<const std::uint8_t> bytes);

/// Every image of the exam in order, each with its study and series.
struct ExamImage {
    int study = 0;
    int position = 0;  ///< of the series in its study
    SeriesRecord* series = nullptr;
    ImageRecord& image() const { return series->image; }
    std::string uid() const { return series->image.attributes.SOPInstanceUID.GetString(); }
};
std::vector<ExamImage> imagesOf(ExamRecord& exam);

/// A valid date as the file has it: "2024-05-31T14:30:00".
std::string dateText(const COleDateTime& date);

/// Why a SOP Instance UID cannot name files of an exam; empty when it can.
std::string unusableInExam(const std::string& uid);

}  // namespace qvr::tool

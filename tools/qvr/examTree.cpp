// A mark is set on the display that it was made on: added, brought to its size, then moved to its place.
#include "examTree.h"

#include <fmt/format.h>

#include "errors.h"

namespace qvr::tool {

namespace {

[[noreturn]] void notReopened(const std::string& why) {
    throw Failure(Exit::internal, "", "not reopened", why);
}

void addMark(rawImage& raw, const MarkRecord& wanted, const RECT& display, CDC& surface) {
    CMark mark;
    bool set = raw.AddMark(wanted.text.c_str(), &display, &surface) != 0;
    const int index = raw.GetMarkCount() - 1;
    constexpr int steps =
        3;  // between the smallest and the largest font height, and one to see that it stays
    for (int step = 0; set && step < steps && raw.GetMark(index, mark); ++step) {
        if (mark.GetDISPFontHeight() < wanted.fontHeight) raw.InflateMark(index, &display, &surface);
        if (mark.GetDISPFontHeight() > wanted.fontHeight) raw.DeflateMark(index);
    }
    if (set) raw.SetMarkDISPLeftTop(index, {wanted.left, wanted.top}, &display, &surface);
    set = set && raw.GetMark(index, mark) && mark.GetDISPFontHeight() == wanted.fontHeight &&
          mark.GetDISPLeftTop() == CPoint{wanted.left, wanted.top};
    if (!set)
        throw Failure(Exit::refused, "", "not reopened",
                      fmt::format("mark \"{}\" cannot be set as it was", wanted.text),
                      "See with qvr doctor whether its font is missing.");
}

}  // namespace

RECT displayOf(const ExamRecord& exam) {
    return {0, 0, exam.display.cx, exam.display.cy};
}

void takeState(dcmSeries& series, ImageRecord& image) {
    const rawImage* raw = series.GetDcmImage() ? series.GetDcmImage()->GetRawImage() : nullptr;
    if (!raw) return;
    image.attributes.WindowCenter = raw->GetWindowCenter();
    image.attributes.WindowWidth = raw->GetWindowWidth();
    image.exposureIndex = series.GetExposureIndex();
    image.curve = raw->GetLUTType();
    image.curveK = raw->GetLUTParamK();
    image.curveC = raw->GetLUTParamC();
    image.marks.clear();
    CMark mark;
    for (int i = 0; raw->GetMark(i, mark); ++i)
        image.marks.push_back(
            {mark.GetMarkText(), mark.GetDISPFontHeight(), mark.GetDISPLeftTop().x, mark.GetDISPLeftTop().y});
}

void restoreState(dcmSeries& series, const ImageRecord& image, const RECT& display, CDC& surface) {
    series.SetExposureIndex(image.exposureIndex);
    series.SetLUT(image.curve, image.curveK, image.curveC);
    if (!series.UpdateImage(&surface)) notReopened("the display could not be made");
    rawImage& raw = *series.GetDcmImage()->GetRawImage();
    raw.DeleteAllMark();
    for (const auto& mark : image.marks) addMark(raw, mark, display, surface);
    raw.SetMarkSelected(-1);
}

void reopenRecords(dcmExam& exam, const ExamRecord& record) {
    for (const auto& study : record.studies) {
        if (!exam.CreateStudy(&study.attributes, study.modality)) notReopened("there is not enough memory");
        for (const auto& series : study.series)
            if (!exam.CreateSeries(exam.GetStudyCount() - 1, &series.attributes))
                notReopened("there is not enough memory");
    }
}

void reopenImage(dcmExam& exam, const ExamFolder& folder, const ExamRecord& record, const ExamImage& image,
                 bool read, CDC& surface) {
    const std::string uid = image.uid();
    const auto found = folder.lookAtImage(image.image(), read);
    if (!found.whole())
        throw Failure(Exit::unreadable, uid, "not reopened", "its image file is " + describe(found),
                      fmt::format("Use qvr cache check {} --repair.", folder.path()));
    QVR_ST_IMAGE attributes = image.image().attributes;
    attributes.FilePath = folder.imageFile(uid).c_str();
    attributes.BAKFilePath = folder.rawCopy(uid).c_str();
    attributes.WorkFilePath = folder.workFile(uid).c_str();

    const RECT display = displayOf(record);
    if (!exam.OpenImage(image.study, image.position, &attributes, read ? &display : nullptr, &surface))
        throw Failure(Exit::unreadable, uid, "not reopened", "the library does not open it");
    dcmSeries& series = *exam.GetStudy(image.study)->GetSeries(image.position);
    if (!read) return;
    if (!series.IsImageInRAM())
        throw Failure(Exit::unreadable, uid, "not reopened", "its pixels cannot be read");
    try {
        restoreState(series, image.image(), display, surface);
    } catch (const Failure& failure) {
        throw failure.about(uid);
    }
}

}  // namespace qvr::tool

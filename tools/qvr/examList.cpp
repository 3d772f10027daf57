// qvr exam list: the examination is reopened, without reading pixels, and told series by series.
#include <fmt/format.h>

#include "examTree.h"
#include "examVerbs.h"

namespace qvr::tool {

namespace {

const char* curveName(int type) {
    constexpr const char* names[] = {"linear", "power", "exp", "log", "sigmoid"};
    return type >= 0 && type < 5 ? names[type] : names[0];  // the library takes any other as linear
}

std::string orDash(const char* text) {
    return *text ? printable(text) : "-";
}

// The series as the reopened tree has it.
class Line {
public:
    Line(dcmExam& exam, const ExamImage& image, const std::string& state)
        : m_image(image), m_series(*exam.GetStudy(image.study)->GetSeries(image.position)), m_state(state) {
        const auto& attributes = image.series->attributes;
        m_view = fmt::format("{} {}", orDash(m_series.GetBodyPartExamined()),
                             orDash(attributes.ViewPosition.GetString()));
    }

    std::string text() const {
        const auto& image = m_image.image();
        return fmt::format("{}.{}  {:<2}  {}  {}  {} x {}  window {}/{}  {}  {} marks  {}\n", m_image.study,
                           m_image.position, orDash(m_series.GetModality()), m_image.uid(), m_view,
                           image.attributes.Width, image.attributes.Height, image.attributes.WindowCenter,
                           image.attributes.WindowWidth, curveName(image.curve), image.marks.size(), m_state);
    }
    nlohmann::ordered_json object(const std::string& exam, const dcmStudy& study) const {
        const auto& image = m_image.image();
        return {
            {"file", exam},
            {"study", m_image.study},
            {"series", m_image.position},
            {"patient_name", study.GetPatientName()},
            {"patient_id", study.GetPatientID()},
            {"study_instance_uid", study.GetStudyInstanceUID()},
            {"modality", m_series.GetModality()},
            {"body_part", m_series.GetBodyPartExamined()},
            {"view", m_image.series->attributes.ViewPosition.GetString()},
            {"sop_instance_uid", m_image.uid()},
            {"rows", image.attributes.Height},
            {"columns", image.attributes.Width},
            {"window", {{"center", image.attributes.WindowCenter}, {"width", image.attributes.WindowWidth}}},
            {"curve", {{"type", curveName(image.curve)}, {"k", image.curveK}, {"c", image.curveC}}},
            {"marks", image.marks.size()},
            {"image_file", m_state},
            {"result", m_state == "whole" ? "ok" : "failed"}};
    }

private:
    const ExamImage& m_image;
    const dcmSeries& m_series;
    std::string m_state;
    std::string m_view;
};

}  // namespace

Exit listExam(const std::string& path, const Common& common, Console& console) {
    const ExamFolder folder(path);
    ExamRecord record = folder.read();
    dcmExam exam;
    CRasterDC surface(1, 1);
    reopenRecords(exam, record);
    const auto images = imagesOf(record);
    std::size_t failed = 0;
    for (const auto& image : images) {
        const auto found = folder.lookAtImage(image.image(), false);
        if (found.whole())
            reopenImage(exam, folder, record, image, false, surface);
        else
            ++failed;
        const Line line(exam, image, found.whole() ? "whole" : "image file " + describe(found));
        if (common.json)
            console.object(line.object(path, *exam.GetStudy(image.study)));
        else
            console.result(line.text());
    }
    if (failed == 0) return Exit::done;
    throw Failure(failed == images.size() ? Exit::unreadable : Exit::someFailed, path, "not whole",
                  fmt::format("{} of {} images cannot be opened", failed, images.size()),
                  fmt::format("Use qvr cache check {} --repair.", path));
}

}  // namespace qvr::tool

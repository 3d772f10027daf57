// dcmStudy: attributes, the making of series, and the requests that pass down to one of them.
#include "qvr/model/dcmStudy.h"

#include <utility>

#include "qvr/image/rawImage.h"
#include "qvr/model/detail/assign.h"
#include "qvr/platform/detail/guard.h"

dcmStudy::dcmStudy() {
    m_Values.StudyDateTime = COleDateTime::GetCurrentTime();
    m_Values.PatientBirthDate = COleDateTime::GetCurrentTime();
    m_Values.Status = -1;
}

// In list order, which the vector's own destruction does not promise.
dcmStudy::~dcmStudy() {
    for (auto& series : m_SeriesList) series.reset();
}

int dcmStudy::Create(const QVR_ST_STUDY* record, Modality modality) {
    if (!record) return 0;
    QVR_ST_STUDY copy;
    dcmPersonName physician;
    dcmPersonName patient;
    dcmPersonName other;
    const bool whole =
        qvr::assignWhole(copy, *record) &&
        physician.compose(record->ReferringPhysicianFamilyName, record->ReferringPhysicianGivenName) &&
        patient.compose(record->PatientFamilyName, record->PatientGivenName) &&
        other.compose(record->OtherPatientFamilyName, record->OtherPatientGivenName);
    if (!whole) return 0;
    m_Values = std::move(copy);
    m_ReferringPhysicianName.swap(physician);
    m_PatientName.swap(patient);
    m_OtherPatientName.swap(other);
    m_Modality = modality;
    return 1;
}

dcmSeries* dcmStudy::CreateSeries(const QVR_ST_SERIES* record) {
    return qvr::guarded<dcmSeries*>(nullptr, [&]() -> dcmSeries* {
        std::unique_ptr<dcmSeries> series;
        if (m_Modality == CR) series = std::make_unique<dcmCRSeries>();
        if (m_Modality == DX) series = std::make_unique<dcmDXSeries>();
        if (!series || !series->Create(record)) return nullptr;
        m_SeriesList.push_back(std::move(series));
        return m_SeriesList.back().get();
    });
}

dcmSeries* dcmStudy::GetSeries(int position) const {
    if (position < 0 || position >= GetSeriesCount()) return nullptr;
    return m_SeriesList[static_cast<std::size_t>(position)].get();
}

int dcmStudy::GetSeriesIndex(const dcmSeries* series) const {
    for (int position = 0; series && position < GetSeriesCount(); ++position)
        if (GetSeries(position) == series) return position;
    return -1;
}

void dcmStudy::SetLUT(int type, int k, int c) {
    for (const auto& series : m_SeriesList) series->SetLUT(type, k, c);
}

void dcmStudy::SetAdmittingDiagnosesDescription(const char* description) {
    qvr::guarded([&] { m_Values.AdmittingDiagnosesDescription = description; });
}

namespace qvr {

namespace {

// What a request at a position answers: that of its series, or 0 when there is none.
template <class Request>
int request(dcmSeries* series, Request&& call) {
    return series ? std::forward<Request>(call)(*series) : 0;
}

}  // namespace

}  // namespace qvr

int dcmStudy::CreateImage(int series, const QVR_ST_IMAGE* record, const char* directory,
                          const RECT* rectangle, CDC* surface) {
    return qvr::request(GetSeries(series), [&](auto& target) {
        return target.CreateImage(record, directory, rectangle, surface);
    });
}

int dcmStudy::CreateProtocol(int series, const QVR_ST_PROTOCOL* record) {
    return qvr::request(GetSeries(series), [&](auto& target) { return target.CreateProtocol(record); });
}

int dcmStudy::UpdateImage(int series, int width, int height, const std::uint16_t* pixels, int bitsStored,
                          int highBit, int windowWidth, int windowCenter, const RECT* rectangle,
                          CDC* surface) {
    return qvr::request(GetSeries(series), [&](auto& target) {
        return target.UpdateImage(width, height, pixels, bitsStored, highBit, windowWidth, windowCenter,
                                  rectangle, surface);
    });
}

int dcmStudy::UpdateImage(int series, const RECT* rectangle, CDC* surface, int refresh) {
    return qvr::request(GetSeries(series),
                        [&](auto& target) { return target.UpdateImage(rectangle, surface, refresh); });
}

int dcmStudy::UpdateImage(int series, int windowWidth, int windowCenter, CDC* surface) {
    return qvr::request(GetSeries(series),
                        [&](auto& target) { return target.UpdateImage(windowWidth, windowCenter, surface); });
}

int dcmStudy::UpdateImage(int series, float xRatio, float yRatio, const RECT* rectangle, CDC* surface) {
    return qvr::request(GetSeries(series),
                        [&](auto& target) { return target.UpdateImage(xRatio, yRatio, rectangle, surface); });
}

int dcmStudy::UpdateImage(int series, int xOffset, int yOffset, const RECT* rectangle, CDC* surface) {
    return qvr::request(GetSeries(series), [&](auto& target) {
        return target.UpdateImage(xOffset, yOffset, rectangle, surface);
    });
}

int dcmStudy::UpdateImage(int series, CDC* surface) {
    return qvr::request(GetSeries(series), [&](auto& target) { return target.UpdateImage(surface); });
}

int dcmStudy::RejectImage(int series) {
    return qvr::request(GetSeries(series), [&](auto& target) { return target.RejectImage(); });
}

int dcmStudy::WriteImageToHDD(int series) {
    return qvr::request(GetSeries(series), [&](auto& target) { return target.WriteImageToHDD(); });
}

int dcmStudy::ReadImageInRAM(int series, const RECT* rectangle, CDC* surface) {
    return qvr::request(GetSeries(series),
                        [&](auto& target) { return target.ReadImageInRAM(rectangle, surface); });
}

int dcmStudy::SaveUndoData(int series) {
    return qvr::request(GetSeries(series), [&](auto& target) { return target.SaveUndoData(); });
}

int dcmStudy::ReadUndoData(int series, const RECT* rectangle, CDC* surface) {
    return qvr::request(GetSeries(series),
                        [&](auto& target) { return target.ReadUndoData(rectangle, surface); });
}

int dcmStudy::IsImageExistInSeries(int series) const {
    return qvr::request(GetSeries(series), [&](auto& target) { return target.IsImageExist(); });
}

dcmProtocol* dcmStudy::GetProtocol(int series) const {
    const dcmSeries* const target = GetSeries(series);
    return target ? target->GetProtocol() : nullptr;
}

CDib* dcmStudy::GetDIB(int series) const {
    const dcmSeries* const target = GetSeries(series);
    dcmImage* const image = target ? target->GetDcmImage() : nullptr;
    const rawImage* const pixels = image ? image->GetRawImage() : nullptr;
    return pixels ? pixels->GetDIB() : nullptr;
}

void dcmStudy::DrawImage(int series, const RECT* rectangle, CDC* surface) {
    if (dcmSeries* const target = GetSeries(series)) {
        target->DrawImage(rectangle, surface);
    } else if (rectangle && surface) {
        qvr::guarded([&] { surface->FillSolidRect(rectangle, 0); });
    }
}

// dcmSeries: attributes, the image's coming and going, the protocol's picture. What an operation needs is copied or made
// before anything is changed.
#include "qvr/model/dcmSeries.h"

#include <new>
#include <utility>

#include "qvr/image/rawImage.h"
#include "qvr/model/detail/assign.h"
#include "qvr/platform/CFile.h"
#include "qvr/platform/detail/guard.h"

namespace {

constexpr COLORREF kBlack = 0;

}  // namespace

dcmSeries::dcmSeries() : m_SeriesDateTime(COleDateTime::GetCurrentTime()) {}

dcmSeries::~dcmSeries() {
    m_Image.reset();
    m_Protocol.reset();
    m_Thumb.reset();
    m_Preview.reset();
}

int dcmSeries::Create(const QVR_ST_SERIES* record) {
    if (!record) return 0;
    QVR_ST_SERIES copy;
    dcmPersonName physician;
    dcmPersonName operatorName;
    const bool whole =
        qvr::assignWhole(copy, *record) &&
        physician.compose(record->PerformingPhysicianFamilyName, record->PerformingPhysicianGivenName) &&
        operatorName.compose(record->OperatorFamilyName, record->OperatorGivenName);
    if (!whole) return 0;
    m_Modality = std::move(copy.Modality);
    m_SeriesInstanceUID = std::move(copy.SeriesInstanceUID);
    m_SeriesNumber = copy.SeriesNumber;
    m_PerformingPhysicianName.swap(physician);
    m_OperatorName.swap(operatorName);
    m_BodyPartExamined = std::move(copy.BodyPartExamined);
    m_SeriesDescription = std::move(copy.SeriesDescription);
    m_SeriesDateTime = copy.SeriesDateTime;
    m_Sent = copy.Sent;
    m_Printed = copy.Printed;
    m_Changed = 0;
    m_Deleted = 0;
    return 1;
}

std::shared_ptr<rawImage> dcmSeries::raw() const {
    rawImage* const pixels = m_Image ? m_Image->GetRawImage() : nullptr;
    return pixels ? std::shared_ptr<rawImage>(m_Image, pixels) : nullptr;
}

int dcmSeries::createImage(std::shared_ptr<dcmImage> image, const QVR_ST_IMAGE* record, const char* directory,
                           const RECT* rectangle, CDC* surface) {
    if (!image || m_Image || !record || !directory || !rectangle) return 0;
    m_Image = image;
    if (!image->Create(record)) return 0;
    // A host's entity may have no raw image, and it or the surface may call back: what is made is this image or nothing.
    const auto pixels = m_Image == image ? raw() : nullptr;
    if (!pixels || !pixels->CreateBAKFile(record->SOPInstanceUID, directory) || !pixels->ValidateFile())
        return 0;
    if (!rebuildFitted(rectangle, surface)) return 0;
    m_SeriesDateTime = record->ContentDateTime;
    return 1;
}

int dcmSeries::openImage(std::shared_ptr<dcmImage> image, const QVR_ST_IMAGE* record) {
    if (!image || m_Image || !record) return 0;
    m_Image = image;
    return image->Open(record) && m_Image == image ? 1 : 0;
}

void dcmSeries::CloseImage() {
    if (const auto pixels = raw()) pixels->Close();
}

int dcmSeries::SaveUndoData() {
    const auto pixels = raw();
    return pixels ? pixels->SaveUndoData() : 0;
}

void dcmSeries::DrawImage(const RECT* rectangle, CDC* surface) {
    if (!rectangle || !surface) return;
    if (!m_Image) {
        qvr::guarded([&] { surface->FillSolidRect(rectangle, kBlack); });
    } else if (const auto pixels = raw()) {
        pixels->Draw(rectangle, surface);
    }
}

int dcmSeries::WriteImageToHDD() {
    const auto pixels = raw();
    return pixels ? pixels->WriteToHDD() : 0;
}

int dcmSeries::IsImageInRAM() const {
    const auto pixels = raw();
    return pixels ? pixels->IsReadInRAM() : 0;
}

int dcmSeries::IsImageBAKFileValid() const {
    const auto pixels = raw();
    return pixels && pixels->ValidateFile() && pixels->IsBAKFileValid() ? 1 : 0;
}

int dcmSeries::GetImageBAKWidth() const {
    const auto pixels = raw();
    return pixels ? pixels->GetBAKWidth() : -1;
}

int dcmSeries::GetImageBAKHeight() const {
    const auto pixels = raw();
    return pixels ? pixels->GetBAKHeight() : -1;
}

const char* dcmSeries::GetImageFilePath() const {
    const auto pixels = raw();
    return pixels ? pixels->GetFilePath() : nullptr;
}

const char* dcmSeries::GetImageBAKFilePath() const {
    const auto pixels = raw();
    return pixels ? pixels->GetBAKFilePath() : nullptr;
}

int dcmSeries::RejectImage() {
    const auto pixels = raw();
    if (!pixels || !m_Thumb) return 0;
    DeleteFileA(pixels->GetFilePath());
    DeleteFileA(pixels->GetBAKFilePath());
    m_Image.reset();
    m_Thumb.reset();
    loadProtocolThumb();
    return 1;
}

// The thumbnail of a series without an image: what its protocol's file holds, or nothing.
void dcmSeries::loadProtocolThumb() {
    m_Thumb.reset();
    if (!m_Protocol || !*m_Protocol->GetThumbFilePath()) return;
    qvr::guarded([&] {
        CFile file;
        if (!file.Open(m_Protocol->GetThumbFilePath(), CFile::modeRead)) return;
        m_Thumb = std::make_unique<CDib>();
        m_Thumb->Read(&file);
    });
}

int dcmSeries::CreateProtocol(const QVR_ST_PROTOCOL* record) {
    if (!record) return 0;
    // The record is copied first, so that a protocol is never made of half of it.
    QVR_ST_PROTOCOL copy;
    if (!qvr::assignWhole(copy, *record)) return 0;
    std::unique_ptr<dcmProtocol> protocol(new (std::nothrow) dcmProtocol(std::move(copy)));
    if (!protocol) return 0;
    m_Protocol = std::move(protocol);
    if (!m_Image) loadProtocolThumb();
    return 1;
}

void dcmSeries::SetExposureIndex(int index) {
    if (m_Image) m_Image->SetExposureIndex(index);
}

int dcmSeries::GetExposureIndex() const {
    return m_Image ? m_Image->GetExposureIndex() : 0;
}

dcmCRSeries::dcmCRSeries() = default;
dcmCRSeries::~dcmCRSeries() = default;

int dcmCRSeries::Create(const QVR_ST_SERIES* record) {
    CString view;
    if (!record || !qvr::assignWhole(view, record->ViewPosition) || !dcmSeries::Create(record)) return 0;
    m_ViewPosition = std::move(view);
    return 1;
}

int dcmCRSeries::CreateImage(const QVR_ST_IMAGE* record, const char* directory, const RECT* rectangle,
                             CDC* surface) {
    return qvr::guarded(0, [&] {
        return createImage(std::make_shared<dcmCRImage>(), record, directory, rectangle, surface);
    });
}

int dcmCRSeries::OpenImage(const QVR_ST_IMAGE* record) {
    return qvr::guarded(0, [&] { return openImage(std::make_shared<dcmCRImage>(), record); });
}

dcmDXSeries::dcmDXSeries() = default;
dcmDXSeries::~dcmDXSeries() = default;

int dcmDXSeries::Create(const QVR_ST_SERIES* record) {
    CString intent;
    if (!record || !qvr::assignWhole(intent, record->PresentationIntentType) || !dcmSeries::Create(record))
        return 0;
    m_PresentationIntentType = std::move(intent);
    return 1;
}

int dcmDXSeries::CreateImage(const QVR_ST_IMAGE* record, const char* directory, const RECT* rectangle,
                             CDC* surface) {
    return qvr::guarded(0, [&] {
        return createImage(std::make_shared<dcmDXImage>(), record, directory, rectangle, surface);
    });
}

int dcmDXSeries::OpenImage(const QVR_ST_IMAGE* record) {
    return qvr::guarded(0, [&] { return openImage(std::make_shared<dcmDXImage>(), record); });
}

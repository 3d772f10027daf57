// dcmImage: attributes are taken over from the record, the rest is the raw image's work.
#include "qvr/model/dcmImage.h"

#include <utility>

#include "qvr/image/rawImage.h"
#include "qvr/model/detail/assign.h"
#include "qvr/platform/detail/guard.h"

namespace {

constexpr const char* kComputedRadiography = "1.2.840.10008.5.1.4.1.1.1";
constexpr const char* kDigitalXRayForPresentation = "1.2.840.10008.5.1.4.1.1.1.1";

}  // namespace

dcmImage::dcmImage() : dcmImage("") {}

dcmImage::dcmImage(const char* sopClassUID)
    : m_ContentDateTime(COleDateTime::GetCurrentTime()), m_SOPClassUID(sopClassUID) {}

dcmImage::~dcmImage() = default;

bool dcmImage::takeAttributes(const QVR_ST_IMAGE& record) {
    return qvr::guarded(false, [&] {
        CString orientation = record.PatientOrientation;
        CString instanceUID = record.SOPInstanceUID;
        m_PatientOrientation = std::move(orientation);
        m_SOPInstanceUID = std::move(instanceUID);
        m_InstanceNumber = record.InstanceNumber;
        m_ContentDateTime = record.ContentDateTime;
        m_Height = record.Height;
        m_Width = record.Width;
        m_BitsStored = record.BitsStored;
        m_HighBit = record.HighBit;
        m_PixelSpacing = record.PixelSpacing;
        m_WindowCenter = record.WindowCenter;
        m_WindowWidth = record.WindowWidth;
        m_KVP = record.KVP;
        m_XRayTubeCurrent = record.XRayTubeCurrent;
        m_Exposure = record.Exposure;
        m_ExposureTime = record.ExposureTime;
        return true;
    });
}

int dcmImage::Create(const QVR_ST_IMAGE* record) {
    if (!record || m_RawImage || !takeAttributes(*record)) return 0;
    qvr::guarded([this] { m_RawImage = std::make_shared<rawImage>(); });
    if (!m_RawImage) return 0;
    const QVR_ST_RAW_IMAGE raw{.Height = m_Height,
                               .Width = m_Width,
                               .BAKWidth = m_Width,
                               .BAKHeight = m_Height,
                               .BitsStored = m_BitsStored,
                               .HighBit = m_HighBit,
                               .PixelSpacing = m_PixelSpacing,
                               .WindowCenter = m_WindowCenter,
                               .WindowWidth = m_WindowWidth,
                               .PixelData = record->PixelData,
                               .Mode = 0,
                               .FilePath = {},
                               .BAKFilePath = {},
                               .WorkFilePath = {}};
    return m_RawImage->Create(&raw);
}

int dcmImage::Open(const QVR_ST_IMAGE* record) {
    if (!record || m_RawImage || !takeAttributes(*record)) return 0;
    qvr::guarded([this] { m_RawImage = std::make_shared<rawImage>(); });
    if (!m_RawImage) return 0;
    return qvr::guarded(0, [&] {
        const QVR_ST_RAW_IMAGE raw{.Height = m_Height,
                                   .Width = m_Width,
                                   .BAKWidth = record->BAKWidth,
                                   .BAKHeight = record->BAKHeight,
                                   .BitsStored = m_BitsStored,
                                   .HighBit = m_HighBit,
                                   .PixelSpacing = m_PixelSpacing,
                                   .WindowCenter = m_WindowCenter,
                                   .WindowWidth = m_WindowWidth,
                                   .PixelData = record->PixelData,
                                   .Mode = 1,
                                   .FilePath = record->FilePath,
                                   .BAKFilePath = record->BAKFilePath,
                                   .WorkFilePath = record->WorkFilePath};
        return m_RawImage->Open(&raw);
    });
}

rawImage* dcmImage::GetRawImage() {
    return m_RawImage.get();
}

int dcmImage::GetWindowWidth() const {
    if (m_RawImage) m_WindowWidth = m_RawImage->GetWindowWidth();
    return m_WindowWidth;
}

int dcmImage::GetWindowCenter() const {
    if (m_RawImage) m_WindowCenter = m_RawImage->GetWindowCenter();
    return m_WindowCenter;
}

dcmCRImage::dcmCRImage() : dcmImage(kComputedRadiography) {}
dcmCRImage::~dcmCRImage() = default;

dcmDXImage::dcmDXImage() : dcmImage(kDigitalXRayForPresentation) {}

dcmDXImage::~dcmDXImage() = default;

// The text is copied before the image is made, since nothing may fail after that.
int dcmDXImage::Create(const QVR_ST_IMAGE* record) {
    CString laterality;
    if (!record || !qvr::assignWhole(laterality, record->ImageLaterality) || !dcmImage::Create(record))
        return 0;
    m_ImageLaterality = std::move(laterality);
    return 1;
}

int dcmDXImage::Open(const QVR_ST_IMAGE* record) {
    CString laterality;
    if (!record || !qvr::assignWhole(laterality, record->ImageLaterality) || !dcmImage::Open(record))
        return 0;
    m_ImageLaterality = std::move(laterality);
    return 1;
}

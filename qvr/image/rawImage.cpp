// rawImage: life and residency. What can fail is done before the object is changed; pixels are freed only once they
// are safe on disk.
#include "qvr/image/rawImage.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "qvr/image/QVR_COMP.h"
#include "qvr/image/detail/automaticWindow.h"
#include "qvr/platform/detail/guard.h"
#include "qvr/platform/detail/memory.h"
#include "qvr/platform/detail/numbers.h"

rawImage::rawImage() = default;
rawImage::~rawImage() = default;

// All that both kinds of record carry, but the paths.
void rawImage::takeGeometry(const QVR_ST_RAW_IMAGE& record) {
    m_Mode = record.Mode;
    m_Width = record.Width;
    m_Height = record.Height;
    m_BAKWidth = record.BAKWidth;
    m_BAKHeight = record.BAKHeight;
    m_PixelSpacing = record.PixelSpacing;
    m_BitsStored = record.BitsStored;
    m_HighBit = record.HighBit;
    m_WindowWidth = record.WindowWidth;
    m_WindowCenter = record.WindowCenter;
}

void rawImage::leaveMemory() {
    m_PixelData.reset();
    m_DIB.reset();
    m_ReadInRAM = 0;
}

int rawImage::Create(const QVR_ST_RAW_IMAGE* record) {
    if (!record || !record->PixelData) return 0;
    return qvr::guarded(0, [&] {
        CString filePath = record->FilePath;
        CString rawCopyPath = record->BAKFilePath;
        qvr::Pixels pixels = qvr::copyPixels(record->Width, record->Height, record->PixelData);

        takeGeometry(*record);
        m_FilePath = std::move(filePath);
        m_BAKFilePath = std::move(rawCopyPath);
        m_WorkFileWritten = 0;  // what an earlier image of this object wrote out is not this one
        leaveMemory();
        if (!pixels) return 0;
        m_PixelData = std::move(pixels);
        m_ReadInRAM = 1;

        const auto window = qvr::windowOrAutomatic({m_WindowWidth, m_WindowCenter}, m_Width, m_Height,
                                                   m_PixelData.get(), m_BitsStored);
        m_WindowWidth = m_InitialWindowWidth = window.width;
        m_WindowCenter = m_InitialWindowCenter = window.center;
        return 1;
    });
}

int rawImage::Open(const QVR_ST_RAW_IMAGE* record) {
    if (!record) return 0;
    return qvr::guarded(0, [&] {
        CString filePath = record->FilePath;
        CString rawCopyPath = record->BAKFilePath;
        CString workFilePath = record->WorkFilePath;

        // What was written out is newer only for the image that it was written of.
        const bool sameImage = filePath == m_FilePath && workFilePath == m_WorkFilePath &&
                               record->Width == m_Width && record->Height == m_Height;
        if (!sameImage) m_WorkFileWritten = 0;
        takeGeometry(*record);
        m_FilePath = std::move(filePath);
        m_BAKFilePath = std::move(rawCopyPath);
        m_WorkFilePath = std::move(workFilePath);
        m_InitialWindowWidth = m_WindowWidth;
        m_InitialWindowCenter = m_WindowCenter;
        leaveMemory();
        return ValidateFile();
    });
}

int rawImage::WriteToHDD() {
    // ValidateFile comes first: it also refreshes m_BAKFileValid for an image that is not resident.
    if (!ValidateFile() || !m_ReadInRAM) return 0;

    const bool opened = m_Mode == 1;
    const CString& target = opened ? m_WorkFilePath : m_FilePath;
    if (namesRawCopy(target)) return 0;
    if (!QVR_COMP_WriteRAWFile(target, m_Width, m_Height, m_PixelData.get())) return 0;
    if (!holdsPixels(target)) return 0;
    if (opened) m_WorkFileWritten = 1;

    leaveMemory();  // only now: until the file is written the pixels exist nowhere else
    return 1;
}

int rawImage::ReadInRAM() {
    if (!ValidateFile() || m_ReadInRAM || m_PixelData || m_DIB) return 0;

    // A record may promise more pixels than the file holds: that is found out before memory is asked for.
    if (!holdsPixels(currentFile())) return 0;

    qvr::Pixels pixels = qvr::makeUnsetPixels(m_Width, m_Height);
    if (!pixels || !QVR_COMP_ReadRAWFile(currentFile(), m_Width, m_Height, pixels.get())) return 0;
    m_PixelData = std::move(pixels);
    m_ReadInRAM = 1;

    const auto window = qvr::windowOrAutomatic({m_WindowWidth, m_WindowCenter}, m_Width, m_Height,
                                               m_PixelData.get(), m_BitsStored);
    m_WindowWidth = window.width;
    m_WindowCenter = window.center;
    return 1;
}

int rawImage::Update(int width, int height, const std::uint16_t* pixels, int bitsStored, int highBit,
                     int windowWidth, int windowCenter) {
    if (!pixels || !qvr::pixelCount(width, height)) return 0;
    if (!m_ReadInRAM && namesRawCopy(m_FilePath)) return 0;
    qvr::Pixels copy;  // before anything is changed: `pixels` may be the image's own, and memory may be short
    if (m_ReadInRAM) {
        copy = qvr::copyPixels(width, height, pixels);
        if (!copy) return 0;
    }

    const auto window =
        qvr::windowOrAutomatic({windowWidth, windowCenter}, width, height, pixels, bitsStored);
    m_WindowCenter = m_InitialWindowCenter = window.center;
    m_WindowWidth = m_InitialWindowWidth = window.width;
    m_Width = width;
    m_Height = height;
    m_BitsStored = bitsStored;
    m_HighBit = highBit;
    if (m_ReadInRAM) {
        m_PixelData = std::move(copy);
        m_DIB.reset();
    } else {
        if (!QVR_COMP_WriteRAWFile(m_FilePath, width, height, pixels)) return 0;
        m_XRatio = 0.0f;
        m_YRatio = 0.0f;
    }
    m_XOffset = 0;
    m_YOffset = 0;
    return 1;
}

int rawImage::CopyPixelData(std::uint16_t* destination) {
    if (!destination) return 0;
    if (!m_ReadInRAM) {
        if (!ValidateFile()) return 0;
        return QVR_COMP_ReadRAWFile(currentFile(), m_Width, m_Height, destination);
    }

    const auto count = static_cast<std::size_t>(m_Width) * static_cast<std::size_t>(m_Height);
    const std::uint16_t* const own = m_PixelData.get();
    const std::less<const std::uint16_t*> before;
    const bool apart = !before(own, destination + count) || !before(destination, own + count);
    if (!apart) return 0;
    std::copy_n(own, count, destination);
    return 1;
}

// File roles: how the files of an image are named, found and removed.
#include <string>
#include <utility>

#include "qvr/image/QVR_COMP.h"
#include "qvr/image/rawImage.h"
#include "qvr/platform/CFile.h"
#include "qvr/platform/detail/files.h"
#include "qvr/platform/detail/guard.h"
#include "qvr/platform/detail/numbers.h"

namespace {

constexpr const char* kCacheFolder = "Cache";

// PREFIX.NAME.raw in the cache folder; "R" is the raw copy, "I" the image file.
CString cachePath(const std::string& folder, const char* prefix, const char* name) {
    return qvr::joinPath(folder, std::string(prefix) + '.' + name + ".raw").c_str();
}

}  // namespace

int rawImage::CreateBAKFile(const char* name, const char* directory) {
    if (m_Mode != 0 || !m_PixelData || !qvr::isPlainName(name) || !directory || !*directory) return 0;
    return qvr::guarded(0, [&] {
        const std::string folder = qvr::joinPath(directory, kCacheFolder);
        // Both before anything is written: the arguments may be this image's own paths, and memory may be short.
        CString rawCopyPath = cachePath(folder, "R", name);
        CString imagePath = cachePath(folder, "I", name);

        qvr::ensureFolder(folder.c_str());  // without it the write fails
        if (!QVR_COMP_WriteRAWFile(rawCopyPath, m_Width, m_Height, m_PixelData.get())) return 0;
        if (!holdsPixels(rawCopyPath)) return 0;
        m_BAKFilePath = std::move(rawCopyPath);
        m_FilePath = std::move(imagePath);
        return 1;
    });
}

int rawImage::ValidateFile() {
    if (m_FilePath.IsEmpty()) return 0;
    if (m_WorkFileWritten && m_WorkFilePath.IsEmpty()) return 0;

    const int rawCopyFound = qvr::fileExists(m_BAKFilePath) ? 1 : 0;
    switch (m_Mode) {
        case 0:
            m_BAKFileValid = rawCopyFound;
            return rawCopyFound;
        case 1:
            if (!qvr::fileExists(m_FilePath)) return 0;
            if (m_WorkFileWritten && !qvr::fileExists(m_WorkFilePath)) return 0;
            m_BAKFileValid = rawCopyFound;
            return 1;
        default:
            return 0;
    }
}

int rawImage::RemoveBAKFile() {
    return m_BAKFilePath.IsEmpty() || namesRawCopy(m_FilePath) ? 0 : DeleteFileA(m_BAKFilePath);
}

void rawImage::Close() {
    if (m_Mode != 1 || !m_WorkFileWritten) return;
    // A record may name one file twice; the image itself is never what gets deleted.
    if (qvr::isSameFile(m_WorkFilePath, m_FilePath) || qvr::isSameFile(m_WorkFilePath, m_BAKFilePath)) return;
    DeleteFileA(m_WorkFilePath);
}

// Whether a path is the raw copy, under the same name or another one: the pixels as acquired are never written over.
bool rawImage::namesRawCopy(const CString& path) const {
    return (!path.IsEmpty() && path == m_BAKFilePath) || qvr::isSameFile(path, m_BAKFilePath);
}

// Whether a file has room for all pixels: not one that was left short, nor a pipe or device, which takes every byte and
// gives none back.
bool rawImage::holdsPixels(const CString& path) const {
    const auto count = qvr::pixelCount(m_Width, m_Height);
    const auto length = qvr::fileLength(path);
    return count && length && *length >= *count * sizeof(std::uint16_t);
}

// Where the current pixels are while the image is not resident.
const CString& rawImage::currentFile() const {
    return m_WorkFileWritten ? m_WorkFilePath : m_FilePath;
}

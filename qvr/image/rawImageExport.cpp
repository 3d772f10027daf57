// Print and export. A file that is replaced holds the old or the new content at every moment, and what an export is
// made of - pixels, burned marks - is complete before the first byte is written.
#include <array>
#include <string>
#include <utility>

#include "qvr/image/QVR_COMP.h"
#include "qvr/image/detail/displayTable.h"
#include "qvr/image/detail/printConversion.h"
#include "qvr/image/rawImage.h"
#include "qvr/platform/CFile.h"
#include "qvr/platform/detail/files.h"
#include "qvr/platform/detail/guard.h"
#include "qvr/platform/detail/memory.h"

namespace {

struct Region {
    int width;
    int height;
    const std::uint16_t* pixels;
    int firstColumn;
    int firstRow;
};

template <std::size_t Entries>
int createPrintImage(const Region& source, const qvr::DisplayWindow& window, const qvr::Curve& curve,
                     const CDib* bitmap) {
    const qvr::BitmapRows target = qvr::rowsOf(bitmap);
    if (!target || !source.pixels || source.firstColumn < 0 || source.firstRow < 0) return 0;
    if (std::int64_t{source.firstColumn} + target.width > source.width) return 0;
    if (source.height > 0 && std::int64_t{source.firstRow} + target.height > source.height) return 0;

    std::array<std::uint8_t, Entries> table;
    qvr::fillDisplayTable(window, curve, std::span<std::uint8_t, Entries>(table));
    const std::int64_t first = std::int64_t{source.firstRow} * source.width + source.firstColumn;
    const auto ramp = qvr::greyRamp(window, curve, Entries == qvr::kTable14Bits ? 14 : 12);
    qvr::convertRegion(source.pixels + first, source.width, table, target, ramp ? &*ramp : nullptr);
    return 1;
}

// Whether two paths mean the same file, one that exists or one that is still to be made.
bool sameTarget(const char* a, const CString& b) {
    return b == a || qvr::isSameFile(a, b);
}

// Writes pixels to a neighbour of the path and puts that in its place. The path keeps its content until then.
bool writeReplacing(const char* path, int width, int height, const std::uint16_t* pixels) {
    const bool exists = qvr::isSameFile(path, path);
    if (exists && !qvr::fileExists(path)) return false;  // a folder, pipe or device is never replaced
    const std::string temporary = qvr::makeNeighbour(path);
    const bool done = QVR_COMP_WriteRAWFile(temporary.c_str(), width, height, pixels) &&
                      qvr::replaceFile(temporary.c_str(), path);
    if (!done) DeleteFileA(temporary.c_str());
    return done;
}

}  // namespace

int rawImage::CreatePrintImage14Bits(int width, int height, const std::uint16_t* pixels, int firstColumn,
                                     int firstRow, int windowWidth, int windowCenter, int type, int k, int c,
                                     CDib* bitmap) {
    return createPrintImage<qvr::kTable14Bits>({width, height, pixels, firstColumn, firstRow},
                                               {windowWidth, windowCenter}, {type, k, c}, bitmap);
}

int rawImage::CreatePrintImage12Bits(int width, int height, const std::uint16_t* pixels, int firstColumn,
                                     int firstRow, int windowWidth, int windowCenter, int type, int k, int c,
                                     CDib* bitmap) {
    return createPrintImage<qvr::kTable12Bits>({width, height, pixels, firstColumn, firstRow},
                                               {windowWidth, windowCenter}, {type, k, c}, bitmap);
}

int rawImage::WriteFileForPROC(const char* path) {
    if (m_Mode != 0 || !path || !*path) return 0;
    // Onto the image file the raw copy would replace the current pixels, or be replaced by them later.
    if (sameTarget(path, m_BAKFilePath) || sameTarget(path, m_FilePath) || namesRawCopy(m_FilePath)) return 0;
    return qvr::guarded(0, [&] {
        CString target(path);
        if (!CopyFileA(m_BAKFilePath, target, 0)) return 0;
        DeleteFileA(m_BAKFilePath);
        m_BAKFilePath = std::move(target);
        return 1;
    });
}

int rawImage::WriteFileForPRES(const char* path, CDC* surface) {
    const auto kept = weak_from_this().lock();
    return qvr::guarded(0, [&] {
        if (m_Mode == 0) return exportNewImage(path, surface);
        return m_Mode == 1 ? commitOpenedImage() : 0;
    });
}

int rawImage::exportNewImage(const char* path, CDC* surface) {
    if (!path || !*path) return 0;
    CString target(path);
    // Kept aside: a surface that calls back while a mark is burned may change the image's size and files.
    const CString ownPath = m_FilePath;
    const int width = m_Width;
    const int height = m_Height;
    qvr::Pixels pixels;
    if (m_ReadInRAM) {
        pixels = qvr::copyPixels(width, height, m_PixelData.get());
        if (!pixels) return 0;
    } else {
        pixels = qvr::makeUnsetPixels(width, height);
        if (!pixels || !QVR_COMP_ReadRAWFile(m_FilePath, width, height, pixels.get())) return 0;
    }
    if (!WriteMark(width, height, pixels.get(), m_BitsStored, surface)) return 0;
    if (m_Mode != 0 || m_FilePath != ownPath || namesRawCopy(target)) return 0;
    if (!writeReplacing(target, width, height, pixels.get())) return 0;

    if (!sameTarget(target, m_FilePath) && !namesRawCopy(m_FilePath)) DeleteFileA(m_FilePath);
    m_FilePath = std::move(target);
    return 1;
}

int rawImage::commitOpenedImage() {
    if (m_FilePath.IsEmpty() || namesRawCopy(m_FilePath)) return 0;
    if (!m_ReadInRAM && namesRawCopy(m_WorkFilePath)) return 0;  // never written to: not the current pixels
    if (m_ReadInRAM) return writeReplacing(m_FilePath, m_Width, m_Height, m_PixelData.get()) ? 1 : 0;
    // A work file that a killed or failed write left short would replace a whole image.
    return holdsPixels(m_WorkFilePath) ? CopyFileA(m_WorkFilePath, m_FilePath, 0) : 0;
}

// CDib in the Windows bitmap file format. What a file says is checked before memory is asked for.
#include <cstring>
#include <new>

#include "qvr/image/CDib.h"
#include "qvr/image/detail/bitmapRows.h"
#include "qvr/image/detail/dibBlocks.h"
#include "qvr/platform/detail/guard.h"

namespace {

constexpr std::uint16_t kType = 0x4D42;  // "BM"
constexpr std::uint32_t kFileHeaderSize = 14;
constexpr std::uint32_t kInfoHeaderSize = 40;
constexpr std::uint32_t kLargestOffset = 65536;
constexpr std::int32_t kLargestSide = 32767;
constexpr std::uint32_t kLargestImage = 256U << 20;

struct FileHeader {
    std::uint16_t type = 0;
    std::uint32_t fileSize = 0;
    std::uint32_t pixelOffset = 0;
};

void encode(const FileHeader& header, std::uint8_t (&bytes)[kFileHeaderSize]) {
    std::memset(bytes, 0, sizeof bytes);
    std::memcpy(bytes, &header.type, 2);
    std::memcpy(bytes + 2, &header.fileSize, 4);
    std::memcpy(bytes + 10, &header.pixelOffset, 4);
}

FileHeader decode(const std::uint8_t (&bytes)[kFileHeaderSize]) {
    FileHeader header;
    std::memcpy(&header.type, bytes, 2);
    std::memcpy(&header.fileSize, bytes + 2, 4);
    std::memcpy(&header.pixelOffset, bytes + 10, 4);
    return header;
}

bool isDrawable(const BITMAPINFOHEADER& header) {
    const std::int64_t height = header.biHeight;
    const std::int64_t rows = height < 0 ? -height : height;
    if (header.biWidth < 1 || header.biWidth > kLargestSide || rows < 1 || rows > kLargestSide) return false;
    switch (header.biBitCount) {
        case 1:
        case 4:
        case 8:
        case 16:
        case 24:
        case 32:
            return true;
        default:
            return false;
    }
}

}  // namespace

int CDib::readStream(CFile& file) {
    std::uint8_t bytes[kFileHeaderSize];
    if (file.Read(bytes, sizeof bytes) != sizeof bytes) return 0;
    const FileHeader fileHeader = decode(bytes);
    if (fileHeader.type != kType) return 0;
    if (fileHeader.pixelOffset < kFileHeaderSize + kInfoHeaderSize || fileHeader.pixelOffset > kLargestOffset)
        return 0;

    m_Blocks = std::make_shared<Blocks>();
    m_Blocks->headerSize = fileHeader.pixelOffset - kFileHeaderSize;
    m_Blocks->header = qvr::makeBytes(m_Blocks->headerSize);
    if (!m_Blocks->header) return 0;
    file.Read(m_Blocks->header.get(), m_Blocks->headerSize);  // what is missing stays 0
    InfoHeader = reinterpret_cast<BITMAPINFOHEADER*>(m_Blocks->header.get());

    ComputeMetrics();
    ComputeColorTableEntries(InfoHeader->biBitCount);
    if (!isDrawable(*InfoHeader) || InfoHeader->biClrUsed > 256 || !headerAgrees()) return 0;
    const std::int64_t stride = qvr::rowStride(InfoHeader->biWidth, InfoHeader->biBitCount);
    const std::int64_t rows =
        InfoHeader->biHeight < 0 ? -std::int64_t{InfoHeader->biHeight} : InfoHeader->biHeight;
    if (ImageSize < stride * rows || ImageSize > kLargestImage) return 0;
    MakePalette();

    m_Blocks->pixels = qvr::makeBytes(ImageSize);
    if (!m_Blocks->pixels) return 0;
    m_Blocks->pixelsSize = ImageSize;
    Bits = m_Blocks->pixels.get();
    file.Read(Bits, ImageSize);  // what is missing stays 0
    return 1;
}

int CDib::Read(CFile* file) {
    Empty();
    if (!file) return 0;
    return qvr::guarded(0, [&] {
        CDib read;  // apart: a host's file may call back and change this bitmap
        if (!read.readStream(*file)) return 0;
        m_Blocks = std::move(read.m_Blocks);
        m_PaletteHandle = std::move(read.m_PaletteHandle);
        m_PreviousPalette = nullptr;
        InfoHeader = read.InfoHeader;
        ColorTable = read.ColorTable;
        Bits = read.Bits;
        ImageSize = read.ImageSize;
        ColorTableEntries = read.ColorTableEntries;
        return 1;
    });
}

int CDib::Write(CFile* file) {
    if (!file || !storageAgrees()) return 0;
    if (static_cast<std::size_t>(ColorTableEntries) < qvr::coloursOf(*InfoHeader)) return 0;
    return qvr::guarded(0, [&] {
        // Kept: a host's file may call back and change this bitmap.
        const std::shared_ptr<Blocks> blocks = m_Blocks;
        const std::uint32_t imageSize = ImageSize;
        const std::uint32_t headerSize = kInfoHeaderSize + static_cast<std::uint32_t>(sizeof(RGBQUAD)) *
                                                               static_cast<std::uint32_t>(ColorTableEntries);
        const std::uint32_t offset = kFileHeaderSize + headerSize;
        std::uint8_t bytes[kFileHeaderSize];
        encode({kType, offset + imageSize, offset}, bytes);
        file->Write(bytes, sizeof bytes);
        file->Write(blocks->header.get(), headerSize);
        file->Write(blocks->pixels.get(), imageSize);
        return 1;
    });
}

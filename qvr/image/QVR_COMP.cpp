// Raw pixel files. The size is checked before the file is touched: opening for writing truncates.
#include "qvr/image/QVR_COMP.h"

#include <bit>

#include "qvr/platform/CFile.h"
#include "qvr/platform/detail/guard.h"
#include "qvr/platform/detail/numbers.h"

static_assert(std::endian::native == std::endian::little,
              "raw files are little-endian, as the buffers are here");

int QVR_COMP_WriteRAWFile(const char* path, int width, int height, const std::uint16_t* pixels) {
    const auto count = qvr::pixelCount(width, height);
    if (!path || !pixels || !count) return 0;
    return qvr::guarded(0, [&] {
        CFile file;
        if (!file.Open(path, CFile::modeReadWrite | CFile::modeCreate)) return 0;
        file.Write(pixels, *count * sizeof *pixels);
        file.Close();
        return 1;
    });
}

int QVR_COMP_ReadRAWFile(const char* path, int width, int height, std::uint16_t* pixels) {
    const auto count = qvr::pixelCount(width, height);
    if (!path || !pixels || !count) return 0;
    return qvr::guarded(0, [&] {
        CFile file;
        if (!file.Open(path, CFile::modeRead)) return 0;
        const std::size_t bytes = *count * sizeof *pixels;
        return file.Read(pixels, bytes) == bytes ? 1 : 0;
    });
}

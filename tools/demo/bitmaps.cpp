// CFile tells its errors by throwing, which is why files are handled in one place.
#include "tools/demo/bitmaps.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "tools/demo/check.h"

namespace qvr {
namespace {

constexpr CSize kPictogram{160, 200};

std::size_t rowBytes(const CDib& bitmap) {
    return (static_cast<std::size_t>(sizeOf(bitmap).cx) + 3) / 4 * 4;
}

}  // namespace

CSize sizeOf(const CDib& bitmap) {
    require(bitmap.InfoHeader && bitmap.Bits, "a bitmap that should hold a picture is empty");
    return {bitmap.InfoHeader->biWidth, bitmap.InfoHeader->biHeight};
}

int greyAt(const CDib& bitmap, int column, int row) {
    return bitmap.Bits[static_cast<std::size_t>(row) * rowBytes(bitmap) + static_cast<std::size_t>(column)];
}

bool sameBitmap(const CDib& a, const CDib& b) {
    const CSize size = sizeOf(a);
    if (size != sizeOf(b)) return false;
    const std::size_t stride = rowBytes(a);
    for (std::size_t row = 0; row < static_cast<std::size_t>(size.cy); ++row) {
        const std::size_t begin = row * stride;
        if (std::memcmp(a.Bits + begin, b.Bits + begin, static_cast<std::size_t>(size.cx)) != 0) return false;
    }
    return true;
}

void writeBitmap(CDib& bitmap, const std::filesystem::path& path) {
    const std::string name = path.string();
    CFile file;
    require(file.Open(name.c_str(), CFile::modeWrite | CFile::modeCreate), name + ": cannot be written");
    try {
        require(bitmap.Write(&file), name + ": the bitmap was not written in full");
        file.Close();
    } catch (const CFileException& error) {
        throw DemoFailure(name + ": not written: " + error.what());
    }
    CDib written;
    readBitmap(written, path);
    require(sameBitmap(bitmap, written),
            name + ": the bitmap file does not hold the picture that was written");
}

void readBitmap(CDib& bitmap, const std::filesystem::path& path) {
    CFile file;
    require(file.Open(path.c_str(), CFile::modeRead), path.string() + ": cannot be opened");
    require(bitmap.Read(&file), path.string() + ": is not a bitmap file");
}

void showBitmap(CDib& bitmap, Screen& screen) {
    const CSize size = sizeOf(bitmap);
    require(bitmap.Draw(&screen.surface(), 0, 0, size.cx, size.cy, 0, 0, size.cx, size.cy, SRCCOPY),
            "a bitmap could not be drawn");
}

void writePictogram(const std::string& name, const std::filesystem::path& path) {
    CRasterDC surface(kPictogram.cx, kPictogram.cy, 8);
    const RECT all{0, 0, kPictogram.cx, kPictogram.cy};
    const RECT inside{4, 4, kPictogram.cx - 4, kPictogram.cy - 4};
    surface.FillSolidRect(&all, 0xB0B0B0);
    surface.FillSolidRect(&inside, 0x484848);
    CFont font(20, FW_NORMAL, "Arial", DEFAULT_CHARSET);
    CFont* before = surface.SelectObject(&font);
    surface.SetTextColor(0xFFFFFF);
    surface.SetBkMode(TRANSPARENT);
    surface.DrawText(name.c_str(), -1, &inside, DT_CENTER | DT_VCENTER | DT_SINGLELINE);
    surface.SelectObject(before);

    // A surface has its top row first, a bitmap its bottom row.
    std::vector<std::uint8_t> pixels;
    for (int y = kPictogram.cy - 1; y >= 0; --y) {
        const auto* row = static_cast<const std::uint8_t*>(surface.GetRow(y));
        require(row != nullptr, "there is no memory for a protocol's bitmap");
        pixels.insert(pixels.end(), row, row + kPictogram.cx);
    }
    CDib bitmap(kPictogram.cx, kPictogram.cy, 8);
    require(bitmap.CreateFromPixels(kPictogram.cx, kPictogram.cy, pixels.data(), nullptr, nullptr),
            "a protocol's bitmap could not be made");
    writeBitmap(bitmap, path);
}

}  // namespace qvr

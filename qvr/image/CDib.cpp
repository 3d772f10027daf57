// CDib: life, metrics, palette, drawing. The header block and the pixel storage are remembered privately, so that a
// pointer or size changed from outside is noticed before it is followed.
#include "qvr/image/CDib.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <utility>

#include "qvr/image/detail/bitmapRows.h"
#include "qvr/image/detail/dibBlocks.h"
#include "qvr/platform/detail/guard.h"

namespace {

constexpr std::int64_t kLargestImage = std::int64_t{1} << 30;  // bytes
constexpr std::uint32_t kHeaderSize = 40;
constexpr std::uint32_t kMaxColours = 256;

CObject* createBitmap() {
    return new (std::nothrow) CDib;
}

constexpr std::array<std::uint32_t, kMaxColours> kGreys = [] {
    std::array<std::uint32_t, kMaxColours> greys{};
    for (std::uint32_t i = 0; i < kMaxColours; ++i) greys[i] = i * 0x010101U;
    return greys;
}();

// A surface that calls back may have the palette destroyed that is to be selected again.
std::weak_ptr<const void> lifetimeOf(const CPalette* palette) {
    return palette ? palette->lifetime() : std::weak_ptr<const void>();
}

std::int64_t absolute(std::int64_t value) {
    return value < 0 ? -value : value;
}

}  // namespace

CDibException::~CDibException() = default;
const char* CDibException::what() const noexcept {
    return "bitmap error: the info header is not a 40-byte one";
}

const CRuntimeClass CDib::classCDib{"CDib", 0, createBitmap};

const CRuntimeClass* CDib::GetRuntimeClass() const {
    return &classCDib;
}

CDib::CDib() = default;

CDib::CDib(int width, int height, int bitCount) {
    ComputeColorTableEntries(bitCount);
    qvr::guarded([&] {
        auto blocks = std::make_shared<Blocks>();
        blocks->headerSize = kHeaderSize + sizeof(RGBQUAD) * static_cast<std::size_t>(ColorTableEntries);
        blocks->header = qvr::makeBytes(blocks->headerSize);
        if (!blocks->header) return;
        InfoHeader = new (blocks->header.get()) BITMAPINFOHEADER;
        m_Blocks = std::move(blocks);
    });
    if (!InfoHeader) {
        Empty();
        return;
    }
    InfoHeader->biSize = kHeaderSize;
    InfoHeader->biWidth = width;
    InfoHeader->biHeight = height;
    InfoHeader->biPlanes = 1;
    InfoHeader->biBitCount = static_cast<std::uint16_t>(bitCount);
    InfoHeader->biClrUsed = static_cast<std::uint32_t>(ColorTableEntries);
    InfoHeader->biClrImportant = InfoHeader->biClrUsed;
    ComputeMetrics();
}

CDib::~CDib() {
    Empty();
}

void CDib::Empty() {
    m_PaletteHandle.reset();
    m_PreviousPalette = nullptr;
    m_Blocks.reset();
    InfoHeader = nullptr;
    ColorTable = nullptr;
    Bits = nullptr;
    ImageSize = 0;
    ColorTableEntries = 0;
}

void CDib::ComputeColorTableEntries(int bitCount) {
    if (InfoHeader && InfoHeader->biClrUsed != 0) {
        ColorTableEntries = qvr::saturated(InfoHeader->biClrUsed);
        return;
    }
    switch (bitCount) {
        case 1:
        case 4:
        case 8:
            ColorTableEntries = 1 << bitCount;
            break;
        case 16:
        case 24:
        case 32:
            ColorTableEntries = 0;
            break;
        default:
            break;
    }
}

void CDib::ComputeMetrics() {
    if (!InfoHeader || InfoHeader->biSize != kHeaderSize) throw CDibException();
    ImageSize = InfoHeader->biSizeImage;
    if (ImageSize == 0) {
        const std::int64_t stride = qvr::rowStride(InfoHeader->biWidth, InfoHeader->biBitCount);
        const std::int64_t rows = absolute(InfoHeader->biHeight);
        if (stride > 0 && rows > 0 && stride <= kLargestImage / rows)
            ImageSize = static_cast<std::uint32_t>(stride * rows);
    }
    ColorTable = reinterpret_cast<RGBQUAD*>(reinterpret_cast<std::uint8_t*>(InfoHeader) + kHeaderSize);
}

bool CDib::headerAgrees() const {
    if (!m_Blocks || !InfoHeader || static_cast<const void*>(InfoHeader) != m_Blocks->header.get())
        return false;
    if (InfoHeader->biSize != kHeaderSize || ColorTableEntries < 0) return false;
    if (ColorTableEntries > 0 && static_cast<const void*>(ColorTable) != m_Blocks->header.get() + kHeaderSize)
        return false;
    const std::size_t entries =
        std::max(static_cast<std::size_t>(ColorTableEntries), qvr::coloursOf(*InfoHeader));
    return kHeaderSize + sizeof(RGBQUAD) * entries <= m_Blocks->headerSize;
}

bool CDib::storageAgrees() const {
    if (!headerAgrees() || !Bits || Bits != m_Blocks->pixels.get() || ImageSize > m_Blocks->pixelsSize)
        return false;
    if (InfoHeader->biWidth < 1 || InfoHeader->biHeight == 0) return false;
    const std::int64_t stride = qvr::rowStride(InfoHeader->biWidth, InfoHeader->biBitCount);
    return stride > 0 && absolute(InfoHeader->biHeight) <= static_cast<std::int64_t>(ImageSize) / stride;
}

int CDib::MakePalette() {
    if (!headerAgrees() || ColorTableEntries == 0 || !ColorTable) return 0;
    m_PaletteHandle.reset();
    return qvr::guarded(0, [&] {
        m_PaletteHandle = std::make_shared<CPalette>(ColorTable, ColorTableEntries);
        return 1;
    });
}

void CDib::UsePalette(CDC* surface, int background) {
    if (!surface || !m_PaletteHandle) return;
    qvr::guarded([&] {
        const std::shared_ptr<CPalette> selected = m_PaletteHandle;
        m_PreviousPalette = surface->SelectPalette(selected.get(), background);
        m_PreviousLifetime = lifetimeOf(m_PreviousPalette);
        surface->RealizePalette();
    });
}

HBITMAP CDib::CreateSection(CDC* /*surface*/) {
    if (!headerAgrees() || Bits || ImageSize == 0) return nullptr;
    qvr::Bytes pixels = qvr::makeBytes(ImageSize);
    if (!pixels) return nullptr;
    m_Blocks->pixels = std::move(pixels);
    m_Blocks->pixelsSize = ImageSize;
    Bits = m_Blocks->pixels.get();
    return reinterpret_cast<HBITMAP>(Bits);
}

void CDib::fillColours(const std::uint32_t* colours) {
    for (int i = 0; i < ColorTableEntries; ++i) {
        const std::uint32_t colour = colours ? colours[i] : static_cast<std::uint32_t>(i & 0xFF) * 0x010101U;
        ColorTable[i].rgbRed = static_cast<std::uint8_t>(colour);
        ColorTable[i].rgbGreen = static_cast<std::uint8_t>(colour >> 8);
        ColorTable[i].rgbBlue = static_cast<std::uint8_t>(colour >> 16);
    }
}

// Colours, palette and storage: CreateFromPixels without its pixels.
bool CDib::prepare(const std::uint32_t* colours) {
    fillColours(colours);
    MakePalette();
    CreateSection(nullptr);
    return storageAgrees();
}

// Selected back at once: nothing is drawn yet.
void CDib::realizePalette(CDC* surface) {
    m_PreviousPalette = nullptr;
    UsePalette(surface, 0);
    CPalette* const previous = std::exchange(m_PreviousPalette, nullptr);
    if (!previous) return;
    qvr::guarded([&] { surface->SelectPalette(m_PreviousLifetime.expired() ? nullptr : previous, 0); });
}

int CDib::CreateFromPixels(int width, int height, const std::uint8_t* pixels, const std::uint32_t* colours,
                           CDC* surface) {
    const auto count = qvr::pixelCount(width, height);
    if (!headerAgrees() || !pixels || !count || *count > ImageSize) return 0;
    if (!prepare(colours)) return 0;
    std::memmove(Bits, pixels, *count);
    realizePalette(surface);  // last: a surface may call back and change this bitmap
    return 1;
}

int CDib::Draw(CDC* surface, int dx, int dy, int dw, int dh, int sx, int sy, int sw, int sh,
               std::uint32_t rop) {
    if (!surface || !storageAgrees()) return 0;
    return qvr::guarded(0, [&] {
        const std::shared_ptr<CPalette> selected = m_PaletteHandle;
        CPalette* const previous = selected ? surface->SelectPalette(selected.get(), 1) : nullptr;
        const std::weak_ptr<const void> lifetime = lifetimeOf(previous);
        const int mode = surface->SetStretchBltMode(COLORONCOLOR);
        const std::shared_ptr<Blocks> drawn = m_Blocks;
        const bool drawable =
            storageAgrees();  // again: the surface may have called back and changed this bitmap
        if (drawable)
            surface->StretchDIBits(dx, dy, dw, dh, sx, sy, sw, sh, Bits,
                                   reinterpret_cast<const BITMAPINFO*>(InfoHeader), rop);
        surface->SetStretchBltMode(mode);
        if (previous) surface->SelectPalette(lifetime.expired() ? nullptr : previous, 1);
        return drawable ? 1 : 0;
    });
}

void CDib::Serialize(CArchive& archive) {
    archive.Flush();
    if (archive.IsLoading())
        Read(archive.GetFile());
    else
        Write(archive.GetFile());
}

namespace qvr {

BitmapRows rowsOf(const CDib* bitmap) noexcept {
    return BitmapAccess::rows(bitmap);
}

BitmapRows BitmapAccess::rows(const CDib* bitmap) noexcept {
    if (!bitmap || !bitmap->storageAgrees()) return {};
    const BITMAPINFOHEADER& header = *bitmap->InfoHeader;
    if (header.biBitCount != 8 || header.biHeight < 1) return {};
    return {bitmap->Bits, header.biWidth, header.biHeight,
            static_cast<std::size_t>(rowStride(header.biWidth, header.biBitCount))};
}

bool BitmapAccess::prepareGrey(CDib& bitmap) {
    return bitmap.headerAgrees() && bitmap.prepare(kGreys.data());
}

void BitmapAccess::realizePalette(CDib& bitmap, CDC* surface) {
    bitmap.realizePalette(surface);
}

void realizePalette(CDib& bitmap, CDC* surface) {
    BitmapAccess::realizePalette(bitmap, surface);
}

std::unique_ptr<CDib> BitmapAccess::clone(const CDib& bitmap) {
    if (!bitmap.storageAgrees()) return nullptr;
    auto copy = std::make_unique<CDib>();
    auto blocks = std::make_shared<CDib::Blocks>();
    blocks->headerSize = bitmap.m_Blocks->headerSize;
    blocks->header = makeBytes(blocks->headerSize);
    blocks->pixelsSize = bitmap.ImageSize;
    blocks->pixels = makeBytes(blocks->pixelsSize);
    if (!blocks->header || !blocks->pixels) throw std::bad_alloc();
    std::memcpy(blocks->header.get(), bitmap.InfoHeader, blocks->headerSize);
    std::memcpy(blocks->pixels.get(), bitmap.Bits, blocks->pixelsSize);

    copy->m_Blocks = std::move(blocks);
    copy->InfoHeader = reinterpret_cast<BITMAPINFOHEADER*>(copy->m_Blocks->header.get());
    copy->ColorTableEntries = bitmap.ColorTableEntries;
    copy->ComputeMetrics();
    copy->ImageSize = bitmap.ImageSize;
    copy->Bits = copy->m_Blocks->pixels.get();
    copy->MakePalette();
    return copy;
}

std::unique_ptr<CDib> makeGreyBitmap(int width, int height, CDC* surface) {
    std::unique_ptr<CDib> bitmap(new (std::nothrow) CDib(width, height, 8));
    if (!bitmap || !BitmapAccess::prepareGrey(*bitmap)) return nullptr;
    realizePalette(*bitmap, surface);
    return bitmap;
}

}  // namespace qvr

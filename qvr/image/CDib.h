// CDib: a device-independent bitmap: info header, colour table, pixel bytes, and a logical palette of the colours.
//
// Every picture that the library hands to a surface or to a host is one, at 8 bits with a grey colour table. Bitmaps
// made by the library are bottom-up: the first row of `Bits` is the bottom row of the picture. Rows are padded to a
// multiple of 4 bytes.
//
// States     empty; header only (after the sized constructor); complete (after CreateFromPixels, CreateSection or Read)
// Threads    one thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "qvr/export.h"
#include "qvr/platform/CArchive.h"
#include "qvr/platform/CDC.h"
#include "qvr/platform/CException.h"
#include "qvr/platform/CFile.h"
#include "qvr/platform/types.h"

/// Thrown by CDib::ComputeMetrics when a host calls it on a header that is not a 40-byte one.
class QVR_API CDibException : public CException {
public:
    ~CDibException() override;
    const char* what() const noexcept override;
};

/// Pixel storage made by CDib::CreateSection; tests as a bool.
using HBITMAP = const struct DIBSection*;

namespace qvr {
struct BitmapAccess;
}

class QVR_API CDib : public CObject {
public:
    const CRuntimeClass* GetRuntimeClass() const override;
    /// Class name "CDib", schema 0, with a factory of default-constructed objects.
    static const CRuntimeClass classCDib;

    CDib();
    /// A header and a cleared colour table for a bitmap of that size, without pixel storage. Without memory the bitmap
    /// stays empty.
    /// @param width,height  in pixels; positive heights are bottom-up
    /// @param bitCount      1, 4 and 8 bits have a colour table of 2, 16 and 256 entries; 16, 24 and 32 have none
    CDib(int width, int height, int bitCount);
    ~CDib() override;
    CDib(const CDib&) = delete;
    CDib& operator=(const CDib&) = delete;

    /// Releases header, pixels and palette; every member is zero or null afterwards.
    void Empty();

    /// Sets ColorTableEntries: the header's colours-used field where that is not 0, else by bit count (1: 2, 4: 16,
    /// 8: 256, 16, 24 and 32: 0); any other bit count leaves it unchanged.
    void ComputeColorTableEntries(int bitCount);
    /// Sets ImageSize (the header's field; where that is 0, padded rows times height, or 0 when that is beyond the
    /// largest bitmap) and ColorTable.
    /// @throws CDibException when there is no header or its size field is not 40
    void ComputeMetrics();
    /// Makes the palette of the colour table. @return 1; 0 without colours or memory
    int MakePalette();
    /// Selects and realizes the palette on a surface and keeps the one it replaces. Does nothing without a palette or
    /// with a null surface.
    void UsePalette(CDC* surface, int background);
    /// Makes cleared pixel storage of ImageSize bytes.
    /// @param surface  not used on this platform; may be null
    /// @return its handle, which tests true; null without a header, with storage already there, for a width below 1 or a
    ///         height of 0, or without memory
    HBITMAP CreateSection(CDC* surface);
    /// Fills the colour table, makes palette and pixel storage (storage that is there already is kept), and copies the
    /// pixels as one block to the start of `Bits`, without regard to row padding.
    /// @param pixels   width * height bytes
    /// @param colours  one value 0x00BBGGRR per colour table entry; null: greys, entry i being (i, i, i)
    /// @param surface  the palette is realized on it; null leaves that step out
    /// @return 1; 0 without a header, for null pixels or a bad size, when the pixels would not fit or storage cannot be
    ///         had
    int CreateFromPixels(int width, int height, const std::uint8_t* pixels, const std::uint32_t* colours,
                         CDC* surface);

    /// Stretches a rectangle of the bitmap onto a surface (CDC::StretchDIBits), colour-on-colour, with its palette
    /// selected meanwhile; sy counts from the bottom row of a bottom-up bitmap.
    /// @return 1; 0 for a null surface or without header or storage
    int Draw(CDC* surface, int dx, int dy, int dw, int dh, int sx, int sy, int sw, int sh, std::uint32_t rop);

    /// Loads a bitmap in the Windows file format: 14-byte file header, 40-byte info header, colour table, pixels.
    /// Compression, file size and resolution are not checked; missing pixel bytes read as 0.
    /// @return 1; 0 when `file` is null or does not hold such a bitmap (a pixel offset of 54 … 65536, colours that fit
    ///         in front of it, 1, 4, 8, 16, 24 or 32 bits, sides of 1 … 32767, an image size of at least all rows and
    ///         at most 256 MiB), on a file error and without memory; the bitmap is then empty
    int Read(CFile* file);
    /// Stores the bitmap in the same format, also one that is too large for Read. @return 1; 0 when `file` is null, the
    /// bitmap has no storage or fewer ColorTableEntries than its header says, or the file raises an error (what was
    /// written then stays)
    int Write(CFile* file);
    /// Reads or writes through the archive's file; the result is dropped.
    void Serialize(CArchive& archive) override;

    // Hosts read these. They belong to the bitmap: a pointer or size that is changed from outside makes the
    // operations above fail.
    BITMAPINFOHEADER* InfoHeader =
        nullptr;                    ///< header, followed by the colour table; valid until Empty or Read
    RGBQUAD* ColorTable = nullptr;  ///< ColorTableEntries entries behind the header
    std::uint8_t* Bits = nullptr;   ///< pixel rows; valid until Empty or Read
    std::uint32_t ImageSize = 0;    ///< bytes of `Bits`
    int ColorTableEntries = 0;

private:
    friend struct qvr::BitmapAccess;

    // True when header, sizes and storage are the bitmap's own and belong together.
    bool headerAgrees() const;
    bool storageAgrees() const;
    void fillColours(const std::uint32_t* colours);
    bool prepare(const std::uint32_t* colours);
    void realizePalette(CDC* surface);
    int readStream(CFile& file);

    struct Blocks;
    // Both are shared only with a call on a surface or a file that is under way.
    std::shared_ptr<Blocks> m_Blocks;  // owns the header block and the pixel storage
    std::shared_ptr<CPalette> m_PaletteHandle;
    CPalette* m_PreviousPalette = nullptr;
    std::weak_ptr<const void> m_PreviousLifetime;  // of that palette, which may be another bitmap's
};

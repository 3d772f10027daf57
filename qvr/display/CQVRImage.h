// CQVRImage: a display image outside the examination: pixels in memory, shown fitted or at a free place. No files, no
// marks, no undo.
//
// Pixels     width * height values, no row padding; row 0 is the BOTTOM row of the picture.
// Results    1 for success and 0 for failure; nothing is thrown.
// Threads    the host's user-interface thread only; nothing is locked.
#pragma once

#include <cstdint>
#include <memory>

#include "qvr/export.h"
#include "qvr/image/CDib.h"
#include "qvr/platform/CDC.h"
#include "qvr/platform/pixelBuffer.h"
#include "qvr/platform/types.h"

/// What a host fills for CQVRImage::Create; zero with {}. Only read; the pixels are copied.
struct QVR_ST_QVR_IMAGE {
    int Height = 0;      ///< rows
    int Width = 0;       ///< pixels per row
    int BitsStored = 0;  ///< significant bits per pixel; the display works for 14
    int HighBit = 0;
    int PixelSpacing = 0;
    int WindowCenter = 0;  ///< 0: none given
    int WindowWidth = 0;   ///< 0: none given
    const std::uint16_t* PixelData =
        nullptr;  ///< Width * Height values, bottom row first, still owned by the caller
};

namespace qvr {
struct DisplaySource;
struct DisplayView;
}  // namespace qvr

class QVR_API CQVRImage {
public:
    CQVRImage();
    /// Copies pixels and bitmap as well; without memory the copy stays empty.
    CQVRImage(const CQVRImage& other);
    /// Copies pixels and bitmap as well; without memory the image keeps what it held.
    CQVRImage& operator=(const CQVRImage& other);
    virtual ~CQVRImage();

    /// Takes a copy of the pixels, which may be the image's own, and the geometry; without a window it gets the automatic
    /// one. Bitmap, zoom, pan and curve stay: call BuildDisplayImage next.
    /// @return 0 for a null record or null pixels, with nothing changed; 0 for a bad size or without memory, with the
    ///         fields taken over and no pixels
    int Create(const QVR_ST_QVR_IMAGE* record);
    /// Replaces pixels, geometry and window; the bitmap goes, offsets become 0, ratios stay.
    /// @param pixels  width * height values, may be or lie in this image's own
    /// @param windowWidth,windowCenter  when either is 0, the automatic window of `pixels` is taken
    /// @return 0 for null pixels or a bad size, with nothing changed; 0 without memory, with the fields taken over and
    ///         neither pixels nor bitmap
    int Update(int width, int height, const std::uint16_t* pixels, int bitsStored, int highBit,
               int windowWidth, int windowCenter);

    /// Makes a new display bitmap and fills it; see rawImage::BuildDisplayImage.
    int BuildDisplayImage(const RECT* rectangle, CDC* surface, int reset);
    /// Fills the existing bitmap anew, after a change of window or curve.
    int UpdateDisplayImage();
    /// Draws the bitmap into the rectangle, centred and letter-boxed in black.
    void Draw(const RECT* rectangle, CDC* surface);
    /// Draws the bitmap, scaled as Draw does, with its top left corner at an offset from the rectangle's, cut at the
    /// rectangle's edges; nothing else is painted.
    void FreeDraw(CPoint offset, const RECT* rectangle, CDC* surface);

    int GetWidth() const { return m_Width; }
    int GetHeight() const { return m_Height; }
    int GetPixelSpacing() const { return m_PixelSpacing; }
    int GetBitsStored() const { return m_BitsStored; }
    int GetHighBit() const { return m_HighBit; }
    /// Writable in place; valid until the next Create or Update; may be null.
    std::uint16_t* GetPixelData() const { return m_PixelData.get(); }
    int GetWindowWidth() const { return m_WindowWidth; }
    void SetWindowWidth(int width) { m_WindowWidth = width; }
    int GetWindowCenter() const { return m_WindowCenter; }
    void SetWindowCenter(int center) { m_WindowCenter = center; }
    int GetInitialWindowWidth() const { return m_InitialWindowWidth; }
    void SetInitialWindowWidth(int width) { m_InitialWindowWidth = width; }
    int GetInitialWindowCenter() const { return m_InitialWindowCenter; }
    void SetInitialWindowCenter(int center) { m_InitialWindowCenter = center; }
    int GetXOffset() const { return m_XOffset; }
    void SetXOffset(int offset) { m_XOffset = offset; }
    int GetYOffset() const { return m_YOffset; }
    void SetYOffset(int offset) { m_YOffset = offset; }
    float GetXRatio() const { return m_XRatio; }
    void SetXRatio(float ratio) { m_XRatio = ratio; }
    float GetYRatio() const { return m_YRatio; }
    void SetYRatio(float ratio) { m_YRatio = ratio; }
    /// The display bitmap, or null. Valid until it is rebuilt or the pixels are updated.
    CDib* GetDIB() const { return m_DIB.get(); }
    int GetLUTType() const { return m_LUTType; }
    void SetLUTType(int type) { m_LUTType = type; }
    int GetLUTParamK() const { return m_LUTParamK; }
    int GetLUTParamC() const { return m_LUTParamC; }
    void SetLUTParam(int k, int c) {
        m_LUTParamK = k;
        m_LUTParamC = c;
    }

protected:
    /// As rawImage's.
    CSize ComputeZoomRatio(const RECT* rectangle);
    /// As rawImage's.
    int Convert14BitsTo8Bits();
    /// Fitted drawing, as rawImage's.
    int DrawDIB(const RECT* rectangle, CDC* surface, std::uint32_t rop);
    /// Free drawing. @return 0, with nothing drawn, for null, without a bitmap, and when nothing of it would be seen
    int DrawDIB(CPoint offset, const RECT* rectangle, CDC* surface, std::uint32_t rop);

private:
    qvr::DisplaySource displaySource() const;
    qvr::DisplayView view() const;
    void setView(const qvr::DisplayView& view);

    int m_Width = 0;
    int m_Height = 0;
    int m_PixelSpacing = 0;
    int m_BitsStored = 0;
    int m_HighBit = 0;
    int m_WindowWidth = 0;
    int m_WindowCenter = 0;
    int m_InitialWindowWidth = 0;
    int m_InitialWindowCenter = 0;
    int m_XOffset = 0;
    int m_YOffset = 0;
    float m_XRatio = 0.0f;
    float m_YRatio = 0.0f;
    std::shared_ptr<CDib> m_DIB;  // shared only with a drawing of it that is under way
    int m_LUTType = 0;
    int m_LUTParamK = 1;
    int m_LUTParamC = 5;
    qvr::Pixels m_PixelData;
};

// rawImage: the pixel side of one image.
//
// Owns the 16-bit pixels while they are in memory and, all the time, the file paths, the display window and curve,
// zoom and pan, the display bitmap, the marks and the undo copies. Destroying it deletes no file.
//
// Pixels     m_Width * m_Height values, no row padding; row 0 is the BOTTOM row of the picture.
// Files      image file: the current pixels; raw copy: the pixels as acquired; work file: what an opened image is
//            written out to until it is committed. A new image (mode 0) has the first two, an opened one (mode 1) all.
// Invariant  m_DIB is null whenever m_ReadInRAM is 0; m_PixelData is there exactly while m_ReadInRAM is 1.
// Results    1 for success and 0 for failure; nothing is thrown.
// Threads    the host's user-interface thread only; nothing is locked.
// Rooms      rawImage.cpp life and residency; rawImageFiles.cpp file roles; rawImageDisplay.cpp fitting, table,
//            bitmap, surface; rawImageUndo.cpp; rawImageExport.cpp; rawImageMarks.cpp forwards to marks/
#pragma once

#include <cstdint>
#include <memory>

#include "qvr/export.h"
#include "qvr/image/CDib.h"
#include "qvr/image/undoStack.h"
#include "qvr/marks/CMark.h"
#include "qvr/marks/markList.h"
#include "qvr/platform/CDC.h"
#include "qvr/platform/CString.h"
#include "qvr/platform/pixelBuffer.h"
#include "qvr/platform/types.h"

/// What Create and Open are told. Only read; what is kept is copied.
struct QVR_ST_RAW_IMAGE {
    int Height = 0;  ///< rows
    int Width = 0;   ///< pixels per row
    int BAKWidth = 0;
    int BAKHeight = 0;
    int BitsStored = 0;  ///< significant bits per pixel; the display works for 14
    int HighBit = 0;
    int PixelSpacing = 0;  ///< in the host's unit
    int WindowCenter = 0;  ///< 0: none given
    int WindowWidth = 0;   ///< 0: none given
    /// Create: Width * Height values, bottom row first, still owned by the caller; Open does not read it.
    const std::uint16_t* PixelData = nullptr;
    int Mode = 0;            ///< 0 for Create, 1 for Open
    CString FilePath{};      ///< image file; empty for Create
    CString BAKFilePath{};   ///< raw copy; empty for Create
    CString WorkFilePath{};  ///< work file, one for each image; read by Open only
};

namespace qvr {
struct DisplaySource;
struct DisplayView;
struct MarkView;
}  // namespace qvr

/// An image that an entity owns lives until an operation of it has ended, also when the surface calls back and rejects
/// it.
class QVR_API rawImage : public std::enable_shared_from_this<rawImage> {
public:
    rawImage();
    virtual ~rawImage();
    rawImage(const rawImage&) = delete;
    rawImage& operator=(const rawImage&) = delete;

    // --- life and residency ------------------------------------------------------------------------------------

    /// A new image from acquired pixels; resident afterwards. Without a window it gets the automatic one. No file is
    /// written: call CreateBAKFile next, since until then the pixels exist in memory only. Marks and undo copies of an
    /// earlier image of this object stay: an object for each image is what a host wants.
    /// @param record  copied, its pixels too, which may be this image's own
    /// @return 0 for a null record or null pixels, with nothing changed; 0 for a bad size or without memory, with the
    ///         fields taken over, but no pixels and no bitmap
    int Create(const QVR_ST_RAW_IMAGE* record);
    /// An image from stored files; not resident afterwards, and what was resident is released. A work file that this object
    /// wrote is read again only when image file, work file and size are the same as before.
    /// @return the result of ValidateFile; 0 for a null record, with nothing changed
    int Open(const QVR_ST_RAW_IMAGE* record);
    /// Writes the pixels to the image file (new image) or the work file (opened image) and frees them with the bitmap.
    /// Marks, window, zoom and pan stay.
    /// @return 0 when the files do not validate, nothing is resident, the file to write is the raw copy under another
    ///         name, or it cannot be written or is none (a pipe, a device); the image then stays resident and unchanged
    int WriteToHDD();
    /// Reads the pixels into memory: from the work file where there is one, else from the image file. An image without
    /// a window gets the automatic one. The bitmap is not built: call BuildDisplayImage.
    /// @return 0 when the files do not validate, the image is resident, the file is too short or cannot be read, or
    ///         there is no memory; the image then stays not resident
    int ReadInRAM();
    /// Replaces pixels and geometry. Resident: in memory, the bitmap goes, offsets become 0, ratios stay. Not resident:
    /// the pixels are written straight to the image file, which is truncated first - a failed or killed write leaves it
    /// short -, whatever the mode: an opened image that has a work file is still read from there; offsets and ratios
    /// become 0.
    /// @param pixels        width * height values, may be or lie in this image's own
    /// @param windowWidth,windowCenter  when either is 0, the automatic window of `pixels` is taken
    /// @return 0, with nothing changed, for null pixels or a bad size, resident without memory, and not resident when the
    ///         image file is the raw copy under another name; 0 when the file cannot be written, with geometry and
    ///         window changed
    int Update(int width, int height, const std::uint16_t* pixels, int bitsStored, int highBit,
               int windowWidth, int windowCenter);
    /// Copies the current pixels out, from memory or straight from the file.
    /// @param destination  room for GetWidth() * GetHeight() values
    /// @return 0 for null, for a destination that overlaps the image's own pixels, and when the file cannot be read; what
    ///         was read so far may then stand in the destination
    int CopyPixelData(std::uint16_t* destination);
    int IsReadInRAM() const { return m_ReadInRAM; }

    // --- files -------------------------------------------------------------------------------------------------

    /// Writes the raw copy of a new, resident image to DIRECTORY/Cache/R.NAME.raw and takes DIRECTORY/Cache/I.NAME.raw
    /// as its image file, which is not written yet. A missing cache folder is made, a missing directory is not. Files of
    /// the same names are overwritten: the host keeps names unique.
    /// @param name  the SOP instance UID; one path component without '/', '\' or control bytes
    /// @return 0, with both paths as they were, for an opened image, without pixels, for an empty or bad name or
    ///         directory, and when the file cannot be written in full
    int CreateBAKFile(const char* name, const char* directory);
    /// Looks whether the image's files are there: for a new image its raw copy, for an opened one its image file and, if
    /// written, its work file. Also refreshes IsBAKFileValid, unless a path is missing.
    /// @return 1 when they are
    int ValidateFile();
    /// What the last ValidateFile found out about the raw copy.
    int IsBAKFileValid() const { return m_BAKFileValid; }
    /// Deletes the raw copy; path and IsBAKFileValid stay.
    /// @return 0 when there is no path, the raw copy is the image file too, or the file cannot be deleted
    int RemoveBAKFile();
    /// Deletes the work file of an opened image, unless it is the image file or the raw copy itself. Changes nothing
    /// else, so later reads and write-outs of that image fail: close comes last.
    void Close();
    const char* GetFilePath() const { return m_FilePath; }        ///< valid until the path changes
    const char* GetBAKFilePath() const { return m_BAKFilePath; }  ///< valid until the path changes

    // --- display -----------------------------------------------------------------------------------------------

    /// Makes a new display bitmap of the resident image and fills it.
    /// @param rectangle  where it will be drawn, in surface pixels; the bitmap is never larger
    /// @param surface    the bitmap's palette is realized on it; may be null
    /// @param reset      non-zero: the fitted view; 0: ratios and offsets as they are (fitted when both ratios are 0).
    ///                   What the offsets select outside the image is black; a ratio above 1 repeats pixels
    /// @return 0 when not resident, for a null, empty or inverted rectangle, an image side or bitmap side of 0, or a
    ///         ratio that is not finite and above 0, with everything as it was; 0 with a black bitmap when the image is
    ///         not a 14-bit one; 0 without a bitmap when there is no memory
    int BuildDisplayImage(const RECT* rectangle, CDC* surface, int reset);
    /// Fills the existing bitmap anew, after a change of window or curve.
    /// @return 0, with the bitmap as it was, unless the image is a 14-bit one and has a bitmap
    int UpdateDisplayImage();
    /// Draws the bitmap into the rectangle, centred and letter-boxed in black, and the marks over it. Without a bitmap
    /// only the marks are drawn.
    void Draw(const RECT* rectangle, CDC* surface);
    /// Fills a lookup table for pixel values 0 … size - 1: 0 below low, 255 above high, the curve between. It differs
    /// from the display's own table: the range counts high - low + 1 values, the linear entries are in
    /// proportion to `size` (the display's own at 16384; of larger ones the low byte), the logarithm is scaled by
    /// 1 / ln(k + 1), the sigmoid is not scaled.
    /// @param type   1 power, 2 exponential, 3 logarithmic, 4 sigmoid, everything else linear
    /// @param k,c    parameters of the curve, c in tenths
    /// @param table  out: room for `size` entries
    /// @return always 1; nothing is written for a null table or a size below 1
    static int Create8BitsLUT(int type, int low, int high, int k, int c, int size, std::uint8_t* table);

    // --- marks -------------------------------------------------------------------------------------------------
    //
    // `rectangle` is the one that the image is drawn into, `surface` the one it is drawn on; text is measured with its
    // fonts. An operation with a rectangle needs a display bitmap, and does nothing without one, for null, and when
    // no font is usable. An index outside 0 ... GetMarkCount() - 1 does nothing.

    /// Adds a mark along the top edge of the image and draws it.
    /// @param text  UTF-8; null is empty
    /// @return 1; 0, with nothing added or drawn, when there are three marks, the text does not fit at font height 50 or
    ///         has more than 4096 bytes
    int AddMark(const char* text, const RECT* rectangle, CDC* surface);
    /// The next larger of the font heights 30, 40 and 50, kept inside the image's right and bottom edges.
    void InflateMark(int index, const RECT* rectangle, CDC* surface);
    /// The next smaller font height; the position stays.
    void DeflateMark(int index);
    /// Moves a mark by surface pixels; see SetMarkDISPLeftTop.
    void MoveMark(int index, int dx, int dy, const RECT* rectangle, CDC* surface);
    /// Moves a mark to a surface position, kept inside the image. Where a mark is burned follows from its place in the
    /// view as if YOffset were counted from the top of the picture: in a view that is panned off the vertical middle a
    /// moved or inflated mark is burned elsewhere than it is seen. Edit marks in the fitted view.
    void SetMarkDISPLeftTop(int index, CPoint point, const RECT* rectangle, CDC* surface);
    /// @return index of the oldest mark whose text box holds the point, or -1
    int PtInMarkRect(CPoint point, CDC* surface);
    /// Selects that mark and deselects all others; an index that does not exist deselects all.
    void SetMarkSelected(int index);
    void SetMarkNoSelected(int index);
    /// @return index of the first selected mark, or -1
    int GetSelectedMarkIndex() const;
    int GetMarkCount() const;
    void DeleteMark(int index);
    void DeleteAllMark();
    /// Copies a mark out, for a host that stores marks. @return 1; 0, with `out` untouched, for an index that does not
    /// exist
    int GetMark(int index, CMark& out) const;
    /// Burns the text of every mark into a pixel buffer: each pixel under it becomes the brightest value of the depth.
    /// The font height follows the present zoom (GetYRatio), so burn from the fitted view.
    /// @param pixels  width * height values: the image's own, or a copy of them. Own ones that a surface replaces
    ///                meanwhile by calling back are burned when their size is the same
    /// @return 1, also without marks; 0 when a mark could not be burned (another depth than 10, 12, 14 or 16, no
    ///         zoom, a font height that rounds to 0, no usable font, no memory); the other marks are burned all the same
    int WriteMark(int width, int height, std::uint16_t* pixels, int bitsStored, CDC* surface);

    // --- print and export --------------------------------------------------------------------------------------

    /// Fills an 8-bit bitmap from a region of a pixel buffer through window and curve, one pixel for one.
    /// @param width,height  of the source; a height of 0 or less is taken as not given
    /// @param firstColumn,firstRow  bottom left corner of the region; rows count from the bottom of the picture
    /// @param bitmap        its size is that of the region; pixel storage must be there
    /// @return 1; 0, with the bitmap as it was, for null, an unusable bitmap and a region that leaves the source
    static int CreatePrintImage14Bits(int width, int height, const std::uint16_t* pixels, int firstColumn,
                                      int firstRow, int windowWidth, int windowCenter, int type, int k, int c,
                                      CDib* bitmap);
    /// As CreatePrintImage14Bits for values of 12 bits.
    static int CreatePrintImage12Bits(int width, int height, const std::uint16_t* pixels, int firstColumn,
                                      int firstRow, int windowWidth, int windowCenter, int type, int k, int c,
                                      CDib* bitmap);
    /// Moves a new image's raw copy to a path of the host's, which becomes the raw copy's path: RejectImage deletes it
    /// there. An existing file is replaced in one step.
    /// @return 0, with nothing changed, for an opened image, null, a path that names the raw copy or the image file
    ///         itself, when those two are one file, and when the file cannot be copied; 0, with the raw copy in both
    ///         places and its path unchanged, when the new name cannot be made safe on disk
    int WriteFileForPROC(const char* path);
    /// New image: writes the current pixels with all marks burned in to a path of the host's, deletes the image file (not
    /// when it is the raw copy) and takes the path as the image file's. RejectImage then deletes it there, and a later
    /// WriteToHDD replaces it by pixels without marks. The image's own pixels and marks stay. An existing file is
    /// replaced in one step.
    /// Opened image: commits the current pixels to the image file in one step - from memory, or from the work file when
    /// not resident; path and surface are not used, and no mark is burned. An earlier work file stays and is still what
    /// reads take. A work file that is too short for the pixels or is the raw copy is not committed.
    /// A killed export leaves a file PATH.qvr-new-NUMBER beside the target.
    /// @return 0, with nothing changed, when a mark cannot be burned (WriteMark), for null or a path that names the raw
    ///         copy, when the pixels cannot be read or the file cannot be written, and without memory; 0, with the target
    ///         replaced and everything else unchanged, when its new name cannot be made safe on disk
    int WriteFileForPRES(const char* path, CDC* surface);

    // --- undo copies -------------------------------------------------------------------------------------------

    /// Keeps a copy of the resident pixels with size and window; a fourth copy drops the oldest. The copies stay in
    /// memory while the image itself is written out.
    /// @return 0 when nothing is resident, and without memory (an oldest copy that was dropped stays dropped)
    int SaveUndoData();
    /// Takes the newest copy back: pixels, size and window. Bit depth, zoom and pan stay, and so does the display bitmap,
    /// which shows the pixels from before until BuildDisplayImage.
    /// @return 0 when nothing is resident or there is no copy
    int ReadUndoData();

    // --- values; setters rebuild nothing -----------------------------------------------------------------------

    int GetWidth() const { return m_Width; }
    int GetHeight() const { return m_Height; }
    int GetBAKWidth() const { return m_BAKWidth; }
    int GetBAKHeight() const { return m_BAKHeight; }
    int GetPixelSpacing() const { return m_PixelSpacing; }
    int GetBitsStored() const { return m_BitsStored; }
    int GetHighBit() const { return m_HighBit; }
    /// The resident pixels, writable in place; null while on disk. Valid until the image is written out or updated.
    std::uint16_t* GetPixelData() const { return m_PixelData.get(); }
    int GetWindowWidth() const { return m_WindowWidth; }
    void SetWindowWidth(int width) { m_WindowWidth = width; }
    int GetWindowCenter() const { return m_WindowCenter; }
    void SetWindowCenter(int center) { m_WindowCenter = center; }
    int GetInitialWindowWidth() const { return m_InitialWindowWidth; }
    void SetInitialWindowWidth(int width) { m_InitialWindowWidth = width; }
    int GetInitialWindowCenter() const { return m_InitialWindowCenter; }
    void SetInitialWindowCenter(int center) { m_InitialWindowCenter = center; }
    int GetXOffset() const { return m_XOffset; }  ///< first source column shown
    void SetXOffset(int offset) { m_XOffset = offset; }
    int GetYOffset() const {
        return m_YOffset;
    }  ///< first source row shown, counted from the bottom of the picture
    void SetYOffset(int offset) { m_YOffset = offset; }
    float GetXRatio() const { return m_XRatio; }  ///< display pixels per source pixel
    void SetXRatio(float ratio) { m_XRatio = ratio; }
    float GetYRatio() const { return m_YRatio; }
    void SetYRatio(float ratio) { m_YRatio = ratio; }
    /// The display bitmap, or null. Valid until it is rebuilt or the image leaves memory.
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
    /// Fits the image into the rectangle and sets the ratios. @return the bitmap size; (0, 0), with the ratios as they
    /// were, when it cannot be fitted
    CSize ComputeZoomRatio(const RECT* rectangle);
    /// Fills the bitmap from the pixels. @return 0, with the bitmap as it was, without bitmap or pixels, or for a ratio
    /// that is not finite and above 0
    int Convert14BitsTo8Bits();
    /// Puts the bitmap on the surface. @return 0, with nothing drawn, for a null surface or without a bitmap
    int DrawDIB(const RECT* rectangle, CDC* surface, std::uint32_t rop);
    /// Draws every mark, oldest first.
    void DrawAllMarks(const RECT* rectangle, CDC* surface);
    /// Draws one mark, moved with the display rectangle since it was added: frame, text, and a cross when selected.
    void DrawMark(const CMark* mark, const RECT* rectangle, CDC* surface);
    void DrawRectFrame(const RECT* box, std::uint32_t colour, CDC* surface);
    void DrawRectSelectedCross(const RECT* box, std::uint32_t colour, CDC* surface);

private:
    void takeGeometry(const QVR_ST_RAW_IMAGE& record);
    void leaveMemory();
    const CString& currentFile() const;
    bool namesRawCopy(const CString& path) const;
    bool holdsPixels(const CString& path) const;
    qvr::DisplaySource displaySource() const;
    qvr::DisplayView view() const;
    void setView(const qvr::DisplayView& view);
    qvr::MarkView markView() const;
    int exportNewImage(const char* path, CDC* surface);
    int commitOpenedImage();

    int m_Width = 0;
    int m_Height = 0;
    int m_BAKWidth = 0;
    int m_BAKHeight = 0;
    int m_PixelSpacing = 0;
    int m_BitsStored = 0;
    int m_HighBit = 0;
    qvr::Pixels m_PixelData;
    int m_WindowWidth = 0;
    int m_WindowCenter = 0;
    int m_InitialWindowWidth = 0;
    int m_InitialWindowCenter = 0;
    int m_XOffset = 0;
    int m_YOffset = 0;
    float m_XRatio = 0.0f;
    float m_YRatio = 0.0f;
    std::shared_ptr<CDib> m_DIB;  // shared only with a drawing of it that is under way
    int m_Mode = -1;
    int m_ReadInRAM = 0;
    int m_BAKFileValid = 0;
    CString m_FilePath;
    CString m_BAKFilePath;
    CString m_WorkFilePath;
    int m_WorkFileWritten = 0;
    qvr::MarkList m_MarkList;
    qvr::UndoStack m_UndoList;
    int m_LUTType = 0;
    int m_LUTParamK = 1;
    int m_LUTParamC = 5;
};

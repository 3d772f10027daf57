// dcmSeries: one series of a study, with its protocol, at most one image, and two reduced pictures of it.
//
// Abstract; a study makes a dcmCRSeries or a dcmDXSeries, which differ in one attribute and in the kind of image they
// hold. The display work is put together here: after a change of pixels, window or view the raw image's bitmap is
// rebuilt or re-converted, thumbnail and preview follow, and the image entity's attributes are kept in step.
//
// States     planned (no image); opened (image on disk, no picture yet); resident; written out
// Results    1 (or non-zero) for success and 0 for failure; nothing is thrown. Without an image, or with an image that
//            has no raw image, an operation returns its failure value and does nothing.
// Rooms      dcmSeries.cpp attributes, image, files, protocol; dcmSeriesUpdate.cpp everything that refreshes the display
#pragma once

#include <cstdint>
#include <memory>

#include "qvr/export.h"
#include "qvr/image/CDib.h"
#include "qvr/model/dcmImage.h"
#include "qvr/model/dcmObject.h"
#include "qvr/model/dcmProtocol.h"
#include "qvr/model/dcmValues.h"
#include "qvr/platform/CDC.h"
#include "qvr/platform/COleDateTime.h"
#include "qvr/platform/CString.h"
#include "qvr/platform/types.h"

/// What a host fills for a series; zero and empty with {}. Only read; what is kept is copied.
struct QVR_ST_SERIES {
    CString Modality{};
    CString SeriesInstanceUID{};
    int SeriesNumber = 0;
    CString PerformingPhysicianFamilyName{};
    CString PerformingPhysicianGivenName{};
    CString OperatorFamilyName{};
    CString OperatorGivenName{};
    CString BodyPartExamined{};
    COleDateTime SeriesDateTime{};
    CString SeriesDescription{};
    int Sent = 0;                      ///< flag
    int Printed = 0;                   ///< flag
    CString ViewPosition{};            ///< read by dcmCRSeries
    CString PresentationIntentType{};  ///< read by dcmDXSeries
};

class QVR_API dcmSeries : public dcmObject {
public:
    dcmSeries();
    dcmSeries(const dcmSeries&) = delete;
    dcmSeries& operator=(const dcmSeries&) = delete;
    /// Destroys image, protocol, thumbnail and preview; no file is deleted.
    ~dcmSeries() override;

    /// Takes the attributes and clears Changed and Deleted; protocol, image and pictures stay.
    /// @return 1; 0, with nothing changed, for null or when memory ends
    virtual int Create(const QVR_ST_SERIES* record);
    /// A new image from acquired pixels: image entity, raw copy in DIRECTORY/Cache, fitted display, thumbnail and preview;
    /// the series takes the image's date and time.
    /// @return 0, with nothing changed, for a null record, directory or rectangle and when there is an image already. 0
    ///         when a later step fails: the image entity is then kept as far as it came - for 12 bits always, since only
    ///         14-bit pixels can be displayed -, so the pixels are not lost: they are resident, though no exam counts
    ///         them, and RejectImage, when there is a thumbnail, or the end of the study frees them
    virtual int CreateImage(const QVR_ST_IMAGE* record, const char* directory, const RECT* rectangle,
                            CDC* surface) = 0;
    /// An image from stored files; not resident, and no picture is made.
    /// @return 0, with nothing changed, for null and when there is an image already; 0, with the entity kept, when its
    ///         files do not validate
    virtual int OpenImage(const QVR_ST_IMAGE* record) = 0;
    /// Deletes the work file of an opened image; the image stays. Later reads and write-outs of it fail: close comes last.
    virtual void CloseImage();
    /// rawImage::SaveUndoData
    virtual int SaveUndoData();
    /// Takes the newest undo copy back and refreshes display (fitted view) and pictures. The image entity's own width and
    /// height keep the values of the last update: ask the raw image.
    /// @return 0 for a null rectangle or without an undo copy, with nothing changed; 0 when the display cannot be made
    virtual int ReadUndoData(const RECT* rectangle, CDC* surface);

    // --- display -----------------------------------------------------------------------------------------------

    /// Draws the image with its marks; black when there is none.
    void DrawImage(const RECT* rectangle, CDC* surface);
    /// New pixels of any size. Changed becomes 1. See rawImage::Update for what happens to an image that is not resident.
    /// @return 0 as rawImage::Update; 0, with the raw image holding the new pixels but attributes and Changed as they
    ///         were, when the display cannot be made (null or empty rectangle, another depth than 14 bits)
    int UpdateImage(int width, int height, const std::uint16_t* pixels, int bitsStored, int highBit,
                    int windowWidth, int windowCenter, const RECT* rectangle, CDC* surface);
    /// A new display rectangle; a non-zero refresh goes back to the fitted view and refreshes the pictures. 1 when not
    /// resident.
    int UpdateImage(const RECT* rectangle, CDC* surface, int refresh);
    /// A new window. Changed becomes 1; the pictures are refreshed unless the view is panned.
    /// @return 0, with nothing changed, when either value is 0; 0, with the raw image's window changed, when the display
    ///         cannot be converted (another depth than 14 bits)
    int UpdateImage(int windowWidth, int windowCenter, CDC* surface);
    /// A new zoom, in display pixels per image pixel, centred on the image; (0, 0) is the fitted view.
    /// @return 0, with nothing changed, for other ratios that are not finite and above 0, for those that would leave
    ///         less than a pixel of the image, and for a null or empty rectangle
    int UpdateImage(float xRatio, float yRatio, const RECT* rectangle, CDC* surface);
    /// A new first column and first row (counted from the bottom of the picture); any value is taken, and what lies
    /// outside the image is black.
    int UpdateImage(int xOffset, int yOffset, const RECT* rectangle, CDC* surface);
    /// Converts the display anew, after SetLUT; the pictures are refreshed unless the view is panned. 1 when not resident.
    int UpdateImage(CDC* surface);
    /// Sets the curve of the raw image; nothing is rebuilt.
    void SetLUT(int type, int k, int c);
    /// A fifth of the display; while there is no image, the protocol's bitmap; or null. Valid until the next refresh.
    CDib* GetThumb() const { return m_Thumb.get(); }
    /// The longer side 600 pixels; null for displays of 600000 pixels or less. Valid until the next refresh.
    CDib* GetPreview() const { return m_Preview.get(); }

    // --- memory and files --------------------------------------------------------------------------------------

    /// rawImage::WriteToHDD: the image stays resident when it cannot be written.
    int WriteImageToHDD();
    /// Reads the image into memory and makes display (fitted view), thumbnail and preview.
    /// @return 0 for a null rectangle or when the pixels cannot be read; 0 when the display cannot be made, with the image
    ///         resident
    int ReadImageInRAM(const RECT* rectangle, CDC* surface);
    int IsImageInRAM() const;
    int IsImageBAKFileValid() const;
    int GetImageBAKWidth() const;             ///< -1 without a raw image
    int GetImageBAKHeight() const;            ///< -1 without a raw image
    const char* GetImageFilePath() const;     ///< null without a raw image; valid until the path changes
    const char* GetImageBAKFilePath() const;  ///< null without a raw image; valid until the path changes
    int IsImageExist() const { return m_Image != nullptr; }
    /// The owned image entity, or null. Valid until RejectImage.
    dcmImage* GetDcmImage() const { return m_Image.get(); }
    /// Deletes the files that the image's two paths name, the image file and the raw copy - after an export these are the
    /// host's files -, destroys the image and shows the protocol's bitmap again. The preview stays.
    /// @return 0, with nothing changed, without an image or without a thumbnail
    int RejectImage();

    // --- protocol and attributes -------------------------------------------------------------------------------

    /// Replaces the protocol. While there is no image, its bitmap file becomes the thumbnail, or none when it does not
    /// open.
    /// @return 0, with the protocol kept, for null or when memory ends
    int CreateProtocol(const QVR_ST_PROTOCOL* record);
    int IsProtocolExist() const { return m_Protocol != nullptr; }
    /// The owned protocol, or null. Valid until the next CreateProtocol.
    dcmProtocol* GetProtocol() const { return m_Protocol.get(); }
    COleDateTime GetSeriesDateTime() const { return m_SeriesDateTime; }
    void SetSeriesDateTime(COleDateTime dateTime) { m_SeriesDateTime = dateTime; }
    void SetExposureIndex(int index);
    int GetExposureIndex() const;
    int IsChanged() const { return m_Changed; }
    void SetChanged(int changed) { m_Changed = changed; }
    int IsDeleted() const { return m_Deleted; }
    void SetDeleted(int deleted) { m_Deleted = deleted; }
    int IsSent() const { return m_Sent; }
    int IsPrinted() const { return m_Printed; }
    const char* GetModality() const { return m_Modality; }
    const char* GetSeriesInstanceUID() const { return m_SeriesInstanceUID; }
    int GetSeriesNumber() const { return m_SeriesNumber; }
    const char* GetBodyPartExamined() const { return m_BodyPartExamined; }
    const char* GetSeriesDescription() const { return m_SeriesDescription; }
    const char* GetPerformingPhysicianName() const { return m_PerformingPhysicianName.GetPersonName(); }
    const char* GetOperatorName() const { return m_OperatorName.GetPersonName(); }

protected:
    /// Makes the thumbnail anew from a display bitmap. @return 0, without a thumbnail, when it cannot be made
    int UpdateThumb(CDib* display, CDC* surface);
    /// Makes the preview anew. @return 0, without a preview, for a small display or when it cannot be made
    int UpdatePreview(CDib* display, CDC* surface);
    /// The bodies of CreateImage and OpenImage for the given, still empty entity, which may be null.
    int createImage(std::shared_ptr<dcmImage> image, const QVR_ST_IMAGE* record, const char* directory,
                    const RECT* rectangle, CDC* surface);
    int openImage(std::shared_ptr<dcmImage> image, const QVR_ST_IMAGE* record);

private:
    // Nothing waits on it or changes it: manual-reset, signalled from construction on.
    struct Event {
        bool signalled = true;
    };

    // The image's raw image, or null. Its owner stays alive with the result: a surface may call back and reject the image.
    std::shared_ptr<rawImage> raw() const;
    template <class Make>
    int replacePicture(std::unique_ptr<CDib>& picture, Make&& make);
    int refreshPictures(CDC* surface);
    int rebuildFitted(const RECT* rectangle, CDC* surface);
    int reconvert(CDC* surface);
    void loadProtocolThumb();

    CString m_Modality;
    CString m_SeriesInstanceUID;
    int m_SeriesNumber = 0;
    dcmPersonName m_PerformingPhysicianName;
    dcmPersonName m_OperatorName;
    CString m_BodyPartExamined;
    CString m_SeriesDescription;
    COleDateTime m_SeriesDateTime;
    int m_Sent = 0;
    int m_Printed = 0;
    int m_Changed = 0;
    int m_Deleted = 0;
    std::unique_ptr<dcmProtocol> m_Protocol;
    std::shared_ptr<dcmImage> m_Image;  // shared only with an operation on it that is under way
    [[maybe_unused]] Event m_SeriesEvent;
    std::unique_ptr<CDib> m_Thumb;
    std::unique_ptr<CDib> m_Preview;
};

class QVR_API dcmCRSeries : public dcmSeries {
public:
    dcmCRSeries();
    ~dcmCRSeries() override;

    int Create(const QVR_ST_SERIES* record) override;
    int CreateImage(const QVR_ST_IMAGE* record, const char* directory, const RECT* rectangle,
                    CDC* surface) override;
    int OpenImage(const QVR_ST_IMAGE* record) override;
    const char* GetViewPosition() const { return m_ViewPosition; }

private:
    CString m_ViewPosition;
};

class QVR_API dcmDXSeries : public dcmSeries {
public:
    dcmDXSeries();
    ~dcmDXSeries() override;

    int Create(const QVR_ST_SERIES* record) override;
    int CreateImage(const QVR_ST_IMAGE* record, const char* directory, const RECT* rectangle,
                    CDC* surface) override;
    int OpenImage(const QVR_ST_IMAGE* record) override;
    const char* GetPresentationIntentType() const { return m_PresentationIntentType; }

private:
    CString m_PresentationIntentType;
};

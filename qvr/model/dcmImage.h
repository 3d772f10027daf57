// dcmImage: the DICOM attributes of one acquired image, and the owner of its rawImage.
//
// dcmCRImage and dcmDXImage are the two kinds; a series makes the one of its own kind. Attributes are kept as the host
// gives them and never interpreted; units are the host's.
#pragma once

#include <cstdint>
#include <memory>

#include "qvr/export.h"
#include "qvr/model/dcmObject.h"
#include "qvr/platform/COleDateTime.h"
#include "qvr/platform/CString.h"

class rawImage;

/// What a host fills for a new or a stored image; zero and empty with {}. Only read; what is kept is copied.
struct QVR_ST_IMAGE {
    int InstanceNumber = 0;
    CString PatientOrientation{};
    COleDateTime ContentDateTime{};
    int Height = 0;      ///< rows
    int Width = 0;       ///< pixels per row
    int BitsStored = 0;  ///< significant bits per pixel
    int HighBit = 0;
    /// Create: Width * Height values, bottom row first, still owned by the caller; Open does not read it.
    const std::uint16_t* PixelData = nullptr;
    /// Also names the image's cache files, so it must be unique in its directory: files of the same name are overwritten.
    CString SOPInstanceUID{};
    int PixelSpacing = 0;
    int WindowCenter = 0;  ///< 0: none given
    int WindowWidth = 0;   ///< 0: none given
    int KVP = 0;
    int XRayTubeCurrent = 0;
    double Exposure = 0.0;
    double ExposureTime = 0.0;
    int BAKWidth = 0;           ///< Open: size of the raw copy
    int BAKHeight = 0;          ///< Open
    CString FilePath{};         ///< Open: image file
    CString BAKFilePath{};      ///< Open: raw copy
    CString WorkFilePath{};     ///< Open: work file, one for each image
    CString ImageLaterality{};  ///< read by dcmDXImage
};

class QVR_API dcmImage : public dcmObject {
public:
    dcmImage();
    dcmImage(const dcmImage&) = delete;
    dcmImage& operator=(const dcmImage&) = delete;
    /// Destroys the raw image; no file is deleted.
    ~dcmImage() override;

    /// A new image from acquired pixels. No file is written. Once only: on an entity that has a raw image it fails.
    /// @return 1; 0 for null, with nothing changed, and when the raw image cannot be created, with the attributes taken
    ///         over
    virtual int Create(const QVR_ST_IMAGE* record);
    /// An image from stored files; not resident. Otherwise as Create.
    virtual int Open(const QVR_ST_IMAGE* record);
    /// The owned raw image; null before Create and Open. Lives as long as the entity.
    virtual rawImage* GetRawImage();

    int GetInstanceNumber() const { return m_InstanceNumber; }
    const char* GetPatientOrientation() const { return m_PatientOrientation; }
    COleDateTime GetContentDateTime() const { return m_ContentDateTime; }
    int GetHeight() const { return m_Height; }
    void SetHeight(int height) { m_Height = height; }
    int GetWidth() const { return m_Width; }
    void SetWidth(int width) { m_Width = width; }
    int GetBitsAllocated() const { return m_BitsAllocated; }
    int GetBitsStored() const { return m_BitsStored; }
    void SetBitsStored(int bits) { m_BitsStored = bits; }
    int GetHighBit() const { return m_HighBit; }
    void SetHighBit(int bit) { m_HighBit = bit; }
    const char* GetSOPInstanceUID() const { return m_SOPInstanceUID; }
    /// The raw image's current window, which is also taken over; the stored value only while there is no raw image.
    int GetWindowWidth() const;
    int GetWindowCenter() const;
    void SetWindowWidth(int width) { m_WindowWidth = width; }      ///< the raw image is not touched
    void SetWindowCenter(int center) { m_WindowCenter = center; }  ///< the raw image is not touched
    int GetPixelSpacing() const { return m_PixelSpacing; }
    int GetKVP() const { return m_KVP; }
    double GetExposureTime() const { return m_ExposureTime; }
    int GetXRayTubeCurrent() const { return m_XRayTubeCurrent; }
    double GetExposure() const { return m_Exposure; }
    int GetExposureIndex() const { return m_ExposureIndex; }
    void SetExposureIndex(int index) { m_ExposureIndex = index; }
    const char* GetSOPClassUID() const { return m_SOPClassUID; }

protected:
    /// @param sopClassUID  a constant of the kind: it must outlive the entity
    explicit dcmImage(const char* sopClassUID);

private:
    bool takeAttributes(const QVR_ST_IMAGE& record);

    int m_InstanceNumber = 0;
    CString m_PatientOrientation;
    COleDateTime m_ContentDateTime;
    int m_SamplesPerPixel = 1;
    const char* m_PhotometricInterpretation = "MONOCHROME2";
    int m_Height = 0;
    int m_Width = 0;
    int m_BitsAllocated = 16;
    int m_BitsStored = 0;
    int m_HighBit = 0;
    int m_PixelRepresentation = 0;
    std::shared_ptr<rawImage> m_RawImage;
    CString m_SOPInstanceUID;
    mutable int m_WindowWidth = 0;   // as last known; getters bring it up to date
    mutable int m_WindowCenter = 0;  // as last known
    int m_PixelSpacing = 0;
    int m_KVP = 0;
    double m_ExposureTime = 0.0;
    int m_XRayTubeCurrent = 0;
    double m_Exposure = 0.0;
    int m_ExposureIndex = 0;
    const char* m_SOPClassUID;
};

/// Computed Radiography Image Storage.
class QVR_API dcmCRImage : public dcmImage {
public:
    dcmCRImage();
    ~dcmCRImage() override;
};

/// Digital X-Ray Image Storage - For Presentation.
class QVR_API dcmDXImage : public dcmImage {
public:
    dcmDXImage();
    ~dcmDXImage() override;

    int Create(const QVR_ST_IMAGE* record) override;
    int Open(const QVR_ST_IMAGE* record) override;
    /// Taken over by a Create or Open that succeeds.
    const char* GetImageLaterality() const { return m_ImageLaterality; }

private:
    CString m_ImageLaterality;
    // Constant for every DX image; kept for the object that a storage service builds from this one.
    const char* m_ImageType = "ORIGINAL\\PRIMARY";
    const char* m_PixelIntensityRelationship = "LIN";
    const char* m_PixelIntensityRelationshipSign = "-1";
    const char* m_RescaleIntercept = "0";
    const char* m_RescaleSlope = "1";
    const char* m_RescaleType = "US";
    const char* m_PresentationLUTShape = "IDENTITY";
    const char* m_LossyImageCompression = "00";
    const char* m_BurnedInAnnotation = "NO";
    const char* m_SpareAttribute = "";
};

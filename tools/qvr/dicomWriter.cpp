// The window is stored as it was asked for. The library's ramp counts one value more than DICOM's, so that a viewer shows
// at most two greys more than the library does at widths of 255 and more.
#include "dicomWriter.h"

#include <dcmtk/dcmdata/dcdeftag.h>
#include <dcmtk/dcmdata/dcfilefo.h>
#include <dcmtk/dcmdata/dcuid.h>
#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "dicomAttributes.h"
#include "errors.h"
#include "safeFile.h"

namespace qvr::tool {

namespace {

constexpr int kLongestSide = 65535;
constexpr int kLargestValue = (1 << kAdoptedBits) - 1;

void check(const DicomImage& image) {
    if (image.windowWidth < 1)
        throw Failure(Exit::usage, "", "not written",
                      fmt::format("a window of width {} cannot be stored in DICOM", image.windowWidth),
                      "Give a --window whose width is above 0.");
    if (image.width < 1 || image.height < 1 || std::max(image.width, image.height) > kLongestSide)
        throw Failure(Exit::unsupported, "", "not written",
                      fmt::format("{} x {} pixels do not fit into DICOM", image.width, image.height));
    if (std::any_of(image.pixels.begin(), image.pixels.end(), [](auto v) { return v > kLargestValue; }))
        throw Failure(Exit::internal, "", "not written", "a pixel has more than 14 bits");
}

struct Kind {
    std::string sopClass;
    bool isDx;  // or a relative of it, with its stricter rules
};

Kind kindOf(DcmDataset* source) {
    const std::pair<const char*, const char*> kept[] = {
        {UID_DigitalXRayImageStorageForPresentation, UID_DigitalXRayImageStorageForPresentation},
        {UID_DigitalXRayImageStorageForProcessing, UID_DigitalXRayImageStorageForPresentation},
        {UID_DigitalMammographyXRayImageStorageForPresentation,
         UID_DigitalMammographyXRayImageStorageForPresentation},
        {UID_DigitalMammographyXRayImageStorageForProcessing,
         UID_DigitalMammographyXRayImageStorageForPresentation},
        {UID_DigitalIntraOralXRayImageStorageForPresentation,
         UID_DigitalIntraOralXRayImageStorageForPresentation},
        {UID_DigitalIntraOralXRayImageStorageForProcessing,
         UID_DigitalIntraOralXRayImageStorageForPresentation}};
    const std::string sopClass = source ? textOf(*source, DCM_SOPClassUID) : std::string();
    if (sopClass == UID_ComputedRadiographyImageStorage) return {sopClass, false};
    for (const auto& [from, to] : kept)
        if (sopClass == from) return {to, true};
    return {UID_SecondaryCaptureImageStorage, false};
}

// The third and further values of an image type tell what kind of exposure it was; they stay.
std::string derivedType(DcmDataset* source) {
    if (!source) return "DERIVED\\SECONDARY";
    const auto old = valuesOf(*source, DCM_ImageType);
    const auto second = old.find('\\');
    if (second == std::string::npos) return "DERIVED\\PRIMARY";
    return "DERIVED" + old.substr(second);
}

// Which instance this is, and how it came about.
std::string identify(const DicomImage& image, const Kind& kind, DcmDataset& set) {
    auto* source = image.source.get();
    const auto oldUid = source ? textOf(*source, DCM_SOPInstanceUID) : std::string();
    const auto oldClass = source ? textOf(*source, DCM_SOPClassUID) : std::string();
    const bool same = !image.pixelsChanged && oldClass == kind.sopClass && isUid(oldUid);
    const auto uid = same ? oldUid : newUid();
    putText(set, DCM_SOPClassUID, kind.sopClass);
    putText(set, DCM_SOPInstanceUID, uid);
    putNow(set, DCM_ContentDate, DCM_ContentTime);
    if (same) {
        const auto type = valuesOf(*source, DCM_ImageType);
        putText(set, DCM_ImageType, type.empty() ? "ORIGINAL\\PRIMARY" : type);
        return uid;
    }
    putText(set, DCM_ImageType, derivedType(source));
    if (!image.derivation.empty()) putText(set, DCM_DerivationDescription, image.derivation);
    if (isUid(oldUid) && isUid(oldClass)) refer(set, DCM_SourceImageSequence, oldClass, oldUid);
    return uid;
}

void describe(const DicomImage& image, const Kind& kind, DcmDataset& set) {
    auto* source = image.source.get();
    const auto was = [&](const DcmTagKey& tag) { return source ? textOf(*source, tag) : std::string(); };
    // A source that carries burned text still does so.
    const bool burned = image.marksBurned || was(DCM_BurnedInAnnotation) == "YES";
    putText(set, DCM_BurnedInAnnotation, burned ? "YES" : "NO");
    const auto orientation = source ? valuesOf(*source, DCM_PatientOrientation) : std::string();
    putText(set, DCM_PatientOrientation, image.patientOrientation.value_or(orientation));
    if (source && DcmXfer(source->getOriginalXfer()).isLossy()) putText(set, DCM_LossyImageCompression, "01");
    if (kind.sopClass == UID_SecondaryCaptureImageStorage) {
        ensureText(set, DCM_Modality, "OT");
        putText(set, DCM_ConversionType, "WSD");
        return;
    }
    ensureText(set, DCM_Modality, kind.isDx ? "DX" : "CR");
    ensure(set, DCM_BodyPartExamined);
    ensure(set, DCM_ViewPosition);
    if (!kind.isDx) return;
    putText(set, DCM_PresentationIntentType, "FOR PRESENTATION");
    const auto relationship = was(DCM_PixelIntensityRelationship);
    putText(set, DCM_PixelIntensityRelationship, relationship.empty() ? "LIN" : relationship);
    set.putAndInsertSint16(DCM_PixelIntensityRelationshipSign, image.negative ? 1 : -1);
    ensureText(set, DCM_LossyImageCompression, "00");
    const auto laterality = was(DCM_Laterality);
    ensureText(set, DCM_ImageLaterality, laterality.empty() ? "U" : laterality);
    ensure(set, DCM_AnatomicRegionSequence);
    ensure(set, DCM_AcquisitionContextSequence);
    ensure(set, DCM_DetectorType);
}

void putSpacing(const DicomImage& image, DcmDataset& set) {
    if (image.spacing)
        putText(set, DCM_ImagerPixelSpacing,
                decimal(image.spacing->second) + '\\' + decimal(image.spacing->first));
    auto* source = image.source.get();
    const auto calibrated = source ? valuesOf(*source, DCM_PixelSpacing) : std::string();
    const auto middle = calibrated.find('\\');
    if (middle == std::string::npos) return;
    const auto betweenRows = calibrated.substr(0, middle);
    const auto betweenColumns = calibrated.substr(middle + 1);
    putText(set, DCM_PixelSpacing,
            image.quarterTurn ? betweenColumns + '\\' + betweenRows : betweenRows + '\\' + betweenColumns);
    for (const auto& tag : {DCM_PixelSpacingCalibrationType, DCM_PixelSpacingCalibrationDescription})
        if (source->tagExists(tag)) putText(set, tag, textOf(*source, tag));
}

// A LUT of 16 bits, so that every reader finds the same layout; its greys are those of the display.
void putCurve(const DicomImage& image, DcmDataset& set) {
    const auto table = displayTable(image.windowCenter, image.windowWidth, image.curve);
    std::vector<std::uint16_t> words(table.begin(), table.end());
    for (auto& word : words) word = static_cast<std::uint16_t>(word * 257);
    DcmItem& item = addItem(set, DCM_VOILUTSequence);
    putWords(item, DcmTag(DCM_LUTDescriptor, EVR_US),
             {static_cast<std::uint16_t>(words.size()), std::uint16_t{0}, std::uint16_t{16}});
    putText(item, DCM_LUTExplanation, std::string(image.curve.name()));
    putWords(item, DcmTag(DCM_LUTData, EVR_OW), words);
}

void putPicture(const DicomImage& image, DcmDataset& set) {
    putNumber(set, DCM_SamplesPerPixel, 1);
    putText(set, DCM_PhotometricInterpretation, "MONOCHROME2");
    putNumber(set, DCM_Rows, image.height);
    putNumber(set, DCM_Columns, image.width);
    putNumber(set, DCM_BitsAllocated, 16);
    putNumber(set, DCM_BitsStored, kAdoptedBits);
    putNumber(set, DCM_HighBit, kAdoptedBits - 1);
    putNumber(set, DCM_PixelRepresentation, 0);
    putText(set, DCM_RescaleIntercept, "0");
    putText(set, DCM_RescaleSlope, "1");
    putText(set, DCM_RescaleType, "US");
    putText(set, DCM_PresentationLUTShape, "IDENTITY");
    putText(set, DCM_WindowCenter, decimal(image.windowCenter));
    putText(set, DCM_WindowWidth, decimal(image.windowWidth));
    if (image.curve.type != 0) putCurve(image, set);
    putSpacing(image, set);
    putWords(set, DcmTag(DCM_PixelData, EVR_OW), bottomRowFirst(image.pixels, image.width, image.height));
}

}  // namespace

DicomFile encodeDicom(const DicomImage& image) {
    check(image);
    DcmFileFormat format;
    DcmDataset& set = *format.getDataset();
    const Kind kind = kindOf(image.source.get());
    carryOver(image.source.get(), Carry::everything, set);
    auto uid = identify(image, kind, set);
    describe(image, kind, set);
    putPicture(image, set);
    return {dicomBytes(format), std::move(uid)};
}

DicomFile encodeDicom(const std::string& target, const DicomImage& image) {
    try {
        return encodeDicom(image);
    } catch (const Failure& failure) {
        throw failure.about(target);
    }
}

std::string writeDicom(const std::string& target, const DicomImage& image, bool force) {
    const auto file = encodeDicom(target, image);
    writeSafely(target, file.bytes, force);
    return file.sopInstanceUid;
}

}  // namespace qvr::tool

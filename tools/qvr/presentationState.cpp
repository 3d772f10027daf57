// The state applies to pixel values as stored: it has no modality transform of its own, so that window and polarity are
// given for these.
#include "presentationState.h"

#include <dcmtk/config/osconfig.h>
#include <dcmtk/dcmdata/dcdeftag.h>
#include <dcmtk/dcmdata/dcfilefo.h>
#include <dcmtk/dcmdata/dcuid.h>
#include <dcmtk/dcmdata/dcvrsl.h>
#include <fmt/format.h>

#include <memory>

#include "dicomAttributes.h"
#include "errors.h"

namespace qvr::tool {

namespace {

constexpr const char* kLayer = "MARKS";

void putCorner(DcmItem& item, const DcmTag& tag, int column, int row) {
    const Sint32 values[] = {column, row};
    auto element = std::make_unique<DcmSignedLong>(tag);
    if (element->putSint32Array(values, 2).good() && item.insert(element.get(), OFTrue).good())
        element.release();  // the item owns it
}

void putPosition(DcmItem& item, const DcmTag& tag, int column, int row) {
    const Float32 values[] = {static_cast<Float32>(column), static_cast<Float32>(row)};
    item.putAndInsertFloat32Array(tag, values, 2);
}

void putReference(const SourceImage& source, DcmDataset& set) {
    auto& header = *source.header;
    DcmItem& series = addItem(set, DCM_ReferencedSeriesSequence);
    putText(series, DCM_SeriesInstanceUID, textOf(header, DCM_SeriesInstanceUID));
    refer(series, DCM_ReferencedImageSequence, textOf(header, DCM_SOPClassUID), source.sopInstanceUid);
}

void putDisplay(const Loaded& loaded, const Window& window, DcmDataset& set) {
    const auto& source = loaded.source;
    DcmItem& area = addItem(set, DCM_DisplayedAreaSelectionSequence);
    putCorner(area, DCM_DisplayedAreaTopLeftHandCorner, 1, 1);
    putCorner(area, DCM_DisplayedAreaBottomRightHandCorner, source.columns, source.rows);
    putText(area, DCM_PresentationSizeMode, "SCALE TO FIT");
    if (source.spacing)
        putText(area, DCM_PresentationPixelSpacing,
                decimal(source.spacing->second) + '\\' + decimal(source.spacing->first));
    else
        putText(area, DCM_PresentationPixelAspectRatio, "1\\1");

    const auto stored = loaded.adoption.storedWindow(window.center, window.width);
    DcmItem& voi = addItem(set, DCM_SoftcopyVOILUTSequence);
    putText(voi, DCM_WindowCenter, decimal(stored.center));
    putText(voi, DCM_WindowWidth, decimal(stored.width));
    putText(set, DCM_PresentationLUTShape, loaded.adoption.inverted() ? "INVERSE" : "IDENTITY");
}

// The first pixel of an image is 1,1 here.
void putMarks(const std::vector<PlacedMark>& marks, DcmDataset& set) {
    DcmItem& annotation = addItem(set, DCM_GraphicAnnotationSequence);
    putText(annotation, DCM_GraphicLayer, kLayer);
    for (const auto& [text, box] : marks) {
        DcmItem& item = addItem(annotation, DCM_TextObjectSequence);
        putText(item, DCM_BoundingBoxAnnotationUnits, "PIXEL");
        putText(item, DCM_UnformattedTextValue, text);
        putPosition(item, DCM_BoundingBoxTopLeftHandCorner, box.left + 1, box.top + 1);
        putPosition(item, DCM_BoundingBoxBottomRightHandCorner, box.left + box.width, box.top + box.height);
        putText(item, DCM_BoundingBoxTextHorizontalJustification, "CENTER");
    }
    DcmItem& layer = addItem(set, DCM_GraphicLayerSequence);
    putText(layer, DCM_GraphicLayer, kLayer);
    putText(layer, DCM_GraphicLayerOrder, "1");
}

}  // namespace

void checkReferable(const SourceImage& source) {
    if (!source.header)
        throw Failure(Exit::usage, source.file, "no presentation state",
                      "it is no DICOM file, and marks beside an image must refer to one",
                      "Use --marks burn.");
    auto& header = *source.header;
    const std::pair<const char*, std::string> uids[] = {
        {"SOP Class UID", textOf(header, DCM_SOPClassUID)},
        {"SOP Instance UID", source.sopInstanceUid},
        {"Series Instance UID", textOf(header, DCM_SeriesInstanceUID)},
        {"Study Instance UID", textOf(header, DCM_StudyInstanceUID)}};
    for (const auto& [name, uid] : uids)
        if (!isUid(uid))
            throw Failure(
                Exit::refused, source.file, "refused",
                fmt::format("its {} \"{}\" is none, so no presentation state can refer to it", name, uid),
                "Use --marks burn.");
}

PresentationState encodePresentationState(const Loaded& loaded, const Window& window,
                                          const std::vector<PlacedMark>& marks) {
    DcmFileFormat format;
    DcmDataset& set = *format.getDataset();
    carryOver(loaded.source.header.get(), Carry::patientAndStudy, set);
    auto uid = newUid();
    putText(set, DCM_SOPClassUID, UID_GrayscaleSoftcopyPresentationStateStorage);
    putText(set, DCM_SOPInstanceUID, uid);
    putText(set, DCM_Modality, "PR");
    putText(set, DCM_InstanceNumber, "1");
    putText(set, DCM_ContentLabel, kLayer);
    putText(set, DCM_ContentDescription, "Marks on an image");
    ensure(set, DCM_ContentCreatorName);
    putNow(set, DCM_PresentationCreationDate, DCM_PresentationCreationTime);
    putReference(loaded.source, set);
    putDisplay(loaded, window, set);
    putMarks(marks, set);
    return {dicomBytes(format), std::move(uid)};
}

}  // namespace qvr::tool

// DCMTK. The image object is made beforehand; its own way to grey levels, turns and cuts is what is measured.
#include <dcmtk/config/osconfig.h>
#include <dcmtk/dcmdata/dctk.h>
#include <dcmtk/dcmimgle/dcmimage.h>

#include <memory>
#include <vector>

#include "bench/peers.h"

namespace bench {

namespace {

struct State {
    DcmFileFormat file;
    std::unique_ptr<DicomImage> image;
    std::vector<std::uint8_t> grey;
};

std::shared_ptr<State> open(const Picture& picture) {
    auto state = std::make_shared<State>();
    DcmDataset* const data = state->file.getDataset();
    data->putAndInsertString(DCM_SOPClassUID, UID_DigitalXRayImageStorageForPresentation);
    data->putAndInsertString(DCM_SOPInstanceUID, "1.2.3");
    data->putAndInsertString(DCM_PhotometricInterpretation, "MONOCHROME2");
    data->putAndInsertUint16(DCM_SamplesPerPixel, 1);
    data->putAndInsertUint16(DCM_Rows, static_cast<Uint16>(picture.height));
    data->putAndInsertUint16(DCM_Columns, static_cast<Uint16>(picture.width));
    data->putAndInsertUint16(DCM_BitsAllocated, 16);
    data->putAndInsertUint16(DCM_BitsStored, 14);
    data->putAndInsertUint16(DCM_HighBit, 13);
    data->putAndInsertUint16(DCM_PixelRepresentation, 0);
    const auto count = static_cast<unsigned long>(picture.width) * static_cast<unsigned long>(picture.height);
    data->putAndInsertUint16Array(DCM_PixelData, picture.pixels, count);
    state->image = std::make_unique<DicomImage>(&state->file, EXS_LittleEndianExplicit);
    return state->image->getStatus() == EIS_Normal ? state : nullptr;
}

}  // namespace

Work dcmtkDisplay(const Picture& picture, int width, int height, const Window& window) {
    auto state = open(picture);
    if (!state) return {};
    state->image->setWindow(window.center, window.width);
    if (window.sigmoid) state->image->setVoiLutFunction(EFV_Sigmoid);
    state->grey.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    const bool whole = width == picture.width && height == picture.height;
    return [=] {
        std::unique_ptr<DicomImage> scaled;
        if (!whole)
            scaled.reset(state->image->createScaledImage(static_cast<unsigned long>(width),
                                                         static_cast<unsigned long>(height), 1));
        DicomImage& shown = whole ? *state->image : *scaled;
        shown.getOutputData(state->grey.data(), static_cast<unsigned long>(state->grey.size()), 8);
    };
}

Work dcmtkWindow(const Picture& picture) {
    auto state = open(picture);
    if (!state) return {};
    return [=] { state->image->setHistogramWindow(0.05); };
}

Work dcmtkTurn(const Picture& picture) {
    auto state = open(picture);
    if (!state) return {};
    return [=] { state->image->rotateImage(90); };
}

Work dcmtkMirror(const Picture& picture, bool leftToRight) {
    auto state = open(picture);
    if (!state) return {};
    return [=] { state->image->flipImage(leftToRight ? 1 : 0, leftToRight ? 0 : 1); };
}

Work dcmtkCut(const Picture& picture, const Area& area) {
    auto state = open(picture);
    if (!state) return {};
    return [=] {
        const std::unique_ptr<DicomImage> cut(state->image->createClippedImage(
            area.x, area.y, static_cast<unsigned long>(area.width), static_cast<unsigned long>(area.height)));
    };
}

}  // namespace bench

// Pixel tools, tables and print, each on buffers of exactly the size that it is told.
#include <qvr/qvr.h>

#include "fuzz/bytes.h"
#include "fuzz/targets.h"

namespace {

RECT rectangleOf(fuzz::Bytes& bytes) {
    const int left = bytes.number();
    const int top = bytes.number();
    const int right = bytes.number();
    return {left, top, right, bytes.number()};
}

void print(fuzz::Bytes& bytes, int width, int height, const std::vector<std::uint16_t>& pixels) {
    CDib bitmap(1 + bytes.below(40), 1 + bytes.below(40), 8);
    bitmap.CreateSection(nullptr);
    const int column = bytes.number();
    const int row = bytes.number();
    const int windowWidth = bytes.number();
    const int windowCenter = bytes.number();
    const int type = bytes.below(6);
    const int k = bytes.number();
    const int c = bytes.number();
    const auto create = bytes.below(2) ? rawImage::CreatePrintImage14Bits : rawImage::CreatePrintImage12Bits;
    create(width, height, pixels.data(), column, row, windowWidth, windowCenter, type, k, c, &bitmap);
}

void table(fuzz::Bytes& bytes) {
    std::vector<std::uint8_t> entries(static_cast<std::size_t>(bytes.take<std::uint16_t>()));
    const int type = bytes.below(6);
    const int low = bytes.number();
    const int high = bytes.number();
    const int k = bytes.number();
    rawImage::Create8BitsLUT(type, low, high, k, bytes.number(), static_cast<int>(entries.size()),
                             entries.data());
}

}  // namespace

namespace fuzz {

int tools(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    const int operation = bytes.below(10);
    const int width = bytes.below(70);
    const int height = bytes.below(70);
    const int mode = bytes.below(2);
    const int bits = 9 + bytes.below(9);
    const RECT first = rectangleOf(bytes);
    const RECT second = rectangleOf(bytes);
    const int outputWidth = bytes.below(70);
    const int outputHeight = bytes.below(70);
    std::vector<std::uint16_t> output(static_cast<std::size_t>(outputWidth * outputHeight));
    auto pixels = bytes.pixels(static_cast<std::size_t>(width * height));
    int low = 0;
    int high = 0;
    switch (operation) {
        case 0:
            QVR_DISP_Rotate(width, height, pixels.data(), low, high, mode);
            break;
        case 1:
            QVR_DISP_Mirror(width, height, pixels.data(), mode);
            break;
        case 2:
            QVR_DISP_Cut(width, height, pixels.data(), &first, outputWidth, outputHeight, output.data());
            break;
        case 3:
            QVR_DISP_Mask(width, height, pixels.data(), &first, mode);
            break;
        case 4:
            QVR_DISP_Cut_Mask(width, height, pixels.data(), &first, &second, outputWidth, outputHeight,
                              output.data(), mode);
            break;
        case 5:
            QVR_DISP_Invert(width, height, pixels.data(), bits, first.left, low);
            break;
        case 6:
            QVR_DISP_AutoWL(low, high, width, height, pixels.data(), bits, 0.05f, 0.95f);
            break;
        case 7:
            QVR_DISP_AutoWLByROI(low, high, width, height, pixels.data(), bits, {first.left, first.top},
                                 {first.right, first.bottom}, 0.05f, 0.95f);
            break;
        case 8:
            print(bytes, width, height, pixels);
            break;
        default:
            table(bytes);
            break;
    }
    return 0;
}

}  // namespace fuzz

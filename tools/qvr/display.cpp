// The library draws; this file only tells it what, and copies the surface.
#include "display.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <numeric>

#include <qvr/qvr.h>

#include "errors.h"
#include "parse.h"

namespace qvr::tool {

namespace {

constexpr int kLargestSide = 32767;
constexpr double kLargestRatio = 64;
constexpr std::string_view kCurveNames[] = {"linear", "power", "exp", "log", "sigmoid"};

[[noreturn]] void failed(const char* why) {
    throw Failure(Exit::internal, "", "not rendered", why);
}

CSize zoomedSize(CSize image, float ratio) {
    const auto side = [ratio](int pixels) {
        return std::max(1, truncatedInt(static_cast<double>(static_cast<float>(pixels) * ratio)));
    };
    return {side(image.cx), side(image.cy)};
}

// The first pixel shown along one axis, so that `center` comes to the middle as far as the image reaches.
int firstShown(int imageSide, int surfaceSide, float ratio, double center) {
    const double shown = std::min<double>(surfaceSide, imageSide * static_cast<double>(ratio)) / ratio;
    return truncatedInt(std::clamp(center - shown / 2, 0.0, std::max(0.0, imageSide - shown)));
}

void build(rawImage& raw, const DisplayOptions& options, CSize surfaceSize, CDC& surface) {
    const RECT rectangle{0, 0, surfaceSize.cx, surfaceSize.cy};
    if (options.zoom.ratio) {
        const float ratio = *options.zoom.ratio;
        const CSize image{raw.GetWidth(), raw.GetHeight()};
        const auto offsets = viewOffsets(image, surfaceSize, ratio, options.center);
        raw.SetXRatio(ratio);
        raw.SetYRatio(ratio);
        raw.SetXOffset(offsets.x);
        raw.SetYOffset(offsets.y);
    }
    if (!raw.BuildDisplayImage(&rectangle, &surface, options.zoom.ratio ? 0 : 1))
        failed("too little memory for the display image");
}

// Pictures that cannot be: a side too long for a bitmap, or one that shrinks to nothing.
void checkSides(CSize image, CSize size, const DisplayOptions& options) {
    if (std::max(size.cx, size.cy) > kLargestSide)
        throw Failure(Exit::usage, "", "not rendered",
                      "the picture would have a side of more than 32767 pixels", "Give --size.");
    const CSize fitted = fittedSize(image, size);
    if (!options.zoom.ratio && (fitted.cx < 1 || fitted.cy < 1))
        throw Failure(Exit::usage, "", "not rendered",
                      "the fitted picture would be less than one pixel wide or high",
                      "Give a larger --size or a --zoom.");
    const float ratio = options.zoom.ratio.value_or(1.0f);
    if (static_cast<float>(std::min(image.cx, image.cy)) * ratio < 1.0f)
        throw Failure(Exit::usage, "", "not rendered",
                      "the zoomed picture would be less than one pixel wide or high",
                      "Give a larger --zoom.");
}

// Blue, green and red of a radiograph are the same grey; only marks have colours.
GreyPicture copySurface(const CRasterDC& surface, bool withColours) {
    GreyPicture picture{surface.GetWidth(), surface.GetHeight(), {}, {}};
    const auto width = static_cast<std::size_t>(picture.width);
    const auto count = width * static_cast<std::size_t>(picture.height);
    picture.pixels.resize(count);
    if (withColours) picture.colours.resize(3 * count);
    for (int y = 0; y < picture.height; ++y) {
        const auto* row = static_cast<const std::uint8_t*>(surface.GetRow(y));
        const auto first = static_cast<std::size_t>(y) * width;
        for (std::size_t x = 0; x < width; ++x) {
            const int blue = row[4 * x], green = row[4 * x + 1], red = row[4 * x + 2];
            picture.pixels[first + x] =
                static_cast<std::uint8_t>((299 * red + 587 * green + 114 * blue) / 1000);
            for (std::size_t i = 0; withColours && i < 3; ++i)
                picture.colours[3 * (first + x) + i] = row[4 * x + 2 - i];
        }
    }
    return picture;
}

}  // namespace

CSize fittedSize(CSize image, CSize display) {
    const auto side = [](int own, int other, std::int64_t part, int whole) {
        return static_cast<int>(std::min<std::int64_t>(own, other * part / whole));
    };
    return {side(display.cx, display.cy, image.cx, image.cy),
            side(display.cy, display.cx, image.cy, image.cx)};
}

std::string_view Curve::name() const {
    return type > 0 && type < 5 ? kCurveNames[type] : kCurveNames[0];
}

std::optional<Curve> parseCurve(std::string_view text) {
    const auto parts = split(text, ':');
    const auto* name = std::find(std::begin(kCurveNames), std::end(kCurveNames), parts[0]);
    if (name == std::end(kCurveNames) || parts.size() > 2) return std::nullopt;
    Curve curve{static_cast<int>(name - std::begin(kCurveNames)), 1, 5};
    if (parts.size() == 1) return curve;
    const auto values = parseInts(parts[1], ',', 2);
    if (!values) return std::nullopt;
    curve.k = (*values)[0];
    curve.c = (*values)[1];
    return curve;
}

std::optional<Zoom> parseZoom(std::string_view text) {
    if (text == "fit") return Zoom{};
    double ratio = 0;
    if (const auto sides = parseInts(text, ':', 2)) {
        if ((*sides)[1] == 0) return std::nullopt;
        ratio = static_cast<double>((*sides)[0]) / (*sides)[1];
    } else if (const auto number = parseDouble(text)) {
        ratio = *number;
    }
    if (!(ratio >= 1 / kLargestRatio && ratio <= kLargestRatio)) return std::nullopt;
    return Zoom{static_cast<float>(ratio)};
}

std::optional<CSize> parseSize(std::string_view text) {
    const auto sides = parseInts(text, 'x', 2);
    if (!sides || std::min((*sides)[0], (*sides)[1]) < 1 || std::max((*sides)[0], (*sides)[1]) > kLargestSide)
        return std::nullopt;
    return CSize{(*sides)[0], (*sides)[1]};
}

std::optional<CPoint> parsePoint(std::string_view text) {
    const auto values = parseInts(text, ',', 2);
    if (!values) return std::nullopt;
    return CPoint{(*values)[0], (*values)[1]};
}

ViewOffsets viewOffsets(CSize image, CSize surface, float ratio, std::optional<CPoint> center) {
    const double fromLeft = center ? center->x + 0.5 : image.cx * 0.5;
    const double fromBottom = center ? image.cy - (center->y + 0.5) : image.cy * 0.5;
    return {firstShown(image.cx, surface.cx, ratio, fromLeft),
            firstShown(image.cy, surface.cy, ratio, fromBottom)};
}

// Printing a ramp of all values gives the table that display and print share.
std::vector<std::uint8_t> displayTable(int windowCenter, int windowWidth, const Curve& curve) {
    constexpr int values = 1 << kAdoptedBits;
    std::vector<std::uint16_t> ramp(values);
    std::iota(ramp.begin(), ramp.end(), std::uint16_t{0});
    CDib bitmap(values, 1, 8);
    if (!bitmap.CreateSection(nullptr) ||
        !rawImage::CreatePrintImage14Bits(values, 1, ramp.data(), 0, 0, windowWidth, windowCenter, curve.type,
                                          curve.k, curve.c, &bitmap))
        throw Failure(Exit::internal, "", "no table", "too little memory");
    return {bitmap.Bits, bitmap.Bits + values};
}

std::unique_ptr<rawImage> makeRaw(const AdoptedImage& image, const Window& window, const Curve& curve) {
    QVR_ST_RAW_IMAGE record;
    record.Height = record.BAKHeight = image.height;
    record.Width = record.BAKWidth = image.width;
    record.BitsStored = kAdoptedBits;
    record.HighBit = kAdoptedBits - 1;
    record.WindowCenter = window.center;
    record.WindowWidth = window.width;
    record.PixelData = image.pixels.data();
    auto raw = std::make_unique<rawImage>();
    if (!raw->Create(&record)) failed("too little memory for the image");
    raw->SetLUTType(curve.type);
    raw->SetLUTParam(curve.k, curve.c);
    return raw;
}

GreyPicture display(const AdoptedImage& image, const Window& window, const DisplayOptions& options,
                    const Marking& marking) {
    const auto raw = makeRaw(image, window, options.curve);
    const CSize imageSize{image.width, image.height};
    CSize size =
        options.size.value_or(options.zoom.ratio ? zoomedSize(imageSize, *options.zoom.ratio) : imageSize);
    checkSides(imageSize, size, options);
    CRasterDC unused(1, 1);
    build(*raw, options, size, unused);
    if (!options.letterbox) size = {raw->GetDIB()->InfoHeader->biWidth, raw->GetDIB()->InfoHeader->biHeight};

    CRasterDC surface(size.cx, size.cy);
    if (surface.GetWidth() != size.cx) failed("too little memory for the picture");
    const RECT rectangle{0, 0, size.cx, size.cy};
    if (marking) marking(*raw, rectangle, surface);
    raw->Draw(&rectangle, &surface);
    return copySurface(surface, raw->GetMarkCount() > 0);
}

}  // namespace qvr::tool

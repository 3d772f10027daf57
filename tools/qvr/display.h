// A picture as displayed: what a host does with a rawImage and a drawing surface.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include <qvr/image/rawImage.h>
#include <qvr/platform/types.h>

#include "adoption.h"
#include "picture.h"
#include "windowChoice.h"

namespace qvr::tool {

/// A curve of the display table with its two parameters.
struct Curve {
    int type = 0;  ///< 0 linear, 1 power, 2 exponential, 3 logarithmic, 4 sigmoid
    int k = 1;
    int c = 5;  ///< in tenths of the window
    std::string_view name() const;
};
/// Reads "linear", "power", "exp", "log" or "sigmoid", each alone or with ":K,C".
std::optional<Curve> parseCurve(std::string_view text);

/// Display pixels per image pixel; nothing means that the picture is fitted.
struct Zoom {
    std::optional<float> ratio;
};
/// Reads "fit", "0.5", "1:2" (display : image), "2:1". Ratios from 1/64 to 64.
std::optional<Zoom> parseZoom(std::string_view text);

/// Reads "WxH", sides 1 … 32767.
std::optional<CSize> parseSize(std::string_view text);
/// Reads "X,Y".
std::optional<CPoint> parsePoint(std::string_view text);

/// The library makes no thumbnail, which is a fifth, from less than this, and takes no image in without one.
constexpr int kSmallestDisplay = 5;
/// Sides of the image when it is fitted into `display`.
CSize fittedSize(CSize image, CSize display);
inline bool hasThumbnail(CSize image, CSize display) {
    const CSize fitted = fittedSize(image, display);
    return fitted.cx >= kSmallestDisplay && fitted.cy >= kSmallestDisplay;
}

struct DisplayOptions {
    std::optional<CSize> size;  ///< of the surface; otherwise that of the zoomed image
    Zoom zoom;
    std::optional<CPoint>
        center;  ///< picture pixel that comes to the middle, y downward; otherwise the image's middle
    Curve curve;
    bool letterbox = true;  ///< false: the picture without the black bands around it
};

/// Where the view begins: the first column and the first row, counted from the bottom, that are shown.
struct ViewOffsets {
    int x = 0;
    int y = 0;
};
/// @param center   picture pixel that comes to the middle, or nothing for the image's middle. The view stays inside the
///                 image as far as it can
ViewOffsets viewOffsets(CSize image, CSize surface, float ratio, std::optional<CPoint> center);

/// The library's display table: the grey of every value of 14 bits. @throws Failure
std::vector<std::uint8_t> displayTable(int windowCenter, int windowWidth, const Curve& curve);

/// The image as the library has it, with window and curve. @throws Failure
std::unique_ptr<rawImage> makeRaw(const AdoptedImage& image, const Window& window, const Curve& curve);

/// What puts marks onto an image that is about to be drawn into the rectangle.
using Marking = std::function<void(rawImage& raw, const RECT& rectangle, CDC& surface)>;

/// Draws the image with the library. With marks the picture has colours. @throws Failure
GreyPicture display(const AdoptedImage& image, const Window& window, const DisplayOptions& options,
                    const Marking& marking = {});

}  // namespace qvr::tool

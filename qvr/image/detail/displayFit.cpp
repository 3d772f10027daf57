// Where a picture lies. Quotients that decide a branch are rounded to single precision where that is said: pictures
// within its rounding of each other count as the same shape.
#include "qvr/image/detail/displayFit.h"

#include <algorithm>
#include <limits>

#include "qvr/platform/detail/numbers.h"

namespace qvr {

std::optional<Sides> sidesOf(const RECT& rectangle) {
    const Sides sides{std::int64_t{rectangle.right} - rectangle.left,
                      std::int64_t{rectangle.bottom} - rectangle.top};
    constexpr std::int64_t largest = std::numeric_limits<std::int32_t>::max();
    if (sides.width < 1 || sides.height < 1 || sides.width > largest || sides.height > largest)
        return std::nullopt;
    return sides;
}

std::optional<DisplayFit> fitImage(int width, int height, const RECT& rectangle) {
    const auto sides = sidesOf(rectangle);
    if (!sides || width < 1 || height < 1) return std::nullopt;

    const double image = static_cast<double>(width) / static_cast<float>(height);
    const double room = static_cast<double>(sides->width) / static_cast<double>(sides->height);
    Sides size = *sides;
    if (image > room) size.height = sides->width * height / width;
    if (image < room) size.width = sides->height * width / height;
    if (size.width < 1 || size.height < 1) return std::nullopt;

    return DisplayFit{{saturated(size.width), saturated(size.height)},
                      static_cast<float>(static_cast<double>(size.width) / width),
                      static_cast<float>(static_cast<double>(size.height) / height)};
}

std::optional<CSize> sizeFromRatios(int width, int height, float xRatio, float yRatio,
                                    const RECT& rectangle) {
    const auto sides = sidesOf(rectangle);
    if (!sides || width < 1 || height < 1 || !isPositiveFinite(xRatio) || !isPositiveFinite(yRatio))
        return std::nullopt;

    // Single precision on purpose: the ratios of a fit then give back the size of the fit.
    const std::int64_t zoomedWidth = toInt(static_cast<float>(width) * xRatio);
    const std::int64_t zoomedHeight = toInt(static_cast<float>(height) * yRatio);
    const CSize size{saturated(std::min(zoomedWidth, sides->width)),
                     saturated(std::min(zoomedHeight, sides->height))};
    if (size.cx < 1 || size.cy < 1) return std::nullopt;
    return size;
}

FitKind fitKind(const Sides& rectangle, int width, int height) {
    const auto horizontal =
        static_cast<float>(static_cast<double>(width) / static_cast<double>(rectangle.width));
    const auto vertical =
        static_cast<float>(static_cast<double>(height) / static_cast<double>(rectangle.height));
    if (horizontal > vertical && width >= rectangle.width) return FitKind::wide;
    if (horizontal < vertical && height >= rectangle.height) return FitKind::tall;
    if (horizontal == vertical && width >= rectangle.width) return FitKind::filling;
    return FitKind::smaller;
}

Sides drawnSize(FitKind kind, const Sides& rectangle, int width, int height) {
    switch (kind) {
        case FitKind::wide:
            return {rectangle.width, rectangle.width * height / width};
        case FitKind::tall:
            return {rectangle.height * width / height, rectangle.height};
        case FitKind::filling:
            return rectangle;
        case FitKind::smaller:
            break;
    }
    return {width, height};
}

std::optional<Placement> placeFitted(const RECT& rectangle, int width, int height) {
    const auto sides = sidesOf(rectangle);
    if (!sides || width < 1 || height < 1) return std::nullopt;

    const auto [left, top, right, bottom] = rectangle;
    const FitKind kind = fitKind(*sides, width, height);
    const Sides size = drawnSize(kind, *sides, width, height);
    const bool fillsWidth = kind == FitKind::wide || kind == FitKind::filling;
    const bool fillsHeight = kind == FitKind::tall || kind == FitKind::filling;
    const std::int64_t x = fillsWidth ? left : left + (sides->width - size.width) / 2;
    const std::int64_t y = fillsHeight ? top : top + (sides->height - size.height) / 2;

    Placement place{saturated(x), saturated(y), saturated(size.width), saturated(size.height), {}, 0};
    const auto fill = [&place](std::int64_t l, std::int64_t t, std::int64_t r, std::int64_t b) {
        place.fills[static_cast<std::size_t>(place.fillCount++)] = {saturated(l), saturated(t), saturated(r),
                                                                    saturated(b)};
    };
    if (!fillsHeight) {
        fill(left, top, right, y);
        fill(left, y + size.height, right, bottom);
    }
    if (!fillsWidth) {
        fill(left, top, x, bottom);
        fill(x + size.width, top, right, bottom);
    }
    return place;
}

}  // namespace qvr

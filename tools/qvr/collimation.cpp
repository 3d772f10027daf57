// Border rows and columns are found by counting dark pixels inside what is left of the picture.
#include "collimation.h"

#include <array>
#include <cstdint>

#include "histogramSteps.h"

namespace qvr::tool {

namespace {

constexpr double kDarkShare = 0.92;
constexpr int kSmallestSide = 51;

int valueBelowWhich(const BinCounts& counts, double pixels) {
    double sum = 0;
    for (int bin = 0; bin < kBins; ++bin) {
        sum += counts[static_cast<std::size_t>(bin)];
        if (sum > pixels) return bin;
    }
    return kBins - 1;
}

// The area in columns and buffer rows, ends outside.
struct Box {
    int left, right, bottom, top;
    int width() const { return right - left; }
    int height() const { return top - bottom; }
};

class Border {
public:
    Border(const AdoptedImage& image, int limit) : m_image(image), m_limit(limit) {}

    bool darkRow(const Box& box, int row) const {
        int dark = 0;
        for (int column = box.left; column < box.right; ++column) dark += isDark(column, row);
        return dark >= kDarkShare * box.width();
    }
    bool darkColumn(const Box& box, int column) const {
        int dark = 0;
        for (int row = box.bottom; row < box.top; ++row) dark += isDark(column, row);
        return dark >= kDarkShare * box.height();
    }

    // One turn over the four sides. True when something was taken off.
    bool shrink(Box& box) const {
        const Box before = box;
        while (box.height() > 0 && darkRow(box, box.bottom)) ++box.bottom;
        while (box.height() > 0 && darkRow(box, box.top - 1)) --box.top;
        while (box.width() > 0 && box.height() > 0 && darkColumn(box, box.left)) ++box.left;
        while (box.width() > 0 && box.height() > 0 && darkColumn(box, box.right - 1)) --box.right;
        return box.width() != before.width() || box.height() != before.height();
    }

private:
    int isDark(int column, int row) const {
        const auto index = static_cast<std::size_t>(row) * static_cast<std::size_t>(m_image.width) +
                           static_cast<std::size_t>(column);
        return m_image.pixels[index] <= m_limit ? 1 : 0;
    }

    const AdoptedImage& m_image;
    int m_limit;
};

}  // namespace

std::optional<Region> findCollimation(const AdoptedImage& image) {
    const auto counts = countValues(image, {0, 0, image.width, image.height});
    const double pixels = static_cast<double>(image.width) * image.height;
    const int darkest = valueBelowWhich(counts, 0.001 * pixels);
    const int bright = valueBelowWhich(counts, 0.99 * pixels);
    const Border border(image, darkest + (bright - darkest) / 32);

    Box box{0, image.width, 0, image.height};
    while (box.width() >= kSmallestSide && box.height() >= kSmallestSide && border.shrink(box)) {
    }
    if (box.width() < kSmallestSide || box.height() < kSmallestSide) return std::nullopt;
    return Region{box.left, image.height - box.top, box.width(), box.height()};
}

double borderShare(const AdoptedImage& image, const Region& area) {
    const double pixels = static_cast<double>(image.width) * image.height;
    return 1.0 - static_cast<double>(area.width) * area.height / pixels;
}

}  // namespace qvr::tool

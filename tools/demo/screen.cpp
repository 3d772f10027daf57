// A frame buffer as windowing toolkits have it, which the library draws into through CRasterDC.
#include "tools/demo/screen.h"

#include <algorithm>
#include <cstddef>

#include "tools/common/writePng.h"
#include "tools/demo/check.h"

namespace qvr {
namespace {

std::size_t area(int width, int height) {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
}

std::uint8_t channel(std::uint32_t pixel, int shift) {
    return static_cast<std::uint8_t>(pixel >> shift);
}

bool isGrey(std::uint32_t pixel) {
    return channel(pixel, 0) == channel(pixel, 8) && channel(pixel, 8) == channel(pixel, 16);
}

}  // namespace

Screen::Screen(int width, int height)
    : m_width(width),
      m_height(height),
      m_pixels(area(width, height)),
      m_surface(m_pixels.data(), width, height, area(width, 4)) {}

void Screen::showSmall(const Screen& other, int left, int top, int shrink) {
    const int width = std::min(other.m_width / shrink, m_width - left);
    const int height = std::min(other.m_height / shrink, m_height - top);
    const auto count = static_cast<std::uint32_t>(shrink * shrink);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::uint32_t sums[3] = {};
            for (int row = y * shrink; row < (y + 1) * shrink; ++row) {
                const std::uint32_t* block = &other.m_pixels[area(row, other.m_width) + area(x, shrink)];
                for (int i = 0; i < shrink; ++i) {
                    for (int c = 0; c < 3; ++c) sums[c] += channel(block[i], 8 * c);
                }
            }
            m_pixels[area(top + y, m_width) + static_cast<std::size_t>(left + x)] =
                sums[0] / count | sums[1] / count << 8 | sums[2] / count << 16;
        }
    }
}

void Screen::save(const std::filesystem::path& path) const {
    const bool grey = std::all_of(m_pixels.begin(), m_pixels.end(), isGrey);
    std::vector<std::uint8_t> bytes;
    bytes.reserve(m_pixels.size() * (grey ? 1 : 3));
    for (const std::uint32_t pixel : m_pixels) {
        bytes.push_back(channel(pixel, 16));
        if (grey) continue;
        bytes.push_back(channel(pixel, 8));
        bytes.push_back(channel(pixel, 0));
    }
    const auto format = grey ? PictureFormat::grey8 : PictureFormat::rgb24;
    const std::string failure = writePng(path.string(), {m_width, m_height, format, bytes});
    if (!failure.empty()) throw DemoFailure(path.string() + ": not written: " + failure);
}

}  // namespace qvr

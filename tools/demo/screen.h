// screen: the host's frame buffer, a drawing surface over it, and its PNG file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <vector>

#include "qvr/qvr.h"

namespace qvr {

class Screen {
public:
    Screen(int width, int height);

    CDC& surface() { return m_surface; }
    [[nodiscard]] int width() const { return m_width; }
    [[nodiscard]] int height() const { return m_height; }
    [[nodiscard]] RECT rectangle() const { return {0, 0, m_width, m_height}; }

    /// What is shown: rows from the top, 0x00RRGGBB.
    [[nodiscard]] const std::vector<std::uint32_t>& pixels() const { return m_pixels; }
    [[nodiscard]] std::uint32_t pixel(int x, int y) const {
        return m_pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) +
                        static_cast<std::size_t>(x)];
    }

    /// Shows a smaller copy of another screen, each pixel the mean of a block.
    /// @param shrink  side of a block; what does not fit is cut off
    void showSmall(const Screen& other, int left, int top, int shrink);
    /// Saves what is shown: as grey levels when there is no colour in it. Throws DemoFailure.
    void save(const std::filesystem::path& path) const;

private:
    int m_width;
    int m_height;
    std::vector<std::uint32_t> m_pixels;  // rows from the top, 0x00RRGGBB
    CRasterDC m_surface;                  // draws into m_pixels
};

}  // namespace qvr

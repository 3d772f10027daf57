// The adoption of pixels. The order is: bits of the value, offset, inversion, low bits dropped.
#include "adoption.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "parse.h"

namespace qvr::tool {

Adoption::Adoption(const PixelFormat& format)
    : m_format(format),
      m_maximum((1 << format.bitsStored) - 1),
      m_shift(std::max(0, format.bitsStored - kAdoptedBits)) {}

std::uint16_t Adoption::value(std::uint16_t word) const {
    const int half = 1 << (m_format.bitsStored - 1);
    int value = (word >> (m_format.highBit + 1 - m_format.bitsStored)) & m_maximum;
    const int stored = m_format.isSigned && value >= half ? value - 2 * half : value;
    // Padding is no part of the picture: it becomes black whatever the polarity.
    if (m_format.padding && stored >= m_format.padding->first && stored <= m_format.padding->second) return 0;

    if (m_format.isSigned) value = stored + half;
    if (m_format.inverse) value = m_maximum - value;
    return static_cast<std::uint16_t>(value >> m_shift);
}

std::optional<Adoption::IntWindow> Adoption::window(const StoredWindow& stored, double slope,
                                                    double intercept) const {
    // A value v covers v … v + 1 and a centre lies on that scale, half a unit above the middle value.
    double center = (stored.center - 0.5 - intercept) / slope + 0.5;
    if (m_format.isSigned) center += 1 << (m_format.bitsStored - 1);
    if (m_format.inverse) center = m_maximum + 1 - center;
    const double step = 1 << m_shift;

    const auto adoptedCenter = nearestInt(center / step);
    auto width = nearestInt(stored.width / std::fabs(slope) / step);
    if (!adoptedCenter || !width) return std::nullopt;
    if (*width == 0 && stored.width > 0) width = 1;
    return IntWindow{*adoptedCenter, *width};
}

StoredWindow Adoption::storedWindow(double center, double width) const {
    const double step = 1 << m_shift;
    double stored = center * step;
    if (m_format.inverse) stored = m_maximum + 1 - stored;
    if (m_format.isSigned) stored -= 1 << (m_format.bitsStored - 1);
    return {stored, width * step};
}

std::string Adoption::description() const {
    std::string text = fmt::format("{} {}", m_format.bitsStored, m_format.bitsStored == 1 ? "bit" : "bits");
    if (m_format.highBit != m_format.bitsStored - 1)
        text += fmt::format(" ending at bit {}", m_format.highBit);
    if (m_format.isSigned) text += fmt::format(", signed: {} added", 1 << (m_format.bitsStored - 1));
    if (m_format.inverse) text += fmt::format(", inverted once against {}", m_maximum);
    if (m_format.padding)
        text += fmt::format(", padding {}..{} made black", m_format.padding->first, m_format.padding->second);
    text += m_shift ? fmt::format(", shifted right by {} to {} bits", m_shift, kAdoptedBits)
            : m_format.bitsStored < kAdoptedBits
                ? fmt::format(", values kept, declared {} bits", kAdoptedBits)
                : std::string(", values kept");
    return text;
}

AdoptedImage adopt(const SourceImage& source, const Adoption& adoption) {
    // Every word that can occur is worked out once.
    std::vector<std::uint16_t> table(65536);
    for (std::size_t word = 0; word < table.size(); ++word)
        table[word] = adoption.value(static_cast<std::uint16_t>(word));

    AdoptedImage image;
    image.width = source.columns;
    image.height = source.rows;
    image.pixels = source.bottomRowFirst ? source.words
                                         : bottomRowFirst(std::span<const std::uint16_t>(source.words),
                                                          source.columns, source.rows);
    for (auto& pixel : image.pixels) pixel = table[pixel];
    if (const auto [low, high] = std::minmax_element(image.pixels.begin(), image.pixels.end());
        low != image.pixels.end()) {
        image.lowest = *low;
        image.highest = *high;
    }
    return image;
}

}  // namespace qvr::tool

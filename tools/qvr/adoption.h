// Adoption: how the pixels of a file become what the display path works on, 14 bits, unsigned, bright bones.
//
// 8 to 14 bits are kept as they are and declared 14: shifting them left would leave holes in the histogram, and the
// automatic window would collapse. Beyond 14 bits the low bits are dropped. Signed values get their offset first.
// Inverse polarity is undone once, here, against the file's own maximum; nothing downstream inverts again. Files are
// stored top row first, the library's buffers bottom row first; bottomRowFirst() is the one place that turns them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "sourceImage.h"

namespace qvr::tool {

inline constexpr int kAdoptedBits = 14;

/// The rule for one file: from a pixel word to the adopted value.
class Adoption {
public:
    /// @param format  1 <= bitsStored <= 16, bitsStored - 1 <= highBit <= 15
    explicit Adoption(const PixelFormat& format);

    /// @param word  as stored, with whatever stands in the bits that do not belong to the value
    /// @return 0 … maximum()
    std::uint16_t value(std::uint16_t word) const;
    /// The largest value that can occur.
    int maximum() const { return m_maximum >> m_shift; }

    bool offsetAdded() const { return m_format.isSigned; }
    bool inverted() const { return m_format.inverse; }
    int bitsDropped() const { return m_shift; }
    /// What was done, in words, for people.
    std::string description() const;

    /// A window of the file in adopted values. A width that rounds to 0 becomes 1; a file's 0 stays 0.
    /// @return nothing when the result is no number or out of all proportion
    struct IntWindow {
        int center = 0;
        int width = 0;
    };
    std::optional<IntWindow> window(const StoredWindow& stored, double slope, double intercept) const;
    /// The other way: a window of adopted values in values as stored.
    StoredWindow storedWindow(double center, double width) const;
    /// True when adopted values are the stored ones.
    bool keepsValues() const {
        return !m_format.isSigned && !m_format.inverse && !m_format.padding && m_shift == 0;
    }

private:
    PixelFormat m_format;
    int m_maximum;  // of the stored bits, before low bits are dropped
    int m_shift;
};

struct AdoptedImage {
    int width = 0;
    int height = 0;
    std::vector<std::uint16_t> pixels;  ///< width * height values, row 0 being the bottom row of the picture
    std::uint16_t lowest = 0;
    std::uint16_t highest = 0;
};

/// The other row order: top row first becomes bottom row first, and the other way round.
template <class Value>
std::vector<Value> bottomRowFirst(std::span<const Value> topRowFirst, int width, int height) {
    std::vector<Value> out(topRowFirst.size());
    const auto rowLength = static_cast<std::size_t>(width);
    for (std::size_t y = 0; y < static_cast<std::size_t>(height); ++y) {
        const auto row = topRowFirst.subspan(y * rowLength, rowLength);
        std::copy(row.begin(), row.end(), out.end() - static_cast<std::ptrdiff_t>((y + 1) * rowLength));
    }
    return out;
}

AdoptedImage adopt(const SourceImage& source, const Adoption& adoption);

}  // namespace qvr::tool

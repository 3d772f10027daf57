// Extreme values, and buffers of exactly the size told.
#pragma once

#include <gtest/gtest.h>
#include <qvr/qvr.h>

#include <climits>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

inline constexpr int kInts[] = {INT_MIN, -1, 0, 1, 2, 65535, INT_MAX};
inline constexpr float kRatios[] = {0.0f,
                                    -0.0f,
                                    -1.0f,
                                    1e-30f,
                                    1.0f,
                                    1e30f,
                                    std::numeric_limits<float>::quiet_NaN(),
                                    std::numeric_limits<float>::infinity(),
                                    -std::numeric_limits<float>::infinity()};

// How many pixels a size asks for; nothing when it must be refused.
inline std::optional<std::size_t> pixelsOf(int width, int height) {
    const std::int64_t product = std::int64_t{width} * height;
    if (width < 0 || height < 0 || product >= (std::int64_t{1} << 30)) return std::nullopt;
    return static_cast<std::size_t>(product);
}

// A heap buffer of exactly that many values, so that the sanitizers see every step beyond it.
class Exact {
public:
    explicit Exact(std::size_t count) : m_values(new std::uint16_t[count]), m_count(count) {
        for (std::size_t i = 0; i < count; ++i) m_values[i] = static_cast<std::uint16_t>(i * 977);
    }
    std::uint16_t* get() const { return m_values.get(); }
    bool untouched() const {
        for (std::size_t i = 0; i < m_count; ++i)
            if (m_values[i] != static_cast<std::uint16_t>(i * 977)) return false;
        return true;
    }

private:
    std::unique_ptr<std::uint16_t[]> m_values;
    std::size_t m_count;
};

// Calls `operation(width, height, pixels)` for every pair of extreme sides that a test machine can hold, with a null
// buffer and one of exactly the size told; a size that must be refused comes with a buffer of one value.
template <class Operation>
void forEverySize(Operation&& operation) {
    for (const int width : kInts) {
        for (const int height : kInts) {
            const auto count = pixelsOf(width, height);
            if (count && *count > 200000) continue;
            Exact pixels(count.value_or(1));
            const int done = operation(width, height, pixels.get());
            if (!count) {
                EXPECT_EQ(done, 0) << width << " x " << height;
                EXPECT_TRUE(pixels.untouched()) << width << " x " << height;
            }
            EXPECT_EQ(operation(width, height, static_cast<std::uint16_t*>(nullptr)), 0)
                << width << " x " << height;
        }
    }
}

template <class Operation>
void forEveryRectangle(Operation&& operation) {
    for (const int left : kInts)
        for (const int top : kInts)
            for (const int right : kInts)
                for (const int bottom : kInts) operation(RECT{left, top, right, bottom});
}

// A resident image.
inline std::unique_ptr<rawImage> smallImage(int width = 3, int height = 2) {
    auto image = std::make_unique<rawImage>();
    const std::vector<std::uint16_t> pixels(static_cast<std::size_t>(width * height), 500);
    QVR_ST_RAW_IMAGE record;
    record.Width = width;
    record.Height = height;
    record.BitsStored = 14;
    record.PixelData = pixels.data();
    EXPECT_EQ(image->Create(&record), 1);
    return image;
}

// What a fuzz target makes its decisions from: values taken from the front of the input; zeros when it is used up.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

namespace fuzz {

class Bytes {
public:
    Bytes(const std::uint8_t* data, std::size_t size) : m_data(data), m_left(size) {}

    bool empty() const { return m_left == 0; }
    std::size_t left() const { return m_left; }
    const std::uint8_t* data() const { return m_data; }

    template <class Value>
    Value take() {
        Value value{};
        const std::size_t count = std::min(sizeof value, m_left);
        if (count > 0) std::memcpy(&value, m_data, count);
        m_data += count;
        m_left -= count;
        return value;
    }
    int below(int bound) { return take<std::uint8_t>() % bound; }
    /// An int that is often small and sometimes at an end of the range.
    int number() {
        switch (below(8)) {
            case 0:
                return take<std::int32_t>();
            case 1:
                return std::numeric_limits<int>::min();
            case 2:
                return std::numeric_limits<int>::max();
            case 3:
                return take<std::int16_t>();
            default:
                return take<std::int8_t>();
        }
    }
    float ratio() {
        switch (below(6)) {
            case 0:
                return take<float>();
            case 1:
                return 0.0f;
            default:
                return static_cast<float>(1 + below(40)) / static_cast<float>(1 + below(40));
        }
    }
    std::vector<std::uint16_t> pixels(std::size_t count) {
        std::vector<std::uint16_t> values(count);
        const std::size_t bytes = std::min(2 * count, m_left);
        if (bytes > 0) std::memcpy(values.data(), m_data, bytes);
        m_data += bytes;
        m_left -= bytes;
        return values;
    }

private:
    const std::uint8_t* m_data;
    std::size_t m_left;
};

}  // namespace fuzz

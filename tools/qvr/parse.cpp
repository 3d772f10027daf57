// Numbers in command line values: the whole text counts, or nothing.
#include "parse.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace qvr::tool {

namespace {

template <class Number>
std::optional<Number> whole(std::string_view text) {
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return value;
}

}  // namespace

std::optional<int> parseInt(std::string_view text) {
    return whole<int>(text);
}

std::optional<double> parseDouble(std::string_view text) {
    if (text.starts_with('+')) text.remove_prefix(1);
    const auto value = whole<double>(text);
    return value && std::isfinite(*value) ? value : std::nullopt;
}

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (;;) {
        const auto end = text.find(separator);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos) return parts;
        text.remove_prefix(end + 1);
    }
}

std::optional<std::vector<int>> parseInts(std::string_view text, char separator, std::size_t count) {
    std::vector<int> values;
    for (const auto part : split(text, separator)) {
        const auto value = parseInt(part);
        if (!value || values.size() == count) return std::nullopt;
        values.push_back(*value);
    }
    if (values.size() != count) return std::nullopt;
    return values;
}

std::optional<int> nearestInt(double value) {
    constexpr double limit = 1 << 30;
    if (!(value >= -limit && value <= limit)) return std::nullopt;
    return static_cast<int>(std::floor(value + 0.5));
}

int truncatedInt(double value) {
    if (std::isnan(value)) return 0;
    if (value <= std::numeric_limits<int>::min()) return std::numeric_limits<int>::min();
    if (value >= std::numeric_limits<int>::max()) return std::numeric_limits<int>::max();
    return static_cast<int>(value);
}

}  // namespace qvr::tool

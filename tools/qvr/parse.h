// Numbers in command line values.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

namespace qvr::tool {

/// @return the whole text as an integer, or nothing
std::optional<int> parseInt(std::string_view text);
/// @return the whole text as a finite number, or nothing
std::optional<double> parseDouble(std::string_view text);
/// Parts between separators; "a,,b" has an empty one in the middle.
std::vector<std::string_view> split(std::string_view text, char separator);
/// Exactly `count` integers separated by `separator`, or nothing.
std::optional<std::vector<int>> parseInts(std::string_view text, char separator, std::size_t count);
/// The nearest integer, halves upward; nothing for a value that is not finite or beyond 2^30.
std::optional<int> nearestInt(double value);
/// Toward zero, saturating; 0 for a value that is not a number.
int truncatedInt(double value);

}  // namespace qvr::tool

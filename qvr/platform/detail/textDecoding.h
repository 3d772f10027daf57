// UTF-8 to characters, for one line of text.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace qvr {

/// What follows in a line is neither measured nor drawn: it keeps time and memory bounded.
inline constexpr std::size_t kMaxLineCharacters = std::size_t{1} << 20;

/// Every byte that belongs to no valid sequence (overlong forms and surrogates are invalid) becomes U+FFFD. Control
/// characters, line and paragraph separators become spaces, since the text is a single line.
[[nodiscard]] std::vector<char32_t> decodedLine(std::string_view utf8);

}  // namespace qvr

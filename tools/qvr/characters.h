// Characters of texts that are to be drawn, and whether an installed font has them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qvr::tool {

/// @return nothing for bytes that are not UTF-8
std::optional<std::u32string> decodeUtf8(std::string_view text);

/// The first character that no installed font has: what the library draws for it is what it draws for any character that
/// no font can have. Nothing when all can be drawn.
/// @throws Failure when no font at all is usable
std::optional<char32_t> missingCharacter(const std::u32string& text);

/// What to install for a character: "Install a Chinese font (Debian: fonts-noto-cjk)."
std::string fontAdvice(char32_t character);

}  // namespace qvr::tool

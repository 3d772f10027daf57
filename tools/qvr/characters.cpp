// Fonts are asked through the library alone, so that the answer is about the text that it would draw.
#include "characters.h"

#include <qvr/qvr.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "errors.h"

namespace qvr::tool {

namespace {

constexpr int kProbeHeight = 48;
constexpr int kProbeWidth = 3 * kProbeHeight;
constexpr char32_t kInNoFont = 0x10FFFF;  // set aside for ever: no font may have it

std::string encodeUtf8(char32_t c) {
    const auto continuation = [c](int shift) { return static_cast<char>(0x80 | (c >> shift & 0x3f)); };
    if (c < 0x80) return {static_cast<char>(c)};
    if (c < 0x800) return {static_cast<char>(0xc0 | c >> 6), continuation(0)};
    if (c < 0x10000) return {static_cast<char>(0xe0 | c >> 12), continuation(6), continuation(0)};
    return {static_cast<char>(0xf0 | c >> 18), continuation(12), continuation(6), continuation(0)};
}

std::vector<std::uint8_t> pictureOf(char32_t character) {
    CRasterDC surface(kProbeWidth, kProbeHeight, 8);
    CFont font(kProbeHeight, FW_NORMAL, "Arial", DEFAULT_CHARSET);
    auto* const previous = surface.SelectObject(&font);
    const auto text = encodeUtf8(character);
    const RECT place{0, 0, kProbeWidth, kProbeHeight};
    surface.SetTextColor(0xFFFFFF);
    const int drawn = surface.DrawText(text.c_str(), -1, &place, DT_SINGLELINE);
    surface.SelectObject(previous);
    if (!drawn)
        throw Failure(Exit::refused, "marks", "cannot be drawn", "no usable font is installed",
                      "Install one (Debian: fonts-liberation).");
    std::vector<std::uint8_t> picture;
    for (int y = 0; y < kProbeHeight; ++y) {
        const auto* row = static_cast<const std::uint8_t*>(surface.GetRow(y));
        picture.insert(picture.end(), row, row + kProbeWidth);
    }
    return picture;
}

bool isSpace(char32_t c) {
    return c == ' ' || c == 0xA0 || (c >= 0x2000 && c <= 0x200A) || c == 0x202F || c == 0x205F || c == 0x3000;
}

struct Script {
    char32_t first, last;
    const char* font;
    const char* package;
};
constexpr Script kScripts[] = {
    {0x0370, 0x03FF, "Greek", "fonts-noto-core"},      {0x0400, 0x052F, "Cyrillic", "fonts-noto-core"},
    {0x0590, 0x05FF, "Hebrew", "fonts-noto-core"},     {0x0600, 0x077F, "Arabic", "fonts-noto-core"},
    {0x0900, 0x097F, "Devanagari", "fonts-noto-core"}, {0x0E00, 0x0E7F, "Thai", "fonts-noto-core"},
    {0x3040, 0x30FF, "Japanese", "fonts-noto-cjk"},    {0x1100, 0x11FF, "Korean", "fonts-noto-cjk"},
    {0xAC00, 0xD7AF, "Korean", "fonts-noto-cjk"},      {0x2E80, 0x9FFF, "Chinese", "fonts-noto-cjk"},
    {0xF900, 0xFAFF, "Chinese", "fonts-noto-cjk"},     {0x20000, 0x3FFFF, "Chinese", "fonts-noto-cjk-extra"}};

}  // namespace

std::optional<std::u32string> decodeUtf8(std::string_view text) {
    std::u32string out;
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i++]);
        const int more = lead < 0x80   ? 0
                         : lead < 0xc2 ? -1
                         : lead < 0xe0 ? 1
                         : lead < 0xf0 ? 2
                         : lead < 0xf5 ? 3
                                       : -1;
        if (more < 0 || text.size() - i < static_cast<std::size_t>(more)) return std::nullopt;
        char32_t character = more == 0 ? lead : static_cast<char32_t>(lead & (0x3f >> more));
        for (int k = 0; k < more; ++k) {
            const auto byte = static_cast<unsigned char>(text[i++]);
            if ((byte & 0xc0) != 0x80) return std::nullopt;
            character = character << 6 | (byte & 0x3fu);
        }
        const bool tooLong = (more == 2 && character < 0x800) || (more == 3 && character < 0x10000);
        const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
        if (tooLong || surrogate || character > 0x10FFFF) return std::nullopt;
        out.push_back(character);
    }
    return out;
}

std::optional<char32_t> missingCharacter(const std::u32string& text) {
    const auto missing = pictureOf(kInNoFont);
    for (const char32_t character : text)
        if (!isSpace(character) && pictureOf(character) == missing) return character;
    return std::nullopt;
}

std::string fontAdvice(char32_t character) {
    for (const auto& script : kScripts)
        if (character >= script.first && character <= script.last)
            return std::string("Install a ") + script.font + " font (Debian: " + script.package + ").";
    return "Install a font that has it (Debian: fonts-noto), or write it otherwise.";
}

}  // namespace qvr::tool

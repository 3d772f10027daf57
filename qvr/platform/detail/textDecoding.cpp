// UTF-8 decoding. The bytes come from hosts and files: any of them may be wrong or missing.
#include "qvr/platform/detail/textDecoding.h"

#include <algorithm>

namespace qvr {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

struct Decoded {
    char32_t character;
    std::size_t bytes;
};

// How a sequence starts: its length, the bits of its first byte and the first character that needs that length.
struct Form {
    unsigned mask, lead;
    std::size_t bytes;
    char32_t lowest;
};
constexpr Form kForms[] = {
    {0x80, 0x00, 1, 0}, {0xE0, 0xC0, 2, 0x80}, {0xF0, 0xE0, 3, 0x800}, {0xF8, 0xF0, 4, 0x10000}};

Decoded decodedFront(std::string_view utf8) {
    const auto byte = [&](std::size_t i) {
        return static_cast<unsigned>(static_cast<unsigned char>(utf8[i]));
    };
    const Decoded invalid{kReplacement, 1};
    for (const Form& form : kForms) {
        if ((byte(0) & form.mask) != form.lead) continue;
        if (utf8.size() < form.bytes) return invalid;
        char32_t character = byte(0) & ~form.mask;
        for (std::size_t i = 1; i < form.bytes; ++i) {
            if ((byte(i) & 0xC0) != 0x80) return invalid;
            character = character << 6 | (byte(i) & 0x3F);
        }
        const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
        if (character < form.lowest || character > 0x10FFFF || surrogate) return invalid;
        return {character, form.bytes};
    }
    return invalid;
}

bool breaksLine(char32_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x2028 || c == 0x2029;
}

}  // namespace

std::vector<char32_t> decodedLine(std::string_view utf8) {
    std::vector<char32_t> line;
    line.reserve(std::min(utf8.size(), kMaxLineCharacters));
    while (!utf8.empty() && line.size() < kMaxLineCharacters) {
        const Decoded next = decodedFront(utf8);
        line.push_back(breaksLine(next.character) ? U' ' : next.character);
        utf8.remove_prefix(next.bytes);
    }
    return line;
}

}  // namespace qvr

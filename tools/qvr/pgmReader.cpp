// Portable grey maps: binary (P5, one or two bytes, big-endian) and plain (P2), top row first.
#include <fmt/format.h>

#include <bit>

#include "errors.h"
#include "sourceReader.h"

namespace qvr::tool {

namespace {

bool isSpace(std::uint8_t byte) {
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

class PgmScanner {
public:
    PgmScanner(const std::string& file, std::span<const std::uint8_t> bytes) : m_file(file), m_bytes(bytes) {}

    // The next number, after white space and comments.
    std::int64_t number(const char* name) {
        while (m_at < m_bytes.size() && (isSpace(m_bytes[m_at]) || m_bytes[m_at] == '#')) skip();
        std::int64_t value = -1;
        for (; m_at < m_bytes.size() && m_bytes[m_at] >= '0' && m_bytes[m_at] <= '9'; ++m_at) {
            value = (value < 0 ? 0 : value) * 10 + (m_bytes[m_at] - '0');
            if (value > 0x7fffffff) break;
        }
        if (value < 0 || value > 0x7fffffff)
            throw Failure(Exit::unreadable, m_file, "not read", fmt::format("its {} is no number", name));
        return value;
    }

    // What follows the single white space behind the header.
    std::span<const std::uint8_t> rest() const { return m_bytes.subspan(std::min(m_at + 1, m_bytes.size())); }

private:
    void skip() {
        if (m_bytes[m_at] == '#')
            while (m_at < m_bytes.size() && m_bytes[m_at] != '\n') ++m_at;
        else
            ++m_at;
    }

    const std::string& m_file;
    std::span<const std::uint8_t> m_bytes;
    std::size_t m_at = 2;  // behind the magic
};

void readBinary(SourceImage& image, std::span<const std::uint8_t> data, std::int64_t largest) {
    const std::size_t size = largest > 255 ? 2 : 1;
    for (std::size_t i = 0; i < image.words.size(); ++i)
        image.words[i] = size == 1 ? data[i] : static_cast<std::uint16_t>(data[2 * i] << 8 | data[2 * i + 1]);
}

}  // namespace

SourceImage readPgm(const std::string& file, std::span<const std::uint8_t> bytes) {
    PgmScanner scanner(file, bytes);
    const auto columns = scanner.number("width");
    const auto rows = scanner.number("height");
    const auto largest = scanner.number("largest value");
    checkSize(file, columns, rows);
    if (largest < 1 || largest > 65535)
        throw Failure(Exit::unreadable, file, "not read",
                      fmt::format("its largest value {} is not 1..65535", largest));

    SourceImage image;
    image.file = file;
    image.kind = "PGM";
    image.columns = static_cast<int>(columns);
    image.rows = static_cast<int>(rows);
    image.bitsAllocated = largest > 255 ? 16 : 8;
    image.format.bitsStored = static_cast<int>(std::bit_width(static_cast<unsigned>(largest)));
    image.format.highBit = image.format.bitsStored - 1;
    // The least that the pixels can take: one digit and a space each as text. Nothing is allocated for a false size.
    const auto count = static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows);
    const bool plain = bytes[1] == '2';
    const std::size_t needed = plain ? 2 * count - 1 : count * (largest > 255 ? 2 : 1);
    if (scanner.rest().size() < needed)
        throw Failure(
            Exit::unreadable, file, "not read",
            fmt::format("it is cut short: {} of {} bytes of pixels are there", scanner.rest().size(), needed),
            "Fetch the file again.");
    image.words.resize(count);
    if (plain)
        for (auto& word : image.words)
            word = static_cast<std::uint16_t>(std::min<std::int64_t>(scanner.number("pixel"), 65535));
    else
        readBinary(image, scanner.rest(), largest);
    clampToDeclaredBits(image);
    return image;
}

}  // namespace qvr::tool

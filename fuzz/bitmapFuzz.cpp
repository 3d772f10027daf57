// A bitmap stream: read, drawn, written, read again, and used as a series' thumbnail would be.
#include <qvr/qvr.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>
#include <vector>

#include "fuzz/targets.h"

namespace {

// A file in memory.
class MemoryFile : public CFile {
public:
    MemoryFile(const std::uint8_t* data, std::size_t size) : m_bytes(data, data + size) {}
    std::size_t Read(void* buffer, std::size_t count) override {
        const std::size_t part = std::min(count, m_bytes.size() - m_position);
        if (part > 0) std::memcpy(buffer, m_bytes.data() + m_position, part);
        m_position += part;
        return part;
    }
    void Write(const void* buffer, std::size_t count) override {
        const auto* const bytes = static_cast<const std::uint8_t*>(buffer);
        m_bytes.insert(m_bytes.end(), bytes, bytes + count);
    }

private:
    std::vector<std::uint8_t> m_bytes;
    std::size_t m_position = 0;
};

// A header that claims far more pixels than the stream has costs more in fresh pages than all else. One in 1024 is enough
// of them; the others are made modest. By a checksum, as a mutation of a kept one shall not be one again.
void makeModest(std::vector<std::uint8_t>& stream) {
    constexpr std::size_t infoHeaderAt = 14;
    if (stream.size() <= infoHeaderAt) return;
    BITMAPINFOHEADER header{};
    const std::size_t given = std::min(stream.size() - infoHeaderAt, sizeof header);
    std::memcpy(&header, stream.data() + infoHeaderAt, given);
    const double claim = std::max(std::abs(header.biWidth / 8.0 * header.biHeight * header.biBitCount),
                                  static_cast<double>(header.biSizeImage));
    const unsigned sum = std::accumulate(stream.begin(), stream.end(), 0U,
                                         [](unsigned before, unsigned byte) { return 31 * before + byte; });
    if (claim <= 65536.0 || sum % 1024 == 0) return;
    header.biWidth %= 128;
    header.biHeight %= 128;
    header.biSizeImage %= 65536;
    std::memcpy(stream.data() + infoHeaderAt, &header, given);
}

}  // namespace

namespace fuzz {

int bitmap(const std::uint8_t* data, std::size_t size) {
    std::vector<std::uint8_t> stream(data, data + size);
    makeModest(stream);
    MemoryFile file(stream.data(), stream.size());
    CDib read;
    if (!read.Read(&file)) return 0;
    CRasterDC surface(37, 29, 8 * (1 + static_cast<int>(size % 4)));
    read.Draw(&surface, -3, 2, 41, 17, 1, 1, read.InfoHeader->biWidth, read.InfoHeader->biHeight, SRCCOPY);
    read.UsePalette(&surface, 0);
    if (read.ImageSize > 1U << 20) return 0;
    MemoryFile copy(nullptr, 0);
    CDib again;
    if (!read.Write(&copy) || !again.Read(&copy)) __builtin_trap();
    if (again.ImageSize != read.ImageSize || std::memcmp(again.Bits, read.Bits, read.ImageSize) != 0)
        __builtin_trap();
    return 0;
}

}  // namespace fuzz

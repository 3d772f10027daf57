// Bytes of a file, and which reader they go to.
#include "sourceReader.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "dicomHeader.h"
#include "errors.h"
#include "interrupt.h"
#include "parse.h"

namespace qvr::tool {

namespace {

constexpr std::size_t kLargestFile = std::size_t{1} << 31;
constexpr std::int64_t kMostPixels = (std::int64_t{1} << 30) - 1;  // the library's limit

class Descriptor {
public:
    explicit Descriptor(const std::string& file)
        // A pipe without a writer must not be waited for.
        : m_fd(file == "-" ? STDIN_FILENO
                           : open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK)) {}
    ~Descriptor() {
        if (m_fd > STDIN_FILENO) close(m_fd);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return m_fd; }

private:
    int m_fd;
};

[[noreturn]] void notRead(const std::string& file, int error) {
    if (error == EINTR) stopIfInterrupted();
    if (error == ENOENT)
        throw Failure(Exit::unreadable, file, "not read", "there is no such file", "Check the path.");
    if (error == EISDIR)
        throw Failure(Exit::unreadable, file, "not read", "it is a folder", "Name the files in it.");
    if (error == EACCES)
        throw Failure(Exit::unreadable, file, "not read", "you may not read it", "Check its permissions.");
    throw Failure(Exit::unreadable, file, "not read", std::strerror(error));
}

bool startsWith(std::span<const std::uint8_t> bytes, std::string_view magic, std::size_t at = 0) {
    return bytes.size() >= at + magic.size() &&
           std::memcmp(bytes.data() + at, magic.data(), magic.size()) == 0;
}

}  // namespace

std::optional<RawSpec> parseRawSpec(std::string_view text) {
    const auto parts = split(text, ':');
    if (parts.size() > 2) return std::nullopt;
    const auto size = parseInts(parts[0], 'x', 2);
    const auto bits = parts.size() == 2 ? parseInt(parts[1]) : std::optional<int>(14);
    if (!size || (*size)[0] < 1 || (*size)[1] < 1 || !bits || *bits < 1 || *bits > 16) return std::nullopt;
    return RawSpec{(*size)[0], (*size)[1], *bits};
}

std::vector<std::uint8_t> readBytes(const std::string& file) {
    const Descriptor descriptor(file);
    if (descriptor.get() < 0) notRead(file, errno);
    struct stat status {};
    std::vector<std::uint8_t> bytes;
    const bool known = fstat(descriptor.get(), &status) == 0;
    if (known && S_ISDIR(status.st_mode)) notRead(file, EISDIR);
    if (file != "-" && !(known && S_ISREG(status.st_mode)))
        throw Failure(Exit::unreadable, file, "not read", "it is no ordinary file",
                      "Name a file, or - for standard input.");
    if (known && S_ISREG(status.st_mode))
        bytes.reserve(std::min(kLargestFile, static_cast<std::size_t>(status.st_size) + 1));

    for (std::size_t size = 0;;) {
        constexpr std::size_t step = std::size_t{1} << 20;
        bytes.resize(size + step);
        const auto count = read(descriptor.get(), bytes.data() + size, step);
        if (count < 0) notRead(file, errno);
        size += static_cast<std::size_t>(count);
        bytes.resize(size);
        stopIfInterrupted();
        if (count == 0) break;
        if (size > kLargestFile)
            throw Failure(Exit::unsupported, file, "not read", "it is larger than 2 GiB");
    }
    if (bytes.empty()) throw Failure(Exit::unreadable, file, "not read", "it is empty");
    return bytes;
}

void checkSize(const std::string& file, std::int64_t columns, std::int64_t rows) {
    if (columns < 1 || rows < 1)
        throw Failure(Exit::unreadable, file, "not read",
                      fmt::format("it is no image: its size is {} x {}", columns, rows));
    if (columns > kMostPixels || rows > kMostPixels / columns)
        throw Failure(Exit::unsupported, file, "not read",
                      fmt::format("{} x {} is more than the {} pixels of the largest image", columns, rows,
                                  kMostPixels));
}

void clampToDeclaredBits(SourceImage& image) {
    const auto largest = static_cast<std::uint16_t>((1 << image.format.bitsStored) - 1);
    std::size_t cut = 0;
    for (auto& word : image.words) {
        if (word <= largest) continue;
        word = largest;
        ++cut;
    }
    if (cut)
        image.warnings.push_back(
            fmt::format("{} pixels above {}, the largest value of {} bits, count as that value.", cut,
                        largest, image.format.bitsStored));
}

SourceImage readRaw(const std::string& file, std::span<const std::uint8_t> bytes, const RawSpec& spec) {
    checkSize(file, spec.columns, spec.rows);
    const std::size_t count = static_cast<std::size_t>(spec.columns) * static_cast<std::size_t>(spec.rows);
    if (bytes.size() != 2 * count)
        throw Failure(Exit::unreadable, file, "not read",
                      fmt::format("{} x {} pixels need {} bytes, it has {}", spec.columns, spec.rows,
                                  2 * count, bytes.size()),
                      "Give its real size with --raw WxH.");
    SourceImage image;
    image.file = file;
    image.kind = "raw";
    image.columns = spec.columns;
    image.rows = spec.rows;
    image.format.bitsStored = spec.bits;
    image.format.highBit = spec.bits - 1;
    image.bottomRowFirst = true;
    image.words.resize(count);
    for (std::size_t i = 0; i < count; ++i)
        image.words[i] = static_cast<std::uint16_t>(bytes[2 * i] | bytes[2 * i + 1] << 8);
    clampToDeclaredBits(image);
    return image;
}

SourceImage readSource(const std::string& file, const std::optional<RawSpec>& raw) {
    return readSource(file, readBytes(file), raw);
}

SourceImage readSource(const std::string& file, std::span<const std::uint8_t> bytes,
                       const std::optional<RawSpec>& raw) {
    if (raw) return readRaw(file, bytes, *raw);
    if (looksLikeDicom(bytes)) return readDicom(file, bytes);
    if (startsWith(bytes, "P5") || startsWith(bytes, "P2")) return readPgm(file, bytes);
    if (startsWith(bytes, "P6") || startsWith(bytes, "P3"))
        throw Failure(Exit::unsupported, file, "not read", "it is a colour image (PPM)",
                      "Convert it to grey first.");
    throw Failure(Exit::unreadable, file, "not read", "it is neither DICOM nor PGM",
                  "Bare pixels are read with --raw WxH[:bits].");
}

}  // namespace qvr::tool

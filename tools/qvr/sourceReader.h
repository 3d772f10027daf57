// Reading an image file: what kind it is decides its content, not its name.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "sourceImage.h"

namespace qvr::tool {

/// Size and depth of a file without a header.
struct RawSpec {
    int columns = 0;
    int rows = 0;
    int bits = 14;
};

/// Reads "WxH" or "WxH:bits" with sides above 0 and 1 … 16 bits. @return nothing for anything else
std::optional<RawSpec> parseRawSpec(std::string_view text);

/// Reads one file; "-" is standard input. The second form has its bytes already.
/// @param raw  given: the file holds bare pixels, 16 bits each, little-endian, bottom row first (the library's own raw
///             files), and nothing else
/// @throws Failure
SourceImage readSource(const std::string& file, const std::optional<RawSpec>& raw);
SourceImage readSource(const std::string& file, std::span<const std::uint8_t> bytes,
                       const std::optional<RawSpec>& raw);

/// The whole of a file or of standard input ("-"). @throws Failure
std::vector<std::uint8_t> readBytes(const std::string& file);

// The readers behind readSource. They throw Failure.
SourceImage readDicom(const std::string& file, std::span<const std::uint8_t> bytes);
SourceImage readPgm(const std::string& file, std::span<const std::uint8_t> bytes);
SourceImage readRaw(const std::string& file, std::span<const std::uint8_t> bytes, const RawSpec& spec);

/// Refuses sizes that the library cannot hold. @throws Failure
void checkSize(const std::string& file, std::int64_t columns, std::int64_t rows);

/// Cuts words that are larger than the declared bits allow, and says so in `warnings`.
void clampToDeclaredBits(SourceImage& image);

/// Lets DCMTK read all compressions that it can; once is enough.
void registerDecoders();
/// No message of the DICOM toolkit reaches the terminal.
void silenceDicomToolkit();

}  // namespace qvr::tool

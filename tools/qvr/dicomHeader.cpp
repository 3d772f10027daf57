// DCMTK behind two questions: what does this file hold, and what does that element say.
#include "dicomHeader.h"

#include <dcmtk/dcmdata/dcdeftag.h>
#include <dcmtk/dcmdata/dcdict.h>
#include <dcmtk/dcmdata/dcfilefo.h>
#include <dcmtk/dcmdata/dcistrmb.h>
#include <fmt/format.h>

#include <algorithm>
#include <cstring>

#include "errors.h"
#include "parse.h"

namespace qvr::tool {

namespace {

bool startsWith(std::span<const std::uint8_t> bytes, std::string_view magic, std::size_t at = 0) {
    return bytes.size() >= at + magic.size() &&
           std::memcmp(bytes.data() + at, magic.data(), magic.size()) == 0;
}

std::string trimmed(std::string_view text) {
    constexpr std::string_view padding(" \0", 2);
    const auto first = text.find_first_not_of(padding);
    if (first == std::string_view::npos) return {};
    return std::string(text.substr(first, text.find_last_not_of(padding) - first + 1));
}

// Bytes in memory of which DCMTK loads a long element only after it has found that all of it is there. Without a factory it
// first allocates what the element's length says, which in a broken file is up to 4 GiB.
class MemoryStream : public DcmInputBufferStream {
public:
    explicit MemoryStream(std::span<const std::uint8_t> bytes) : m_bytes(bytes) {
        setBuffer(bytes.data(), static_cast<offile_off_t>(bytes.size()));
        setEos();
    }

    DcmInputStreamFactory* newFactory() const override {
        const bool deflated = currentProducer() != m_plain;
        return deflated ? nullptr : new Factory(m_bytes.subspan(static_cast<std::size_t>(tell())));
    }

private:
    class Factory : public DcmInputStreamFactory {
    public:
        explicit Factory(std::span<const std::uint8_t> bytes) : m_bytes(bytes) {}
        DcmInputStream* create() const override { return new MemoryStream(m_bytes); }
        DcmInputStreamFactory* clone() const override { return new Factory(*this); }
        DcmInputStreamFactoryType ident() const override { return DFT_DcmInputFileStreamFactory; }

    private:
        std::span<const std::uint8_t> m_bytes;
    };

    std::span<const std::uint8_t> m_bytes;
    const DcmProducer* m_plain = currentProducer();
};

}  // namespace

std::string DicomHeader::text(const DcmTagKey& tag, unsigned long position) const {
    OFString value;
    if (m_set.findAndGetOFString(tag, value, position).bad()) return {};
    return trimmed({value.c_str(), value.size()});
}

std::string DicomHeader::values(const DcmTagKey& tag) const {
    OFString value;
    if (m_set.findAndGetOFStringArray(tag, value).bad()) return {};
    std::replace(value.begin(), value.end(), '\0', ' ');
    return trimmed({value.c_str(), value.size()});
}

std::optional<double> DicomHeader::number(const DcmTagKey& tag, unsigned long position) const {
    return parseDouble(text(tag, position));
}

std::optional<int> DicomHeader::integer(const DcmTagKey& tag) const {
    return parseInt(text(tag));
}

int DicomHeader::required(const DcmTagKey& tag, const char* name) const {
    if (const auto value = integer(tag)) return *value;
    throw Failure(Exit::unreadable, m_file, "not read", fmt::format("it is no image: it has no {}", name));
}

std::string DicomHeader::sopInstanceUid() const {
    DcmElement* element = nullptr;
    char* value = nullptr;
    if (m_set.findAndGetElement(DCM_SOPInstanceUID, element).bad() || !element) return {};
    if (element->getString(value).bad() || !value) return {};
    return trimmed(value);
}

void parseDicom(const std::string& file, std::span<const std::uint8_t> bytes, DcmFileFormat& format,
                bool withPixels) {
    if (!dcmDataDict.isDictionaryLoaded())
        throw Failure(Exit::unreadable, file, "not read", "the DICOM data dictionary of DCMTK was not found",
                      "Install it (Debian: libdcmtk17), or let DCMDICTPATH name its dicom.dic.");
    MemoryStream stream(bytes);
    format.transferInit();
    OFCondition result =
        withPixels ? format.read(stream, EXS_Unknown, EGL_noChange)
                   : format.readUntilTag(stream, EXS_Unknown, EGL_noChange, DCM_MaxReadLength, DCM_PixelData);
    format.transferEnd();
    if (result.good()) result = format.loadAllDataIntoMemory();  // the bytes may be gone when it is used
    if (result.good()) return;
    if (result == EC_StreamNotifyClient || result == EC_EndOfStream || result == EC_InvalidStream)
        throw Failure(Exit::unreadable, file, "not read", "it is cut short", "Fetch the file again.");
    throw Failure(Exit::unreadable, file, "not read",
                  fmt::format("its DICOM structure is broken ({})", result.text()), "Fetch the file again.");
}

bool looksLikeDicom(std::span<const std::uint8_t> bytes) {
    if (startsWith(bytes, "DICM", 128)) return true;
    // Without the 128-byte preamble: a first element of group 2 or 8, little- or big-endian.
    const std::string_view starts[] = {{"\x02\0", 2}, {"\x08\0", 2}, {"\0\x08", 2}};
    return bytes.size() > 16 && std::any_of(std::begin(starts), std::end(starts),
                                            [&](std::string_view start) { return startsWith(bytes, start); });
}

}  // namespace qvr::tool

// A DICOM file in memory and the elements of its data set, which may all be missing.
#pragma once

#include <dcmtk/config/osconfig.h>
#include <dcmtk/dcmdata/dctagkey.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>

class DcmDataset;
class DcmFileFormat;

namespace qvr::tool {

class DicomHeader {
public:
    /// @param file  for sentences; both must outlive this object
    DicomHeader(const std::string& file, DcmDataset& set) : m_file(file), m_set(set) {}

    /// One value as text, without padding; empty when it is missing.
    std::string text(const DcmTagKey& tag, unsigned long position = 0) const;
    /// All its values, joined by backslashes; zeros between them, as some files pad with, are spaces.
    std::string values(const DcmTagKey& tag) const;
    std::optional<double> number(const DcmTagKey& tag, unsigned long position = 0) const;
    std::optional<int> integer(const DcmTagKey& tag) const;
    /// @param name  of the attribute, for the sentence. @throws Failure when it is missing
    int required(const DcmTagKey& tag, const char* name) const;
    /// The SOP Instance UID as its bytes are, without the clean-up that a text getter would do.
    std::string sopInstanceUid() const;

private:
    const std::string& m_file;
    DcmDataset& m_set;
};

/// Parses a whole file, or all of it before the pixels. @throws Failure for one that is cut short or broken
void parseDicom(const std::string& file, std::span<const std::uint8_t> bytes, DcmFileFormat& format,
                bool withPixels);

/// True for what a DICOM file begins with.
bool looksLikeDicom(std::span<const std::uint8_t> bytes);

}  // namespace qvr::tool

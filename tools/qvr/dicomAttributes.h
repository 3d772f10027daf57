// Attributes of DICOM files that are written: what is carried over from a source, what must be there, and the bytes.
#pragma once

#include <dcmtk/config/osconfig.h>
#include <dcmtk/dcmdata/dcdatset.h>

#include <cstdint>
#include <string>
#include <vector>

class DcmFileFormat;

namespace qvr::tool {

/// A new, unique UID.
std::string newUid();
/// True for a text that is a UID: numbers without leading zeros and dots, at most 64 characters.
bool isUid(const std::string& text);

/// One value of an element as text, without padding; empty when it is missing.
std::string textOf(DcmItem& set, const DcmTagKey& tag);
/// All values of an element, separated by backslashes.
std::string valuesOf(DcmItem& set, const DcmTagKey& tag);

// These replace an element that is there. They throw Failure when a value cannot be held.
void putText(DcmItem& set, const DcmTag& tag, const std::string& text);
void putNumber(DcmItem& set, const DcmTag& tag, int value);
void putWords(DcmItem& set, const DcmTag& tag, const std::vector<std::uint16_t>& words);
/// A decimal string of at most 16 characters.
std::string decimal(double value);
/// Appends an item to a sequence, which is made when it is missing.
DcmItem& addItem(DcmItem& set, const DcmTag& sequence);
/// Appends an item that refers to an instance.
DcmItem& refer(DcmItem& set, const DcmTag& sequence, const std::string& sopClass,
               const std::string& sopInstance);

/// An element with no value where there is none at all.
void ensure(DcmItem& set, const DcmTag& tag);
/// A value where there is none, or an empty one.
void ensureText(DcmItem& set, const DcmTag& tag, const std::string& text);

enum class Carry {
    patientAndStudy,  ///< for an object of another series
    everything        ///< series, equipment and acquisition as well
};
/// Copies what describes patient, study, series and acquisition; never what belongs to the source's pixels. Texts
/// become UTF-8, and the attributes that every object must have are there afterwards, if only empty.
/// @param source  may be null; texts of an unknown character set are taken as Latin-1
/// @throws Failure
void carryOver(DcmDataset* source, Carry carry, DcmDataset& out);

/// Two attributes with the present date and time.
void putNow(DcmItem& set, const DcmTag& date, const DcmTag& time);

/// The bytes of a file (explicit little-endian) with its meta information. @throws Failure
std::vector<std::uint8_t> dicomBytes(DcmFileFormat& format);

}  // namespace qvr::tool

// DICOM files for tests, made with DCMTK.
#pragma once

#include <dcmtk/config/osconfig.h>
#include <dcmtk/dcmdata/dcxfer.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

class DcmDataset;
class DcmItem;
class DcmTagKey;

struct DicomSpec {
    int columns = 96;
    int rows = 64;
    int bitsAllocated = 16;
    int bitsStored = 12;
    int highBit = 11;
    bool isSigned = false;
    std::string photometric = "MONOCHROME2";
    std::string uid = "1.2.3.4";
    std::vector<std::uint16_t> words;  // top row first; empty: topBright()
    E_TransferSyntax transfer = EXS_LittleEndianExplicit;
    std::function<void(DcmDataset&)> more = [](DcmDataset&) {};  // attributes beyond these
};

/// A picture whose upper half is bright and whose left edge is darker than its right one: 100 + column in the lower
/// half, 3000 + column in the upper one.
std::vector<std::uint16_t> topBright(int columns, int rows);

/// @return the path
std::string writeDicom(const std::string& path, const DicomSpec& spec);
/// The text of an attribute, or "(missing)".
std::string attributeText(DcmItem& item, const DcmTagKey& tag);
/// Keeps the first `size` bytes of a file. @return the path
std::string cut(const std::string& path, std::size_t size);

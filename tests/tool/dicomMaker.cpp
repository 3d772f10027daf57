#include "dicomMaker.h"

#include <dcmtk/dcmdata/dcdeftag.h>
#include <dcmtk/dcmdata/dcfilefo.h>
#include <dcmtk/dcmdata/dcrleerg.h>
#include <dcmtk/dcmjpeg/djencode.h>
#include <dcmtk/dcmjpls/djencode.h>

#include <filesystem>
#include <stdexcept>

#include "sourceReader.h"

namespace {

void must(const OFCondition& result) {
    if (result.bad()) throw std::runtime_error(result.text());
}

void registerEncoders() {
    static const bool done = [] {
        qvr::tool::silenceDicomToolkit();
        DcmRLEEncoderRegistration::registerCodecs();
        DJEncoderRegistration::registerCodecs();
        DJLSEncoderRegistration::registerCodecs();
        return true;
    }();
    static_cast<void>(done);
}

void fillHeader(DcmDataset& set, const DicomSpec& spec) {
    const auto number = [&set](const DcmTagKey& tag, int value) {
        must(set.putAndInsertUint16(tag, static_cast<Uint16>(value)));
    };
    must(set.putAndInsertString(DCM_SOPClassUID, "1.2.840.10008.5.1.4.1.1.1.1"));
    if (!spec.uid.empty()) must(set.putAndInsertString(DCM_SOPInstanceUID, spec.uid.c_str()));
    must(set.putAndInsertString(DCM_Modality, "DX"));
    must(set.putAndInsertString(DCM_PhotometricInterpretation, spec.photometric.c_str()));
    number(DCM_SamplesPerPixel, 1);
    number(DCM_Rows, spec.rows);
    number(DCM_Columns, spec.columns);
    number(DCM_BitsAllocated, spec.bitsAllocated);
    number(DCM_BitsStored, spec.bitsStored);
    number(DCM_HighBit, spec.highBit);
    number(DCM_PixelRepresentation, spec.isSigned ? 1 : 0);
}

}  // namespace

std::vector<std::uint16_t> topBright(int columns, int rows) {
    std::vector<std::uint16_t> words;
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < columns; ++x)
            words.push_back(static_cast<std::uint16_t>((y < rows / 2 ? 3000 : 100) + x));
    return words;
}

std::string writeDicom(const std::string& path, const DicomSpec& spec) {
    registerEncoders();
    DcmFileFormat format;
    DcmDataset& set = *format.getDataset();
    fillHeader(set, spec);
    const auto words = spec.words.empty() ? topBright(spec.columns, spec.rows) : spec.words;
    if (spec.bitsAllocated == 8) {
        const std::vector<Uint8> bytes(words.begin(), words.end());
        must(set.putAndInsertUint8Array(DCM_PixelData, bytes.data(), bytes.size()));
    } else {
        must(set.putAndInsertUint16Array(DCM_PixelData, words.data(), words.size()));
    }
    spec.more(set);
    must(set.chooseRepresentation(spec.transfer, nullptr));
    must(format.saveFile(path.c_str(), spec.transfer));
    return path;
}

std::string attributeText(DcmItem& item, const DcmTagKey& tag) {
    OFString text;
    return item.findAndGetOFStringArray(tag, text).good() ? std::string(text.c_str()) : "(missing)";
}

std::string cut(const std::string& path, std::size_t size) {
    std::filesystem::resize_file(path, size);
    return path;
}

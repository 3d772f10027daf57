// DICOM files, through DCMTK: uncompressed, deflated, RLE, JPEG and JPEG-LS.
//
// The file is parsed from memory, and what DCMTK would let pass is checked here: a pixel element that is shorter than
// rows and columns promise, bits that contradict each other, sizes beyond the library's.
#include <dcmtk/config/osconfig.h>
#include <dcmtk/dcmdata/dccodec.h>
#include <dcmtk/dcmdata/dcdeftag.h>
#include <dcmtk/dcmdata/dcfilefo.h>
#include <dcmtk/dcmdata/dcmetinf.h>
#include <dcmtk/dcmdata/dcpixel.h>
#include <dcmtk/dcmdata/dcpixseq.h>
#include <dcmtk/dcmdata/dcpxitem.h>
#include <dcmtk/dcmdata/dcrledrg.h>
#include <dcmtk/dcmjpeg/djdecode.h>
#include <dcmtk/dcmjpls/djdecode.h>
#include <dcmtk/oflog/oflog.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <mutex>

#include "dicomHeader.h"
#include "errors.h"
#include "parse.h"
#include "sourceReader.h"

namespace qvr::tool {

namespace {

// Names of the compressions that DCMTK cannot decode, as people know them.
std::string compressionName(const std::string& uid, const DcmXfer& transfer) {
    const std::string_view family = "1.2.840.10008.1.2.4.";
    if (uid.starts_with(family)) {
        const auto number =
            parseInt(std::string_view(uid).substr(family.size(), 3))
                .value_or(parseInt(std::string_view(uid).substr(family.size(), 2)).value_or(0));
        if (number == 90 || number == 91) return "JPEG 2000";
        if (number == 92 || number == 93) return "JPEG 2000 part 2";
        if (number >= 100 && number < 110) return "MPEG video";
        if (number >= 201 && number <= 203) return "High-Throughput JPEG 2000";
    }
    return transfer.getXfer() == EXS_Unknown ? "an unknown method" : transfer.getXferName();
}

// A transfer syntax that cannot be decoded is named before anything else is looked at.
void checkCompression(const std::string& file, DcmFileFormat& format, SourceImage& image) {
    OFString uid;
    format.getMetaInfo()->findAndGetOFString(DCM_TransferSyntaxUID, uid);
    const std::string named = uid.c_str();
    const DcmXfer transfer(named.empty() ? format.getDataset()->getOriginalXfer()
                                         : DcmXfer(named.c_str()).getXfer());
    image.compression = transfer.getXferName();
    const DcmXfer plain(EXS_LittleEndianExplicit);
    const bool decodable =
        transfer.getXfer() != EXS_Unknown &&
        (!transfer.isEncapsulated() || DcmCodecList::canChangeCoding(transfer.getXfer(), plain.getXfer()));
    if (decodable) return;
    throw Failure(Exit::unsupported, file, "not read",
                  fmt::format("compressed as {} ({}), which this build cannot decode",
                              compressionName(named, transfer), named),
                  "Convert it to an uncompressed transfer syntax first.");
}

void readFormat(const DicomHeader& header, SourceImage& image) {
    const auto& file = image.file;
    image.photometric = header.text(DCM_PhotometricInterpretation);
    const int samples = header.integer(DCM_SamplesPerPixel).value_or(1);
    const bool grey = image.photometric == "MONOCHROME1" || image.photometric == "MONOCHROME2";
    if (samples != 1 || (!grey && !image.photometric.empty()))
        throw Failure(Exit::unsupported, file, "not read",
                      fmt::format("it is a colour image ({}), only grey ones are supported",
                                  image.photometric.empty() ? "3 samples" : image.photometric),
                      "Convert it to MONOCHROME2 first.");
    if (image.photometric.empty())
        image.warnings.emplace_back("has no Photometric Interpretation; taken as MONOCHROME2.");

    image.bitsAllocated = header.required(DCM_BitsAllocated, "Bits Allocated");
    if (image.bitsAllocated != 8 && image.bitsAllocated != 16)
        throw Failure(
            Exit::unsupported, file, "not read",
            fmt::format("its pixels have {} bits, only 8 and 16 are supported", image.bitsAllocated),
            "Convert it to 16 bits first.");
    image.format.bitsStored = header.integer(DCM_BitsStored).value_or(image.bitsAllocated);
    image.format.highBit = header.integer(DCM_HighBit).value_or(image.format.bitsStored - 1);
    image.format.isSigned = header.integer(DCM_PixelRepresentation).value_or(0) == 1;
    const auto& format = image.format;
    if (format.bitsStored < 1 || format.bitsStored > image.bitsAllocated ||
        format.highBit < format.bitsStored - 1 || format.highBit >= image.bitsAllocated)
        throw Failure(Exit::unreadable, file, "not read",
                      fmt::format("its header contradicts itself: {} bits stored and high bit {} in {} bits",
                                  format.bitsStored, format.highBit, image.bitsAllocated));
}

// Bright or dark for low values: stated twice at most, and turned round by a falling rescale slope.
void readPolarity(const DicomHeader& header, DcmDataset& set, SourceImage& image) {
    if (set.tagExists(DCM_ModalityLUTSequence)) {
        image.warnings.emplace_back("its Modality LUT is not applied, and its own windows are not used.");
    } else {
        const double slope = header.number(DCM_RescaleSlope).value_or(1);
        if (slope != 0) image.slope = slope;
        image.intercept = header.number(DCM_RescaleIntercept).value_or(0);
        for (unsigned long i = 0;; ++i) {
            const auto center = header.number(DCM_WindowCenter, i);
            const auto width = header.number(DCM_WindowWidth, i);
            if (!center || !width) break;
            image.windows.push_back({*center, *width});
        }
    }
    const bool lowIsBright =
        image.photometric == "MONOCHROME1" || header.text(DCM_PresentationLUTShape) == "INVERSE";
    image.format.inverse = lowIsBright != (image.slope < 0);

    // Some files give a negative padding value as an unsigned word.
    const auto asStored = [&](int value) {
        return image.format.isSigned && value > 32767 ? value - 65536 : value;
    };
    if (const auto value = header.integer(DCM_PixelPaddingValue)) {
        const int padding = asStored(*value);
        const int limit = asStored(header.integer(DCM_PixelPaddingRangeLimit).value_or(*value));
        image.format.padding = std::pair(std::min(padding, limit), std::max(padding, limit));
    }
}

void readDescription(const DicomHeader& header, SourceImage& image) {
    image.modality = header.text(DCM_Modality);
    image.bodyPart = header.text(DCM_BodyPartExamined);
    image.view = header.text(DCM_ViewPosition);
    image.laterality = header.text(DCM_ImageLaterality);
    if (image.laterality.empty()) image.laterality = header.text(DCM_Laterality);
    const std::pair<DcmTagKey, const char*> spacings[] = {{DCM_ImagerPixelSpacing, "Imager Pixel Spacing"},
                                                          {DCM_PixelSpacing, "Pixel Spacing"}};
    for (const auto& [tag, name] : spacings) {
        const auto betweenRows = header.number(tag, 0);
        const auto betweenColumns = header.number(tag, 1);
        if (!betweenRows || !betweenColumns || *betweenRows <= 0 || *betweenColumns <= 0) continue;
        image.spacing = {*betweenColumns, *betweenRows};
        image.spacingSource = name;
        return;
    }
}

// Whether the segments of the first frame lie one behind the other within their fragment, which DCMTK takes for granted.
bool rleSegmentsFit(DcmPixelData& pixels) {
    constexpr std::size_t kHeader = 64;  // the number of segments, then the offsets of at most 15
    DcmPixelSequence* sequence = nullptr;
    DcmPixelItem* fragment = nullptr;
    Uint8* bytes = nullptr;
    if (pixels.getEncapsulatedRepresentation(EXS_RLELossless, nullptr, sequence).bad() ||
        sequence->getItem(fragment, 1).bad() || fragment->getUint8Array(bytes).bad() || !bytes)
        return false;
    const std::size_t length = fragment->getLength();
    if (length < kHeader) return false;
    const auto word = [&](std::size_t index) {
        const Uint8* const at = bytes + 4 * index;
        return std::size_t{at[0]} | std::size_t{at[1]} << 8 | std::size_t{at[2]} << 16 |
               std::size_t{at[3]} << 24;
    };
    const std::size_t segments = word(0);
    if (segments < 1 || segments > 15) return false;
    std::size_t previous = kHeader;
    for (std::size_t i = 1; i <= segments; ++i) {
        if (word(i) < previous || word(i) > length) return false;
        previous = word(i);
    }
    return true;
}

void readPixels(DcmDataset& set, SourceImage& image) {
    DcmElement* element = nullptr;
    if (set.findAndGetElement(DCM_PixelData, element).bad() || !element)
        throw Failure(Exit::unreadable, image.file, "not read", "it is no image: it has no pixel data");
    auto* pixels = dynamic_cast<DcmPixelData*>(element);
    const std::size_t count = static_cast<std::size_t>(image.columns) * static_cast<std::size_t>(image.rows);
    const std::size_t frameBytes = count * static_cast<std::size_t>(image.bitsAllocated) / 8;
    if (!pixels) throw Failure(Exit::unreadable, image.file, "not read", "its pixel data have a wrong type");
    const bool encapsulated = DcmXfer(set.getOriginalXfer()).isEncapsulated();
    if (!encapsulated && pixels->getLength() < frameBytes)
        throw Failure(Exit::unreadable, image.file, "not read",
                      fmt::format("it is cut short: {} of {} bytes of pixels are there", pixels->getLength(),
                                  frameBytes),
                      "Fetch the file again.");
    if (set.getOriginalXfer() == EXS_RLELossless && !rleSegmentsFit(*pixels))
        throw Failure(Exit::unreadable, image.file, "not read",
                      "its pixels cannot be decoded (the RLE segments do not fit their fragment)",
                      "Fetch the file again.");

    std::vector<std::uint16_t> buffer((frameBytes + 3) / 2);  // DCMTK wants an even size
    Uint32 fragment = 0;
    OFString colours;
    const auto size = static_cast<Uint32>(frameBytes + frameBytes % 2);
    const OFCondition result = pixels->getUncompressedFrame(&set, 0, fragment, buffer.data(), size, colours);
    if (result.bad())
        throw Failure(Exit::unreadable, image.file, "not read",
                      fmt::format("its pixels cannot be decoded ({})", result.text()),
                      "Fetch the file again.");
    if (image.bitsAllocated == 8) {
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(buffer.data());
        image.words.assign(bytes, bytes + count);
    } else {
        buffer.resize(count);
        image.words = std::move(buffer);
    }
}

}  // namespace

void registerDecoders() {
    static std::once_flag once;
    std::call_once(once, [] {
        // Elements of unknown representation are taken as the dictionary has them: some files name all of them so.
        dcmEnableUnknownVRConversion.set(OFTrue);
        DcmRLEDecoderRegistration::registerCodecs();
        DJDecoderRegistration::registerCodecs();
        DJLSDecoderRegistration::registerCodecs();
    });
}

void silenceDicomToolkit() {
    OFLog::configure(OFLogger::OFF_LOG_LEVEL);
}

SourceImage readDicom(const std::string& file, std::span<const std::uint8_t> bytes) {
    registerDecoders();
    DcmFileFormat format;
    parseDicom(file, bytes, format, true);
    SourceImage image;
    image.file = file;
    image.kind = "DICOM";
    checkCompression(file, format, image);

    DcmDataset& set = *format.getDataset();
    const DicomHeader header(file, set);
    image.sopInstanceUid = header.sopInstanceUid();
    if (!set.tagExists(DCM_PixelData))
        throw Failure(Exit::unreadable, file, "not read", "it is no image: it has no pixel data");
    image.rows = header.required(DCM_Rows, "Rows");
    image.columns = header.required(DCM_Columns, "Columns");
    checkSize(file, image.columns, image.rows);
    readFormat(header, image);
    readPolarity(header, set, image);
    readDescription(header, image);
    image.frames = std::max(1, header.integer(DCM_NumberOfFrames).value_or(1));
    if (image.frames > 1)
        image.warnings.push_back(fmt::format("has {} frames; the first one is used.", image.frames));
    readPixels(set, image);
    image.header.reset(format.getAndRemoveDataset());
    delete image.header->remove(DCM_PixelData);
    return image;
}

}  // namespace qvr::tool

// DICOM and the file system.
#include "doctor.h"

#include <dcmtk/config/osconfig.h>
#include <dcmtk/dcmdata/dccodec.h>
#include <dcmtk/dcmdata/dcdict.h>
#include <dcmtk/dcmdata/dcxfer.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>

#include "errors.h"
#include "safeFile.h"
#include "sourceReader.h"

namespace qvr::tool {

namespace {

using Grade = Finding::Grade;

constexpr double kImageBytes = 2.0 * 2 * 3072 * 3072;  // raw copy and image file of a large detector
constexpr double kTightRoom = 10;                      // images

struct Transfer {
    E_TransferSyntax syntax;
    bool promised;  // by this build: a gap is a problem
};
constexpr Transfer kTransfers[] = {
    {EXS_RLELossless, true},           {EXS_JPEGProcess1, true},   {EXS_JPEGProcess2_4, true},
    {EXS_JPEGProcess14SV1, true},      {EXS_JPEGLSLossless, true}, {EXS_JPEGLSLossy, true},
    {EXS_JPEG2000LosslessOnly, false},
};

Finding codec(const Transfer& transfer) {
    const DcmXfer xfer(transfer.syntax);
    const bool can = DcmCodecList::canChangeCoding(transfer.syntax, EXS_LittleEndianExplicit);
    const std::string topic = xfer.getXferName();
    if (can) return {Grade::ok, topic, "can be read", ""};
    return {transfer.promised ? Grade::problem : Grade::warning, topic, "cannot be read",
            transfer.promised ? "Install DCMTK with its codecs." : "Convert such files first."};
}

}  // namespace

std::vector<Finding> examineDicom() {
    registerDecoders();
    std::vector<Finding> findings;
    const auto& dictionary = dcmDataDict.rdlock();
    const int entries = dictionary.numberOfNormalTagEntries();
    const bool loaded = dictionary.isDictionaryLoaded();
    dcmDataDict.rdunlock();
    if (loaded)
        findings.push_back({Grade::ok, "dictionary", fmt::format("{} attributes", entries), ""});
    else
        findings.push_back({Grade::problem, "dictionary", "DCMTK's data dictionary was not found",
                            "Install it (Debian: libdcmtk17), or let DCMDICTPATH name its dicom.dic."});
    for (const auto& transfer : kTransfers) findings.push_back(codec(transfer));
    return findings;
}

std::vector<Finding> examineFolder(const std::string& folder) {
    std::error_code error;
    if (!std::filesystem::is_directory(folder, error))
        return {{Grade::problem, "folder", folder + " is no folder", "Name one that exists."}};
    std::vector<Finding> findings;
    // A file is really written: permissions alone do not tell of a read-only or full file system.
    const std::string trial = fmt::format("{}/.qvr-doctor-{}", folder, getpid());
    try {
        const std::vector<std::uint8_t> bytes(4096, 1);
        writeSafely(trial, bytes, false);
        std::filesystem::remove(trial, error);
        findings.push_back({Grade::ok, "folder", folder + " can be written", ""});
    } catch (const Failure& failure) {
        if (failure.code() == Exit::interrupted) throw;
        findings.push_back({Grade::problem, "folder", failure.what(), "Check permissions and room."});
    }
    const double space = freeSpace(folder);
    const double images = space / kImageBytes;
    const bool tight = images < kTightRoom;
    findings.push_back({tight ? Grade::warning : Grade::ok, "free space",
                        fmt::format("{}, room for {:.0f} images of 3072 x 3072 with their raw copies",
                                    readableSize(space), std::floor(images)),
                        tight ? "Make room." : ""});
    return findings;
}

}  // namespace qvr::tool

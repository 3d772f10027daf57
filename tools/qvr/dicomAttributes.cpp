// What is carried over is listed here, tag by tag: an attribute that nobody thought of could speak of pixels, places or
// shapes that the new image no longer has.
#include "dicomAttributes.h"

#include <dcmtk/dcmdata/dcdeftag.h>
#include <dcmtk/dcmdata/dcfilefo.h>
#include <dcmtk/dcmdata/dcostrmb.h>
#include <dcmtk/dcmdata/dcuid.h>
#include <dcmtk/dcmdata/dcvrda.h>
#include <dcmtk/dcmdata/dcvrtm.h>
#include <fmt/format.h>

#include "errors.h"

namespace qvr::tool {

namespace {

// clang-format off
const DcmTagKey kStudyTags[] = {
    DCM_StudyDate, DCM_StudyTime, DCM_AccessionNumber, DCM_ReferringPhysicianName, DCM_TimezoneOffsetFromUTC,
    DCM_StudyDescription, DCM_ProcedureCodeSequence, DCM_PhysiciansOfRecord, DCM_AdmittingDiagnosesDescription,
    DCM_ReferencedStudySequence, DCM_StudyInstanceUID, DCM_StudyID,
    DCM_InstitutionName, DCM_InstitutionAddress, DCM_InstitutionalDepartmentName};

const DcmTagKey kSeriesTags[] = {
    DCM_Modality, DCM_SeriesDate, DCM_SeriesTime, DCM_SeriesDescription, DCM_SeriesInstanceUID, DCM_SeriesNumber,
    DCM_Laterality, DCM_PerformingPhysicianName, DCM_OperatorsName, DCM_ProtocolName,
    DCM_ReferencedPerformedProcedureStepSequence, DCM_RequestAttributesSequence,
    DCM_PerformedProcedureStepStartDate, DCM_PerformedProcedureStepStartTime, DCM_PerformedProcedureStepID,
    DCM_PerformedProcedureStepDescription,
    DCM_Manufacturer, DCM_ManufacturerModelName, DCM_StationName, DCM_DeviceSerialNumber, DCM_SoftwareVersions,
    // what was exposed, and how
    DCM_AcquisitionDate, DCM_AcquisitionTime, DCM_AcquisitionDateTime, DCM_AcquisitionNumber, DCM_InstanceNumber,
    DCM_ImageLaterality, DCM_ImageComments, DCM_AnatomicRegionSequence, DCM_BodyPartExamined, DCM_ViewPosition,
    DCM_ViewCodeSequence, DCM_AcquisitionContextSequence, DCM_KVP, DCM_ExposureTime, DCM_XRayTubeCurrent,
    DCM_Exposure, DCM_ExposureInuAs, DCM_ImageAndFluoroscopyAreaDoseProduct, DCM_EntranceDose,
    DCM_EntranceDoseInmGy, DCM_OrganDose, DCM_OrganExposed, DCM_DistanceSourceToDetector,
    DCM_DistanceSourceToPatient, DCM_EstimatedRadiographicMagnificationFactor, DCM_FilterType, DCM_FilterMaterial,
    DCM_Grid, DCM_FocalSpots, DCM_AnodeTargetMaterial, DCM_BodyPartThickness, DCM_CompressionForce,
    DCM_PositionerType, DCM_PositionerPrimaryAngle, DCM_PositionerSecondaryAngle, DCM_RelativeXRayExposure,
    DCM_ExposureIndex, DCM_TargetExposureIndex, DCM_DeviationIndex, DCM_Sensitivity, DCM_PlateID,
    DCM_ExposureControlMode, DCM_DetectorType, DCM_DetectorConfiguration, DCM_DetectorDescription, DCM_DetectorID,
    DCM_BreastImplantPresent, DCM_PartialView, DCM_QualityControlImage,
    DCM_LossyImageCompression, DCM_LossyImageCompressionRatio, DCM_LossyImageCompressionMethod};

const DcmTagKey kMayBeEmpty[] = {
    DCM_PatientName, DCM_PatientID, DCM_PatientBirthDate, DCM_PatientSex, DCM_StudyDate, DCM_StudyTime, DCM_StudyID,
    DCM_AccessionNumber, DCM_ReferringPhysicianName, DCM_SeriesNumber, DCM_Manufacturer, DCM_InstanceNumber};
// clang-format on

void must(const OFCondition& result, const char* what) {
    if (result.good()) return;
    throw Failure(Exit::internal, "", "not written", fmt::format("{} ({})", what, result.text()));
}

std::string unpadded(const OFString& value) {
    std::string text(value.c_str(), value.size());
    while (!text.empty() && (text.back() == ' ' || text.back() == '\0')) text.pop_back();
    return text;
}

void copyElement(DcmItem& from, const DcmTagKey& tag, DcmItem& to) {
    if (from.tagExists(tag)) must(from.findAndInsertCopyOfElement(tag, &to), "an attribute cannot be copied");
}

void copyPatient(DcmItem& from, DcmItem& to) {
    constexpr Uint16 patientGroup = 0x0010;
    for (unsigned long i = 0; i < from.card(); ++i) {
        const DcmTagKey tag = from.getElement(i)->getTag();
        if (tag.getGroup() == patientGroup && tag.getElement() != 0) copyElement(from, tag, to);
    }
}

void toUtf8(DcmDataset& set) {
    OFCondition result = set.convertToUTF8();
    if (result.bad()) {
        putText(set, DCM_SpecificCharacterSet, "ISO_IR 100");
        result = set.convertToUTF8();
    }
    if (result.bad())
        throw Failure(Exit::unsupported, "", "not written",
                      fmt::format("its texts cannot be turned into UTF-8 ({})", result.text()));
    putText(set, DCM_SpecificCharacterSet, "ISO_IR 192");
}

}  // namespace

std::string newUid() {
    char uid[65] = {};
    return dcmGenerateUniqueIdentifier(uid);
}

bool isUid(const std::string& text) {
    if (text.empty() || text.size() > 64) return false;
    std::size_t digits = 0;  // of the present number
    char first = '.';
    for (const char c : text) {
        if (c != '.' && (c < '0' || c > '9')) return false;
        if (c == '.' ? digits == 0 : digits == 1 && first == '0') return false;
        if (digits == 0) first = c;
        digits = c == '.' ? 0 : digits + 1;
    }
    return digits > 0;
}

std::string textOf(DcmItem& set, const DcmTagKey& tag) {
    OFString value;
    return set.findAndGetOFString(tag, value).good() ? unpadded(value) : std::string();
}

std::string valuesOf(DcmItem& set, const DcmTagKey& tag) {
    OFString value;
    return set.findAndGetOFStringArray(tag, value).good() ? unpadded(value) : std::string();
}

void putText(DcmItem& set, const DcmTag& tag, const std::string& text) {
    must(set.putAndInsertOFStringArray(tag, OFString(text.c_str(), text.size())), "a text cannot be held");
}

void putNumber(DcmItem& set, const DcmTag& tag, int value) {
    must(set.putAndInsertUint16(tag, static_cast<Uint16>(value)), "a number cannot be held");
}

void putWords(DcmItem& set, const DcmTag& tag, const std::vector<std::uint16_t>& words) {
    must(set.putAndInsertUint16Array(tag, words.data(), static_cast<unsigned long>(words.size())),
         "pixels cannot be held");
}

std::string decimal(double value) {
    return fmt::format("{:.10g}", value);
}

DcmItem& addItem(DcmItem& set, const DcmTag& sequence) {
    constexpr signed long behindTheLast = -2;
    DcmItem* item = nullptr;
    must(set.findOrCreateSequenceItem(sequence, item, behindTheLast), "a sequence cannot be held");
    return *item;
}

DcmItem& refer(DcmItem& set, const DcmTag& sequence, const std::string& sopClass,
               const std::string& sopInstance) {
    DcmItem& item = addItem(set, sequence);
    putText(item, DCM_ReferencedSOPClassUID, sopClass);
    putText(item, DCM_ReferencedSOPInstanceUID, sopInstance);
    return item;
}

void ensure(DcmItem& set, const DcmTag& tag) {
    if (!set.tagExists(tag)) must(set.insertEmptyElement(tag), "an attribute cannot be held");
}

void ensureText(DcmItem& set, const DcmTag& tag, const std::string& text) {
    if (!set.tagExistsWithValue(tag)) putText(set, tag, text);
}

void carryOver(DcmDataset* source, Carry carry, DcmDataset& out) {
    if (source) {
        copyElement(*source, DCM_SpecificCharacterSet, out);
        copyPatient(*source, out);
        for (const auto& tag : kStudyTags) copyElement(*source, tag, out);
        if (carry == Carry::everything)
            for (const auto& tag : kSeriesTags) copyElement(*source, tag, out);
    }
    toUtf8(out);
    for (const auto& tag : kMayBeEmpty) ensure(out, tag);
    ensureText(out, DCM_StudyInstanceUID, newUid());
    ensureText(out, DCM_SeriesInstanceUID, newUid());
}

void putNow(DcmItem& set, const DcmTag& date, const DcmTag& time) {
    OFString today, now;
    must(DcmDate::getCurrentDate(today), "the date cannot be had");
    must(DcmTime::getCurrentTime(now), "the time cannot be had");
    putText(set, date, today.c_str());
    putText(set, time, now.c_str());
}

std::vector<std::uint8_t> dicomBytes(DcmFileFormat& format) {
    constexpr E_TransferSyntax transfer = EXS_LittleEndianExplicit;
    must(format.validateMetaInfo(transfer), "the file's head cannot be made");
    constexpr std::size_t room = 4096;  // beyond what DCMTK counts: preamble, padding
    std::vector<std::uint8_t> bytes(format.calcElementLength(transfer, EET_ExplicitLength) + room);
    DcmOutputBufferStream stream(bytes.data(), static_cast<offile_off_t>(bytes.size()));
    format.transferInit();
    const OFCondition result = format.write(stream, transfer, EET_ExplicitLength, nullptr);
    format.transferEnd();
    must(result, "the file cannot be put together");
    void* written = nullptr;
    offile_off_t size = 0;
    stream.flushBuffer(written, size);
    bytes.resize(static_cast<std::size_t>(size));
    return bytes;
}

}  // namespace qvr::tool

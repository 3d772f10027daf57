// DICOM attributes to records. Units: pixel spacing in micrometres, time in ms, charge in mAs, current in mA.
#include "dicomRecords.h"

#include <dcmtk/config/osconfig.h>
#include <dcmtk/dcmdata/dcdeftag.h>
#include <dcmtk/dcmdata/dcfilefo.h>

#include "dicomHeader.h"
#include "parse.h"
#include "personName.h"

namespace qvr::tool {

namespace {

// Family and given name as shown; what follows them, and further ways of writing the name, is left out.
void setName(const std::string& name, CString& family, CString& given) {
    const auto shown = shownName(name);
    family = shown.family.c_str();
    given = shown.given.c_str();
}

int part(const std::string& digits, std::size_t at, std::size_t length, int missing) {
    return at + length <= digits.size() ? parseInt(std::string_view(digits).substr(at, length)).value_or(-1)
                                        : missing;
}

// "20240531" and "143000.25"; status null when there is no such date.
COleDateTime dateTime(const DicomHeader& header, const DcmTagKey& dateTag, const DcmTagKey& timeTag) {
    const std::string date = header.text(dateTag);
    const std::string time = timeTag == DcmTagKey() ? std::string() : header.text(timeTag);
    const COleDateTime read(part(date, 0, 4, -1), part(date, 4, 2, -1), part(date, 6, 2, -1),
                            part(time, 0, 2, 0), part(time, 2, 2, 0), part(time, 4, 2, 0));
    if (read.GetStatus() == COleDateTime::valid) return read;
    COleDateTime none;
    none.SetStatus(COleDateTime::null);
    return none;
}

int rounded(std::optional<double> value) {
    return value ? nearestInt(*value).value_or(0) : 0;
}

void readStudy(const DicomHeader& header, DicomRecords& records) {
    auto& study = records.study;
    const auto text = [&header](const DcmTagKey& tag) { return CString(header.text(tag).c_str()); };
    study.StudyInstanceUID = text(DCM_StudyInstanceUID);
    study.StudyDateTime = dateTime(header, DCM_StudyDate, DCM_StudyTime);
    setName(header.text(DCM_ReferringPhysicianName), study.ReferringPhysicianFamilyName,
            study.ReferringPhysicianGivenName);
    study.StudyID = text(DCM_StudyID);
    study.AccessionNumber = text(DCM_AccessionNumber);
    study.StudyDescription = text(DCM_StudyDescription);
    study.AdmittingDiagnosesDescription = text(DCM_AdmittingDiagnosesDescription);
    setName(header.text(DCM_PatientName), study.PatientFamilyName, study.PatientGivenName);
    records.patientName = tidyName(header.values(DCM_PatientName));
    study.PatientBirthDate = dateTime(header, DCM_PatientBirthDate, DcmTagKey());
    study.PatientBirthDateValid = study.PatientBirthDate.GetStatus() == COleDateTime::valid ? 1 : 0;
    study.PatientID = text(DCM_PatientID);
    study.PatientSex = text(DCM_PatientSex);
    study.OtherPatientID = text(DCM_RETIRED_OtherPatientIDs);
    setName(header.text(DCM_OtherPatientNames), study.OtherPatientFamilyName, study.OtherPatientGivenName);
    study.PatientSpeciesDescription = text(DCM_PatientSpeciesDescription);
    study.PatientSexNeutered = text(DCM_PatientSexNeutered);
    study.PatientBreedDescription = text(DCM_PatientBreedDescription);
    study.MedicalRecordLocator = text(DCM_RETIRED_MedicalRecordLocator);
}

void readSeries(const DicomHeader& header, DicomRecords& records) {
    auto& series = records.series;
    const auto text = [&header](const DcmTagKey& tag) { return CString(header.text(tag).c_str()); };
    series.Modality = text(DCM_Modality);
    series.SeriesInstanceUID = text(DCM_SeriesInstanceUID);
    series.SeriesNumber = header.integer(DCM_SeriesNumber).value_or(0);
    setName(header.text(DCM_PerformingPhysicianName), series.PerformingPhysicianFamilyName,
            series.PerformingPhysicianGivenName);
    setName(header.text(DCM_OperatorsName), series.OperatorFamilyName, series.OperatorGivenName);
    series.BodyPartExamined = text(DCM_BodyPartExamined);
    series.SeriesDateTime = dateTime(header, DCM_SeriesDate, DCM_SeriesTime);
    series.SeriesDescription = text(DCM_SeriesDescription);
    series.ViewPosition = text(DCM_ViewPosition);
    series.PresentationIntentType = text(DCM_PresentationIntentType);
}

void readImage(const DicomHeader& header, DicomRecords& records) {
    auto& image = records.image;
    image.SOPInstanceUID = header.sopInstanceUid().c_str();
    image.InstanceNumber = header.integer(DCM_InstanceNumber).value_or(0);
    const std::string row = header.text(DCM_PatientOrientation, 0);
    const std::string column = header.text(DCM_PatientOrientation, 1);
    image.PatientOrientation = (column.empty() ? row : row + '\\' + column).c_str();
    image.ContentDateTime = dateTime(header, DCM_ContentDate, DCM_ContentTime);
    const auto spacing = header.number(DCM_ImagerPixelSpacing, 1);
    const auto otherSpacing = spacing ? spacing : header.number(DCM_PixelSpacing, 1);
    image.PixelSpacing = otherSpacing ? rounded(*otherSpacing * 1000) : 0;
    image.KVP = rounded(header.number(DCM_KVP));
    image.XRayTubeCurrent = rounded(header.number(DCM_XRayTubeCurrent));
    const auto finer = header.number(DCM_ExposureInuAs);
    image.Exposure = finer ? *finer / 1000 : header.number(DCM_Exposure).value_or(0);
    image.ExposureTime = header.number(DCM_ExposureTime).value_or(0);
    const std::string laterality = header.text(DCM_ImageLaterality);
    image.ImageLaterality = (laterality.empty() ? header.text(DCM_Laterality) : laterality).c_str();
    records.exposureIndex = rounded(header.number(DCM_ExposureIndex));
}

// A value that DICOM does not know says nothing; a compression that lost something is believed before the attribute.
void readHistory(const DicomHeader& header, bool lossyNow, PixelHistory& history) {
    const auto oneOf = [&](const DcmTagKey& tag, const char* one, const char* other) {
        const std::string value = header.text(tag);
        return value == one || value == other ? value : std::string();
    };
    history.burnedIn = oneOf(DCM_BurnedInAnnotation, "YES", "NO");
    history.lossy = lossyNow ? "01" : oneOf(DCM_LossyImageCompression, "00", "01");
    history.lossyRatio = header.values(DCM_LossyImageCompressionRatio);
    history.lossyMethod = header.values(DCM_LossyImageCompressionMethod);
}

}  // namespace

DicomRecords readRecords(const std::string& file, std::span<const std::uint8_t> bytes) {
    DcmFileFormat format;
    parseDicom(file, bytes, format, false);
    DcmDataset& set = *format.getDataset();
    // The UID is taken as stored; a character set that is not known leaves the texts as they are.
    set.convertToUTF8();
    const DicomHeader header(file, set);
    DicomRecords records;
    records.file = file;
    readStudy(header, records);
    readSeries(header, records);
    readImage(header, records);
    readHistory(header, DcmXfer(set.getOriginalXfer()).isLossy(), records.history);
    records.kind = header.text(DCM_Modality) == "CR" ? dcmStudy::CR : dcmStudy::DX;
    return records;
}

}  // namespace qvr::tool

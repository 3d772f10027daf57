// An exam's records as DICOM attributes: the way back from dicomRecords.cpp.
#include <dcmtk/config/osconfig.h>
#include <dcmtk/dcmdata/dcdatset.h>
#include <dcmtk/dcmdata/dcdeftag.h>
#include <dcmtk/dcmdata/dcuid.h>
#include <fmt/format.h>

#include "dicomAttributes.h"
#include "examDicom.h"

namespace qvr::tool {

namespace {

std::string nameOf(const CString& family, const CString& given) {
    const std::string text = family.GetString();
    return given.IsEmpty() ? text : text + '^' + given.GetString();
}

void putDate(DcmDataset& set, const DcmTagKey& dateTag, const DcmTagKey& timeTag, const COleDateTime& date) {
    if (date.GetStatus() != COleDateTime::valid) return;
    putText(set, dateTag, fmt::format("{:04}{:02}{:02}", date.GetYear(), date.GetMonth(), date.GetDay()));
    if (timeTag == DcmTagKey()) return;
    putText(set, timeTag, fmt::format("{:02}{:02}{:02}", date.GetHour(), date.GetMinute(), date.GetSecond()));
}

// Texts that are there.
void putTexts(DcmDataset& set, std::initializer_list<std::pair<DcmTagKey, std::string>> texts) {
    for (const auto& [tag, text] : texts)
        if (!text.empty()) putText(set, tag, text);
}

const char* sopClassOf(const StudyRecord& study, const SeriesRecord& series) {
    if (study.modality == dcmStudy::CR) return UID_ComputedRadiographyImageStorage;
    return series.attributes.Modality == "MG" ? UID_DigitalMammographyXRayImageStorageForPresentation
                                              : UID_DigitalXRayImageStorageForPresentation;
}

void putStudy(DcmDataset& set, const StudyRecord& record) {
    const auto& study = record.attributes;
    const auto patient = record.patientName.empty() ? nameOf(study.PatientFamilyName, study.PatientGivenName)
                                                    : record.patientName;
    putTexts(set, {{DCM_StudyInstanceUID, study.StudyInstanceUID.GetString()},
                   {DCM_ReferringPhysicianName,
                    nameOf(study.ReferringPhysicianFamilyName, study.ReferringPhysicianGivenName)},
                   {DCM_StudyID, study.StudyID.GetString()},
                   {DCM_AccessionNumber, study.AccessionNumber.GetString()},
                   {DCM_StudyDescription, study.StudyDescription.GetString()},
                   {DCM_AdmittingDiagnosesDescription, study.AdmittingDiagnosesDescription.GetString()},
                   {DCM_PatientName, patient},
                   {DCM_PatientID, study.PatientID.GetString()},
                   {DCM_PatientSex, study.PatientSex.GetString()},
                   {DCM_OtherPatientNames, nameOf(study.OtherPatientFamilyName, study.OtherPatientGivenName)},
                   {DCM_PatientSpeciesDescription, study.PatientSpeciesDescription.GetString()},
                   {DCM_PatientSexNeutered, study.PatientSexNeutered.GetString()},
                   {DCM_PatientBreedDescription, study.PatientBreedDescription.GetString()}});
    putDate(set, DCM_StudyDate, DCM_StudyTime, study.StudyDateTime);
    if (study.PatientBirthDateValid) putDate(set, DCM_PatientBirthDate, DcmTagKey(), study.PatientBirthDate);
}

void putSeries(DcmDataset& set, const QVR_ST_SERIES& series) {
    putTexts(set, {{DCM_Modality, series.Modality.GetString()},
                   {DCM_SeriesInstanceUID, series.SeriesInstanceUID.GetString()},
                   {DCM_SeriesNumber, fmt::format("{}", series.SeriesNumber)},
                   {DCM_PerformingPhysicianName,
                    nameOf(series.PerformingPhysicianFamilyName, series.PerformingPhysicianGivenName)},
                   {DCM_OperatorsName, nameOf(series.OperatorFamilyName, series.OperatorGivenName)},
                   {DCM_BodyPartExamined, series.BodyPartExamined.GetString()},
                   {DCM_SeriesDescription, series.SeriesDescription.GetString()},
                   {DCM_ViewPosition, series.ViewPosition.GetString()}});
    putDate(set, DCM_SeriesDate, DCM_SeriesTime, series.SeriesDateTime);
}

void putImage(DcmDataset& set, const QVR_ST_IMAGE& image) {
    const auto number = [](int value) { return value ? fmt::format("{}", value) : std::string(); };
    putTexts(set, {{DCM_SOPInstanceUID, image.SOPInstanceUID.GetString()},
                   {DCM_InstanceNumber, fmt::format("{}", image.InstanceNumber)},
                   {DCM_PatientOrientation, image.PatientOrientation.GetString()},
                   {DCM_KVP, number(image.KVP)},
                   {DCM_XRayTubeCurrent, number(image.XRayTubeCurrent)},
                   {DCM_ImageLaterality, image.ImageLaterality.GetString()}});
    if (image.Exposure > 0) putText(set, DCM_Exposure, fmt::format("{:.0f}", image.Exposure));
    if (image.ExposureTime > 0) putText(set, DCM_ExposureTime, fmt::format("{:.0f}", image.ExposureTime));
}

void putHistory(DcmDataset& set, const PixelHistory& history) {
    putTexts(set, {{DCM_BurnedInAnnotation, history.burnedIn},
                   {DCM_LossyImageCompression, history.lossy},
                   {DCM_LossyImageCompressionRatio, history.lossyRatio},
                   {DCM_LossyImageCompressionMethod, history.lossyMethod}});
}

}  // namespace

std::shared_ptr<DcmDataset> dataSetOf(const StudyRecord& study, const SeriesRecord& series) {
    auto set = std::make_shared<DcmDataset>();
    putText(*set, DCM_SpecificCharacterSet, "ISO_IR 192");
    putText(*set, DCM_SOPClassUID, sopClassOf(study, series));
    putStudy(*set, study);
    putSeries(*set, series.attributes);
    putImage(*set, series.image.attributes);
    putHistory(*set, series.image.history);
    return set;
}

}  // namespace qvr::tool

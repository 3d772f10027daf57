// Names and members of what an exam file holds, once for writing and reading.
//
// Each function calls `visit(name, member)` for every member of a record. Members of the ...IfAny functions are texts
// that the file has only where they are not empty: older exam files lack them.
#pragma once

#include "examFile.h"

namespace qvr::tool {

template <class Record, class Visit>
void visitStudy(Record& study, Visit&& visit) {
    visit("study_instance_uid", study.StudyInstanceUID);
    visit("study_date_time", study.StudyDateTime);
    visit("referring_physician_family_name", study.ReferringPhysicianFamilyName);
    visit("referring_physician_given_name", study.ReferringPhysicianGivenName);
    visit("study_id", study.StudyID);
    visit("accession_number", study.AccessionNumber);
    visit("study_description", study.StudyDescription);
    visit("admitting_diagnoses_description", study.AdmittingDiagnosesDescription);
    visit("patient_family_name", study.PatientFamilyName);
    visit("patient_given_name", study.PatientGivenName);
    visit("patient_birth_date", study.PatientBirthDate);
    visit("patient_birth_date_valid", study.PatientBirthDateValid);
    visit("patient_id", study.PatientID);
    visit("patient_sex", study.PatientSex);
    visit("other_patient_id", study.OtherPatientID);
    visit("other_patient_family_name", study.OtherPatientFamilyName);
    visit("other_patient_given_name", study.OtherPatientGivenName);
    visit("patient_species_description", study.PatientSpeciesDescription);
    visit("patient_sex_neutered", study.PatientSexNeutered);
    visit("patient_breed_description", study.PatientBreedDescription);
    visit("medical_record_locator", study.MedicalRecordLocator);
    visit("locked", study.Locked);
    visit("status", study.Status);
}

template <class Record, class Visit>
void visitNameIfAny(Record& study, Visit&& visit) {
    visit("patient_name", study.patientName);
}

template <class Record, class Visit>
void visitSeries(Record& series, Visit&& visit) {
    visit("modality", series.Modality);
    visit("series_instance_uid", series.SeriesInstanceUID);
    visit("series_number", series.SeriesNumber);
    visit("performing_physician_family_name", series.PerformingPhysicianFamilyName);
    visit("performing_physician_given_name", series.PerformingPhysicianGivenName);
    visit("operator_family_name", series.OperatorFamilyName);
    visit("operator_given_name", series.OperatorGivenName);
    visit("body_part_examined", series.BodyPartExamined);
    visit("series_date_time", series.SeriesDateTime);
    visit("series_description", series.SeriesDescription);
    visit("sent", series.Sent);
    visit("printed", series.Printed);
    visit("view_position", series.ViewPosition);
    visit("presentation_intent_type", series.PresentationIntentType);
}

/// The size of the image is that of its files, see PixelFileRecord.
template <class Record, class Visit>
void visitImage(Record& image, Visit&& visit) {
    visit("sop_instance_uid", image.SOPInstanceUID);
    visit("instance_number", image.InstanceNumber);
    visit("patient_orientation", image.PatientOrientation);
    visit("content_date_time", image.ContentDateTime);
    visit("rows", image.Height);
    visit("columns", image.Width);
    visit("bits_stored", image.BitsStored);
    visit("high_bit", image.HighBit);
    visit("pixel_spacing_um", image.PixelSpacing);
    visit("window_center", image.WindowCenter);
    visit("window_width", image.WindowWidth);
    visit("kvp", image.KVP);
    visit("xray_tube_current", image.XRayTubeCurrent);
    visit("exposure", image.Exposure);
    visit("exposure_time", image.ExposureTime);
    visit("image_laterality", image.ImageLaterality);
}

template <class Record, class Visit>
void visitDisplay(Record& image, Visit&& visit) {
    visit("exposure_index", image.exposureIndex);
    visit("curve", image.curve);
    visit("curve_k", image.curveK);
    visit("curve_c", image.curveC);
}

template <class Record, class Visit>
void visitHistoryIfAny(Record& history, Visit&& visit) {
    visit("burned_in_annotation", history.burnedIn);
    visit("lossy_image_compression", history.lossy);
    visit("lossy_image_compression_ratio", history.lossyRatio);
    visit("lossy_image_compression_method", history.lossyMethod);
}

template <class Record, class Visit>
void visitMark(Record& mark, Visit&& visit) {
    visit("text", mark.text);
    visit("font_height", mark.fontHeight);
    visit("left", mark.left);
    visit("top", mark.top);
}

}  // namespace qvr::tool

// Study: a request reaches the series at its position, and no other.
#include "examination.h"
#include "listed.h"

namespace {

TEST(Study, TakesEveryValueOfTheRecordAndNothingOfNull) {
    dcmStudy s;
    const auto values = [&s] {
        return listed(s.GetStudyInstanceUID(), s.GetStudyDateTime(), s.GetReferringPhysicianName(),
                      s.GetStudyID(), s.GetAccessionNumber(), s.GetStudyDescription(),
                      s.GetAdmittingDiagnosesDescription(), s.GetPatientName(), s.GetPatientBirthDate(),
                      s.IsPatientBirthDateValid(), s.GetPatientID(), s.GetPatientSex(), s.GetOtherPatientID(),
                      s.GetOtherPatientName(), s.GetPatientSpeciesDescription(), s.GetPatientSexNeutered(),
                      s.GetPatientBreedDescription(), s.GetMedicalRecordLocator(), s.IsLocked(),
                      s.GetStatus(), s.IsCRModality());
    };
    EXPECT_LT(std::abs(age(s.GetStudyDateTime())), kMoment);
    EXPECT_EQ(values(), listed("", s.GetStudyDateTime(), "", "", "", "", "", "", s.GetPatientBirthDate(), 0,
                               "", "", "", "", "", "", "", "", 0, -1, 1));
    const COleDateTime date(2.5), birth(11.0);
    const QVR_ST_STUDY record{"t1",  date,  "t3",  "t4",  "t5",  "t6",  "t7",  "t8",  "t9",  "", birth, 12,
                              "t13", "t14", "t15", "t16", "t17", "t18", "t19", "t20", "t21", 22, 23};
    const std::string all = "t1 2.5 t3^t4 t5 t6 t7 t8 t9 11 12 t13 t14 t15 t16^t17 t18 t19 t20 t21 22 23 0 ";
    EXPECT_EQ(s.Create(&record, dcmStudy::DX), 1);
    EXPECT_EQ(values(), all);
    EXPECT_EQ(s.Create(nullptr, dcmStudy::CR), 0);
    EXPECT_EQ(values(), all);
    s.SetAdmittingDiagnosesDescription(s.GetPatientName());
    EXPECT_STREQ(s.GetAdmittingDiagnosesDescription(), "t9");
}

TEST(Study, MakesSeriesOfItsModality) {
    const QVR_ST_SERIES record{};
    const QVR_ST_STUDY studyRecord{};
    dcmStudy study, other;
    dcmSeries* const first = study.CreateSeries(&record);  // CR until it is told otherwise
    study.Create(&studyRecord, dcmStudy::DX);
    dcmSeries* const second = study.CreateSeries(&record);
    EXPECT_NE(dynamic_cast<dcmCRSeries*>(first), nullptr);
    EXPECT_NE(dynamic_cast<dcmDXSeries*>(second), nullptr);
    EXPECT_EQ(study.CreateSeries(nullptr), nullptr);
    for (const int modality : {2, -1}) {
        study.Create(&studyRecord, static_cast<dcmStudy::Modality>(modality));
        EXPECT_EQ(study.CreateSeries(&record), nullptr);
    }
    EXPECT_EQ(listed(study.GetSeriesCount(), study.GetSeriesIndex(first), study.GetSeriesIndex(second),
                     study.GetSeriesIndex(nullptr), study.GetSeriesIndex(other.CreateSeries(&record))),
              "2 0 1 -1 -1 ");
    EXPECT_EQ(study.GetSeries(1), second);
    EXPECT_TRUE(!study.GetSeries(-1) && !study.GetSeries(2));
}

class StudyTest : public ExaminationTest {};

// Each request answers 1; later ones change what earlier ones have set only where they must.
TEST_F(StudyTest, RequestsGoToTheSeriesAtTheirPosition) {
    constexpr RECT square{0, 0, 37, 37};
    const auto pixels = ramp(20, 10);
    const QVR_ST_PROTOCOL protocol{};
    const auto state = [](const dcmSeries* series) {
        const rawImage& image = *raw(series);
        return listed(series->IsImageInRAM(), series->IsProtocolExist(), image.GetWidth(),
                      image.GetWindowWidth(), image.GetWindowCenter(), image.GetXOffset(), image.GetYOffset(),
                      image.GetXRatio());
    };
    dcmStudy& s = *m_study;
    CDC* const dc = &m_surface;
    const auto changes = [&](int i) {
        return std::vector<int>{s.CreateProtocol(i, &protocol),
                                s.UpdateImage(i, 20, 10, pixels.data(), 14, 13, 1, 2, &square, dc),
                                s.UpdateImage(i, &square, dc, 1),
                                s.UpdateImage(i, 500, 600, dc),
                                s.UpdateImage(i, 3.0f, 3.0f, &square, dc),
                                s.UpdateImage(i, 1, 2, &square, dc),
                                s.UpdateImage(i, dc),
                                s.GetProtocol(i) != nullptr,
                                s.GetDIB(i) != nullptr};
    };
    const auto leaves = [&](int i) {
        return std::vector<int>{s.SaveUndoData(i),         s.ReadUndoData(i, &square, dc),
                                s.WriteImageToHDD(i),      s.ReadImageInRAM(i, &square, dc),
                                s.IsImageExistInSeries(i), s.RejectImage(i)};
    };
    const dcmSeries* const series[] = {acquire(1), acquire(2), acquire(3)};
    const std::string before = state(series[0]);
    m_surface.drawn.clear();
    for (const int missing : {-1, 3, 2147483647}) {
        EXPECT_EQ(changes(missing), std::vector<int>(9, 0));
        EXPECT_EQ(leaves(missing), std::vector<int>(6, 0));
    }
    EXPECT_EQ(m_surface.drawn, std::vector<std::string>{});
    EXPECT_EQ(changes(1), std::vector<int>(9, 1));
    EXPECT_EQ(state(series[1]), "1 1 20 500 600 1 2 3 ");
    EXPECT_EQ(leaves(1), std::vector<int>(6, 1));
    EXPECT_FALSE(series[1]->IsImageExist());
    for (const int other : {0, 2}) EXPECT_EQ(state(series[other]), before);
}

TEST_F(StudyTest, CreatesImagesAndDrawsBlackWhereThereIsNoSeries) {
    plan();
    const QVR_ST_IMAGE record = imageRecord(1);
    EXPECT_EQ(m_study->CreateImage(1, &record, m_folder.path().c_str(), &kScreen, &m_surface), 0);
    EXPECT_EQ(m_study->GetDIB(0), nullptr);
    EXPECT_EQ(m_study->CreateImage(0, &record, m_folder.path().c_str(), &kScreen, &m_surface), 1);
    EXPECT_TRUE(resident(m_study->GetSeries(0), 1));
    EXPECT_EQ(m_exam.GetSeriesInRAMCount(), 0);
    m_study->DrawImage(0, &kScreen, &m_surface);
    EXPECT_EQ(m_surface.drawn.back(), "stretch 0,5 80x49");
    for (const int missing : {-1, 1}) {
        m_surface.drawn.clear();
        m_study->DrawImage(missing, &kScreen, &m_surface);
        EXPECT_EQ(m_surface.drawn, std::vector<std::string>{"fill 0,0,80,60"});
    }
    m_surface.onCall = [] { throw 1; };
    m_study->DrawImage(9, &kScreen, &m_surface);
    m_study->DrawImage(9, nullptr, &m_surface);
    m_study->DrawImage(9, &kScreen, nullptr);
}

}  // namespace

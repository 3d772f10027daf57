// Study: a request reaches the series at its position, and no other.
#include <functional>

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

using Study = dcmStudy;
struct Request {
    const char* name;
    std::function<bool(Study&, int, CDC*)> call;
    // Of the series it went to: image, in memory, protocol, width, window, y offset, x ratio.
    const char* after;
};

constexpr RECT kSquare{0, 0, 37, 37};
const std::vector<std::uint16_t> kPixels = ramp(20, 10);
const QVR_ST_PROTOCOL kProtocol{};
const char* const kUntouched = "1 1 0 37 4000 0 2.16216 ";

class RequestTest : public ExaminationTest, public testing::WithParamInterface<Request> {
protected:
    static std::string state(const dcmSeries& s) {
        const rawImage* const image = raw(&s);
        if (!image) return listed(s.IsImageExist(), 0, s.IsProtocolExist());
        return listed(1, s.IsImageInRAM(), s.IsProtocolExist(), image->GetWidth(), image->GetWindowWidth(),
                      image->GetYOffset(), image->GetXRatio());
    }
};

TEST_P(RequestTest, GoesToTheSeriesAtItsPosition) {
    const dcmSeries* const series[] = {acquire(1), acquire(2), acquire(3)};
    for (const int missing : {-1, 3, 2147483647}) {
        m_surface.drawn.clear();
        EXPECT_FALSE(GetParam().call(*m_study, missing, &m_surface));
        for (const dcmSeries* s : series) EXPECT_EQ(state(*s), kUntouched);
        EXPECT_EQ(m_surface.drawn, std::vector<std::string>{});
    }
    EXPECT_TRUE(GetParam().call(*m_study, 1, &m_surface));
    EXPECT_EQ(state(*series[0]), kUntouched);
    EXPECT_EQ(state(*series[1]), GetParam().after);
    EXPECT_EQ(state(*series[2]), kUntouched);
    EXPECT_EQ(counted(),
              std::vector<dcmSeries*>({m_study->GetSeries(0), m_study->GetSeries(1), m_study->GetSeries(2)}));
}
INSTANTIATE_TEST_SUITE_P(
    Kinds, RequestTest,
    testing::Values(
        Request{
            "protocol",
            [](Study& s, int i, CDC*) -> bool { return s.CreateProtocol(i, &kProtocol) && s.GetProtocol(i); },
            "1 1 1 37 4000 0 2.16216 "},
        Request{"pixels",
                [](Study& s, int i, CDC* dc) -> bool {
                    return s.UpdateImage(i, 20, 10, kPixels.data(), 14, 13, 1, 2, &kSquare, dc);
                },
                "1 1 0 20 1 0 1.85 "},
        Request{"display", [](Study& s, int i, CDC* dc) -> bool { return s.UpdateImage(i, &kSquare, dc, 1); },
                "1 1 0 37 4000 0 1 "},
        Request{"window", [](Study& s, int i, CDC* dc) -> bool { return s.UpdateImage(i, 500, 600, dc); },
                "1 1 0 37 500 0 2.16216 "},
        Request{"zoom",
                [](Study& s, int i, CDC* dc) -> bool { return s.UpdateImage(i, 3.0f, 3.0f, &kSquare, dc); },
                "1 1 0 37 4000 5 3 "},
        Request{"pan", [](Study& s, int i, CDC* dc) -> bool { return s.UpdateImage(i, 1, 2, &kSquare, dc); },
                "1 1 0 37 4000 2 2.16216 "},
        Request{"reconvert", [](Study& s, int i, CDC* dc) -> bool { return s.UpdateImage(i, dc); },
                kUntouched},
        Request{"reject", [](Study& s, int i, CDC*) -> bool { return s.RejectImage(i); }, "0 0 0 "},
        Request{"write", [](Study& s, int i, CDC*) -> bool { return s.WriteImageToHDD(i); },
                "1 0 0 37 4000 0 2.16216 "},
        Request{"read",
                [](Study& s, int i, CDC* dc) -> bool {
                    return s.WriteImageToHDD(i) && s.ReadImageInRAM(i, &kSquare, dc);
                },
                "1 1 0 37 4000 0 1 "},
        Request{"undo",
                [](Study& s, int i, CDC* dc) -> bool {
                    return s.SaveUndoData(i) && s.ReadUndoData(i, &kSquare, dc);
                },
                "1 1 0 37 4000 0 1 "},
        Request{"exists", [](Study& s, int i, CDC*) -> bool { return s.IsImageExistInSeries(i); },
                kUntouched},
        Request{"bitmap", [](Study& s, int i, CDC*) -> bool { return s.GetDIB(i); }, kUntouched}),
    nameOf);

class StudyTest : public ExaminationTest {};

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

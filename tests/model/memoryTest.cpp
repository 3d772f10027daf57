// No memory, at each allocation in turn: nothing crashes, resident pixels stay, and no record is half taken.
#include <functional>
#include <memory>
#include <string_view>

#include "examination.h"
#include "listed.h"
#include "support/refuseAllocation.h"

namespace {

// Longer than what a string holds without memory.
constexpr const char* kText = "a text that is long enough to be allocated";

class MemoryTest : public ExaminationTest {
protected:
    QVR_ST_IMAGE longRecord(int n) {
        QVR_ST_IMAGE record = imageRecord(n);
        record.PatientOrientation = record.ImageLaterality = kText;
        return record;
    }
};

// In an exam whose list of resident series has no place yet.
TEST_F(MemoryTest, WhatBecomesResidentIsCounted) {
    const QVR_ST_SERIES seriesRecord{};
    const QVR_ST_IMAGE record = storedRecord(1);
    for (int operation = 0; operation < 3; ++operation) {
        std::unique_ptr<dcmExam> exam;
        dcmSeries* series = nullptr;
        refuseEachAllocation(
            [&] {
                exam = std::make_unique<dcmExam>();
                exam->CreateStudy(&m_studyRecord, dcmStudy::DX);
                series = exam->CreateSeries(0, &seriesRecord);
                if (operation != 0) series->OpenImage(&record);
            },
            [&] {
                if (operation == 0) return exam->OpenImage(0, 0, &record, &kScreen, &m_surface) ? 1 : 0;
                if (operation == 1) return exam->ActivateImage(0, 0, &kScreen, &m_surface);
                return exam->ReadSeriesInRAM(series, &kScreen, &m_surface);
            },
            [&](int, bool refused) {
                const bool shown = series->GetThumb() != nullptr;
                EXPECT_TRUE(shown || refused);
                EXPECT_EQ(exam->GetSeriesInRAMCount(), shown ? 1 : 0) << operation;
            });
    }
}

// With a short and then a long text in the given fields, all texts are the old ones or all are the new ones.
template <class Record, class Create, class Texts>
void expectWhole(std::initializer_list<CString Record::*> fields, Create&& create, Texts&& texts) {
    Record before, after;
    for (const auto field : fields) before.*field = "old", after.*field = kText;
    const long runs = refuseEachAllocation([&] { create(before); }, [&] { return create(after); },
                                           [&](int created, bool refused) {
                                               EXPECT_EQ(created != 0, !refused);
                                               for (const std::string& text : texts())
                                                   EXPECT_EQ(text, created ? kText : "old");
                                           });
    EXPECT_GE(runs, 2);
}

TEST_F(MemoryTest, RecordsAreTakenWholeOrNotAtAll) {
    using Texts = std::vector<std::string>;
    using Study = QVR_ST_STUDY;
    using Series = QVR_ST_SERIES;
    using Protocol = QVR_ST_PROTOCOL;
    dcmStudy s;
    expectWhole<Study>(
        {&Study::StudyInstanceUID, &Study::PatientFamilyName, &Study::OtherPatientGivenName},
        [&](const Study& record) { return s.Create(&record, dcmStudy::CR); },
        [&] {
            return Texts{s.GetStudyInstanceUID(), s.GetPatientName(), s.GetOtherPatientName()};
        });
    dcmDXSeries x;
    expectWhole<Series>(
        {&Series::Modality, &Series::PerformingPhysicianFamilyName, &Series::OperatorGivenName,
         &Series::PresentationIntentType},
        [&](const Series& record) { return x.Create(&record); },
        [&] {
            return Texts{x.GetModality(), x.GetPerformingPhysicianName(), x.GetOperatorName(),
                         x.GetPresentationIntentType()};
        });
    expectWhole<Protocol>(
        {&Protocol::RelatedCodeValue, &Protocol::ThumbFilePath},
        [&](const Protocol& record) { return x.CreateProtocol(&record); },
        [&] {
            return Texts{x.GetProtocol()->GetRelatedCodeValue(), x.GetProtocol()->GetThumbFilePath()};
        });
    dcmWorklist w;
    expectWhole<QVR_ST_WORKLIST>(
        {&QVR_ST_WORKLIST::SPSAETitle, &QVR_ST_WORKLIST::PatientName},
        [&](const QVR_ST_WORKLIST& record) { return w.Create(&record); },
        [&] {
            return Texts{w.GetSPSAETitle(), w.GetPatientName()};
        });
}

TEST_F(MemoryTest, ListsGrowByWholeObjects) {
    const QVR_ST_STUDY study{.StudyInstanceUID = kText};
    const QVR_ST_SERIES series{.Modality = kText};
    const QVR_ST_WORKLIST entry{.PatientName = kText};
    dcmWorklist codes;
    int before = 0;
    const auto count = [&] {
        return m_exam.GetStudyCount() + m_study->GetSeriesCount() + m_exam.GetWorklistCount() +
               codes.GetSPSCodeCount();
    };
    const std::function<int()> operations[] = {
        [&] { return m_exam.CreateStudy(&study, dcmStudy::CR) ? 1 : 0; },
        [&] { return m_exam.CreateSeries(0, &series) ? 1 : 0; },
        [&] { return m_exam.CreateWorklist(&entry) ? 1 : 0; },
        [&] {
            codes.AddSPSCode(kText, kText, kText, kText);
            return count() - before;
        },
    };
    for (const auto& operation : operations) {
        before = count();
        const long runs = refuseEachAllocation([] {}, operation,
                                               [&](int created, bool refused) {
                                                   EXPECT_EQ(created != 0, !refused);
                                                   EXPECT_EQ(count(), before + created);
                                               });
        EXPECT_GE(runs, 2);
    }
    dcmCode out;
    const long runs = refuseEachAllocation([&] { out = dcmCode(); }, [&] { return codes.GetSPSCode(0, out); },
                                           [&](int copied, bool refused) {
                                               EXPECT_EQ(copied != 0, !refused);
                                               EXPECT_STREQ(out.GetCodeMeaning(), copied ? kText : "");
                                           });
    EXPECT_GE(runs, 4);
    EXPECT_STREQ(out.GetCodingSchemeVersion(), kText);
}

TEST(Memory, AFormattedTextIsWholeOrEmpty) {
    CString text;
    const long runs =
        refuseEachAllocation([&] { text = "before"; },
                             [&] {
                                 text.Format("%s and %s", kText, kText);
                                 return text.GetLength();
                             },
                             [&](int length, bool refused) { EXPECT_EQ(length == 0, refused); });
    EXPECT_GE(runs, 1);
}

}  // namespace

// Exam: positions, and which images are in memory. No acquired pixel may be lost, whatever fails.

#include "examination.h"
#include "listed.h"

namespace {

using List = std::vector<dcmSeries*>;

class ResidencyTest : public ExaminationTest {
protected:
    // Series 1 to `count`; all[0] is null.
    List acquireSeries(int count) {
        List all{nullptr};
        for (int n = 1; n <= count; ++n) all.push_back(acquire(n));
        return all;
    }
    int activate(const dcmSeries* series) {
        return m_exam.ActivateImage(0, position(series), &kScreen, &m_surface);
    }
};

TEST_F(ResidencyTest, AnAcquisitionEvictsTheNewestAndAnActivationTheOldest) {
    const List all = acquireSeries(4);
    EXPECT_EQ(m_exam.IsRAMFull(), 0);
    dcmSeries* const fifth = acquire(5);
    EXPECT_EQ(m_exam.IsRAMFull(), 1);
    dcmSeries* const sixth = acquire(6);
    EXPECT_EQ(counted(), List({all[1], all[2], all[3], all[4], sixth}));
    EXPECT_TRUE(writtenOut(fifth, 5));
    for (int n = 1; n <= 4; ++n) EXPECT_TRUE(resident(all[static_cast<std::size_t>(n)], n));
    EXPECT_TRUE(!m_exam.GetSeriesInRAM(-1) && !m_exam.GetSeriesInRAM(5));

    EXPECT_EQ(activate(fifth), 1);
    EXPECT_EQ(counted(), List({all[2], all[3], all[4], sixth, fifth}));
    EXPECT_TRUE(writtenOut(all[1], 1));
    EXPECT_TRUE(resident(fifth, 5));
}

TEST_F(ResidencyTest, AnAcquisitionMayBeOfTheImageThatLeaves) {
    const List all = acquireSeries(5);
    dcmSeries* const again = plan();
    QVR_ST_IMAGE record = imageRecord(6);
    record.PixelData = raw(all[5])->GetPixelData();
    EXPECT_TRUE(m_exam.CreateImage(0, 5, &record, m_folder.path().c_str(), &kScreen, &m_surface));
    EXPECT_TRUE(writtenOut(all[5], 5));
    EXPECT_TRUE(resident(again, 5));
    EXPECT_EQ(pixelsOf(rawCopy(6)), picture(5));
}

TEST_F(ResidencyTest, FailedWriteStopsAnActivationButNotAnAcquisition) {
    const List all = acquireSeries(6);
    const List before = counted();
    block(1);
    EXPECT_EQ(activate(all[5]), 0);
    EXPECT_EQ(counted(), before);
    EXPECT_TRUE(resident(all[1], 1));
    EXPECT_TRUE(writtenOut(all[5], 5));

    block(6);
    dcmSeries* const seventh = acquire(7);
    EXPECT_EQ(counted(), List({all[1], all[2], all[3], all[4], seventh}));
    EXPECT_TRUE(resident(all[6], 6));  // uncounted, but not lost
    EXPECT_EQ(m_exam.WriteSeriesToHDD(all[6]), 0);
    EXPECT_TRUE(resident(all[6], 6));
}

TEST_F(ResidencyTest, WhatCannotSucceedOrNeedsNoRoomEvictsNothing) {
    const List all = acquireSeries(6);
    const List before = counted();
    const QVR_ST_IMAGE record = imageRecord(7);
    const int planned = position(plan());
    const char* const folder = m_folder.path().c_str();
    EXPECT_FALSE(m_exam.CreateImage(0, planned, nullptr, folder, &kScreen, &m_surface));
    EXPECT_FALSE(m_exam.CreateImage(0, planned, &record, nullptr, &kScreen, &m_surface));
    EXPECT_FALSE(m_exam.CreateImage(0, planned, &record, folder, nullptr, &m_surface));
    EXPECT_FALSE(m_exam.CreateImage(0, planned + 1, &record, folder, &kScreen, &m_surface));
    EXPECT_FALSE(m_exam.CreateImage(-1, planned, &record, folder, &kScreen, &m_surface));
    EXPECT_FALSE(m_exam.OpenImage(0, planned, nullptr, &kScreen, &m_surface));
    EXPECT_FALSE(m_exam.OpenImage(0, 0, &record, &kScreen, &m_surface));  // has an image
    EXPECT_FALSE(m_exam.OpenImage(1, planned, &record, &kScreen, &m_surface));
    EXPECT_EQ(m_exam.ReadSeriesInRAM(all[5], nullptr, &m_surface), 0);
    EXPECT_EQ(listed(m_exam.ReadSeriesInRAM(nullptr, &kScreen, &m_surface), m_exam.WriteSeriesToHDD(nullptr)),
              "0 0 ");
    EXPECT_EQ(m_study->GetSeries(planned)->IsImageExist(), 0);
    EXPECT_EQ(m_exam.ActivateImage(0, planned + 1, &kScreen, &m_surface), 0);
    EXPECT_EQ(m_exam.ActivateImage(1, 0, &kScreen, &m_surface), 0);
    EXPECT_EQ(activate(m_study->GetSeries(planned)), 1);
    EXPECT_EQ(activate(all[3]), 1);
    const RECT minimised{};
    for (const RECT* noRoom : {static_cast<const RECT*>(nullptr), &minimised}) {
        EXPECT_EQ(m_exam.ActivateImage(0, position(all[5]), noRoom, &m_surface), 0);
        const QVR_ST_IMAGE stored = storedRecord(8);
        dcmSeries* const opened = plan();
        EXPECT_TRUE(m_exam.OpenImage(0, position(opened), &stored, noRoom, &m_surface));
        EXPECT_EQ(all[5]->IsImageInRAM() + opened->IsImageInRAM(), 0);
    }
    EXPECT_EQ(counted(), before);
}

TEST_F(ResidencyTest, OpenedImagesAreReadWhenTheyCanBe) {
    const List all = acquireSeries(5);
    dcmSeries *const read = plan(), *const shortFile = plan(), *const unread = plan();
    QVR_ST_IMAGE record = storedRecord(6);
    const dcmImage* const image = m_exam.OpenImage(0, position(read), &record, &kScreen, &m_surface);
    EXPECT_TRUE(image && image == read->GetDcmImage());
    EXPECT_EQ(counted(), List({all[1], all[2], all[3], all[4], read}));
    EXPECT_TRUE(resident(read, 6));
    EXPECT_TRUE(writtenOut(all[5], 5));

    record = storedRecord(8);
    EXPECT_NE(m_exam.OpenImage(0, position(unread), &record, nullptr, &m_surface), nullptr);
    EXPECT_EQ(m_exam.GetSeriesInRAMCount(), 5);  // without a rectangle nothing is read or evicted
    record = storedRecord(7);
    m_folder.file("image7.raw", ramp(kWidth, kHeight - 1));
    EXPECT_NE(m_exam.OpenImage(0, position(shortFile), &record, &kScreen, &m_surface), nullptr);
    EXPECT_EQ(listed(shortFile->IsImageInRAM(), unread->IsImageInRAM()), "0 0 ");
    EXPECT_EQ(counted(), List({all[1], all[2], all[3], all[4]}));
    EXPECT_EQ(pixelsOf(m_folder / "work6.raw"), picture(6));
}

TEST_F(ResidencyTest, AFailedAcquisitionStaysInMemoryUncounted) {
    const List all = acquireSeries(5);
    dcmSeries* const twelve = plan();
    QVR_ST_IMAGE record = imageRecord(6);
    record.BitsStored = 12;
    EXPECT_EQ(m_exam.CreateImage(0, 5, &record, m_folder.path().c_str(), &kScreen, &m_surface), nullptr);
    EXPECT_TRUE(resident(twelve, 6));
    EXPECT_TRUE(writtenOut(all[5], 5));
    EXPECT_EQ(counted(), List({all[1], all[2], all[3], all[4]}));
}

TEST_F(ResidencyTest, HostReadsBeyondTheLimitAndListSurvivesStaleAndDoubleEntries) {
    const List all = acquireSeries(6);
    EXPECT_EQ(m_exam.ReadSeriesInRAM(all[5], &kScreen, &m_surface), 1);
    EXPECT_EQ(m_exam.ReadSeriesInRAM(all[5], &kScreen, &m_surface), 0);
    EXPECT_EQ(m_exam.GetSeriesInRAMCount(), 6);
    EXPECT_EQ(m_exam.IsRAMFull(), 1);

    EXPECT_EQ(m_study->WriteImageToHDD(4), 1);  // behind the exam's back
    EXPECT_EQ(m_exam.GetSeriesInRAMCount(), 6);
    EXPECT_EQ(m_exam.ReadSeriesInRAM(all[5], &kScreen, &m_surface), 1);  // counted twice now
    EXPECT_EQ(m_exam.GetSeriesInRAMCount(), 7);
    EXPECT_EQ(m_study->RejectImage(0), 1);
    EXPECT_EQ(m_exam.GetSeriesInRAM(0), all[1]);  // an entry without an image
    m_exam.UpdateImageInRAM(&kScreen, &m_surface);
    m_exam.UpdateImageInRAM(nullptr, nullptr);
    EXPECT_EQ(m_study->WriteImageToHDD(1), 1);
    EXPECT_EQ(activate(all[2]), 0);  // the oldest cannot be written out
    acquire(7);                      // the newest is the double one
    EXPECT_TRUE(writtenOut(all[5], 5));
    EXPECT_EQ(m_exam.WriteSeriesToHDD(all[1]), 0);
    EXPECT_EQ(m_exam.RejectImage(0, 4), 1);
    for (const dcmSeries* entry : counted()) EXPECT_NE(entry, all[5]);
}

TEST_F(ResidencyTest, RejectionTakesTheSeriesFromTheListEvenWhenItRefuses) {
    const List all = acquireSeries(2);
    EXPECT_EQ(m_exam.RejectImage(0, 0), 1);
    EXPECT_EQ(counted(), List{all[2]});
    dcmSeries* const bare = plan();
    QVR_ST_IMAGE record = imageRecord(3);
    record.BitsStored = 12;
    bare->CreateImage(&record, m_folder.path().c_str(), &kScreen, &m_surface);
    bare->WriteImageToHDD();
    EXPECT_EQ(m_exam.RejectImage(0, position(bare)), 0);  // no thumbnail
    EXPECT_TRUE(bare->IsImageExist());
    EXPECT_EQ(listed(m_exam.RejectImage(0, 3), m_exam.RejectImage(1, 0), m_exam.RejectImage(0, -1)),
              "0 0 0 ");
    EXPECT_EQ(counted(), List{all[2]});
}

TEST_F(ResidencyTest, ANewRectangleFitsEveryCountedImage) {
    const List all = acquireSeries(6);
    all[1]->UpdateImage(5, 5, &kScreen, &m_surface);
    constexpr RECT screen{0, 0, 370, 300};
    m_exam.UpdateImageInRAM(&screen, &m_surface);
    for (const dcmSeries* series : counted()) {
        EXPECT_EQ(raw(series)->GetDIB()->InfoHeader->biWidth, 370);
        EXPECT_EQ(series->GetThumb()->InfoHeader->biWidth, 74);  // of 372 bytes
        EXPECT_EQ(raw(series)->GetXOffset(), 0);
    }
    EXPECT_FALSE(all[5]->IsImageInRAM());
}

TEST_F(ResidencyTest, ANewRectangleEndsThoughTheSurfaceCountsMore) {
    const List all = acquireSeries(2);
    int calls = 0;
    m_surface.onCall = [&] {
        if (++calls > 1000 || calls % 2 == 0) return;
        all[2]->WriteImageToHDD();
        m_exam.ReadSeriesInRAM(all[2], &kScreen, nullptr);
    };
    m_exam.UpdateImageInRAM(&kScreen, &m_surface);
    EXPECT_LT(calls, 100);
    EXPECT_TRUE(resident(all[2], 2));
}

// The palette of an image that was drawn last may still be selected when another one's is.
TEST_F(ResidencyTest, APaletteThatIsGoneIsNotSelectedAgain) {
    const List all = acquireSeries(2);
    for (const bool draws : {false, true}) {
        RecordingDC surface;
        const auto stretched = [&] {
            return !surface.drawn.empty() && surface.drawn.back().find("stretch") == 0;
        };
        surface.onCall = [&] {
            if (stretched()) throw std::runtime_error("surface");
        };
        if (draws) {
            ASSERT_EQ(m_exam.ReadSeriesInRAM(all[1], &kScreen, nullptr), 1);
        }
        m_exam.DrawImage(0, 0, &kScreen, &surface);
        ASSERT_EQ(surface.paletteEntries(), 256);
        surface.drawn.clear();
        surface.onCall = [&, calls = 0]() mutable {
            if (draws ? stretched() : ++calls == 2) all[1]->WriteImageToHDD();
        };
        draws ? all[2]->DrawImage(&kScreen, &surface)
              : static_cast<void>(all[2]->UpdateImage(&kScreen, &surface, 1));
        EXPECT_FALSE(all[1]->IsImageInRAM());
        EXPECT_EQ(surface.paletteEntries(), 0);
    }
}

TEST_F(ResidencyTest, RequestsGoByPosition) {
    const QVR_ST_PROTOCOL protocol{};
    acquire(1);
    const dcmProtocol* const made = m_exam.CreateProtocol(0, 0, &protocol);
    EXPECT_TRUE(made && made == m_study->GetSeries(0)->GetProtocol());
    EXPECT_TRUE(!m_exam.CreateProtocol(0, 0, nullptr) && !m_exam.CreateProtocol(0, 1, &protocol) &&
                !m_exam.CreateProtocol(1, 0, &protocol));
    const QVR_ST_WORKLIST entry{};
    const dcmWorklist* const queued = m_exam.CreateWorklist(&entry);
    EXPECT_TRUE(queued && m_exam.GetWorklist(0) == queued && !m_exam.GetWorklist(1));
    acquire(2);
    m_exam.SetLUT(0, 4, 3, 2);
    m_exam.SetLUT(1, 0, 0, 0);
    for (const int i : {0, 1}) {
        const rawImage* const image = raw(m_study->GetSeries(i));
        EXPECT_EQ(listed(image->GetLUTType(), image->GetLUTParamK(), image->GetLUTParamC()), "4 3 2 ");
    }
    m_surface.drawn.clear();
    m_exam.DrawImage(1, 0, &kScreen, &m_surface);
    EXPECT_EQ(m_surface.drawn, std::vector<std::string>{});
    m_exam.DrawImage(0, 1, &kScreen, &m_surface);
    EXPECT_EQ(m_surface.drawn.back(), "stretch 0,5 80x49");
}

TEST_F(ResidencyTest, DestroysSeriesFromElsewhereWithoutTouchingThem) {
    auto elsewhere = std::make_unique<dcmDXSeries>();
    const QVR_ST_IMAGE record = imageRecord(1);
    ASSERT_EQ(elsewhere->CreateImage(&record, m_folder.path().c_str(), &kScreen, &m_surface), 1);
    ASSERT_EQ(elsewhere->WriteImageToHDD(), 1);
    dcmExam exam;
    EXPECT_EQ(exam.ReadSeriesInRAM(elsewhere.get(), &kScreen, &m_surface), 1);
    elsewhere.reset();
    EXPECT_EQ(exam.GetSeriesInRAMCount(), 1);
}

}  // namespace

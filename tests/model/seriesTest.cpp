// Series: the image's coming and going, and the protocol's picture. What a failed step leaves is what counts here.
#include <functional>
#include <utility>

#include "examination.h"
#include "listed.h"
#include "reducedPictures.h"

namespace {

namespace fs = std::filesystem;

class SeriesTest : public ExaminationTest {
protected:
    int create(const QVR_ST_IMAGE& record) { return create(record, *m_series); }
    int create(const QVR_ST_IMAGE& record, dcmSeries& series) {
        return series.CreateImage(&record, m_folder.path().c_str(), &kScreen, &m_surface);
    }
    int protocol(const std::string& thumbFile) {
        QVR_ST_PROTOCOL record;
        record.ThumbFilePath = thumbFile.c_str();
        return m_series->CreateProtocol(&record);
    }
    dcmSeries* const m_series = plan();
};

std::string listedSeries(const dcmSeries& s) {
    return listed(s.GetModality(), s.GetSeriesInstanceUID(), s.GetSeriesNumber(),
                  s.GetPerformingPhysicianName(), s.GetOperatorName(), s.GetBodyPartExamined(),
                  s.GetSeriesDateTime(), s.GetSeriesDescription(), s.IsSent(), s.IsPrinted(), s.IsChanged(),
                  s.IsDeleted());
}

TEST_F(SeriesTest, TakesEveryValueOfTheRecordAndNothingOfNull) {
    dcmCRSeries cr;
    dcmDXSeries dx;
    EXPECT_EQ(listedSeries(cr), listed("", "", 0, "", "", "", cr.GetSeriesDateTime(), "", 0, 0, 0, 0));
    EXPECT_LT(std::abs(age(cr.GetSeriesDateTime())), kMoment);
    const QVR_ST_SERIES record{"t1",  "t2", 3,  "t4",  " t5", "", "t7", "t8", COleDateTime(9.5),
                               "t10", 11,   12, "t13", "t14"};
    for (dcmSeries* series : {static_cast<dcmSeries*>(&cr), static_cast<dcmSeries*>(&dx)}) {
        series->SetChanged(5);
        series->SetDeleted(6);
        EXPECT_EQ(series->Create(nullptr), 0);
        EXPECT_EQ(listed(series->IsChanged(), series->IsDeleted()), "5 6 ");
        EXPECT_EQ(series->Create(&record), 1);
        EXPECT_EQ(series->Create(nullptr), 0);
        EXPECT_EQ(listedSeries(*series), "t1 t2 3 t4^t5 t7 t8 9.5 t10 11 12 0 0 ");
    }
    EXPECT_STREQ(cr.GetViewPosition(), "t13");
    EXPECT_STREQ(dx.GetPresentationIntentType(), "t14");
}

TEST_F(SeriesTest, WithoutAnImageEverythingFails) {
    const auto pixels = ramp(5, 5);
    const auto& s = m_series;
    s->SetExposureIndex(3), s->SetLUT(1, 2, 3), s->CloseImage();
    EXPECT_EQ(listed(s->SaveUndoData(), s->ReadUndoData(&kScreen, &m_surface), s->WriteImageToHDD(),
                     s->ReadImageInRAM(&kScreen, &m_surface), s->IsImageInRAM(), s->IsImageBAKFileValid(),
                     s->GetImageBAKWidth(), s->GetImageBAKHeight(), s->IsImageExist(), s->RejectImage(),
                     s->GetExposureIndex(), s->IsProtocolExist(), s->CreateProtocol(nullptr),
                     s->OpenImage(nullptr)),
              "0 0 0 0 0 0 -1 -1 0 0 0 0 0 0 ");
    EXPECT_EQ(listed(s->UpdateImage(5, 5, pixels.data(), 14, 13, 1, 1, &kScreen, &m_surface),
                     s->UpdateImage(&kScreen, &m_surface, 1), s->UpdateImage(5, 5, &m_surface),
                     s->UpdateImage(1.0f, 1.0f, &kScreen, &m_surface),
                     s->UpdateImage(1, 1, &kScreen, &m_surface), s->UpdateImage(&m_surface), s->IsChanged()),
              "0 0 0 0 0 0 0 ");
    EXPECT_TRUE(!s->GetImageFilePath() && !s->GetImageBAKFilePath() && !s->GetDcmImage() &&
                !s->GetProtocol() && !s->GetThumb() && !s->GetPreview());
    s->DrawImage(&kScreen, nullptr);
    s->DrawImage(nullptr, &m_surface);
    EXPECT_EQ(m_surface.drawn, std::vector<std::string>{});
    s->DrawImage(&kScreen, &m_surface);
    EXPECT_EQ(m_surface.drawn, std::vector<std::string>{"fill 0,0,80,60"});
}

TEST_F(SeriesTest, AnAcquisitionMakesFilesDisplayAndPicturesOnce) {
    ASSERT_EQ(protocol(bitmapFile()), 1);
    const QVR_ST_IMAGE record = imageRecord(1);
    ASSERT_EQ(create(record), 1);
    EXPECT_TRUE(resident(m_series, 1));
    EXPECT_EQ(pixelsOf(rawCopy(1)), picture(1));
    EXPECT_EQ(contentOf(imageFile(1)), "(missing)");
    EXPECT_EQ(imageFile(1), m_series->GetImageFilePath());
    EXPECT_EQ(rawCopy(1), m_series->GetImageBAKFilePath());
    EXPECT_EQ(
        listed(m_series->IsImageBAKFileValid(), m_series->GetImageBAKWidth(), m_series->GetImageBAKHeight()),
        listed(1, kWidth, kHeight));
    EXPECT_EQ(m_series->GetSeriesDateTime(), record.ContentDateTime);
    EXPECT_TRUE(same(reference::thumbnail(*raw(m_series)->GetDIB()), m_series->GetThumb()));
    EXPECT_EQ(m_series->GetPreview(), nullptr);
    EXPECT_NE(dynamic_cast<dcmDXImage*>(m_series->GetDcmImage()), nullptr);

    const dcmImage* const image = m_series->GetDcmImage();
    const CDib* const thumb = m_series->GetThumb();
    EXPECT_EQ(create(imageRecord(2)), 0);
    const QVR_ST_IMAGE stored = storedRecord(3);
    EXPECT_EQ(m_series->OpenImage(&stored), 0);
    EXPECT_TRUE(resident(m_series, 1));
    EXPECT_EQ(m_series->GetDcmImage(), image);
    EXPECT_EQ(m_series->GetThumb(), thumb);
    EXPECT_EQ(contentOf(rawCopy(2)), "(missing)");
    m_series->SetExposureIndex(7);
    EXPECT_EQ(m_series->GetExposureIndex(), 7);
}

struct LateFailure {
    const char* name;
    bool pixelsKept, rawCopyWritten;
    std::function<void(QVR_ST_IMAGE&, RECT&, const TemporaryFolder&)> spoil;
};
class LateFailureTest : public SeriesTest, public testing::WithParamInterface<LateFailure> {
protected:
    bool rawCopyWritten() const {
        return fs::is_regular_file(rawCopy(1)) && pixelsOf(rawCopy(1)) == picture(1);
    }
};

TEST_P(LateFailureTest, KeepsTheImageAsFarAsItCame) {
    const COleDateTime before = m_series->GetSeriesDateTime();
    QVR_ST_IMAGE record = imageRecord(1);
    RECT screen = kScreen;
    GetParam().spoil(record, screen, m_folder);
    EXPECT_EQ(m_series->CreateImage(&record, m_folder.path().c_str(), &screen, &m_surface), 0);
    EXPECT_EQ(m_series->IsImageExist(), 1);
    EXPECT_EQ(m_series->GetSeriesDateTime(), before);
    EXPECT_EQ(m_series->GetDcmImage()->GetHeight(), kHeight);
    EXPECT_EQ(m_series->IsImageInRAM(), GetParam().pixelsKept);
    if (GetParam().pixelsKept) {
        EXPECT_TRUE(resident(m_series, 1));
    }
    EXPECT_EQ(rawCopyWritten(), GetParam().rawCopyWritten);
    EXPECT_EQ(m_series->GetThumb(), nullptr);
    EXPECT_EQ(create(imageRecord(2)), 0);
    EXPECT_EQ(m_series->RejectImage(), 0);  // no thumbnail
    EXPECT_EQ(rawCopyWritten(), GetParam().rawCopyWritten);
}
INSTANTIATE_TEST_SUITE_P(
    Steps, LateFailureTest,
    testing::Values(
        LateFailure{"noPixels", false, false, [](auto& r, auto&, auto&) { r.PixelData = nullptr; }},
        LateFailure{"folderIsAFile", true, false, [](auto&, auto&, auto& f) { f.file("Cache", "x"); }},
        LateFailure{"rawCopyIsAFolder", true, false,
                    [](auto&, auto&, auto& f) { fs::create_directories(f / "Cache/R.1.2.1.raw"); }},
        LateFailure{"nameIsAPath", true, false, [](auto& r, auto&, auto&) { r.SOPInstanceUID = "../1"; }},
        LateFailure{"twelveBits", true, true, [](auto& r, auto&, auto&) { r.BitsStored = 12; }},
        LateFailure{"emptyRectangle", true, true, [](auto&, auto& s, auto&) { s.right = 0; }},
        LateFailure{"noThumbnail", true, true,
                    [](auto&, auto& s, auto&) {
                        s = {0, 0, 7, 4};
                    }}),
    nameOf);

TEST_F(SeriesTest, OpenKeepsAnImageWithoutFilesAndAReadOneWithoutDisplay) {
    QVR_ST_IMAGE record = storedRecord(1);
    fs::remove(m_folder / "image1.raw");
    EXPECT_EQ(m_series->OpenImage(&record), 0);
    EXPECT_EQ(listed(m_series->IsImageExist(), m_series->OpenImage(&record)), "1 0 ");

    record = storedRecord(2);
    dcmCRSeries computed;
    EXPECT_EQ(computed.OpenImage(&record), 1);
    EXPECT_NE(dynamic_cast<dcmCRImage*>(computed.GetDcmImage()), nullptr);
    dcmSeries* const twelve = plan();
    record.BitsStored = 12;
    EXPECT_EQ(twelve->OpenImage(&record), 1);
    EXPECT_EQ(twelve->ReadImageInRAM(&kScreen, &m_surface), 0);
    EXPECT_TRUE(resident(twelve, 2));
    EXPECT_EQ(twelve->GetThumb(), nullptr);
}

TEST_F(SeriesTest, RejectionNeedsAThumbnailAndDeletesBothFiles) {
    const QVR_ST_IMAGE stored = storedRecord(2);
    ASSERT_EQ(m_series->OpenImage(&stored), 1);
    EXPECT_EQ(m_series->RejectImage(), 0);
    EXPECT_TRUE(m_series->IsImageExist() && fs::exists(m_folder / "image2.raw") &&
                fs::exists(m_folder / "copy2.raw"));

    dcmSeries* const series = plan();
    const QVR_ST_IMAGE record = imageRecord(1);
    constexpr RECT large{0, 0, 1200, 900};
    ASSERT_EQ(series->CreateImage(&record, m_folder.path().c_str(), &large, &m_surface), 1);
    ASSERT_EQ(series->WriteImageToHDD(), 1);
    const CDib* const preview = series->GetPreview();
    ASSERT_NE(preview, nullptr);
    series->SetChanged(5);
    EXPECT_EQ(series->RejectImage(), 1);
    EXPECT_FALSE(fs::exists(imageFile(1)) || fs::exists(rawCopy(1)));
    EXPECT_TRUE(!series->GetDcmImage() && !series->GetThumb());
    EXPECT_EQ(series->GetPreview(), preview);
    EXPECT_EQ(listed(series->IsChanged(), m_study->GetSeriesCount()), "5 2 ");
    EXPECT_EQ(series->RejectImage(), 0);
    EXPECT_EQ(series->CreateImage(&record, m_folder.path().c_str(), &kScreen, &m_surface), 1);  // a repeat
}

// A protocol's file gives its bitmap, an empty bitmap, or none.
TEST_F(SeriesTest, AProtocolsPictureIsShownWhileThereIsNoImage) {
    const struct {
        std::string path;
        bool any;
        int width;
    } files[] = {
        {bitmapFile(), true, 5}, {"", false, 0}, {m_folder.file("a.bmp", "BM, but no bitmap"), true, 0}};
    for (const auto& file : files) {
        SCOPED_TRACE(file.path);
        const auto expectProtocolThumb = [&] {
            EXPECT_EQ(m_series->GetThumb() != nullptr, file.any);
            EXPECT_EQ(reference::pictureOf(m_series->GetThumb()).width, file.width);
        };
        ASSERT_EQ(protocol(bitmapFile()), 1);
        EXPECT_EQ(protocol(file.path), 1);
        EXPECT_EQ(file.path, m_series->GetProtocol()->GetThumbFilePath());
        expectProtocolThumb();
        ASSERT_EQ(create(imageRecord(1)), 1);
        const CDib* const thumb = m_series->GetThumb();
        EXPECT_EQ(protocol(file.path), 1);
        EXPECT_EQ(m_series->GetThumb(), thumb);
        EXPECT_EQ(m_series->RejectImage(), 1);
        expectProtocolThumb();
    }
}

TEST_F(SeriesTest, DrawingSurvivesASurfaceThatThrowsRebuildsOrRejectsTheImage) {
    const std::function<void(dcmSeries&)> operations[] = {
        [&](auto& s) { s.DrawImage(&kScreen, &m_surface); },
        [&](auto& s) { s.UpdateImage(&kScreen, &m_surface, 1); },
        [&](auto& s) { s.UpdateImage(3000, 2000, &m_surface); },
        [&](auto& s) { s.UpdateImage(2.0f, 2.0f, &kScreen, &m_surface); },
        [&](auto& s) { s.UpdateImage(9, 7, ramp(9, 7).data(), 14, 13, 0, 0, &kScreen, &m_surface); },
        [&](auto& s) { s.UpdateImage(&m_surface); },
    };
    int n = 1;
    for (const auto& operation : operations)
        for (const int call : {1, 2, 3, 4}) {
            dcmSeries* const series = acquire(++n);
            m_surface.onCall = [] { throw std::runtime_error("surface"); };
            EXPECT_NO_THROW(operation(*series));
            m_surface.onCall = [&] { raw(series)->BuildDisplayImage(&kScreen, nullptr, 1); };
            EXPECT_NO_THROW(operation(*series));
            int calls = 0;
            m_surface.onCall = [&] {
                if (++calls == call) series->RejectImage();
            };
            EXPECT_NO_THROW(operation(*series));
            m_surface.onCall = [] {};
            m_exam.RejectImage(0, position(series));
        }
    m_surface.onCall = [] { throw std::runtime_error("surface"); };
    EXPECT_NO_THROW(plan()->DrawImage(&kScreen, &m_surface)) << "black, without an image";
}

// The raw image that a host works with is the entity's; what it stands in must not end before the call does.
TEST_F(SeriesTest, ARawImageOutlivesTheCallInWhichItIsRejected) {
    const std::string target = m_folder / "out.raw";
    std::vector<std::uint16_t> pixels(kWidth * kHeight);
    class Surface : public RecordingDC {
    public:
        CSize GetTextExtent(const char*, int) override {
            onCall();
            return {5, 5};
        }
    } surface;
    const std::function<void(rawImage&)> operations[] = {
        [&](auto& i) { i.AddMark("L", &kScreen, &surface); },
        [&](auto& i) { i.InflateMark(0, &kScreen, &surface); },
        [&](auto& i) { i.MoveMark(0, 1, 1, &kScreen, &surface); },
        [&](auto& i) {
            i.PtInMarkRect({-9, -9}, &surface);
        },
        [&](auto& i) { i.Draw(&kScreen, &surface); },
        [&](auto& i) { i.BuildDisplayImage(&kScreen, &surface, 1); },
        [&](auto& i) { i.WriteMark(kWidth, kHeight, pixels.data(), 14, &surface); },
        [&](auto& i) { i.WriteFileForPRES(target.c_str(), &surface); },
    };
    int n = 1;
    for (const auto& operation : operations) {
        dcmSeries* const series = acquire(++n);
        ASSERT_EQ(raw(series)->AddMark("L", &kScreen, &surface), 1);
        bool called = false;
        surface.onCall = [&] {
            if (!std::exchange(called, true)) series->RejectImage();
        };
        operation(*raw(series));
        surface.onCall = [] {};
        EXPECT_TRUE(called) << "operation " << n - 2;
        EXPECT_FALSE(series->IsImageExist());
    }
}

// Success, the pictures and the date belong to the image that the operation began with.
TEST_F(SeriesTest, AnImageThatIsReplacedWhileItIsMadeHasNotBeenMade) {
    constexpr RECT large{0, 0, 1100, 700};  // with a preview
    const char* const folder = m_folder.path().c_str();
    const auto record = imageRecord(1);
    const auto first = m_acquired;
    const auto other = imageRecord(2);
    dcmSeries* const alone = plan();
    ASSERT_EQ(alone->CreateImage(&other, folder, &large, nullptr), 1);
    for (const bool replaces : {false, true})
        for (int call = 1;; ++call) {
            dcmSeries* const series = plan();
            auto begun = record;
            begun.PixelData = first.data();
            int calls = 0;
            bool rejected = false;
            m_surface.onCall = [&] {
                if (++calls != call) return;
                rejected = series->RejectImage() == 1;
                if (replaces && rejected) series->CreateImage(&other, folder, &large, nullptr);
            };
            const int made = series->CreateImage(&begun, folder, &large, &m_surface);
            m_surface.onCall = [] {};
            if (calls < call) break;
            EXPECT_EQ(made, !rejected) << call;
            EXPECT_EQ(series->IsImageExist(), !rejected || replaces);
            if (rejected && !replaces) {
                EXPECT_TRUE(!series->GetThumb() && !series->GetPreview());
            }
            if (!rejected || !replaces) continue;
            EXPECT_TRUE(resident(series, 2));
            EXPECT_EQ(reference::pictureOf(series->GetThumb()), reference::pictureOf(alone->GetThumb()));
            EXPECT_EQ(reference::pictureOf(series->GetPreview()), reference::pictureOf(alone->GetPreview()));
            EXPECT_EQ(series->GetSeriesDateTime(), other.ContentDateTime);
        }
}

TEST_F(SeriesTest, PicturesOfNewerPixelsStay) {
    constexpr RECT large{0, 0, 1100, 700};
    dcmSeries* const series = acquire(1);
    for (int call = 1, calls = call; calls >= call; ++call) {
        calls = 0;
        const auto pixels = ramp(kWidth, kHeight, call);
        m_surface.onCall = [&] {
            if (++calls == call)
                series->UpdateImage(kWidth, kHeight, pixels.data(), 14, 13, 400, 300, &large, nullptr);
        };
        series->UpdateImage(&large, &m_surface, 1);
        m_surface.onCall = [] {};
        const CDib& display = *raw(series)->GetDIB();
        EXPECT_EQ(reference::pictureOf(series->GetThumb()), reference::thumbnail(display)) << call;
        EXPECT_EQ(reference::pictureOf(series->GetPreview()), reference::preview(display)) << call;
    }
}

TEST_F(SeriesTest, APictureMayBeMadeOfItself) {
    class Host : public dcmDXSeries {
    public:
        int reduceThumb() { return UpdateThumb(GetThumb(), nullptr); }
        int reducePreview() { return UpdatePreview(GetPreview(), nullptr); }
    } host;
    const auto record = imageRecord(1);
    constexpr RECT large{0, 0, 1900, 1300};
    ASSERT_EQ(host.CreateImage(&record, m_folder.path().c_str(), &large, nullptr), 1);
    const auto expected = reference::thumbnail(*host.GetThumb());
    EXPECT_EQ(host.reduceThumb(), 1);
    EXPECT_EQ(reference::pictureOf(host.GetThumb()), expected);
    EXPECT_EQ(host.reducePreview(), 0) << "it is too small for another";
    EXPECT_EQ(host.GetPreview(), nullptr);
}

TEST_F(SeriesTest, AnImageThatIsReplacedWhileItIsChangedHasNotBeenChanged) {
    const auto pixels = ramp(9, 7);
    for (int call = 1, calls = call; calls >= call; ++call) {
        dcmSeries* const series = acquire(1);
        const auto otherRecord = imageRecord(2);
        calls = 0;
        bool replaced = false;
        m_surface.onCall = [&] {
            if (++calls == call) replaced = series->RejectImage() && create(otherRecord, *series);
        };
        const int changed = series->UpdateImage(9, 7, pixels.data(), 14, 13, 0, 0, &kScreen, &m_surface);
        m_surface.onCall = [] {};
        EXPECT_EQ(changed, !replaced) << call;
        EXPECT_EQ(series->IsChanged(), changed);
        EXPECT_TRUE(!replaced || resident(series, 2));
        m_exam.RejectImage(0, position(series));
    }
}

// A host's own kind of image: its raw image may be its own or none.
class HostSeries : public dcmCRSeries {
public:
    explicit HostSeries(std::shared_ptr<dcmImage> image) : m_image(std::move(image)) {}
    int CreateImage(const QVR_ST_IMAGE* record, const char* directory, const RECT* rectangle,
                    CDC* surface) override {
        return createImage(std::move(m_image), record, directory, rectangle, surface);
    }

private:
    std::shared_ptr<dcmImage> m_image;
};

TEST_F(SeriesTest, AnEntityWithoutARawImageIsNoImage) {
    class Bare : public dcmCRImage {
        rawImage* GetRawImage() override { return nullptr; }
    };
    HostSeries series(std::make_shared<Bare>());
    const auto record = imageRecord(1);
    EXPECT_EQ(series.CreateImage(&record, m_folder.path().c_str(), &kScreen, &m_surface), 0);
    EXPECT_EQ(series.UpdateImage(9, 9, &m_surface) + series.UpdateImage(&m_surface), 0);
    EXPECT_EQ(series.WriteImageToHDD() + series.RejectImage() + series.IsImageInRAM(), 0);
}

TEST_F(SeriesTest, ARawImageOfTheHostsOutlivesTheCallInWhichItIsRejected) {
    class Own : public dcmCRImage {
        int Create(const QVR_ST_IMAGE* record) override {
            auto own = newRecord(kWidth, kHeight, {});
            own.PixelData = record->PixelData;
            return dcmCRImage::Create(record) && m_own.Create(&own);
        }
        rawImage* GetRawImage() override { return &m_own; }
        rawImage m_own;
    };
    for (const bool draws : {false, true}) {
        HostSeries series(std::make_shared<Own>());
        const auto record = imageRecord(1);
        ASSERT_EQ(series.CreateImage(&record, m_folder.path().c_str(), &kScreen, nullptr), 1);
        m_surface.onCall = [&] { series.RejectImage(); };
        draws ? series.DrawImage(&kScreen, &m_surface)
              : static_cast<void>(series.UpdateImage(2.0f, 2.0f, &kScreen, &m_surface));
        m_surface.onCall = [] {};
        EXPECT_FALSE(series.IsImageExist());
    }
}

TEST_F(SeriesTest, NullArgumentsAreRefusedBeforeAnImageIsMade) {
    const QVR_ST_IMAGE record = imageRecord(1);
    const char* const folder = m_folder.path().c_str();
    EXPECT_EQ(m_series->CreateImage(nullptr, folder, &kScreen, &m_surface), 0);
    EXPECT_EQ(m_series->CreateImage(&record, nullptr, &kScreen, &m_surface), 0);
    EXPECT_EQ(m_series->CreateImage(&record, folder, nullptr, &m_surface), 0);
    EXPECT_EQ(m_series->IsImageExist(), 0);
    EXPECT_TRUE(fs::is_empty(folder));
    EXPECT_EQ(m_series->CreateImage(&record, folder, &kScreen, nullptr), 1);  // the surface may be missing
    ASSERT_EQ(m_series->WriteImageToHDD(), 1);
    EXPECT_EQ(m_series->ReadImageInRAM(nullptr, &m_surface), 0);
    EXPECT_EQ(m_series->IsImageInRAM(), 0);
}

}  // namespace

// Image entity, thumbnail and preview.
#include "examination.h"
#include "listed.h"
#include "qvr/model/detail/thumbnail.h"
#include "reducedPictures.h"
#include "support/recordingDC.h"

namespace {

// --- image entity -------------------------------------------------------------------------------------------------

std::string listedImage(const dcmImage& i) {
    return listed(i.GetInstanceNumber(), i.GetPatientOrientation(), i.GetContentDateTime(), i.GetHeight(),
                  i.GetWidth(), i.GetBitsStored(), i.GetHighBit(), i.GetSOPInstanceUID(), i.GetPixelSpacing(),
                  i.GetWindowCenter(), i.GetWindowWidth(), i.GetKVP(), i.GetXRayTubeCurrent(),
                  i.GetExposure(), i.GetExposureTime());
}

class ImageEntityTest : public ExaminationTest {
protected:
    const std::vector<std::uint16_t> m_pixels = ramp(5, 4);
    const QVR_ST_IMAGE m_record{.InstanceNumber = 1,
                                .PatientOrientation = "t2",
                                .ContentDateTime = COleDateTime(3.5),
                                .Height = 4,
                                .Width = 5,
                                .BitsStored = 14,
                                .HighBit = 7,
                                .PixelData = m_pixels.data(),
                                .SOPInstanceUID = "t9",
                                .PixelSpacing = 10,
                                .WindowCenter = 11,
                                .WindowWidth = 12,
                                .KVP = 13,
                                .XRayTubeCurrent = 14,
                                .Exposure = 15.5,
                                .ExposureTime = 16.5,
                                .BAKWidth = 17,
                                .BAKHeight = 18,
                                .FilePath = m_folder.file("image.raw", m_pixels).c_str(),
                                .BAKFilePath = "copy",
                                .WorkFilePath = "work",
                                .ImageLaterality = "t22"};
    const std::string m_attributes = "1 t2 3.5 4 5 14 7 t9 10 11 12 13 14 15.5 16.5 ";
};

TEST_F(ImageEntityTest, KindsDifferInTheirStorageClass) {
    dcmCRImage cr;
    EXPECT_EQ(listed(cr.GetSOPClassUID(), cr.GetBitsAllocated(), cr.GetExposureIndex()),
              "1.2.840.10008.5.1.4.1.1.1 16 0 ");
    EXPECT_STREQ(dcmDXImage().GetSOPClassUID(), "1.2.840.10008.5.1.4.1.1.1.1");
    EXPECT_STREQ(dcmImage().GetSOPClassUID(), "");
    EXPECT_EQ(cr.GetRawImage(), nullptr);
    EXPECT_LT(std::abs(age(cr.GetContentDateTime())), kMoment);
    EXPECT_EQ(listedImage(cr), listed(0, "", cr.GetContentDateTime(), 0, 0, 0, 0, "", 0, 0, 0, 0, 0, 0, 0));
}

TEST_F(ImageEntityTest, CreateAndOpenTakeTheRecordOnce) {
    dcmDXImage created, opened;
    dcmCRImage computed;
    EXPECT_EQ(created.Create(nullptr) + computed.Create(nullptr), 0);
    EXPECT_EQ(opened.Open(nullptr) + computed.Open(nullptr), 0);
    EXPECT_EQ(created.GetRawImage(), nullptr);
    ASSERT_EQ(created.Create(&m_record), 1);
    ASSERT_EQ(opened.Open(&m_record), 1);
    const rawImage* const first = created.GetRawImage();
    const QVR_ST_IMAGE other{.Height = 1, .Width = 1, .PixelData = m_pixels.data(), .ImageLaterality = "R"};
    for (dcmDXImage* image : {&created, &opened}) {
        EXPECT_EQ(image->Create(&other), 0);
        EXPECT_EQ(image->Open(&m_record), 0);
        EXPECT_EQ(listedImage(*image), m_attributes);
        EXPECT_STREQ(image->GetImageLaterality(), "t22");
    }
    EXPECT_EQ(created.GetRawImage(), first);
    EXPECT_TRUE(samePicture(m_pixels, first->GetPixelData(), 5, 4));
    EXPECT_EQ(listed(first->GetBAKWidth(), first->GetBAKHeight(), first->GetFilePath()), "5 4  ");
    const rawImage* const stored = opened.GetRawImage();
    EXPECT_EQ(listed(stored->GetBAKWidth(), stored->GetBAKHeight(), stored->GetBAKFilePath()), "17 18 copy ");
    EXPECT_STREQ(stored->GetFilePath(), m_record.FilePath);
    EXPECT_EQ(stored->IsReadInRAM(), 0);
}

TEST_F(ImageEntityTest, AFailureKeepsAttributesAndRawImageButNoLaterality) {
    QVR_ST_IMAGE record = m_record;
    record.PixelData = nullptr;
    record.FilePath = "nowhere";
    dcmDXImage created, opened;
    EXPECT_EQ(created.Create(&record), 0);
    EXPECT_EQ(opened.Open(&record), 0);
    for (dcmDXImage* image : {&created, &opened}) {
        EXPECT_NE(image->GetRawImage(), nullptr);
        EXPECT_EQ(listed(image->GetHeight(), image->GetWidth(), image->GetImageLaterality()), "4 5  ");
    }
}

TEST_F(ImageEntityTest, WindowIsTheRawImages) {
    dcmCRImage image;
    image.SetWindowWidth(100);
    image.SetWindowCenter(200);
    EXPECT_EQ(listed(image.GetWindowWidth(), image.GetWindowCenter()), "100 200 ");
    QVR_ST_IMAGE record = m_record;
    record.WindowWidth = record.WindowCenter = 0;
    ASSERT_EQ(image.Create(&record), 1);
    EXPECT_EQ(image.GetWindowWidth(), image.GetRawImage()->GetWindowWidth());
    EXPECT_GT(image.GetWindowWidth(), 0);  // the automatic one
    image.GetRawImage()->SetWindowWidth(4000);
    image.GetRawImage()->SetWindowCenter(-5);
    image.SetWindowWidth(100);
    image.SetWindowCenter(200);
    EXPECT_EQ(listed(image.GetWindowWidth(), image.GetWindowCenter()), "4000 -5 ");
}

// --- thumbnail and preview ----------------------------------------------------------------------------------------

// A bitmap whose bytes all differ from their neighbours, those of the padding too.
std::unique_ptr<CDib> display(int width, int height) {
    auto bitmap = std::make_unique<CDib>(width, height, 8);
    bitmap->ComputeMetrics();
    EXPECT_TRUE(bitmap->CreateSection(nullptr));
    unsigned state = 1;
    for (std::uint32_t i = 0; i < bitmap->ImageSize; ++i) {
        state = state * 1664525 + 1013904223;
        bitmap->Bits[i] = static_cast<std::uint8_t>(state >> 24);
    }
    return bitmap;
}

struct Reduction {
    const char* name;
    int width, height;
    CSize thumb, preview;
};

TEST(ReductionTest, EqualsTheReference) {
    const Reduction rows[] = {{"w1000", 1000, 800, {200, 160}, {600, 480}},
                              {"w2000", 2000, 2500, {400, 500}, {479, 600}},
                              {"w775", 775, 775, {155, 155}, {600, 599}},  // 776 bytes a row
                              {"paddedRowsCount", 998, 602, {200, 120}, {600, 361}},
                              {"pixels600000", 1000, 600, {200, 120}, {0, 0}},
                              {"flat", 60001, 11, {12000, 2}, {0, 0}},  // the preview would have no row
                              {"smallest", 2, 5, {0, 0}, {0, 0}},       // 4 bytes a row
                              {"low", 100, 4, {0, 0}, {0, 0}}};
    for (const Reduction& row : rows) {
        SCOPED_TRACE(row.name);
        const auto source = display(row.width, row.height);
        const auto thumb = qvr::makeThumbnail(source.get(), nullptr);
        const auto preview = qvr::makePreview(source.get(), nullptr);
        const auto size = [](const auto& bitmap) {
            const auto picture = reference::pictureOf(bitmap.get());
            return CSize{picture.width, picture.height};
        };
        EXPECT_EQ(size(thumb), row.thumb);
        EXPECT_EQ(size(preview), row.preview);
        if (row.thumb != CSize{}) {
            EXPECT_TRUE(same(reference::thumbnail(*source), thumb.get()));
        }
        EXPECT_TRUE(same(reference::preview(*source), preview.get()));
    }
}

TEST(ReductionTest, IsGreyAndRefusesAnUnusableBitmap) {
    const auto source = display(50, 50);
    RecordingDC surface;
    int calls = 0;
    surface.onCall = [&] { ++calls; };
    const auto thumb = qvr::makeThumbnail(source.get(), &surface);
    EXPECT_GT(calls, 0);  // its palette is realized
    ASSERT_EQ(thumb->ColorTableEntries, 256);
    EXPECT_EQ(
        listed(+thumb->ColorTable[9].rgbBlue, +thumb->ColorTable[9].rgbGreen, +thumb->ColorTable[9].rgbRed),
        "9 9 9 ");
    source->InfoHeader->biWidth = 60;
    EXPECT_EQ(qvr::makeThumbnail(source.get(), nullptr), nullptr);
    EXPECT_EQ(qvr::makePreview(source.get(), nullptr), nullptr);
    EXPECT_EQ(qvr::makeThumbnail(nullptr, nullptr), nullptr);
}

}  // namespace

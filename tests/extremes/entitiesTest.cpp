// Extreme arguments for series, studies, examination, records and the rest of the images: what is out of range or null is
// refused and changes nothing.
#include <gtest/gtest.h>
#include <qvr/qvr.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "extremes.h"
#include "tests/support/temporaryFolder.h"

namespace {

constexpr RECT kRectangle{0, 0, 16, 12};

// An examination with one resident image of 3 x 2 pixels, all 500.
class EntityExtremes : public testing::Test {
protected:
    EntityExtremes() {
        record.Width = 3;
        record.Height = 2;
        record.BitsStored = 14;
        record.PixelData = pixels.data();
        record.SOPInstanceUID = "1.2.3";
        study = exam.CreateStudy(&studyRecord, dcmStudy::DX);
        series = exam.CreateSeries(0, &seriesRecord);
        EXPECT_TRUE(exam.CreateImage(0, 0, &record, folder.path().c_str(), &kRectangle, &surface));
    }
    ~EntityExtremes() override { series->RejectImage(); }

    bool untouched() const {
        rawImage* const raw = series->GetDcmImage()->GetRawImage();
        return raw && raw->GetWidth() == 3 && raw->GetHeight() == 2 && raw->GetPixelData() &&
               std::memcmp(raw->GetPixelData(), pixels.data(), pixels.size() * 2) == 0;
    }

    const TemporaryFolder folder;
    const std::vector<std::uint16_t> pixels = std::vector<std::uint16_t>(6, 500);
    QVR_ST_STUDY studyRecord;
    QVR_ST_SERIES seriesRecord;
    QVR_ST_IMAGE record;
    CRasterDC surface{16, 12};
    dcmExam exam;
    dcmStudy* study = nullptr;
    dcmSeries* series = nullptr;
};

// Both zoom ratios at 0 are the fitted view; otherwise both are finite and above 0.
bool isZoom(float x, float y) {
    const auto usable = [](float ratio) { return std::isfinite(ratio) && ratio > 0; };
    return (x == 0 && y == 0) || (usable(x) && usable(y));
}

TEST_F(EntityExtremes, ViewsOfASeries) {
    rawImage* const raw = series->GetDcmImage()->GetRawImage();
    for (const float x : kRatios)
        for (const float y : kRatios) {
            const float before[] = {raw->GetXRatio(), raw->GetYRatio()};
            const int done = series->UpdateImage(x, y, &kRectangle, &surface);
            EXPECT_TRUE(isZoom(x, y) || !done) << x << ", " << y;
            if (!isZoom(x, y)) {
                EXPECT_EQ(raw->GetXRatio(), before[0]);
                EXPECT_EQ(raw->GetYRatio(), before[1]);
            }
            EXPECT_TRUE(isZoom(x, y) || !study->UpdateImage(0, x, y, &kRectangle, &surface));
        }
    for (const int a : kInts)
        for (const int b : kInts) {
            series->UpdateImage(a, b, &kRectangle, &surface);
            series->UpdateImage(a, b, &surface);
            study->UpdateImage(0, a, b, &kRectangle, &surface);
            study->UpdateImage(0, a, b, &surface);
            series->SetLUT(a, b, -(a / 2));
            study->SetLUT(a, b, a);
            series->UpdateImage(&surface);
            series->SetExposureIndex(a);
            EXPECT_EQ(series->GetExposureIndex(), a);
        }
    forEveryRectangle([&](const RECT& r) {
        series->DrawImage(&r, &surface);
        const double area = (static_cast<double>(r.right) - r.left) * (static_cast<double>(r.bottom) - r.top);
        if (area > 1e5) return;
        series->UpdateImage(&r, &surface, r.left);
        study->UpdateImage(0, &r, &surface, r.top);
        series->UpdateImage(r.left, r.top, &r, &surface);
    });
    EXPECT_TRUE(untouched());
}

TEST_F(EntityExtremes, PixelsOfASeries) {
    forEverySize([&](int w, int h, std::uint16_t* p) {
        const int done = series->UpdateImage(w, h, p, 14, 13, 0, 0, &kRectangle, &surface);
        if (!done && (!p || !pixelsOf(w, h))) {
            EXPECT_TRUE(untouched()) << w << " x " << h;
        }
        rawImage* const raw = series->GetDcmImage()->GetRawImage();
        EXPECT_EQ(raw->Update(3, 2, pixels.data(), 14, 13, 0, 0), 1);
        return pixelsOf(w, h) && p ? 1 : done;
    });
    for (const int bits : kInts) {
        EXPECT_EQ(study->UpdateImage(0, 3, 2, nullptr, bits, bits, bits, bits, &kRectangle, &surface), 0);
        EXPECT_TRUE(untouched());
    }
    series->UpdateImage(nullptr, nullptr, 1);
    series->UpdateImage(static_cast<CDC*>(nullptr));
    series->UpdateImage(5, 5, static_cast<CDC*>(nullptr));
    series->UpdateImage(5, 5, nullptr, nullptr);
    series->UpdateImage(1.0f, 1.0f, nullptr, nullptr);
    series->DrawImage(nullptr, nullptr);
    series->ReadUndoData(nullptr, nullptr);
    series->ReadImageInRAM(nullptr, nullptr);
    exam.UpdateImageInRAM(nullptr, nullptr);
    EXPECT_TRUE(untouched());
}

class OpenSeries : public dcmDXSeries {
public:
    using dcmDXSeries::UpdatePreview;
    using dcmDXSeries::UpdateThumb;
};

TEST(Extremes, PicturesOfASeries) {
    OpenSeries series;
    CRasterDC surface(8, 8);
    CDib empty;
    CDib narrow(1, 32767, 8);
    ASSERT_TRUE(narrow.CreateSection(nullptr));
    for (CDib* display : {static_cast<CDib*>(nullptr), &empty}) {
        EXPECT_EQ(series.UpdateThumb(display, &surface), 0);
        EXPECT_EQ(series.UpdatePreview(display, &surface), 0);
    }
    series.UpdateThumb(&narrow, nullptr);
    series.UpdatePreview(&narrow, nullptr);
}

TEST_F(EntityExtremes, RecordsOfASeries) {
    dcmCRSeries cr;
    dcmDXSeries dx;
    dcmCRImage crImage;
    dcmDXImage dxImage;
    for (dcmSeries* each : {static_cast<dcmSeries*>(&cr), static_cast<dcmSeries*>(&dx), series}) {
        EXPECT_EQ(each->Create(nullptr), 0);
        EXPECT_EQ(each->CreateImage(nullptr, "", &kRectangle, &surface), 0);
        EXPECT_EQ(each->CreateImage(&record, nullptr, &kRectangle, &surface), 0);
        EXPECT_EQ(each->CreateImage(&record, "", nullptr, &surface), 0);
        EXPECT_EQ(each->OpenImage(nullptr), 0);
        EXPECT_EQ(each->CreateProtocol(nullptr), 0);
    }
    for (dcmImage* each : {static_cast<dcmImage*>(&crImage), static_cast<dcmImage*>(&dxImage)}) {
        EXPECT_EQ(each->Create(nullptr), 0);
        EXPECT_EQ(each->Open(nullptr), 0);
        EXPECT_FALSE(each->GetRawImage());
    }
    EXPECT_EQ(exam.CreateProtocol(0, 0, nullptr), nullptr);
    EXPECT_TRUE(untouched());
}

TEST_F(EntityExtremes, PositionsInAStudy) {
    const QVR_ST_PROTOCOL protocol;
    for (const int position : {INT_MIN, -1, 1, 2, 65535, INT_MAX}) {
        EXPECT_FALSE(study->GetSeries(position));
        EXPECT_FALSE(study->GetProtocol(position));
        EXPECT_FALSE(study->GetDIB(position));
        EXPECT_EQ(study->IsImageExistInSeries(position), 0);
        EXPECT_FALSE(study->CreateImage(position, &record, "", &kRectangle, &surface));
        EXPECT_FALSE(study->CreateProtocol(position, &protocol));
        EXPECT_EQ(study->ReadImageInRAM(position, &kRectangle, &surface), 0);
        EXPECT_EQ(study->WriteImageToHDD(position), 0);
        EXPECT_EQ(study->SaveUndoData(position), 0);
        EXPECT_EQ(study->ReadUndoData(position, &kRectangle, &surface), 0);
        EXPECT_EQ(study->RejectImage(position), 0);
        EXPECT_EQ(study->UpdateImage(position, &surface), 0);
        EXPECT_EQ(study->UpdateImage(position, &kRectangle, &surface, 1), 0);
        EXPECT_EQ(study->UpdateImage(position, 1.0f, 1.0f, &kRectangle, &surface), 0);
        EXPECT_EQ(study->UpdateImage(position, 1, 1, &kRectangle, &surface), 0);
        EXPECT_EQ(study->UpdateImage(position, 1, 1, &surface), 0);
        EXPECT_EQ(study->UpdateImage(position, 3, 2, pixels.data(), 14, 13, 1, 1, &kRectangle, &surface), 0);
        EXPECT_FALSE(exam.CreateProtocol(0, position, &protocol));
        study->DrawImage(position, &kRectangle, &surface);
    }
    const dcmCRSeries stranger;
    EXPECT_EQ(study->GetSeriesIndex(&stranger), -1);
    EXPECT_EQ(study->GetSeriesIndex(nullptr), -1);
    EXPECT_FALSE(study->CreateSeries(nullptr));
    EXPECT_EQ(dcmStudy().Create(nullptr, dcmStudy::CR), 0);
    study->SetAdmittingDiagnosesDescription(nullptr);
    EXPECT_TRUE(untouched());
}

TEST(Extremes, Values) {
    dcmWorklist worklist;
    EXPECT_EQ(worklist.Create(nullptr), 0);
    worklist.AddSPSCode(nullptr, nullptr, nullptr, nullptr);
    worklist.SetReqProcCode(nullptr, nullptr, nullptr, nullptr);
    dcmCode code("value", "meaning", "designator", "version");
    for (const int index : {INT_MIN, -1, 1, 2, 65535, INT_MAX}) {
        EXPECT_EQ(worklist.GetSPSCode(index, code), 0);
        EXPECT_STREQ(code.GetCodeValue(), "value");
    }
    EXPECT_EQ(worklist.GetSPSCode(0, code), 1);
    EXPECT_STREQ(code.GetCodeValue(), "");
    dcmPersonName name("family", "given", "", "", "");
    name.SetPersonName(nullptr, nullptr, nullptr, nullptr, nullptr);
    dcmPersonName::SetSeparater(nullptr);
    name.SetPersonName("a", "b", "c", "d", "e");
    dcmPersonName::SetSeparater("^");
    dcmPersonName other;
    other = name;
    EXPECT_STREQ(other.GetPersonName(), name.GetPersonName());
    dcmEquipment equipment;
    EXPECT_EQ(equipment.Create(nullptr), 0);
    dcmProtocol protocol(nullptr);
    dcmAgeString age;
    // Onto itself, through another name for it.
    const auto toItself = [](auto& value) {
        const auto& same = value;
        value = same;
    };
    toItself(equipment);
    toItself(protocol);
    toItself(age);
    toItself(code);
    toItself(name);
    EXPECT_STREQ(name.GetPersonName(), other.GetPersonName());
}

class OpenRawImage : public rawImage {
public:
    using rawImage::ComputeZoomRatio;
    using rawImage::DrawAllMarks;
    using rawImage::DrawDIB;
    using rawImage::DrawMark;
    using rawImage::DrawRectFrame;
    using rawImage::DrawRectSelectedCross;
};

TEST(Extremes, DrawingOfAnImage) {
    OpenRawImage image;
    CRasterDC surface(64, 48);
    QVR_ST_RAW_IMAGE record;
    const std::vector<std::uint16_t> pixels(300 * 200, 500);
    record.Width = 300;
    record.Height = 200;
    record.BitsStored = 14;
    record.PixelData = pixels.data();
    ASSERT_EQ(image.Create(&record), 1);
    const RECT wide{0, 0, 600, 400};
    ASSERT_EQ(image.BuildDisplayImage(&wide, &surface, 1), 1);
    ASSERT_EQ(image.AddMark("L", &wide, &surface), 1);
    CMark mark;
    for (const int index : kInts) {
        EXPECT_EQ(image.GetMark(index, mark), index == 0 ? 1 : 0) << index;
        image.SetMarkNoSelected(index);
        image.DrawDIB(&wide, &surface, static_cast<std::uint32_t>(index));
    }
    forEveryRectangle([&](const RECT& r) {
        image.DrawDIB(&r, &surface, SRCCOPY);
        image.DrawAllMarks(&r, &surface);
        image.DrawMark(&mark, &r, &surface);
        const CSize size = image.ComputeZoomRatio(&r);
        EXPECT_TRUE(size.cx >= 0 && size.cy >= 0);
        const bool empty = r.right <= r.left || r.bottom <= r.top;
        EXPECT_TRUE(!empty || (size.cx == 0 && size.cy == 0));
    });
    // Lines of a million pixels: fewer of them.
    for (const int a : kInts)
        for (const int b : kInts) {
            const RECT box{a, b, b, -(a / 2)};
            image.DrawRectFrame(&box, 0xFF, &surface);
            image.DrawRectSelectedCross(&box, 0xFF, &surface);
        }
    image.DrawAllMarks(nullptr, nullptr);
    image.DrawMark(nullptr, &wide, &surface);
    image.DrawMark(&mark, nullptr, nullptr);
    image.DrawRectFrame(nullptr, 0, nullptr);
    image.DrawRectSelectedCross(nullptr, 0, nullptr);
    EXPECT_EQ(image.DrawDIB(&wide, nullptr, SRCCOPY), 0);
    EXPECT_EQ(image.DrawDIB(nullptr, &surface, SRCCOPY), 0);
    EXPECT_EQ(image.ComputeZoomRatio(nullptr).cx, 0);
    EXPECT_EQ(image.CopyPixelData(nullptr), 0);
    EXPECT_EQ(rawImage().CopyPixelData(Exact(1).get()), 0);
}

class OpenStandalone : public CQVRImage {
public:
    using CQVRImage::ComputeZoomRatio;
    using CQVRImage::DrawDIB;
};

TEST(Extremes, DrawingOfAStandaloneImage) {
    OpenStandalone image;
    CRasterDC surface(16, 12);
    EXPECT_EQ(image.Create(nullptr), 0);
    const std::uint16_t pixels[6] = {1, 2, 3, 4, 5, 6};
    ASSERT_EQ(image.Update(3, 2, pixels, 14, 13, 100, 50), 1);
    ASSERT_EQ(image.BuildDisplayImage(&kRectangle, &surface, 1), 1);
    forEveryRectangle([&](const RECT& r) {
        image.Draw(&r, &surface);
        image.DrawDIB(&r, &surface, SRCCOPY);
        image.DrawDIB({r.left, r.top}, &r, &surface, SRCCOPY);
        const CSize size = image.ComputeZoomRatio(&r);
        EXPECT_TRUE(size.cx >= 0 && size.cy >= 0);
    });
    image.Draw(nullptr, nullptr);
    EXPECT_EQ(image.DrawDIB(nullptr, nullptr, SRCCOPY), 0);
    EXPECT_EQ(image.DrawDIB(CPoint{0, 0}, nullptr, nullptr, SRCCOPY), 0);
    EXPECT_EQ(image.ComputeZoomRatio(nullptr).cx, 0);
    const CQVRImage copy(image);
    CQVRImage& plain = image;
    const CQVRImage& same = plain;
    plain = same;
    EXPECT_EQ(image.GetWidth(), 3);
    EXPECT_EQ(std::memcmp(image.GetPixelData(), pixels, sizeof pixels), 0);
    EXPECT_EQ(std::memcmp(copy.GetPixelData(), pixels, sizeof pixels), 0);
}

}  // namespace

// An examination in a temporary folder. Series n is acquired with picture(n), so no two can be mistaken for each other.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "qvr/image/rawImage.h"
#include "qvr/model/dcmExam.h"
#include "support/pictures.h"
#include "support/recordingDC.h"
#include "support/temporaryFolder.h"

class ExaminationTest : public testing::Test {
protected:
    static constexpr int kWidth = 37, kHeight = 23;
    static constexpr RECT kScreen{0, 0, 80, 60};

    static std::vector<std::uint16_t> picture(int n) { return ramp(kWidth, kHeight, 100 * n); }

    /// The record of acquisition n; its pixels live until the next call.
    QVR_ST_IMAGE imageRecord(int n) {
        m_acquired = picture(n);
        QVR_ST_IMAGE record;
        record.ContentDateTime = COleDateTime(2020, 1, 1 + n, 12, 0, 0);
        record.Height = kHeight;
        record.Width = kWidth;
        record.BitsStored = 14;
        record.HighBit = 13;
        record.PixelData = m_acquired.data();
        record.SOPInstanceUID = ("1.2." + std::to_string(n)).c_str();
        record.WindowWidth = 4000;
        record.WindowCenter = 3000;
        return record;
    }
    /// The record of stored image n; its files are made, the raw copy with other pixels.
    QVR_ST_IMAGE storedRecord(int n) {
        QVR_ST_IMAGE record = imageRecord(n);
        const std::string name = std::to_string(n) + ".raw";
        record.PixelData = nullptr;
        record.BAKWidth = kWidth + 1;
        record.BAKHeight = kHeight + 2;
        record.FilePath = m_folder.file("image" + name, picture(n)).c_str();
        record.BAKFilePath = m_folder.file("copy" + name, picture(50 + n)).c_str();
        record.WorkFilePath = (m_folder / ("work" + name)).c_str();
        return record;
    }
    /// Where image n is written out to.
    std::string imageFile(int n) const { return m_folder / "Cache/I.1.2." + std::to_string(n) + ".raw"; }
    std::string rawCopy(int n) const { return m_folder / "Cache/R.1.2." + std::to_string(n) + ".raw"; }
    /// A folder in its place lets every write of image n fail.
    void block(int n) const { std::filesystem::create_directories(imageFile(n)); }
    /// A bitmap file of 5 x 3 pixels for protocols.
    std::string bitmapFile() const {
        const std::vector<std::uint8_t> pixels(16, 77);
        CDib bitmap(5, 3, 8);
        CFile file;
        const std::string path = m_folder / "protocol.bmp";
        EXPECT_TRUE(bitmap.CreateFromPixels(5, 3, pixels.data(), nullptr, nullptr) &&
                    file.Open(path.c_str(), CFile::modeCreate | CFile::modeWrite) && bitmap.Write(&file));
        file.Close();
        return path;
    }

    dcmSeries* plan() {
        const QVR_ST_SERIES record{};
        return m_exam.CreateSeries(0, &record);
    }
    int position(const dcmSeries* series) const { return m_study->GetSeriesIndex(series); }
    /// A new series with image n, counted by the exam.
    dcmSeries* acquire(int n) {
        dcmSeries* const series = plan();
        const QVR_ST_IMAGE record = imageRecord(n);
        EXPECT_TRUE(
            m_exam.CreateImage(0, position(series), &record, m_folder.path().c_str(), &kScreen, &m_surface));
        return series;
    }
    static rawImage* raw(const dcmSeries* series) {
        return series->GetDcmImage() ? series->GetDcmImage()->GetRawImage() : nullptr;
    }
    static testing::AssertionResult resident(const dcmSeries* series, int n) {
        if (!series->IsImageInRAM()) return testing::AssertionFailure() << "not in memory";
        return samePicture(picture(n), raw(series)->GetPixelData(), kWidth, kHeight);
    }
    static testing::AssertionResult writtenOut(const dcmSeries* series, int n) {
        if (series->IsImageInRAM()) return testing::AssertionFailure() << "still in memory";
        if (pixelsOf(series->GetImageFilePath()) == picture(n)) return testing::AssertionSuccess();
        return testing::AssertionFailure() << "not in its file";
    }
    std::vector<dcmSeries*> counted() const {
        std::vector<dcmSeries*> list;
        for (int i = 0; i < m_exam.GetSeriesInRAMCount(); ++i) list.push_back(m_exam.GetSeriesInRAM(i));
        return list;
    }

    TemporaryFolder m_folder;
    RecordingDC m_surface;
    std::vector<std::uint16_t> m_acquired;
    dcmExam m_exam;
    const QVR_ST_STUDY m_studyRecord{};
    dcmStudy* m_study = m_exam.CreateStudy(&m_studyRecord, dcmStudy::DX);
};

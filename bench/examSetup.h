// examSetup: an exam with one study, and images acquired into it.
#pragma once

#include <cstdio>
#include <string>

#include "bench/sample.h"
#include "qvr/image/rawImage.h"
#include "qvr/model/dcmExam.h"

namespace bench {

class Exam {
public:
    explicit Exam(std::string folder) : m_folder(std::move(folder)) {
        const QVR_ST_STUDY study;
        m_exam.CreateStudy(&study, dcmStudy::DX);
    }

    /// A new series with an image of the sample's pixels, under a number of its own.
    bool acquire(const Sample& sample, int number, const RECT* rectangle, CDC* surface) {
        const QVR_ST_SERIES record;
        if (!m_exam.CreateSeries(0, &record)) return false;
        QVR_ST_IMAGE image;
        image.SOPInstanceUID = name(number).c_str();
        image.Width = sample.width;
        image.Height = sample.height;
        image.BitsStored = 14;
        image.HighBit = 13;
        image.PixelData = sample.pixels.get();
        const int last = m_exam.GetStudy(0)->GetSeriesCount() - 1;
        return m_exam.CreateImage(0, last, &image, m_folder.c_str(), rectangle, surface) != nullptr;
    }

    dcmSeries* series(int position) const { return m_exam.GetStudy(0)->GetSeries(position); }
    int residentCount() const { return m_exam.GetSeriesInRAMCount(); }

    void removeFiles(int number) const {
        for (const char* kind : {"R.", "I."})
            std::remove((m_folder + "/Cache/" + kind + name(number) + ".raw").c_str());
    }

private:
    static std::string name(int number) { return "1.2.826." + std::to_string(number); }

    std::string m_folder;
    dcmExam m_exam;
};

}  // namespace bench

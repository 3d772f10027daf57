// Two hundred acquisitions in one exam: what the process needs at most, beside what must be in memory.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include "bench/examSetup.h"
#include "qvr/platform/CRasterDC.h"

namespace bench {

namespace {

constexpr int kAcquisitions = 200;
constexpr int kSide = 2048;
constexpr RECT kScreen{0, 0, 1920, 1080};

// A line of /proc/self/status in MiB.
double statusOf(const char* key) {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line))
        if (line.compare(0, std::strlen(key), key) == 0)
            return std::atof(line.c_str() + std::strlen(key)) / 1024;
    return 0;
}

void resetPeak() {
    std::ofstream("/proc/self/clear_refs") << "5";
}

double bitmapBytes(const CDib* bitmap) {
    return bitmap ? static_cast<double>(bitmap->ImageSize) : 0.0;
}

}  // namespace

void addExamRun(const Options& options, Report& report) {
    const Sample sample = makeSample(kSide, kSide);
    CRasterDC surface(kScreen.right, kScreen.bottom);
    resetPeak();
    const double before = statusOf("VmRSS:");
    double needed = 0;
    double peak = 0;
    {
        Exam exam(options.folder);
        for (int i = 0; i < kAcquisitions; ++i) {
            if (!exam.acquire(sample, i, &kScreen, &surface)) {
                std::fprintf(stderr, "qvr_bench: acquisition %d failed\n", i);
                std::exit(1);
            }
            // The oldest four stay; what was written out is not read again.
            if (i >= 5) exam.removeFiles(i - 1);
        }
        for (int i = 0; i < kAcquisitions; ++i) {
            const dcmSeries& series = *exam.series(i);
            needed += bitmapBytes(series.GetThumb()) + bitmapBytes(series.GetPreview());
        }
        needed += exam.residentCount() * (sample.bytes() + bitmapBytes(exam.series(0)->GetThumb()) * 25);
        peak = statusOf("VmHWM:") - before;
        for (int i = 0; i < 4; ++i) exam.removeFiles(i);
        exam.removeFiles(kAcquisitions - 1);
    }
    needed /= 1024.0 * 1024.0;
    char text[160];
    std::snprintf(text, sizeof text, "%.0f MiB are five images, their bitmaps and %d thumbnails and previews",
                  needed, kAcquisitions);
    const Note note{"peak memory of " + std::to_string(kAcquisitions) + " acquisitions of " + sample.size(),
                    peak, "MiB", text};
    printNote(note);
    report.notes.push_back(note);
}

}  // namespace bench

// Whole operations as a host calls them: a drag of the window, an acquisition, leaving and entering memory. The limit of
// an operation is the sum of its parts, each measured alone.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "bench/examSetup.h"
#include "bench/limits.h"
#include "bench/sample.h"
#include "qvr/image/QVR_COMP.h"
#include "qvr/image/detail/bitmapRows.h"
#include "qvr/image/detail/displayPipeline.h"
#include "qvr/model/detail/thumbnail.h"
#include "qvr/platform/CRasterDC.h"
#include "qvr/toolkit/QVR_DISP.h"

namespace bench {

namespace {

constexpr RECT kScreen{0, 0, 1920, 1080};

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "qvr_bench: %s failed\n", what);
    std::exit(1);
}

void check(bool done, const char* what) {
    if (!done) fail(what);
}

// The display of a sample as an operation makes it, with its two reduced pictures.
void displayAndPictures(const Sample& sample, CDC& surface) {
    qvr::DisplayView view;
    std::shared_ptr<CDib> bitmap;
    const qvr::DisplaySource source{sample.pixels.get(), sample.width, sample.height, 14, {6000, 6000}, {}};
    check(qvr::buildDisplay(source, &kScreen, &surface, true, view, bitmap), "building a display");
    qvr::makeThumbnail(bitmap.get(), &surface);
    qvr::makePreview(bitmap.get(), &surface);
}

}  // namespace

void addAcquisition(const Sample& sample, const Options& options, Report& report) {
    CRasterDC surface(kScreen.right, kScreen.bottom);
    const std::string ours = options.folder + "/parts.raw";
    int number = 0;
    // Copy, automatic window, raw copy with its sync, display, thumbnail and preview.
    const Work parts = [&] {
        const qvr::Pixels copy = qvr::copyPixels(sample.width, sample.height, sample.pixels.get());
        int low = 0;
        int high = 0;
        QVR_DISP_AutoWL(low, high, sample.width, sample.height, copy.get(), 14, 0.05f, 0.95f);
        std::remove(ours.c_str());
        check(QVR_COMP_WriteRAWFile(ours.c_str(), sample.width, sample.height, copy.get()),
              "writing a raw file");
        displayAndPictures(sample, surface);
    };
    const Work acquire = [&] {
        Exam exam(options.folder);
        check(exam.acquire(sample, number, &kScreen, &surface), "CreateImage");
        exam.removeFiles(number++);
    };
    add({.kernel = "acquire: CreateImage (limit: sum of its parts)",
         .size = sample.size(),
         .bytes = sample.bytes(),
         .clock = Clock::elapsed,
         .limit = parts,
         .ours = acquire,
         .rounds = 9},
        report);
}

void addResidency(const Sample& sample, const Options& options, Report& report) {
    CRasterDC surface(kScreen.right, kScreen.bottom);
    const std::string ours = options.folder + "/switch.raw";
    const Work parts = [&] {
        check(QVR_COMP_WriteRAWFile(ours.c_str(), sample.width, sample.height, sample.pixels.get()),
              "writing a raw file");
        const qvr::Pixels pixels = qvr::makeUnsetPixels(sample.width, sample.height);
        check(QVR_COMP_ReadRAWFile(ours.c_str(), sample.width, sample.height, pixels.get()),
              "reading a raw file");
        displayAndPictures(sample, surface);
    };
    Exam exam(options.folder);
    check(exam.acquire(sample, 0, &kScreen, &surface), "CreateImage");
    const Work change = [&] {
        check(exam.series(0)->WriteImageToHDD(), "WriteImageToHDD");
        check(exam.series(0)->ReadImageInRAM(&kScreen, &surface), "ReadImageInRAM");
    };
    add({.kernel = "residency: out and in (limit: sum of its parts)",
         .size = sample.size(),
         .bytes = sample.bytes(),
         .clock = Clock::elapsed,
         .limit = parts,
         .ours = change,
         .rounds = 9},
        report);
    exam.removeFiles(0);
    std::remove(ours.c_str());
}

void addDrag(const Sample& sample, const Options& options, Report& report) {
    CRasterDC surface(kScreen.right, kScreen.bottom);
    Exam exam(options.folder);
    check(exam.acquire(sample, 0, &kScreen, &surface), "CreateImage");
    dcmSeries* const series = exam.series(0);
    int step = 0;
    const Work drag = [&] {
        ++step;
        check(series->UpdateImage(4000 + step % 500, 5000 + step % 300, &surface), "UpdateImage");
        series->DrawImage(&kScreen, &surface);
    };
    const double time = medianTime(drag, 31, Clock::processor);
    Note note{"drag of the window: UpdateImage and DrawImage, " + sample.size() + " on 1920 x 1080",
              1.0 / time, "per second", "linear, with thumbnail and preview"};
    printNote(note);
    report.notes.push_back(note);

    series->SetLUT(4, 4, 5);
    const double curved = medianTime(drag, 31, Clock::processor);
    note.value = 1.0 / curved;
    note.text = "sigmoid, with thumbnail and preview";
    printNote(note);
    report.notes.push_back(note);
    exam.removeFiles(0);
}

}  // namespace bench

// Automatic window, turn, mirror, inversion, cut and mask.
#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>

#include "bench/limits.h"
#include "bench/peers.h"
#include "bench/sample.h"
#include "qvr/toolkit/QVR_DISP.h"

namespace bench {

namespace {

// In-place work is done on a copy, which stays a radiograph whatever is done to it.
using Buffer = std::shared_ptr<qvr::Pixels>;

Buffer copyOf(const Sample& sample) {
    return std::make_shared<qvr::Pixels>(qvr::copyPixels(sample.width, sample.height, sample.pixels.get()));
}

// With a collimator's shadow as well: an eighth of each side at one value, as in most radiographs.
Buffer collimated(const Sample& sample) {
    const Buffer buffer = copyOf(sample);
    const RECT kept{sample.width / 8, sample.height * 7 / 8, sample.width * 7 / 8, sample.height / 8};
    QVR_DISP_Mask(sample.width, sample.height, buffer->get(), &kept, 1);
    return buffer;
}

void addWindow(const Sample& sample, bool bordered, const Options& options, Report& report) {
    const Buffer buffer = bordered ? collimated(sample) : copyOf(sample);
    std::uint16_t* const pixels = buffer->get();
    Row row{.kernel = bordered ? "automatic window, collimated" : "automatic window",
            .size = sample.size(),
            .bytes = sample.bytes(),
            .limit = [=, &sample] { benchmark::DoNotOptimize(readStream(pixels, sample.count())); },
            .ours =
                [=, &sample] {
                    int low = 0;
                    int high = 0;
                    QVR_DISP_AutoWL(low, high, sample.width, sample.height, buffer->get(), 14, 0.05f, 0.95f);
                    benchmark::DoNotOptimize(low + high);
                }};
    if (options.peers) {
        const Picture picture{pixels, sample.width, sample.height};
        row.opencv = opencvWindow(picture);
        row.dcmtk = dcmtkWindow(picture);
    }
    add(row, report);
}

void addTurn(const Sample& sample, int height, const Options& options, Report& report) {
    const int width = sample.width;
    const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    const Buffer buffer = copyOf(sample);
    std::uint16_t* const pixels = buffer->get();
    Row row{.kernel = width == height ? "quarter turn, square" : "quarter turn, not square",
            .size = std::to_string(width) + " x " + std::to_string(height),
            .bytes = 2.0 * static_cast<double>(count),
            .limit = [=] { inPlaceStream(pixels, count); },
            .ours =
                [=, shown = std::make_shared<bool>(false)] {
                    // There and back, so that the shape stays what the row says.
                    int newWidth = 0;
                    int newHeight = 0;
                    QVR_DISP_Rotate(*shown ? height : width, *shown ? width : height, buffer->get(), newWidth,
                                    newHeight, *shown ? 1 : 0);
                    *shown = !*shown;
                }};
    if (options.peers) {
        row.opencv = opencvTurn({pixels, width, height});
        row.dcmtk = dcmtkTurn({sample.pixels.get(), width, height});
    }
    add(row, report);
}

void addMirror(const Sample& sample, bool leftToRight, const Options& options, Report& report) {
    const Buffer buffer = copyOf(sample);
    std::uint16_t* const pixels = buffer->get();
    Row row{.kernel = leftToRight ? "mirror, left to right" : "mirror, upside down",
            .size = sample.size(),
            .bytes = sample.bytes(),
            .limit = [=, &sample] { inPlaceStream(pixels, sample.count()); },
            .ours =
                [=, &sample] {
                    QVR_DISP_Mirror(sample.width, sample.height, buffer->get(), leftToRight ? 1 : 0);
                }};
    if (options.peers) {
        row.opencv = opencvMirror({pixels, sample.width, sample.height}, leftToRight);
        row.dcmtk = dcmtkMirror({sample.pixels.get(), sample.width, sample.height}, leftToRight);
    }
    add(row, report);
}

void addInvert(const Sample& sample, const Options& options, Report& report) {
    const Buffer buffer = copyOf(sample);
    std::uint16_t* const pixels = buffer->get();
    Row row{.kernel = "invert",
            .size = sample.size(),
            .bytes = sample.bytes(),
            .limit = [=, &sample] { inPlaceStream(pixels, sample.count()); },
            .ours =
                [=, &sample] {
                    int center = 0;
                    QVR_DISP_Invert(sample.width, sample.height, buffer->get(), 14, 3000, center);
                    benchmark::DoNotOptimize(center);
                }};
    if (options.peers) row.opencv = opencvInvert({pixels, sample.width, sample.height});
    add(row, report);
}

// Three quarters of each side, off the middle.
Area areaOf(const Sample& sample) {
    return {sample.width / 16, sample.height / 16, sample.width * 3 / 4, sample.height * 3 / 4};
}

void addCut(const Sample& sample, const Options& options, Report& report) {
    const Area area = areaOf(sample);
    const auto count = static_cast<std::size_t>(area.width) * static_cast<std::size_t>(area.height);
    const Buffer output = copyOf(sample);
    const RECT rectangle{area.x, area.y + area.height, area.x + area.width, area.y};
    Row row{.kernel = "cut",
            .size = sample.size() + ", 9/16 of it",
            .bytes = 2.0 * static_cast<double>(count),
            .limit = [=, &sample] { std::memcpy(output->get(), sample.pixels.get(), 2 * count); },
            .ours =
                [=, &sample] {
                    QVR_DISP_Cut(sample.width, sample.height, sample.pixels.get(), &rectangle, area.width,
                                 area.height, output->get());
                }};
    if (options.peers) {
        const Picture picture{sample.pixels.get(), sample.width, sample.height};
        row.opencv = opencvCut(picture, area);
        row.dcmtk = dcmtkCut(picture, area);
    }
    add(row, report);
}

void addMask(const Sample& sample, const Options& options, Report& report) {
    const Area area = areaOf(sample);
    const auto kept = static_cast<std::size_t>(area.width) * static_cast<std::size_t>(area.height);
    const std::size_t all = sample.count();
    const Buffer buffer = copyOf(sample);
    const RECT rectangle{area.x, area.y + area.height, area.x + area.width, area.y};
    // The kept pixels are moved, the others written.
    const Work limit = [=] {
        std::memmove(buffer->get() + (all - kept) / 2, buffer->get(), 2 * kept);
        std::memset(buffer->get() + kept, 255, 2 * (all - kept));
    };
    Row row{
        .kernel = "mask",
        .size = sample.size() + ", 9/16 kept",
        .bytes = sample.bytes(),
        .limit = limit,
        .ours = [=, &sample] { QVR_DISP_Mask(sample.width, sample.height, buffer->get(), &rectangle, 0); }};
    if (options.peers) row.opencv = opencvMask({sample.pixels.get(), sample.width, sample.height}, area);
    add(row, report);
}

}  // namespace

void addToolkitRows(const Sample& sample, const Options& options, Report& report) {
    addWindow(sample, false, options, report);
    addWindow(sample, true, options, report);
    addTurn(sample, sample.height, options, report);
    addTurn(sample, sample.height * 3 / 4, options, report);
    addMirror(sample, false, options, report);
    addMirror(sample, true, options, report);
    addInvert(sample, options, report);
    addCut(sample, options, report);
    addMask(sample, options, report);
}

}  // namespace bench

// Display, print, tables, thumbnail and preview, and the blit.
#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <cstring>
#include <memory>

#include "bench/limits.h"
#include "bench/peers.h"
#include "bench/sample.h"
#include "qvr/image/CDib.h"
#include "qvr/image/detail/bitmapRows.h"
#include "qvr/image/detail/blockConversion.h"
#include "qvr/image/detail/displayPipeline.h"
#include "qvr/image/rawImage.h"
#include "qvr/model/detail/thumbnail.h"
#include "qvr/platform/CRasterDC.h"

namespace bench {

namespace {

constexpr Window kLinear{6000, 6000, false};
constexpr Window kSigmoid{6000, 6000, true};

qvr::DisplaySource sourceOf(const Sample& sample, const Window& window) {
    return {sample.pixels.get(),
            sample.width,
            sample.height,
            14,
            {window.width, window.center},
            {window.sigmoid ? 4 : 0, window.sigmoid ? 4 : 1, 5}};
}

Picture pictureOf(const Sample& sample) {
    return {sample.pixels.get(), sample.width, sample.height};
}

// Reads the source rows that the blocks touch and writes the view.
Work fittedLimit(const Sample& sample, const qvr::DisplayView& view, const CDib& bitmap) {
    const qvr::BitmapRows rows = qvr::rowsOf(&bitmap);
    const qvr::BlockSpans spans = qvr::blockSpans(rows.height, sample.height, view.yOffset, view.yRatio);
    const auto width = static_cast<std::size_t>(sample.width);
    return [&sample, rows, spans, width] {
        std::uint64_t sum = 0;
        for (std::size_t i = 0; i < spans.first.size(); ++i) {
            const auto count = static_cast<std::size_t>(spans.end[i] - spans.first[i]) * width;
            sum += readStream(sample.pixels.get() + static_cast<std::size_t>(spans.first[i]) * width, count);
        }
        benchmark::DoNotOptimize(sum);
        std::memset(rows.bytes, 0, rows.stride * static_cast<std::size_t>(rows.height));
    };
}

void addFitted(const Sample& sample, int side, const Window& window, const Options& options, Report& report) {
    qvr::DisplayView view;
    const RECT rectangle{0, 0, side, side};
    std::shared_ptr<CDib> bitmap;
    const qvr::DisplaySource source = sourceOf(sample, window);
    if (!qvr::buildDisplay(source, &rectangle, nullptr, true, view, bitmap)) return;
    const qvr::BitmapRows rows = qvr::rowsOf(bitmap.get());
    Row row{.kernel = window.sigmoid ? "display, curve" : "display, linear",
            .size = sample.size() + " to " + std::to_string(side),
            .bytes = sample.bytes(),
            .limit = fittedLimit(sample, view, *bitmap),
            .ours = [=] { qvr::convertDisplay(source, view, bitmap.get()); }};
    if (options.peers) {
        row.opencv = opencvDisplay(pictureOf(sample), rows.width, rows.height, window);
        row.dcmtk = dcmtkDisplay(pictureOf(sample), rows.width, rows.height, window);
    }
    add(row, report);
}

void addWhole(const Sample& sample, const Window& window, const Options& options, Report& report) {
    const qvr::DisplayView view{0, 0, 1.0f, 1.0f};
    const std::shared_ptr<CDib> bitmap = qvr::makeGreyBitmap(sample.width, sample.height, nullptr);
    const qvr::DisplaySource source = sourceOf(sample, window);
    const qvr::BitmapRows rows = qvr::rowsOf(bitmap.get());
    const Work limit = [&sample, rows] { narrowStream(sample.pixels.get(), sample.count(), rows.bytes); };
    Row row{.kernel = window.sigmoid ? "display 1:1, curve" : "display 1:1, linear",
            .size = sample.size(),
            .bytes = sample.bytes(),
            .limit = limit,
            .ours = [=] { qvr::convertDisplay(source, view, bitmap.get()); }};
    if (options.peers) {
        row.opencv = opencvDisplay(pictureOf(sample), sample.width, sample.height, window);
        row.dcmtk = dcmtkDisplay(pictureOf(sample), sample.width, sample.height, window);
    }
    add(row, report);
    row.kernel = window.sigmoid ? "print image, curve" : "print image, linear";
    row.ours = [=, &sample] {
        rawImage::CreatePrintImage14Bits(sample.width, sample.height, sample.pixels.get(), 0, 0, window.width,
                                         window.center, source.curve.type, source.curve.k, source.curve.c,
                                         bitmap.get());
    };
    add(row, report);
}

// The plainest table: factors once, then every entry evaluated in double precision.
void naiveTable(int type, int windowWidth, int center, std::uint8_t* table) {
    const int low = center - windowWidth / 2;
    const int high = center + windowWidth / 2;
    const double inverse = static_cast<float>(1.0 / (high - low));
    const double k = 4;
    const double a = static_cast<float>(1.0 / (std::exp(k) - 1.0));
    const double l = static_cast<float>(1.0 / std::log(2.0));
    const double c = static_cast<float>(5 * static_cast<double>(0.1f));
    const double s0 = static_cast<float>(1.0 / (1.0 + std::exp(k * c)));
    const double g = static_cast<float>(1.0 / (1.0 / (1.0 + std::exp(-k * (1.0 - c))) - s0));
    const int step = 4177920 / (high - low + 1);
    for (int i = 0; i < qvr::kTable14Bits; ++i) {
        const double t = (i - low) * inverse;
        if (i < low) {
            table[i] = 0;
        } else if (i > high) {
            table[i] = 255;
        } else if (type == 1) {
            table[i] = static_cast<std::uint8_t>(255.0 * std::pow(t, k));
        } else if (type == 2) {
            table[i] = static_cast<std::uint8_t>(255.0 * (std::exp(4 * (i - low) * inverse) - 1.0) * a);
        } else if (type == 3) {
            table[i] = static_cast<std::uint8_t>(255.0 * std::log(1.0 + t) * l);
        } else if (type == 4) {
            table[i] = static_cast<std::uint8_t>(255.0 * (1.0 / (1.0 + std::exp(-k * (t - c))) - s0) * g);
        } else {
            table[i] = static_cast<std::uint8_t>((step * (i - low)) >> 14);
        }
    }
}

}  // namespace

void addDisplayRows(const Sample& sample, const Options& options, Report& report) {
    for (const Window& window : {kLinear, kSigmoid}) {
        for (const int side : {1024, 1080, 1600}) addFitted(sample, side, window, options, report);
        addWhole(sample, window, options, report);
    }
}

void addTableRows(Report& report) {
    static constexpr std::array<const char*, 5> kNames{"linear", "power", "exponential", "logarithmic",
                                                       "sigmoid"};
    auto table = std::make_shared<qvr::DisplayTable>();
    auto naive = std::make_shared<qvr::DisplayTable>();
    for (int type = 0; type < 5; ++type)
        add({.kernel = std::string("table, ") + kNames[static_cast<std::size_t>(type)],
             .size = "window 12000",
             .fromMemory = false,
             .limit = [=] { naiveTable(type, 12000, 7000, naive->data()); },
             .ours =
                 [=] {
                     qvr::fillDisplayTable({12000, 7000}, {type, 4, 5},
                                           std::span<std::uint8_t, qvr::kTable14Bits>(*table));
                 }},
            report);
}

void addPictureRows(const Sample& sample, const Options& options, Report& report) {
    const std::shared_ptr<CDib> display = qvr::makeGreyBitmap(sample.width, sample.height, nullptr);
    const qvr::BitmapRows rows = qvr::rowsOf(display.get());
    narrowStream(sample.pixels.get(), sample.count(), rows.bytes);
    for (const bool preview : {false, true}) {
        const auto make = [=] {
            return preview ? qvr::makePreview(display.get(), nullptr)
                           : qvr::makeThumbnail(display.get(), nullptr);
        };
        const std::shared_ptr<CDib> picture = make();
        const qvr::BitmapRows target = qvr::rowsOf(picture.get());
        Row row{.kernel = preview ? "preview" : "thumbnail",
                .size = "of a display " + sample.size(),
                .bytes = static_cast<double>(sample.count()),
                .ours = [=] { make(); }};
        const int step = preview ? 1 : 5;  // a thumbnail skips every fifth row
        row.limit = [=] {
            std::uint64_t sum = 0;
            for (int y = 0; y < rows.height; ++y)
                if (step == 1 || y % step != 4) sum += readStream(rows.row(y), rows.stride);
            benchmark::DoNotOptimize(sum);
            std::memset(target.bytes, 0, target.stride * static_cast<std::size_t>(target.height));
        };
        if (options.peers)
            row.opencv = opencvReduce(rows.bytes, rows.width, rows.height, target.width, target.height);
        add(row, report);
    }
}

void addSurfaceRows(const Sample& sample, Report& report) {
    constexpr int kWidth = 1920;
    constexpr int kHeight = 1080;
    const auto surface = std::make_shared<CRasterDC>(kWidth, kHeight);
    struct Blit {
        const char* name;
        int width, height;  // of the bitmap
    };
    for (const Blit& blit : {Blit{"blit, identity", kWidth, kHeight}, Blit{"blit, enlarging", 1280, 720},
                             Blit{"blit, reducing", 2880, 1620}}) {
        const std::shared_ptr<CDib> bitmap = qvr::makeGreyBitmap(blit.width, blit.height, nullptr);
        const qvr::BitmapRows rows = qvr::rowsOf(bitmap.get());
        narrowStream(sample.pixels.get(),
                     static_cast<std::size_t>(blit.width) * static_cast<std::size_t>(blit.height),
                     rows.bytes);
        const auto pixels = static_cast<std::size_t>(kWidth) * kHeight;
        // A byte read and four written for every pixel of the surface.
        const Work limit = [=] {
            auto* to = static_cast<std::uint8_t*>(const_cast<void*>(surface->GetRow(0)));
            benchmark::DoNotOptimize(readStream(
                rows.bytes, std::min(pixels, rows.stride * static_cast<std::size_t>(rows.height))));
            std::memset(to, 0, 4 * pixels);
        };
        add({.kernel = blit.name,
             .size = std::to_string(blit.width) + " to 1920 x 1080",
             .bytes = static_cast<double>(pixels),
             .limit = limit,
             .ours =
                 [=] {
                     bitmap->Draw(surface.get(), 0, 0, kWidth, kHeight, 0, 0, blit.width, blit.height,
                                  SRCCOPY);
                 }},
            report);
    }
}

}  // namespace bench

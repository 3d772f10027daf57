// How cost grows with the side of a square image: time per megapixel.
#include <cmath>
#include <functional>
#include <memory>

#include "bench/sample.h"
#include "qvr/image/detail/bitmapRows.h"
#include "qvr/image/detail/displayPipeline.h"
#include "qvr/toolkit/QVR_DISP.h"

namespace bench {

namespace {

// Repeats a radiograph until it fills a larger one: a phantom of 8192 x 8192 would take longer to make than to measure.
Sample tiled(const Sample& source, int side) {
    Sample sample{side, side, qvr::makeUnsetPixels(side, side)};
    for (int row = 0; row < side; ++row)
        for (int column = 0; column < side; column += source.width)
            std::copy_n(source.pixels.get() + static_cast<std::ptrdiff_t>(row % source.height) * source.width,
                        std::min(source.width, side - column),
                        sample.pixels.get() + static_cast<std::ptrdiff_t>(row) * side + column);
    return sample;
}

Work displayWork(const Sample& sample, int side, int type) {
    const qvr::DisplaySource source{sample.pixels.get(), sample.width, sample.height, 14,
                                    {6000, 6000},        {type, 4, 5}};
    auto view = std::make_shared<qvr::DisplayView>();
    auto bitmap = std::make_shared<std::shared_ptr<CDib>>();
    const RECT rectangle{0, 0, side, side};
    qvr::buildDisplay(source, &rectangle, nullptr, true, *view, *bitmap);
    return [=] { qvr::convertDisplay(source, *view, bitmap->get()); };
}

Work toolkitWork(const Sample& sample, const char* name) {
    const std::string kernel = name;
    std::uint16_t* const pixels = sample.pixels.get();
    const int width = sample.width;
    const int height = sample.height;
    return [=] {
        int a = 0;
        int b = 0;
        if (kernel == "automatic window") QVR_DISP_AutoWL(a, b, width, height, pixels, 14, 0.05f, 0.95f);
        if (kernel == "quarter turn") QVR_DISP_Rotate(width, height, pixels, a, b, 0);
        if (kernel == "mirror, left to right") QVR_DISP_Mirror(width, height, pixels, 1);
        if (kernel == "invert") QVR_DISP_Invert(width, height, pixels, 14, 3000, a);
    };
}

}  // namespace

void addScaling(const Options&, Report& report) {
    const std::vector<int> sides{512, 1024, 2048, 3072, 4288, 6144, 8192};
    const std::vector<const char*> kernels{"display to 1080, linear", "display 1:1, curve",
                                           "automatic window",        "quarter turn",
                                           "mirror, left to right",   "invert"};
    for (const char* const name : kernels) report.scaling.push_back({name, sides, {}});
    const Sample original = makeSample(2048, 2048);
    for (const int side : sides) {
        const Sample sample = tiled(original, side);
        for (std::size_t i = 0; i < kernels.size(); ++i) {
            Work work = toolkitWork(sample, kernels[i]);
            if (i == 0) work = displayWork(sample, 1080, 0);
            if (i == 1) work = displayWork(sample, side, 4);
            const double time = medianTime(work, 9, Clock::processor);
            report.scaling[i].nanosecondsPerPixel.push_back(1e9 * time / static_cast<double>(sample.count()));
        }
    }
    for (const Scaling& scaling : report.scaling) printScaling(scaling);
}

}  // namespace bench

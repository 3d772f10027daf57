// The choice of a window. A centre or width of 0 counts as none: the library would replace it silently.
#include "windowChoice.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include <qvr/toolkit/QVR_DISP.h>

#include "collimation.h"
#include "errors.h"
#include "histogramSteps.h"
#include "parse.h"

namespace qvr::tool {

namespace {

constexpr float kLowFraction = 0.05f;
constexpr float kHighFraction = 0.95f;
constexpr int kNarrowest = 50;  // an automatic window this narrow shows noise: the full range instead
constexpr double kBorderWorthSaying = 0.1;
constexpr double kWhiteWorthSaying = 0.33;
constexpr double kMostOfThePicture = 0.5;
constexpr double kPercentileLow = 0.01;
constexpr double kPercentileHigh = 0.99;

int saturated(std::int64_t value) {
    return static_cast<int>(
        std::clamp<std::int64_t>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

// A window with the ends of the display's ramp.
Window withEnds(std::string source, int center, int width) {
    const std::int64_t half = width / 2;
    return {std::move(source), center, width, saturated(center - half), saturated(center + half)};
}

bool isGiven(int center, int width) {
    return center != 0 && width != 0;
}

Window presetWindow(const WindowSubject& subject, const std::string& name) {
    const auto& all = presets();
    const auto preset = std::find_if(all.begin(), all.end(), [&](const Preset& p) { return p.name == name; });
    const int values = subject.adoption.maximum() + 1;
    const int center = std::max(1, truncatedInt(values * preset->center));
    const int width = std::max(1, truncatedInt(values * preset->width));
    return withEnds("preset:" + name, center, width);
}

std::optional<std::string> presetForView(const SourceImage& source, const std::vector<ViewPreset>& views) {
    for (const auto& entry : views)
        if (entry.bodyPart == source.bodyPart && (entry.view.empty() || entry.view == source.view))
            return entry.preset;
    return std::nullopt;
}

bool overlapsValues(const Window& window, const AdoptedImage& image) {
    return window.low <= image.highest && window.high >= image.lowest;
}

void warnOfBorder(const WindowSubject& subject, Console& console) {
    const auto area = findCollimation(subject.image);
    const double share = area ? borderShare(subject.image, *area) : 0.0;
    if (share < kBorderWorthSaying) return;
    console.warning(
        subject.source.file,
        fmt::format("{:.0f} % of the image is a dark border; --window auto:collimation may suit better.",
                    100.0 * share));
}

// On a histogram with gaps (values that were stretched before they were stored) the automatic window stops at the
// first of them and most of the picture would be white.
void warnOfWhite(const WindowSubject& subject, const Window& window, Console& console) {
    const auto& image = subject.image;
    const auto above = std::count_if(image.pixels.begin(), image.pixels.end(),
                                     [&](std::uint16_t v) { return v > window.high; });
    const double share = static_cast<double>(above) / static_cast<double>(image.pixels.size());
    if (share < kWhiteWorthSaying) return;
    const auto counts = countValues(image, {0, 0, image.width, image.height});
    const auto steps = histogramSteps(counts, static_cast<std::int64_t>(image.pixels.size()));
    console.warning(
        subject.source.file,
        fmt::format("the automatic window {}/{} makes {:.0f} % of the image white; --window {},{} may suit "
                    "better.",
                    window.center, window.width, 100.0 * share,
                    (steps.percentileLow + steps.percentileHigh) / 2,
                    steps.percentileHigh - steps.percentileLow + 1));
}

// The picture without its dark border.
Region picturedArea(const AdoptedImage& image) {
    return findCollimation(image).value_or(Region{0, 0, image.width, image.height});
}

// The smallest value that is reached by this share of the counted pixels.
int valueReachedBy(const BinCounts& counts, double pixels) {
    double sum = 0;
    for (int bin = 0; bin < kBins; ++bin) {
        sum += counts[static_cast<std::size_t>(bin)];
        if (sum >= pixels) return bin;
    }
    return kBins - 1;
}

// Nothing, or what shows the picture where the automatic window would leave most of it black or white.
std::optional<Window> percentileWindow(const WindowSubject& subject, const Window& automatic) {
    const Region area = picturedArea(subject.image);
    const auto counts = countValues(subject.image, area);
    const double pixels = static_cast<double>(area.width) * area.height;
    double inside = 0;
    for (int bin = std::max(0, automatic.low); bin <= std::min(kBins - 1, automatic.high); ++bin)
        inside += counts[static_cast<std::size_t>(bin)];
    if (pixels - inside <= kMostOfThePicture * pixels) return std::nullopt;

    const int low = valueReachedBy(counts, kPercentileLow * pixels);
    const int high = valueReachedBy(counts, kPercentileHigh * pixels);
    const int width = high - low + 1;
    if (width <= kNarrowest) return std::nullopt;
    return Window{"auto:percentile", (low + high) / 2, width, low, high};
}

Window wholeWindow(const WindowSubject& subject, Console& console) {
    auto window = automaticWindow(subject, "auto", std::nullopt);
    warnOfBorder(subject, console);
    warnOfWhite(subject, window, console);
    return window;
}

// Where nobody asked for the automatic window it may be replaced by a better one.
Window unaskedWindow(const WindowSubject& subject, Console& console) {
    const auto automatic = automaticWindow(subject, "auto", std::nullopt);
    const auto better = percentileWindow(subject, automatic);
    if (!better) {
        warnOfBorder(subject, console);
        warnOfWhite(subject, automatic, console);
        return automatic;
    }
    console.warning(
        subject.source.file,
        fmt::format("the automatic window {}/{} leaves most of the picture outside; the 1st to 99th "
                    "percentile {}/{} is used.",
                    automatic.center, automatic.width, better->center, better->width));
    return *better;
}

Window insteadOf(const WindowSubject& subject, double center, double width, Console& console) {
    const auto automatic = automaticWindow(subject, "auto", std::nullopt);
    const auto better = percentileWindow(subject, automatic);
    const auto& window = better ? *better : automatic;
    console.warning(
        subject.source.file,
        fmt::format("window {}/{} counts as none (both values must be non-zero); {} window {}/{} used.",
                    center, width, better ? "percentile" : "automatic", window.center, window.width));
    return window;
}

Window collimationWindow(const WindowSubject& subject, Console& console) {
    const auto area = findCollimation(subject.image);
    if (area && borderShare(subject.image, *area) > 0)
        return automaticWindow(subject, "auto:collimation", area);
    console.warning(subject.source.file,
                    "no dark border was found; the automatic window of the whole image is used.");
    return automaticWindow(subject, "auto", std::nullopt);
}

Window requestedFileWindow(const WindowSubject& subject, int number, Console& console) {
    const auto& stored = subject.source.windows;
    if (static_cast<std::size_t>(number) > stored.size())
        throw Failure(Exit::usage, subject.source.file, "no window",
                      stored.empty() ? std::string("it names none itself")
                                     : fmt::format("it names {} itself, not {}", stored.size(), number),
                      "Use --window auto.");
    if (auto window = fileWindow(subject, number)) return *window;
    const auto& entry = stored[static_cast<std::size_t>(number) - 1];
    return insteadOf(subject, entry.center, entry.width, console);
}

Window defaultWindow(const WindowSubject& subject, const std::vector<ViewPreset>& views, Console& console) {
    if (const auto preset = presetForView(subject.source, views)) return presetWindow(subject, *preset);
    if (subject.source.windows.empty()) return unaskedWindow(subject, console);

    const auto& stored = subject.source.windows.front();
    const auto window = fileWindow(subject, 1);
    if (!window) return insteadOf(subject, stored.center, stored.width, console);
    if (overlapsValues(*window, subject.image)) return *window;
    console.note(subject.source.file,
                 fmt::format("its window {}/{} lies outside its values {}..{}; not used", window->center,
                             window->width, subject.image.lowest, subject.image.highest));
    return unaskedWindow(subject, console);
}

}  // namespace

nlohmann::ordered_json toJson(const Window& window) {
    return {{"source", window.source},
            {"center", window.center},
            {"width", window.width},
            {"low", window.low},
            {"high", window.high}};
}

void checkRegion(const WindowSubject& subject, const Region& region) {
    if (fitsInside(region, subject.image.width, subject.image.height)) return;
    throw Failure(
        Exit::usage, subject.source.file, "no window",
        fmt::format("the region {},{},{},{} leaves the picture of {} x {} pixels", region.left, region.top,
                    region.width, region.height, subject.image.width, subject.image.height),
        "Regions are L,T,W,H from the top left corner.");
}

Window automaticWindow(const WindowSubject& subject, const std::string& source,
                       const std::optional<Region>& region) {
    const auto& image = subject.image;
    int low = 0;
    int high = 0;
    int found = 0;
    if (region) {
        checkRegion(subject, *region);
        const auto corners = toolkitCorners(*region, image.height);
        found = QVR_DISP_AutoWLByROI(low, high, image.width, image.height, image.pixels.data(), kAdoptedBits,
                                     corners.first, corners.second, kLowFraction, kHighFraction);
        if (!found)
            throw Failure(
                Exit::usage, subject.source.file, "no window",
                fmt::format("the region of {} x {} pixels is too small", region->width, region->height),
                "At least 51 x 51 are needed.");
    } else {
        found = QVR_DISP_AutoWL(low, high, image.width, image.height, image.pixels.data(), kAdoptedBits,
                                kLowFraction, kHighFraction);
        if (!found)
            throw Failure(Exit::internal, subject.source.file, "no window", "the automatic window failed");
    }
    const int width = high - low + 1;
    if (width <= kNarrowest) return withEnds(source, 8192, 16384);
    return {source, (low + high) / 2, width, low, high};
}

std::optional<Window> fileWindow(const WindowSubject& subject, int number) {
    const auto& source = subject.source;
    const auto index = static_cast<std::size_t>(number) - 1;
    if (number < 1 || index >= source.windows.size()) return std::nullopt;
    const auto& stored = source.windows[index];
    // A centre of 0 is an empty field, unless the file's values may be negative.
    const bool centerMissing = stored.center == 0 && !source.format.isSigned && source.intercept == 0;
    if (centerMissing || !(stored.width > 0)) return std::nullopt;
    const auto adopted = subject.adoption.window(stored, source.slope, source.intercept);
    if (!adopted || !isGiven(adopted->center, adopted->width)) return std::nullopt;
    return withEnds(number == 1 ? "file" : fmt::format("file:{}", number), adopted->center, adopted->width);
}

Window chooseWindow(const WindowSubject& subject, const WindowRequest& request,
                    const std::vector<ViewPreset>& views, Console& console) {
    using Kind = WindowRequest::Kind;
    const auto& roi = request.roi;
    switch (request.kind) {
        case Kind::given:
            if (!isGiven(request.center, request.width))
                return insteadOf(subject, request.center, request.width, console);
            return withEnds("given", request.center, request.width);
        case Kind::automatic:
            return wholeWindow(subject, console);
        case Kind::collimation:
            return collimationWindow(subject, console);
        case Kind::roi:
            return automaticWindow(
                subject, fmt::format("auto:roi={},{},{},{}", roi.left, roi.top, roi.width, roi.height), roi);
        case Kind::file:
            return requestedFileWindow(subject, request.number, console);
        case Kind::preset:
            return presetWindow(subject, request.preset);
        case Kind::none:
            break;
    }
    return defaultWindow(subject, views, console);
}

}  // namespace qvr::tool

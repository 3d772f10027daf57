// Raw files are read through the library; what their values mean stands in the JSON file beside them.
#include "tools/demo/sample.h"

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>

#include "qvr/qvr.h"
#include "tools/demo/check.h"
#include "tools/phantom/phantom.h"

namespace qvr {
namespace {

Sample made(const std::string& name, PhantomKind kind, int width, int height, std::uint64_t seed = 1) {
    return {name, "made", width, height, makePhantom({kind, width, height, seed})};
}

/// Turns the stored values into 14 bits with bright bones. 10 and 12 bits are kept as they are: spread over 14 they
/// would leave holes in the histogram.
void adopt(Sample& sample, int bits, bool inverse) {
    if (bits > 14) {
        for (auto& value : sample.pixels) value = static_cast<std::uint16_t>(value >> (bits - 14));
    }
    if (!inverse || sample.pixels.empty()) return;
    const int largest = *std::max_element(sample.pixels.begin(), sample.pixels.end());
    for (auto& value : sample.pixels) value = static_cast<std::uint16_t>(largest - value);
    sample.origin += ", inverted once";
}

Sample readSample(const std::filesystem::path& raw, const std::filesystem::path& description) {
    Sample sample{.name = raw.stem().string(), .origin = {}, .pixels = {}};
    int bits = 0;
    bool inverse = false;
    try {
        std::ifstream file(description);
        const auto told = nlohmann::json::parse(file);
        sample.width = told.at("width").get<int>();
        sample.height = told.at("height").get<int>();
        bits = told.at("bitsStored").get<int>();
        inverse = told.at("photometricInterpretation").get<std::string>() == "MONOCHROME1";
    } catch (const nlohmann::json::exception& error) {
        throw DemoFailure(description.string() + ": not understood: " + error.what());
    }
    if (sample.width < 1 || sample.height < 1 || sample.width > 32767 || sample.height > 32767 || bits < 1 ||
        bits > 16) {
        throw DemoFailure(description.string() + ": the size or the number of bits cannot be right");
    }
    sample.origin = std::to_string(bits) + " bits";
    sample.pixels.resize(static_cast<std::size_t>(sample.width) * static_cast<std::size_t>(sample.height));
    if (!QVR_COMP_ReadRAWFile(raw.c_str(), sample.width, sample.height, sample.pixels.data())) {
        throw DemoFailure(raw.string() + ": not read: shorter than its description says, or not readable");
    }
    adopt(sample, bits, inverse);
    return sample;
}

}  // namespace

std::optional<MiddleWindow> windowOfTheMiddle(const Sample& sample, int white) {
    const auto above =
        std::count_if(sample.pixels.begin(), sample.pixels.end(), [&](int value) { return value > white; });
    const auto share = static_cast<double>(above) / static_cast<double>(sample.pixels.size());
    if (share < 1.0 / 3) return {};
    const int width = sample.width;
    const int height = sample.height;
    int low = 0;
    int high = 0;
    // Rows count upward: the first corner's row is the bound above, the second's the first row inside.
    if (!QVR_DISP_AutoWLByROI(low, high, width, height, sample.pixels.data(), 14,
                              CPoint{width / 4, height * 3 / 4}, CPoint{width * 3 / 4, height / 4}, 0.05f,
                              0.95f)) {
        return {};
    }
    return MiddleWindow{share, (low + high) / 2, high - low + 1};
}

std::vector<Sample> madeSamples() {
    return {made("hand", PhantomKind::hand, 2048, 2500), made("chest", PhantomKind::chest, 2500, 2500)};
}

std::vector<Sample> samplesIn(const std::filesystem::path& folder) {
    std::error_code error;
    std::vector<std::filesystem::path> raws;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        if (entry.path().extension() == ".raw") raws.push_back(entry.path());
    }
    if (error) throw DemoFailure(folder.string() + ": not read: " + error.message());
    std::sort(raws.begin(), raws.end());

    std::vector<Sample> samples;
    for (const auto& raw : raws) {
        auto description = raw;
        description.replace_extension(".json");
        if (std::filesystem::exists(description)) samples.push_back(readSample(raw, description));
    }
    return samples;
}

void addMade(std::vector<Sample>& samples, std::size_t count) {
    for (std::uint64_t seed = 2; samples.size() < count; ++seed) {
        const std::string number = std::to_string(seed);
        if (seed % 2 == 0) {
            samples.push_back(made("hand-" + number, PhantomKind::hand, 1600, 2000, seed));
        } else {
            samples.push_back(made("chest-" + number, PhantomKind::chest, 2500, 2500, seed));
        }
    }
}

}  // namespace qvr

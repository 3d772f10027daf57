// Output of the verbs that write an image.
#include "outputOptions.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

#include "errors.h"
#include "loading.h"

namespace qvr::tool {

namespace {

std::vector<std::uint8_t> encodeValues(const AdoptedImage& image, bool isPgm) {
    const std::string header =
        isPgm ? fmt::format("P5\n{} {}\n{}\n", image.width, image.height, (1 << kAdoptedBits) - 1)
              : std::string();
    std::vector<std::uint8_t> out(header.begin(), header.end());
    out.reserve(out.size() + 2 * image.pixels.size());
    const auto append = [&](std::uint16_t value, int first, int second) {
        out.push_back(static_cast<std::uint8_t>(value >> first & 0xff));
        out.push_back(static_cast<std::uint8_t>(value >> second & 0xff));
    };
    if (isPgm) {
        // The other row order is its own inverse.
        for (const auto value :
             bottomRowFirst(std::span<const std::uint16_t>(image.pixels), image.width, image.height))
            append(value, 8, 0);
    } else {
        for (const auto value : image.pixels) append(value, 0, 8);
    }
    return out;
}

}  // namespace

void OutputOptions::declare(CLI::App& app, const std::string& files) {
    app.add_option("-o,--output", m_target, files)->required()->type_name("OUT");
}

void OutputOptions::declareCurve(CLI::App& app) {
    app.add_option("--curve", m_curveText,
                   "linear (default), power, exp, log or sigmoid, each alone or with :K,C")
        ->type_name("CURVE");
}

void OutputOptions::check(const Common& common) {
    if (!m_curveText.empty()) {
        const auto curve = parseCurve(m_curveText);
        if (!curve)
            notUnderstood("--curve", m_curveText,
                          "Give linear, power, exp, log or sigmoid, alone or with :K,C.");
        m_curve = *curve;
    }
    if (common.json && isStandardOutput())
        throw Failure(Exit::usage, "--json", "of no use", "standard output holds the picture",
                      "Give -o a file.");
}

bool OutputOptions::isDicom() const {
    if (m_target.size() < 4) return false;
    auto end = m_target.substr(m_target.size() - 4);
    std::transform(end.begin(), end.end(), end.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return end == ".dcm";
}

std::vector<std::uint8_t> encodeImage(const AdoptedImage& image, const Window& window, const Curve& curve,
                                      PictureFormat format) {
    if (format == PictureFormat::pgm || format == PictureFormat::raw)
        return encodeValues(image, format == PictureFormat::pgm);
    DisplayOptions options;
    options.curve = curve;
    return encode(display(image, window, options), format);
}

}  // namespace qvr::tool

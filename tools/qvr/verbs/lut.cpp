// qvr lut: the library's tables next to DICOM's function for the same window.
#include <fmt/format.h>
#include <qvr/image/rawImage.h>

#include <cmath>
#include <cstdlib>

#include "../loading.h"
#include "../outputOptions.h"
#include "../parse.h"
#include "../safeFile.h"
#include "../verb.h"

namespace qvr::tool {

namespace {

constexpr int kValues = 1 << kAdoptedBits;

// LINEAR or SIGMOID of the VOI LUT function, with greys of 0 to 255.
double dicomGrey(int value, double center, double width, bool sigmoid) {
    if (sigmoid) return 255 / (1 + std::exp(-4 * (value - center) / width));
    if (value <= center - 0.5 - (width - 1) / 2) return 0;
    if (value > center - 0.5 + (width - 1) / 2) return 255;
    return ((value - (center - 0.5)) / (width - 1) + 0.5) * 255;
}

class Lut : public Verb {
public:
    void declare(CLI::App& app) override {
        app.add_option("--window", m_windowText, "centre and width")->required()->type_name("C,W");
        m_output.declareCurve(app);
        m_output.declare(app, "table to write, as CSV; - is standard output");
    }

    Exit run(const Common& common, Console& console) override {
        m_output.check(common);
        const auto window = parseWindow(m_windowText);
        if (!window || window->kind != WindowRequest::Kind::given)
            notUnderstood("--window", m_windowText, "Give C,W as in 2048,4096.");
        if (window->center == 0 || window->width < 1)
            throw Failure(Exit::usage, "--window", "of no use",
                          fmt::format("{}/{} is no window", window->center, window->width),
                          "Give a centre that is not 0 and a width above 0.");
        checkTarget(m_output.target(), "", common.force);
        write(window->center, window->width, common, console);
        return Exit::done;
    }

private:
    void write(int center, int width, const Common& common, Console& console) const {
        const auto& curve = m_output.curve();
        const bool sigmoid = curve.type == 4;
        const auto display = displayTable(center, width, curve);
        std::vector<std::uint8_t> created(kValues);
        rawImage::Create8BitsLUT(curve.type, center - width / 2, center + width / 2, curve.k, curve.c,
                                 kValues, created.data());
        std::string csv = "value,display,create8bits,dicom,difference\n";
        int worst = 0;
        int worstAt = 0;
        for (int value = 0; value < kValues; ++value) {
            const auto at = static_cast<std::size_t>(value);
            const double grey = dicomGrey(value, center, width, sigmoid);
            const int difference = display[at] - nearestInt(grey).value_or(0);
            if (std::abs(difference) > std::abs(worst)) {
                worst = difference;
                worstAt = value;
            }
            csv += fmt::format("{},{},{},{:.2f},{}\n", value, display[at], created[at], grey, difference);
        }
        writeSafely(m_output.target(), {reinterpret_cast<const std::uint8_t*>(csv.data()), csv.size()},
                    common.force);
        report(center, width, worst, worstAt, common, console);
    }

    void report(int center, int width, int worst, int worstAt, const Common& common, Console& console) const {
        if (m_output.isStandardOutput()) return;
        const auto& curve = m_output.curve();
        const char* function = curve.type == 4 ? "SIGMOID" : "LINEAR";
        if (common.json) {
            console.object({{"output", m_output.target()},
                            {"window", {{"center", center}, {"width", width}}},
                            {"curve", {{"name", curve.name()}, {"k", curve.k}, {"c", curve.c}}},
                            {"dicom_function", function},
                            {"largest_difference", worst},
                            {"at", worstAt},
                            {"result", "ok"}});
        } else if (!common.quiet) {
            console.result(
                fmt::format("{}  {} values; the display differs from DICOM's {} by at most {} "
                            "greys (at {})\n",
                            printable(m_output.target()), kValues, function, std::abs(worst), worstAt));
        }
    }

    OutputOptions m_output;
    std::string m_windowText;
};

const VerbEntry entry(70, "lut", "the display's table next to DICOM's function", makeVerb<Lut>);

}  // namespace

}  // namespace qvr::tool

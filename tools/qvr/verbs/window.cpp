// qvr window: the automatic window of a whole image, of its collimated area and of a region.
#include <fmt/format.h>

#include "../collimation.h"
#include "../fileLoop.h"
#include "../histogramSteps.h"
#include "../interrupt.h"
#include "../loading.h"
#include "../safeFile.h"
#include "../verb.h"

namespace qvr::tool {

namespace {

// An area of the picture with its window and, when asked for, the way to it.
struct Area {
    const char* name;
    Region region;
    Window window;
    std::optional<HistogramSteps> steps;
};

Region wholeOf(const AdoptedImage& image) {
    return {0, 0, image.width, image.height};
}

// The steps are this program's own walk: they are shown only if they lead to the library's bounds.
HistogramSteps explained(const Loaded& loaded, const Region& region, const Window& window) {
    const auto pixels = static_cast<std::int64_t>(region.width) * region.height;
    const auto steps = histogramSteps(countValues(loaded.image, region), pixels);
    const bool narrow = steps.high - steps.low + 1 <= 50;  // the library's host takes the full range then
    if (!narrow && (steps.low != window.low || steps.high != window.high))
        throw Failure(Exit::internal, loaded.source.file, "not explained",
                      fmt::format("the steps lead to {}..{}, the library found {}..{}", steps.low, steps.high,
                                  window.low, window.high));
    return steps;
}

std::string screen(const Area& area) {
    const auto& region = area.region;
    const auto& window = area.window;
    std::string text = fmt::format("  {:<16}window {}/{}  {}..{}  region {},{},{},{}\n", area.name,
                                   window.center, window.width, window.low, window.high, region.left,
                                   region.top, region.width, region.height);
    if (area.steps) text += describe(*area.steps);
    if (area.steps && area.steps->high - area.steps->low + 1 <= 50)
        text += "    narrower than 51, so the full range is displayed\n";
    return text;
}

nlohmann::ordered_json object(const Area& area) {
    const auto& region = area.region;
    nlohmann::ordered_json json = {{"region", {region.left, region.top, region.width, region.height}},
                                   {"window", toJson(area.window)}};
    if (area.steps) json["steps"] = toJson(*area.steps);
    return json;
}

class WindowVerb : public Verb {
public:
    void declare(CLI::App& app) override {
        m_input.declare(app);
        app.add_option("--roi", m_roiText,
                       "the window of a region too: corner and size from the top left corner")
            ->type_name("L,T,W,H");
        app.add_flag("--explain", m_explain, "show the histogram steps");
        app.add_option("--histogram", m_histogram,
                       "write how often each value occurs, in the region if one is given")
            ->type_name("OUT.csv");
        app.add_option("FILE", m_file, "a DICOM, PGM or raw file; - is standard input")->required();
    }

    const char* targetOption() const override { return "--histogram"; }

    Exit run(const Common& common, Console& console) override {
        m_input.check();
        if (m_histogram == "-" && (common.json || m_explain))
            throw Failure(Exit::usage, "--histogram", "of no use", "standard output would hold two results",
                          "Name a file instead of -.");
        if (!m_roiText.empty()) {
            m_roi = parseRegion(m_roiText);
            if (!m_roi)
                notUnderstood("--roi", m_roiText,
                              "Give L,T,W,H from the top left corner, as in 100,50,800,600.");
        }
        return forEachFile({m_file}, common, console,
                           [&](const std::string&) { return runOne(common, console); });
    }

private:
    std::string runOne(const Common& common, Console& console) const {
        if (!m_histogram.empty()) checkTarget(m_histogram, m_file, common.force);
        const Loaded loaded = load(m_file, m_input, console);
        const auto areas = measure(loaded);
        stopIfInterrupted();
        if (!m_histogram.empty()) writeHistogram(loaded, common);
        if (m_histogram != "-") report(loaded, areas, common, console);
        return summaryLine(loaded, areas.front().window);
    }

    std::vector<Area> measure(const Loaded& loaded) const {
        const auto subject = loaded.subject();
        std::vector<Area> areas;
        if (m_roi) {
            const auto name = fmt::format("auto:roi={}", m_roiText);
            areas.push_back({"region", *m_roi, automaticWindow(subject, name, m_roi), std::nullopt});
        }
        areas.push_back({"whole image", wholeOf(loaded.image), automaticWindow(subject, "auto", std::nullopt),
                         std::nullopt});
        const auto found = findCollimation(loaded.image);
        if (found && !(*found == wholeOf(loaded.image)))
            areas.push_back(
                {"collimation", *found, automaticWindow(subject, "auto:collimation", found), std::nullopt});
        if (m_explain)
            for (auto& area : areas) area.steps = explained(loaded, area.region, area.window);
        return areas;
    }

    void writeHistogram(const Loaded& loaded, const Common& common) const {
        const auto text = toCsv(countValues(loaded.image, m_roi.value_or(wholeOf(loaded.image))));
        writeSafely(m_histogram, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()},
                    common.force);
    }

    void report(const Loaded& loaded, const std::vector<Area>& areas, const Common& common,
                Console& console) const {
        if (common.json) {
            auto json = commonJson(loaded, areas.front().window);
            for (const auto& area : areas)
                json[std::string_view(area.name) == "whole image" ? "whole" : area.name] = object(area);
            json["result"] = "ok";
            console.object(json);
            return;
        }
        std::string text =
            fmt::format("{}  {} x {}  {} -> {} bits\n", printable(loaded.source.file), loaded.source.columns,
                        loaded.source.rows, loaded.source.format.bitsStored, kAdoptedBits);
        for (const auto& area : areas) text += screen(area);
        const auto& last = areas.back();
        if (std::string_view(last.name) == "collimation")
            text += fmt::format("  dark border     {:.0f} % of the image\n",
                                100.0 * borderShare(loaded.image, last.region));
        else
            text += "  dark border     none found\n";
        console.result(text);
    }

    InputOptions m_input;
    std::string m_roiText;
    std::optional<Region> m_roi;
    bool m_explain = false;
    std::string m_histogram;
    std::string m_file;
};

const VerbEntry entry(20, "window", "the automatic window, of the image, of a region, of the collimated area",
                      makeVerb<WindowVerb>);

}  // namespace

}  // namespace qvr::tool

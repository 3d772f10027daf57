// qvr edit: turns, cuts, masks and inverts, in the order in which the options are given.
#include <dcmtk/config/osconfig.h>
#include <dcmtk/dcmdata/dcdeftag.h>
#include <fmt/format.h>

#include <algorithm>
#include <map>

#include "../dicomAttributes.h"
#include "../dicomWriter.h"
#include "../editing.h"
#include "../fileLoop.h"
#include "../interrupt.h"
#include "../loading.h"
#include "../outputOptions.h"
#include "../safeFile.h"
#include "../verb.h"

namespace qvr::tool {

namespace {

class Edit : public Verb {
public:
    void declare(CLI::App& app) override {
        m_app = &app;
        m_input.declare(app);
        m_window.declare(app, true);
        m_output.declare(app,
                         "image to write: .dcm; .pgm or .raw with 14 bits; .png or .bmp as displayed; - is "
                         "PNG on standard output");
        m_output.declareCurve(app);
        const auto repeated = [&](const char* name, const char* help, const char* type) {
            return app.add_option(name, m_values[name], help)->type_name(type)->expected(1)->take_all();
        };
        repeated("--rotate", "a quarter turn clockwise or counter-clockwise, or a half turn", "cw|ccw|180");
        app.add_flag("--mirror")->description("left to right");
        app.add_flag("--flip")->description("upside down");
        repeated("--crop", "keep a region only", "L,T,W,H");
        repeated("--mask", "fill everything outside a region, which stays in place", "L,T,W,H");
        app.add_option("--mask-fill", m_maskFill, "what masks are filled with: black (default) or white")
            ->type_name("black|white");
        app.add_flag("--invert")->description("the negative; the window follows");
        app.add_option("FILE", m_file, "a DICOM, PGM or raw file; - is standard input")->required();
    }

    Exit run(const Common& common, Console& console) override {
        m_input.check();
        m_window.check();
        m_output.check(common);
        if (!m_output.isDicom()) m_format = pictureFormat(m_output.target());
        if (m_maskFill != "black" && m_maskFill != "white")
            notUnderstood("--mask-fill", m_maskFill, "Give black or white.");
        collectSteps();
        return forEachFile({m_file}, common, console,
                           [&](const std::string&) { return runOne(common, console); });
    }

private:
    // The parser keeps one entry for every occurrence of an option; the values of one option stand in their order.
    void collectSteps() {
        std::map<std::string, std::size_t> taken;
        for (const auto* option : m_app->parse_order()) {
            const auto name = option->get_name();
            const auto values = m_values.find(name);
            const auto value = values == m_values.end() ? std::string() : values->second[taken[name]++];
            if (const auto step = readStep(name, value)) m_steps.push_back(*step);
        }
        if (m_steps.empty())
            throw Failure(Exit::usage, "edit", "nothing to do", "no edit is asked for",
                          "Give --rotate, --mirror, --flip, --crop, --mask or --invert.");
    }

    std::optional<EditStep> readStep(const std::string& name, const std::string& value) const {
        using Kind = EditStep::Kind;
        const bool white = m_maskFill == "white";
        if (name == "--mirror") return EditStep{Kind::mirror, {}, white};
        if (name == "--flip") return EditStep{Kind::flip, {}, white};
        if (name == "--invert") return EditStep{Kind::invert, {}, white};
        if (name == "--rotate") {
            if (value == "cw") return EditStep{Kind::clockwise, {}, white};
            if (value == "ccw") return EditStep{Kind::counterClockwise, {}, white};
            if (value == "180") return EditStep{Kind::halfTurn, {}, white};
            notUnderstood(name, value, "Give cw, ccw or 180.");
        }
        if (name != "--crop" && name != "--mask") return std::nullopt;
        const auto region = parseRegion(value);
        if (!region) notUnderstood(name, value, "Give L,T,W,H in pixels, as in 0,0,800,600.");
        return EditStep{name == "--crop" ? Kind::crop : Kind::mask, *region, white};
    }

    std::string runOne(const Common& common, Console& console) const {
        checkTarget(m_output.target(), m_file, common.force);
        Loaded loaded = load(m_file, m_input, console);
        Window window = chooseWindow(loaded.subject(), m_window.request(), m_window.views(), console);
        EditedImage edited;
        edited.image = std::move(loaded.image);
        edited.windowCenter = window.center;
        edited.spacing = loaded.source.spacing;
        if (loaded.source.header)
            edited.patientOrientation = valuesOf(*loaded.source.header, DCM_PatientOrientation);
        for (const auto& step : m_steps) {
            stopIfInterrupted();
            try {
                edit(edited, step);
            } catch (const Failure& failure) {
                throw failure.about(m_file);
            }
        }
        stopIfInterrupted();
        window.low += edited.windowCenter - window.center;
        window.high += edited.windowCenter - window.center;
        window.center = edited.windowCenter;
        const auto uid = write(loaded, edited, window, common.force);
        report(loaded, edited, window, uid, common, console);
        return summaryLine(loaded, window);
    }

    std::string write(const Loaded& loaded, const EditedImage& edited, const Window& window,
                      bool force) const {
        if (!m_output.isDicom()) {
            writeSafely(m_output.target(), encodeImage(edited.image, window, m_output.curve(), m_format),
                        force);
            return {};
        }
        DicomImage out;
        out.width = edited.image.width;
        out.height = edited.image.height;
        out.pixels = edited.image.pixels;
        out.windowCenter = window.center;
        out.windowWidth = window.width;
        out.curve = m_output.curve();
        out.source = loaded.source.header;
        out.negative = edited.negative;
        out.derivation = edited.derivation;
        out.quarterTurn = edited.quarterTurn;
        out.spacing = edited.spacing;
        out.patientOrientation = edited.patientOrientation;
        return writeDicom(m_output.target(), out, force);
    }

    void report(const Loaded& loaded, const EditedImage& edited, const Window& window, const std::string& uid,
                const Common& common, Console& console) const {
        if (m_output.isStandardOutput()) return;
        if (common.json) {
            auto json = commonJson(loaded, window);
            json["edits"] = edited.derivation;
            json["output"] = m_output.target();
            json["output_size"] = {edited.image.width, edited.image.height};
            if (!uid.empty()) json["new_uid"] = uid;
            json["result"] = "ok";
            console.object(json);
        } else if (!common.quiet) {
            console.result(fmt::format("{}  {} x {}  {}\n", printable(m_output.target()), edited.image.width,
                                       edited.image.height, edited.derivation));
        }
    }

    CLI::App* m_app = nullptr;
    InputOptions m_input;
    WindowOptions m_window;
    OutputOptions m_output;
    std::map<std::string, std::vector<std::string>> m_values;  // of the options that may be repeated
    std::string m_maskFill = "black";
    std::string m_file;
    std::vector<EditStep> m_steps;
    PictureFormat m_format = PictureFormat::png;
};

const VerbEntry entry(50, "edit", "turn, cut, mask or invert an image", makeVerb<Edit>);

}  // namespace

}  // namespace qvr::tool

// qvr render: the picture as it is displayed, written to a file.
#include <dcmtk/config/osconfig.h>
#include <dcmtk/dcmdata/dcuid.h>
#include <fmt/format.h>

#include "../display.h"
#include "../fileLoop.h"
#include "../interrupt.h"
#include "../loading.h"
#include "../markPlacing.h"
#include "../safeFile.h"
#include "../verb.h"

namespace qvr::tool {

namespace {

class Render : public Verb {
public:
    void declare(CLI::App& app) override {
        m_input.declare(app);
        m_window.declare(app, true);
        app.add_option("-o,--output", m_output,
                       "picture to write: .png, .bmp, .pgm or .raw; - is PNG on standard output")
            ->required()
            ->type_name("OUT");
        app.add_option("--size", m_size, "size of the picture; otherwise that of the image as zoomed")
            ->type_name("WxH");
        app.add_option("--zoom", m_zoom, "fit (default), or display pixels per image pixel: 0.5, 1:2, 2:1")
            ->type_name("ZOOM");
        app.add_option("--center", m_center, "image pixel in the middle, with --zoom, y downward")
            ->type_name("X,Y");
        app.add_option("--curve", m_curve,
                       "linear (default), power, exp, log or sigmoid, each alone or with :K,C")
            ->type_name("CURVE");
        app.add_option("--letterbox", m_letterbox, "on (default): black around the picture; off: without it")
            ->type_name("on|off");
        m_marks.declare(app, false, false);
        app.add_flag(
            "--new-uid", m_newUid,
            "give the picture a SOP Instance UID of its own: needed where the file's cannot name a file");
        app.add_option("FILE", m_file, "a DICOM, PGM or raw file; - is standard input")->required();
    }

    Exit run(const Common& common, Console& console) override {
        m_input.check();
        m_window.check();
        m_marks.check();
        m_options = checked();
        m_format = pictureFormat(m_output);
        if (common.json && m_output == "-")
            throw Failure(Exit::usage, "--json", "of no use", "standard output holds the picture",
                          "Give -o a file.");
        m_marks.checkDrawable(m_file, "Nothing was rendered.");
        return forEachFile({m_file}, common, console,
                           [&](const std::string&) { return runOne(common, console); });
    }

private:
    DisplayOptions checked() const {
        DisplayOptions options;
        if (!m_size.empty() && !(options.size = parseSize(m_size)))
            notUnderstood("--size", m_size, "Give WxH with sides of 1 to 32767, as in 1000x800.");
        if (!m_zoom.empty()) {
            const auto zoom = parseZoom(m_zoom);
            if (!zoom)
                notUnderstood("--zoom", m_zoom, "Give fit, or a ratio of 1/64 to 64 as in 0.5, 1:2 or 2:1.");
            options.zoom = *zoom;
        }
        if (!m_center.empty() && !(options.center = parsePoint(m_center)))
            notUnderstood("--center", m_center, "Give X,Y in image pixels, as in 500,700.");
        if (options.center && !options.zoom.ratio)
            throw Failure(Exit::usage, "--center", "of no use", "a fitted picture shows the whole image",
                          "Give --zoom with a ratio too.");
        if (!m_curve.empty()) {
            const auto curve = parseCurve(m_curve);
            if (!curve)
                notUnderstood("--curve", m_curve,
                              "Give linear, power, exp, log or sigmoid, alone or with :K,C.");
            options.curve = *curve;
        }
        if (m_letterbox != "on" && m_letterbox != "off")
            notUnderstood("--letterbox", m_letterbox, "Give on or off.");
        options.letterbox = m_letterbox == "on";
        return options;
    }

    std::string runOne(const Common& common, Console& console) const {
        checkTarget(m_output, m_file, common.force);
        const Loaded loaded = load(m_file, m_input, console);
        const auto newUid = uidFor(loaded.source);
        if (!newUid.empty()) console.note(m_file, fmt::format("new SOP Instance UID {}", newUid));
        if (m_options.center) checkCenter(loaded);
        const Window window = chooseWindow(loaded.subject(), m_window.request(), m_window.views(), console);
        const GreyPicture picture = displayed(loaded, window, console);
        stopIfInterrupted();
        writeSafely(m_output, encode(picture, m_format), common.force);
        report(loaded, window, picture, newUid, common, console);
        return summaryLine(loaded, window);
    }

    // Later steps name files after the UID: one that leaves the folder is refused from the start.
    std::string uidFor(const SourceImage& source) const {
        const auto reason = unusableUidReason(source.sopInstanceUid);
        if (!m_newUid && reason.empty()) return {};
        if (!m_newUid)
            throw Failure(Exit::refused, source.file, "refused",
                          fmt::format("SOP Instance UID \"{}\" {}, so it cannot name a file",
                                      source.sopInstanceUid, reason),
                          "Use --new-uid.");
        char uid[65] = {};
        return dcmGenerateUniqueIdentifier(uid);
    }

    void checkCenter(const Loaded& loaded) const {
        const auto& center = *m_options.center;
        if (center.x >= 0 && center.y >= 0 && center.x < loaded.image.width && center.y < loaded.image.height)
            return;
        throw Failure(Exit::usage, m_file, "not rendered",
                      fmt::format("--center {} lies outside the picture of {} x {} pixels", m_center,
                                  loaded.image.width, loaded.image.height));
    }

    // The display knows no file name; its sentence gets it here.
    GreyPicture displayed(const Loaded& loaded, const Window& window, Console& console) const {
        // Marks have their own sentences, with the file's name.
        std::optional<Failure> ofMarks;
        const auto mark = [&](rawImage& raw, const RECT& rectangle, CDC& surface) {
            try {
                placeMarks(raw, m_marks.requests(), {rectangle, shownArea(raw)}, surface, m_file, console);
            } catch (const Failure& failure) {
                ofMarks = failure;
                throw;
            }
        };
        try {
            return display(loaded.image, window, m_options, mark);
        } catch (const Failure& failure) {
            throw ofMarks ? *ofMarks : failure.about(m_file);
        }
    }

    void report(const Loaded& loaded, const Window& window, const GreyPicture& picture,
                const std::string& newUid, const Common& common, Console& console) const {
        if (m_output == "-") return;  // standard output holds the picture
        if (common.json) {
            auto json = commonJson(loaded, window);
            json["marks"] = m_marks.requests().size();
            json["output"] = m_output;
            json["output_size"] = {picture.width, picture.height};
            if (!newUid.empty()) json["new_uid"] = newUid;
            json["result"] = "ok";
            console.object(json);
        } else if (!common.quiet) {
            console.result(fmt::format("{}  {} x {}  window {}/{} ({})\n", printable(m_output), picture.width,
                                       picture.height, window.center, window.width, window.source));
        }
    }

    InputOptions m_input;
    WindowOptions m_window;
    MarkOptions m_marks;
    std::string m_output, m_size, m_zoom, m_center, m_curve, m_file;
    std::string m_letterbox = "on";
    bool m_newUid = false;
    DisplayOptions m_options;
    PictureFormat m_format = PictureFormat::png;
};

const VerbEntry entry(30, "render", "the picture as displayed, as PNG, BMP, PGM or raw pixels",
                      makeVerb<Render>);

}  // namespace

}  // namespace qvr::tool

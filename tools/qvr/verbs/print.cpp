// qvr print: the print bitmap of a region with its marks, alone or on a film.
#include <fmt/format.h>

#include <algorithm>

#include "../fileLoop.h"
#include "../interrupt.h"
#include "../loading.h"
#include "../outputOptions.h"
#include "../printing.h"
#include "../safeFile.h"
#include "../verb.h"

namespace qvr::tool {

namespace {

class Print : public Verb {
public:
    void declare(CLI::App& app) override {
        m_input.declare(app);
        m_window.declare(app, true);
        m_marks.declare(app, false, true);
        m_output.declare(app, "picture to write: .png, .bmp, .pgm or .raw; - is PNG on standard output");
        m_output.declareCurve(app);
        app.add_option("--region", m_regionText, "part of the image; otherwise all of it")
            ->type_name("L,T,W,H");
        app.add_option("--bits", m_bits, "depth of the values that are printed: 14 (default) or 12")
            ->type_name("14|12");
        app.add_option("--film", m_filmText,
                       "size of the film, as in 8x10in@300dpi; in, cm or mm; otherwise one pixel for one")
            ->type_name("WxHUNIT@Ndpi");
        app.add_option("FILE", m_file, "a DICOM, PGM or raw file; - is standard input")->required();
    }

    Exit run(const Common& common, Console& console) override {
        m_input.check();
        m_window.check();
        m_marks.check();
        m_output.check(common);
        checkOwn();
        const auto format = pictureFormat(m_output.target());
        m_marks.checkDrawable(m_file, "Nothing was printed.");
        return forEachFile({m_file}, common, console,
                           [&](const std::string&) { return runOne(format, common, console); });
    }

private:
    void checkOwn() {
        if (m_bits != "12" && m_bits != "14") notUnderstood("--bits", m_bits, "Give 12 or 14.");
        m_job.bits = m_bits == "12" ? 12 : 14;
        m_job.curve = m_output.curve();
        if (!m_filmText.empty() && !(m_job.film = parseFilm(m_filmText)))
            notUnderstood("--film", m_filmText,
                          "Give a size and a density as in 8x10in@300dpi, up to 32767 pixels a side.");
        if (!m_regionText.empty() && !(m_region = parseRegion(m_regionText)))
            notUnderstood("--region", m_regionText, "Give L,T,W,H in pixels, as in 0,0,800,600.");
    }

    std::string runOne(PictureFormat format, const Common& common, Console& console) const {
        checkTarget(m_output.target(), m_file, common.force);
        const Loaded loaded = load(m_file, m_input, console);
        const auto& image = loaded.image;
        const Window window = chooseWindow(loaded.subject(), m_window.request(), m_window.views(), console);
        PrintJob job = m_job;
        job.region = m_region.value_or(Region{0, 0, image.width, image.height});
        if (!fitsInside(job.region, image.width, image.height))
            throw Failure(Exit::usage, m_file, "not printed",
                          fmt::format("the region {} leaves the picture of {} x {} pixels", m_regionText,
                                      image.width, image.height),
                          "Regions are L,T,W,H from the top left corner.");
        // Values of 12 bits are printed as they are; larger ones lose their low bits, and the window follows.
        const int shift = job.bits == 12 && loaded.adoption.maximum() > 4095 ? kAdoptedBits - 12 : 0;
        job.window = window;
        job.window.center = std::max(1, window.center >> shift);
        job.window.width = std::max(1, window.width >> shift);

        const auto picture = printed(loaded, window, job, shift, console);
        stopIfInterrupted();
        writeSafely(m_output.target(), encode(picture, format), common.force);
        report(loaded, window, picture, common, console);
        return summaryLine(loaded, window);
    }

    GreyPicture printed(const Loaded& loaded, const Window& window, const PrintJob& job, int shift,
                        Console& console) const {
        const auto& image = loaded.image;
        if (m_marks.requests().empty()) return print(image, shift, job, nullptr, m_file);
        const CSize size{job.region.width, job.region.height};
        const int height = m_marks.heightInPixels(m_file, size, loaded.source.spacing);
        MarkedImage marked(image, window, job.curve, height);
        marked.place(m_marks.requests(), job.region, m_file, console);
        stopIfInterrupted();
        return print(image, shift, job, &marked, m_file);
    }

    void report(const Loaded& loaded, const Window& window, const GreyPicture& picture, const Common& common,
                Console& console) const {
        if (m_output.isStandardOutput()) return;
        const auto marks = m_marks.requests().size();
        if (common.json) {
            auto json = commonJson(loaded, window);
            json["marks"] = marks;
            json["print_bits"] = m_job.bits;
            json["output"] = m_output.target();
            json["output_size"] = {picture.width, picture.height};
            json["result"] = "ok";
            console.object(json);
        } else if (!common.quiet) {
            console.result(fmt::format("{}  {} x {}  {} bits  {} {}\n", printable(m_output.target()),
                                       picture.width, picture.height, m_job.bits, marks,
                                       marks == 1 ? "mark" : "marks"));
        }
    }

    InputOptions m_input;
    WindowOptions m_window;
    MarkOptions m_marks;
    OutputOptions m_output;
    std::string m_file, m_regionText, m_filmText;
    std::string m_bits = "14";
    std::optional<Region> m_region;
    PrintJob m_job;
};

const VerbEntry entry(65, "print", "the print bitmap of a region with its marks", makeVerb<Print>);

}  // namespace

}  // namespace qvr::tool

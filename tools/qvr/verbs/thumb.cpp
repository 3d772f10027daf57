// qvr thumb: the small pictures that a series keeps of its image.
#include <fmt/format.h>
#include <qvr/qvr.h>

#include <algorithm>
#include <cmath>

#include "../fileLoop.h"
#include "../interrupt.h"
#include "../loading.h"
#include "../outputOptions.h"
#include "../parse.h"
#include "../privateFolder.h"
#include "../safeFile.h"
#include "../verb.h"

namespace qvr::tool {

namespace {

constexpr CSize kConsole = {1000, 800};          // display that a thumbnail is made from
constexpr double kPreviewPixels = 600000;        // a preview needs a display of more pixels
constexpr double kLongestPreviewDisplay = 8000;  // narrower pictures than that makes possible have no preview

// The display in which the picture is `width` wide. Widths are multiples of four: the library counts the padding of
// other rows as picture.
CSize displayOfWidth(double width, CSize image) {
    const int side = std::max(4, truncatedInt(width) / 4 * 4);
    return {side, truncatedInt(std::ceil(static_cast<double>(side) * image.cy / image.cx))};
}

CSize thumbDisplay(CSize image) {
    const double scale =
        std::min(static_cast<double>(kConsole.cx) / image.cx, static_cast<double>(kConsole.cy) / image.cy);
    return displayOfWidth(image.cx * scale, image);
}

// A display that is just large enough for a preview.
CSize previewDisplay(const std::string& file, CSize image) {
    const double shape = static_cast<double>(image.cx) / image.cy;
    const auto display = displayOfWidth(std::sqrt(1.05 * kPreviewPixels * shape) + 4, image);
    if (std::max(display.cx, display.cy) <= kLongestPreviewDisplay) return display;
    throw Failure(Exit::usage, file, "no preview",
                  fmt::format("{} x {} pixels are too narrow for one", image.cx, image.cy),
                  "Leave out --preview.");
}

// One study with one series, as a console has it while it acquires.
GreyPicture reduced(const std::string& file, const AdoptedImage& image, const Window& window, CSize display,
                    bool preview) {
    if (!hasThumbnail({image.width, image.height}, display))
        throw Failure(Exit::usage, file, preview ? "no preview" : "no thumbnail",
                      fmt::format("its display is less than {} pixels wide or high", kSmallestDisplay));
    const PrivateFolder folder;  // goes after the exam that has files in it
    dcmExam exam;
    const QVR_ST_STUDY study{};
    const QVR_ST_SERIES series{};
    QVR_ST_IMAGE record{};
    record.Width = image.width;
    record.Height = image.height;
    record.BitsStored = kAdoptedBits;
    record.HighBit = kAdoptedBits - 1;
    record.PixelData = image.pixels.data();
    record.SOPInstanceUID = "image";
    record.WindowCenter = window.center;
    record.WindowWidth = window.width;
    const RECT rectangle{0, 0, display.cx, display.cy};
    CRasterDC surface(1, 1);
    if (!exam.CreateStudy(&study, dcmStudy::DX) || !exam.CreateSeries(0, &series) ||
        !exam.CreateImage(0, 0, &record, folder.path().c_str(), &rectangle, &surface))
        throw Failure(Exit::notWritten, file, "no thumbnail",
                      "the picture could not be made, or the folder for temporary files is full",
                      "Let TMPDIR name another one.");
    const auto* kept = exam.GetStudy(0)->GetSeries(0);
    const CDib* bitmap = preview ? kept->GetPreview() : kept->GetThumb();
    if (!bitmap || bitmap->InfoHeader->biWidth < 1 || bitmap->InfoHeader->biHeight < 1)
        throw Failure(Exit::usage, file, preview ? "no preview" : "no thumbnail",
                      "its picture would be less than one pixel wide or high");
    return pictureOf(*bitmap);
}

class Thumb : public Verb {
public:
    void declare(CLI::App& app) override {
        m_input.declare(app);
        m_window.declare(app, true);
        m_output.declare(app, "picture to write: .png, .bmp, .pgm or .raw; - is PNG on standard output");
        app.add_flag("--preview", m_preview,
                     "the preview, whose longer side is 600 pixels; otherwise a fifth of a display of 1000 x "
                     "800");
        app.add_option("FILE", m_file, "a DICOM, PGM or raw file; - is standard input")->required();
    }

    Exit run(const Common& common, Console& console) override {
        m_input.check();
        m_window.check();
        m_output.check(common);
        const auto format = pictureFormat(m_output.target());
        return forEachFile({m_file}, common, console,
                           [&](const std::string&) { return runOne(format, common, console); });
    }

private:
    std::string runOne(PictureFormat format, const Common& common, Console& console) const {
        checkTarget(m_output.target(), m_file, common.force);
        const Loaded loaded = load(m_file, m_input, console);
        const CSize image{loaded.image.width, loaded.image.height};
        const CSize display = m_preview ? previewDisplay(m_file, image) : thumbDisplay(image);
        const Window window = chooseWindow(loaded.subject(), m_window.request(), m_window.views(), console);
        const auto picture = reduced(m_file, loaded.image, window, display, m_preview);
        stopIfInterrupted();
        writeSafely(m_output.target(), encode(picture, format), common.force);
        report(loaded, window, picture, common, console);
        return summaryLine(loaded, window);
    }

    void report(const Loaded& loaded, const Window& window, const GreyPicture& picture, const Common& common,
                Console& console) const {
        if (m_output.isStandardOutput()) return;
        if (common.json) {
            auto json = commonJson(loaded, window);
            json["output"] = m_output.target();
            json["output_size"] = {picture.width, picture.height};
            json["result"] = "ok";
            console.object(json);
        } else if (!common.quiet) {
            console.result(fmt::format("{}  {} x {}  window {}/{} ({})\n", printable(m_output.target()),
                                       picture.width, picture.height, window.center, window.width,
                                       window.source));
        }
    }

    InputOptions m_input;
    WindowOptions m_window;
    OutputOptions m_output;
    std::string m_file;
    bool m_preview = false;
};

const VerbEntry entry(40, "thumb", "the thumbnail or the preview of an image", makeVerb<Thumb>);

}  // namespace

}  // namespace qvr::tool

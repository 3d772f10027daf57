// qvr burn: marks into the pixels of an image, or beside them.
#include <dcmtk/config/osconfig.h>
#include <fmt/format.h>
#include <qvr/image/QVR_COMP.h>

#include <map>

#include "../dicomWriter.h"
#include "../fileLoop.h"
#include "../interrupt.h"
#include "../loading.h"
#include "../markPlacing.h"
#include "../outputOptions.h"
#include "../presentationState.h"
#include "../privateFolder.h"
#include "../safeFile.h"
#include "../verb.h"

namespace qvr::tool {

namespace {

constexpr std::uint16_t kBurned = (1 << kAdoptedBits) - 1;

// The library exports into a file; that file is read back.
AdoptedImage burned(MarkedImage& marked, const std::string& file) {
    const PrivateFolder folder;
    auto& raw = marked.raw();
    const auto path = folder / "burned.raw";
    if (!raw.CreateBAKFile("image", folder.path().c_str()) ||
        !raw.WriteFileForPRES(path.c_str(), &marked.surface()))
        throw Failure(Exit::notWritten, file, "not burned", "the folder for temporary files is full",
                      "Let TMPDIR name another one.");
    AdoptedImage image;
    image.width = raw.GetWidth();
    image.height = raw.GetHeight();
    image.pixels.resize(static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height));
    if (!QVR_COMP_ReadRAWFile(path.c_str(), image.width, image.height, image.pixels.data()))
        throw Failure(Exit::notWritten, file, "not burned", "the temporary file cannot be read back");
    marked.checkBurned(image.pixels, kBurned, file);
    return image;
}

class Burn : public Verb {
public:
    void declare(CLI::App& app) override {
        m_input.declare(app);
        m_window.declare(app, true);
        m_marks.declare(app, true, true);
        m_output.declare(app,
                         "image to write: .dcm; .pgm or .raw with 14 bits; .png or .bmp as displayed; - is "
                         "PNG on standard output");
        m_output.declareCurve(app);
        app.add_option("--marks", m_kind,
                       "burn (default): into the pixels; gsps: beside them, as a presentation state that "
                       "refers to FILE; both: OUT.dcm and OUT-gsps.dcm")
            ->type_name("burn|gsps|both");
        app.add_option("FILE", m_file, "a DICOM, PGM or raw file; - is standard input")->required();
    }

    Exit run(const Common& common, Console& console) override {
        m_input.check();
        m_window.check();
        m_marks.check();
        m_output.check(common);
        checkKind();
        m_marks.checkDrawable(m_file, "Nothing was burned.");
        return forEachFile({m_file}, common, console,
                           [&](const std::string&) { return runOne(common, console); });
    }

private:
    void checkKind() {
        if (m_kind != "burn" && m_kind != "gsps" && m_kind != "both")
            notUnderstood("--marks", m_kind, "Give burn, gsps or both.");
        m_burn = m_kind != "gsps";
        m_beside = m_kind != "burn";
        if (!m_output.isDicom() && m_beside)
            throw Failure(Exit::usage, m_output.target(), "not written",
                          "a presentation state is a DICOM file", "Use a name that ends in .dcm.");
        if (m_beside && m_output.curve().type != 0)
            throw Failure(Exit::usage, "--curve", "of no use",
                          "a presentation state has a linear window here", "Use --marks burn.");
        if (!m_output.isDicom()) m_format = pictureFormat(m_output.target());
        m_stateTarget = m_output.target();
        if (m_kind == "both") m_stateTarget.insert(m_stateTarget.size() - 4, "-gsps");
    }

    std::string runOne(const Common& common, Console& console) const {
        checkTarget(m_output.target(), m_file, common.force);
        if (m_beside) checkTarget(m_stateTarget, m_file, common.force);
        if (m_kind == "both") checkApart(m_output.target(), m_stateTarget);
        const Loaded loaded = load(m_file, m_input, console);
        if (m_beside) checkReferable(loaded.source);
        const Window window = chooseWindow(loaded.subject(), m_window.request(), m_window.views(), console);
        const auto& image = loaded.image;
        const int height = m_marks.heightInPixels(m_file, {image.width, image.height}, loaded.source.spacing);
        MarkedImage marked(image, window, m_output.curve(), height);
        marked.place(m_marks.requests(), {0, 0, image.width, image.height}, m_file, console);
        stopIfInterrupted();

        Uids uids;
        std::vector<std::uint8_t> state;
        if (m_beside) {
            auto made = encodePresentationState(loaded, window, marked.marks());
            state = std::move(made.bytes);
            uids["presentation_state_uid"] = made.sopInstanceUid;
        }
        std::vector<std::uint8_t> picture;
        if (m_burn) picture = encodeBurned(loaded, burned(marked, m_file), window, uids);
        if (m_burn && m_beside)
            writeBothSafely(m_output.target(), picture, m_stateTarget, state, common.force);
        else
            writeSafely(m_output.target(), m_burn ? picture : state, common.force);
        report(loaded, window, marked, height, uids, common, console);
        return summaryLine(loaded, window);
    }

    using Uids = std::map<std::string, std::string>;

    std::vector<std::uint8_t> encodeBurned(const Loaded& loaded, const AdoptedImage& image,
                                           const Window& window, Uids& uids) const {
        stopIfInterrupted();
        if (!m_output.isDicom()) return encodeImage(image, window, m_output.curve(), m_format);
        DicomImage out;
        out.width = image.width;
        out.height = image.height;
        out.pixels = image.pixels;
        out.windowCenter = window.center;
        out.windowWidth = window.width;
        out.curve = m_output.curve();
        out.source = loaded.source.header;
        out.marksBurned = true;
        out.derivation = "marks burned in";
        out.spacing = loaded.source.spacing;
        auto file = encodeDicom(m_output.target(), out);
        uids["new_uid"] = file.sopInstanceUid;
        return std::move(file.bytes);
    }

    void report(const Loaded& loaded, const Window& window, const MarkedImage& marked, int height,
                const Uids& uids, const Common& common, Console& console) const {
        if (m_output.isStandardOutput()) return;
        const auto count = marked.marks().size();
        if (common.json) {
            auto json = commonJson(loaded, window);
            json["marks"] = count;
            json["mark_height"] = height;
            for (const auto& [text, box] : marked.marks())
                json["mark_boxes"].push_back(
                    {{"text", text}, {"box", {box.left, box.top, box.width, box.height}}});
            json["output"] = m_output.target();
            if (m_kind == "both") json["presentation_state"] = m_stateTarget;
            for (const auto& [name, uid] : uids) json[name] = uid;
            json["result"] = "ok";
            console.object(json);
        } else if (!common.quiet) {
            console.result(fmt::format("{}  {} {} {}\n", printable(m_output.target()), count,
                                       count == 1 ? "mark" : "marks",
                                       m_burn ? "burned" : "beside the image"));
            if (m_kind == "both")
                console.result(fmt::format("{}  the same beside the image\n", printable(m_stateTarget)));
        }
    }

    InputOptions m_input;
    WindowOptions m_window;
    MarkOptions m_marks;
    OutputOptions m_output;
    std::string m_file, m_stateTarget;
    std::string m_kind = "burn";
    bool m_burn = true;
    bool m_beside = false;
    PictureFormat m_format = PictureFormat::png;
};

const VerbEntry entry(60, "burn", "marks into the pixels, or beside them", makeVerb<Burn>);

}  // namespace

}  // namespace qvr::tool

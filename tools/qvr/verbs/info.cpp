// qvr info: what a file is, and how it would be adopted.
#include <fmt/format.h>

#include "../fileLoop.h"
#include "../loading.h"
#include "../verb.h"

namespace qvr::tool {

namespace {

std::string joined(std::initializer_list<std::string_view> parts, std::string_view separator) {
    std::string text;
    for (const auto part : parts) {
        if (part.empty()) continue;
        if (!text.empty()) text += separator;
        text += part;
    }
    return text.empty() ? "not stated" : printable(text);
}

std::string spacingText(const SourceImage& source) {
    if (!source.spacing) return "not stated";
    return fmt::format("{} x {} mm per column and row ({})", source.spacing->first, source.spacing->second,
                       source.spacingSource);
}

std::string uidText(const SourceImage& source) {
    if (source.sopInstanceUid.empty()) return "none";
    const auto reason = unusableUidReason(source.sopInstanceUid);
    return printable(source.sopInstanceUid) +
           (reason.empty()
                ? ""
                : fmt::format(" - refused: {}, so it cannot name a file; --new-uid is needed", reason));
}

// The file's own windows and the one that would be used.
std::string windowText(const Loaded& loaded, const Window& used) {
    std::string text = fmt::format("{}/{} ({})", used.center, used.width, used.source);
    int number = 0;
    for (const auto& stored : loaded.source.windows) {
        text += fmt::format("; file:{} {}/{}", ++number, stored.center, stored.width);
        if (const auto adopted = fileWindow(loaded.subject(), number))
            text += fmt::format(" -> {}/{}", adopted->center, adopted->width);
        else
            text += " counts as none";
    }
    return text;
}

std::string screen(const Loaded& loaded, const Window& used) {
    const auto& source = loaded.source;
    std::string text = printable(source.file) + '\n';
    const auto line = [&text](const char* name, const std::string& value) {
        text += fmt::format("  {:<12}{}\n", name, value);
    };
    line("kind", joined({source.kind, source.compression}, ", "));
    line("view", joined({source.modality, source.bodyPart, source.view}, " "));
    line("laterality", joined({source.laterality}, ""));
    line("size",
         fmt::format("{} x {} pixels{}", source.columns, source.rows,
                     source.frames > 1 ? fmt::format(", the first of {} frames", source.frames) : ""));
    line("bits",
         fmt::format("{} of {}, high bit {}, {} -> {}", source.format.bitsStored, source.bitsAllocated,
                     source.format.highBit, source.format.isSigned ? "signed" : "unsigned", kAdoptedBits));
    line("polarity", fmt::format("{}{}", source.photometric.empty() ? "bright is high" : source.photometric,
                                 loaded.adoption.inverted() ? ", inverted on import" : ", kept"));
    line("adoption", loaded.adoption.description());
    line("values", fmt::format("{}..{} after adoption", loaded.image.lowest, loaded.image.highest));
    line("window", windowText(loaded, used));
    line("spacing", spacingText(source));
    line("uid", uidText(source));
    return text;
}

nlohmann::ordered_json object(const Loaded& loaded, const Window& used) {
    const auto& source = loaded.source;
    auto json = commonJson(loaded, used);
    json["kind"] = source.kind;
    json["compression"] = source.compression;
    json["photometric"] = source.photometric;
    json["bits_allocated"] = source.bitsAllocated;
    json["high_bit"] = source.format.highBit;
    json["signed"] = source.format.isSigned;
    json["adoption"] = loaded.adoption.description();
    json["values"] = {{"low", loaded.image.lowest}, {"high", loaded.image.highest}};
    json["file_windows"] = nlohmann::ordered_json::array();
    for (const auto& window : source.windows)
        json["file_windows"].push_back({{"center", window.center}, {"width", window.width}});
    json["frames"] = source.frames;
    json["modality"] = source.modality;
    json["body_part"] = source.bodyPart;
    json["view"] = source.view;
    json["laterality"] = source.laterality;
    json["spacing"] = source.spacing ? nlohmann::ordered_json{source.spacing->first, source.spacing->second}
                                     : nlohmann::ordered_json();
    json["sop_instance_uid"] = source.sopInstanceUid;
    json["uid_usable"] = unusableUidReason(source.sopInstanceUid).empty();
    json["result"] = "ok";
    return json;
}

class Info : public Verb {
public:
    void declare(CLI::App& app) override {
        m_input.declare(app);
        m_window.declare(app, false);
        app.add_option("FILE", m_files, "DICOM, PGM or raw files; - is standard input")->required();
    }

    Exit run(const Common& common, Console& console) override {
        m_input.check();
        m_window.check();
        return forEachFile(m_files, common, console, [&](const std::string& file) {
            const Loaded loaded = load(file, m_input, console);
            const Window used = chooseWindow(loaded.subject(), m_window.request(), m_window.views(), console);
            if (common.json)
                console.object(object(loaded, used));
            else
                console.result(screen(loaded, used));
            return summaryLine(loaded, used);
        });
    }

private:
    InputOptions m_input;
    WindowOptions m_window;
    std::vector<std::string> m_files;
};

const VerbEntry entry(10, "info", "what a file is and how it would be adopted", makeVerb<Info>);

}  // namespace

}  // namespace qvr::tool

// Options and reading that the verbs share.
#include "loading.h"

#include <fmt/format.h>

#include "errors.h"
#include "interrupt.h"

namespace qvr::tool {

namespace {

std::string presetNames() {
    std::string names;
    for (const auto& preset : presets()) names += (names.empty() ? "" : ", ") + std::string(preset.name);
    return names;
}

}  // namespace

void notUnderstood(const std::string& option, const std::string& value, const std::string& advice) {
    throw Failure(Exit::usage, option, "not understood", fmt::format("\"{}\"", value), advice);
}

void InputOptions::declare(CLI::App& app) {
    app.add_option(
           "--raw", m_text,
           "the file is bare pixels: 16 bits little-endian, bottom row first, 14 bits used unless said")
        ->type_name("WxH[:BITS]");
}

void InputOptions::check() {
    if (m_text.empty()) return;
    m_raw = parseRawSpec(m_text);
    if (!m_raw)
        notUnderstood("--raw", m_text,
                      "Give columns and rows as in 3072x2048 or 3072x2048:12, 1 to 16 bits.");
}

void WindowOptions::declare(CLI::App& app, bool withWindow) {
    if (withWindow)
        app.add_option(
               "--window", m_window,
               fmt::format("C,W | auto | auto:collimation | auto:roi=L,T,W,H | file[:N] | preset:NAME ({}); "
                           "otherwise a view preset, the file's own window if it overlaps the values, auto",
                           presetNames()))
            ->type_name("WINDOW");
    app.add_option("--view-preset", m_viewTexts,
                   "preset for a body part, or for one view of it, as in CHEST/PA=chest; may be repeated")
        ->type_name("BODYPART[/VIEW]=NAME")
        ->expected(1)
        ->take_all();
}

void WindowOptions::check() {
    if (!m_window.empty()) {
        const auto request = parseWindow(m_window);
        if (!request)
            notUnderstood(
                "--window", m_window,
                fmt::format("Give C,W, auto, auto:collimation, auto:roi=L,T,W,H, file, file:N or preset:NAME "
                            "with one of {}.",
                            presetNames()));
        m_request = *request;
    }
    for (const auto& text : m_viewTexts) {
        const auto view = parseViewPreset(text);
        if (!view)
            notUnderstood(
                "--view-preset", text,
                fmt::format("Give BODYPART=NAME or BODYPART/VIEW=NAME with one of {}.", presetNames()));
        m_views.push_back(*view);
    }
}

Loaded load(const std::string& file, const InputOptions& options, Console& console) {
    return adopted(file, readSource(file, options.raw()), console);
}

Loaded adopted(const std::string& file, SourceImage source, Console& console) {
    stopIfInterrupted();
    for (const auto& warning : source.warnings) console.warning(file, warning);
    const Adoption adoption(source.format);
    auto image = adopt(source, adoption);
    stopIfInterrupted();
    std::vector<std::uint16_t>().swap(source.words);
    console.note(
        file, fmt::format("adopted: {}; values {}..{}", adoption.description(), image.lowest, image.highest));
    return {std::move(source), adoption, std::move(image)};
}

nlohmann::ordered_json commonJson(const Loaded& loaded, const Window& window) {
    return {{"file", loaded.source.file},       {"rows", loaded.source.rows},
            {"columns", loaded.source.columns}, {"source_bits", loaded.source.format.bitsStored},
            {"adopted_bits", kAdoptedBits},     {"inverted_on_import", loaded.adoption.inverted()},
            {"window", toJson(window)},         {"marks", 0}};
}

std::string summaryLine(const Loaded& loaded, const Window& window) {
    std::string source = window.source;
    if (source == "auto") source = "automatic";
    if (source.starts_with("auto:")) source.erase(0, sizeof("auto:") - 1);
    return fmt::format("{} x {}  {} -> {} bits  window {}/{} ({})", loaded.source.columns, loaded.source.rows,
                       loaded.source.format.bitsStored, kAdoptedBits, window.center, window.width, source);
}

}  // namespace qvr::tool

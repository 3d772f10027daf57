// --window, --view-preset and the presets.
#include <fmt/format.h>

#include <algorithm>

#include "parse.h"
#include "windowChoice.h"

namespace qvr::tool {

namespace {

bool isPreset(std::string_view name) {
    return std::any_of(presets().begin(), presets().end(),
                       [&](const Preset& preset) { return preset.name == name; });
}

// The rest of `text` behind `prefix`, or nothing.
std::optional<std::string_view> behind(std::string_view text, std::string_view prefix) {
    if (!text.starts_with(prefix)) return std::nullopt;
    return text.substr(prefix.size());
}

}  // namespace

const std::vector<Preset>& presets() {
    static const std::vector<Preset> all = {
        {"full", 0.5, 1.0, "everything that the bits can hold"},
        {"bone", 0.55, 0.5, "bones"},
        {"chest", 0.45, 0.7, "lungs and mediastinum"},
        {"soft", 0.35, 0.35, "soft parts"},
    };
    return all;
}

std::optional<WindowRequest> parseWindow(std::string_view text) {
    WindowRequest request;
    using Kind = WindowRequest::Kind;
    if (text == "auto") {
        request.kind = Kind::automatic;
    } else if (text == "auto:collimation") {
        request.kind = Kind::collimation;
    } else if (text == "file") {
        request.kind = Kind::file;
    } else if (const auto region = behind(text, "auto:roi=")) {
        const auto parsed = parseRegion(*region);
        if (!parsed) return std::nullopt;
        request.kind = Kind::roi;
        request.roi = *parsed;
    } else if (const auto number = behind(text, "file:")) {
        const auto parsed = parseInt(*number);
        if (!parsed || *parsed < 1) return std::nullopt;
        request.kind = Kind::file;
        request.number = *parsed;
    } else if (const auto name = behind(text, "preset:")) {
        if (!isPreset(*name)) return std::nullopt;
        request.kind = Kind::preset;
        request.preset = *name;
    } else {
        const auto values = parseInts(text, ',', 2);
        if (!values) return std::nullopt;
        request.kind = Kind::given;
        request.center = (*values)[0];
        request.width = (*values)[1];
    }
    return request;
}

std::optional<ViewPreset> parseViewPreset(std::string_view text) {
    const auto sides = split(text, '=');
    if (sides.size() != 2 || !isPreset(sides[1])) return std::nullopt;
    const auto names = split(sides[0], '/');
    if (names.size() > 2 || names[0].empty() || (names.size() == 2 && names[1].empty())) return std::nullopt;
    return ViewPreset{std::string(names[0]), names.size() == 2 ? std::string(names[1]) : std::string(),
                      std::string(sides[1])};
}

}  // namespace qvr::tool

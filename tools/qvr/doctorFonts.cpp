// Fonts are asked for as the library does: outlines in one colour; and the library itself measures a letter.
#include <fmt/format.h>
#include <fontconfig/fontconfig.h>

#include <algorithm>
#include <array>
#include <memory>

#include <qvr/qvr.h>

#include "doctor.h"

namespace qvr::tool {

namespace {

using Grade = Finding::Grade;

template <class Object, void (*release)(Object*)>
struct Releaser {
    void operator()(Object* object) const { release(object); }
};
using Config = std::unique_ptr<FcConfig, Releaser<FcConfig, FcConfigDestroy>>;
using Pattern = std::unique_ptr<FcPattern, Releaser<FcPattern, FcPatternDestroy>>;
using Fonts = std::unique_ptr<FcFontSet, Releaser<FcFontSet, FcFontSetDestroy>>;

struct Script {
    const char* name;
    std::array<char32_t, 3> letters;  // some that every font of the script has
    const char* package;              // of Debian
};
constexpr Script kScripts[] = {
    {"Latin", {U'L', U'R', U'\u00e9'}, "fonts-liberation"},
    {"Greek", {U'\u0391', U'\u03b1', U'\u03c9'}, "fonts-dejavu-core"},
    {"Cyrillic", {U'\u0410', U'\u041f', U'\u044f'}, "fonts-dejavu-core"},
    {"Hebrew", {U'\u05d0', U'\u05d9', U'\u05de'}, "fonts-dejavu-core"},
    {"Arabic", {U'\u0627', U'\u0633', U'\u064a'}, "fonts-dejavu-core"},
    {"Devanagari", {U'\u0905', U'\u0915', U'\u0939'}, "fonts-noto-core"},
    {"Thai", {U'\u0e01', U'\u0e0b', U'\u0e22'}, "fonts-noto-core"},
    {"Chinese", {U'\u5de6', U'\u53f3', U'\u4f4d'}, "fonts-noto-cjk"},
    {"Japanese", {U'\u3042', U'\u30a2', U'\u5de6'}, "fonts-noto-cjk"},
    {"Korean", {U'\uac00', U'\uc88c', U'\uc6b0'}, "fonts-noto-cjk"},
};

std::string property(FcPattern* pattern, const char* name) {
    FcChar8* text = nullptr;
    return FcPatternGetString(pattern, name, 0, &text) == FcResultMatch ? reinterpret_cast<const char*>(text)
                                                                        : "";
}

bool isTrue(FcPattern* pattern, const char* name) {
    FcBool value = FcFalse;
    return FcPatternGetBool(pattern, name, 0, &value) == FcResultMatch && value == FcTrue;
}

bool usable(FcPattern* font) {
    return isTrue(font, FC_OUTLINE) && !isTrue(font, FC_COLOR) && !isTrue(font, FC_VARIABLE);
}

// All faces, those that suit Arial best first.
Fonts facesForArial(FcConfig* config) {
    const Pattern pattern(FcPatternCreate());
    for (const char* family : {"Arial", "Liberation Sans"})
        FcPatternAddString(pattern.get(), FC_FAMILY, reinterpret_cast<const FcChar8*>(family));
    FcPatternAddInteger(pattern.get(), FC_SLANT, FC_SLANT_ROMAN);
    FcConfigSubstitute(config, pattern.get(), FcMatchPattern);
    FcDefaultSubstitute(pattern.get());
    FcResult result = FcResultNoMatch;
    return Fonts(FcFontSort(config, pattern.get(), FcFalse, nullptr, &result));
}

Finding arial(FcPattern* font) {
    if (!font) return {Grade::problem, "Arial", "no usable font is installed", "Install fonts-liberation."};
    const std::string family = property(font, FC_FAMILY);
    const std::string found = fmt::format("{} ({})", family, property(font, FC_FILE));
    if (family == "Arial") return {Grade::ok, "Arial", found, ""};
    if (family == "Liberation Sans" || family == "Arimo")
        return {Grade::ok, "Arial", found + " stands for it, with the same widths", ""};
    return {Grade::warning, "Arial", found + " stands for it, with other widths",
            "Install fonts-liberation."};
}

// What the library makes of it: a letter has a width, or marks cannot be set.
Finding measured() {
    CRasterDC surface(1, 1);
    CFont font(50, FW_NORMAL, "Arial", 0);
    surface.SelectObject(&font);
    const CSize extent = surface.GetTextExtent("L", 1);
    surface.SelectObject(static_cast<CFont*>(nullptr));
    if (extent.cx > 0 && extent.cy == 50)
        return {Grade::ok, "marks", fmt::format("\"L\" at font height 50 is {} x {}", extent.cx, extent.cy),
                ""};
    return {Grade::problem, "marks", "the library cannot measure text, so no mark can be set",
            "Install fonts-liberation."};
}

Finding scriptFinding(const Script& script, const std::vector<FcPattern*>& fonts) {
    const auto has = [&script](FcPattern* font) {
        FcCharSet* set = nullptr;
        return FcPatternGetCharSet(font, FC_CHARSET, 0, &set) == FcResultMatch &&
               std::all_of(script.letters.begin(), script.letters.end(),
                           [set](char32_t letter) { return FcCharSetHasChar(set, letter) == FcTrue; });
    };
    const auto found = std::find_if(fonts.begin(), fonts.end(), has);
    const std::string topic = fmt::format("script {}", script.name);
    if (found != fonts.end()) return {Grade::ok, topic, property(*found, FC_FAMILY), ""};
    return {Grade::warning, topic, "no installed font has its letters",
            fmt::format("For marks in it install {}.", script.package)};
}

}  // namespace

std::vector<Finding> examineFonts() {
    const Config config(FcInitLoadConfigAndFonts());
    if (!config)
        return {{Grade::problem, "fonts", "fontconfig does not start",
                 "Install fontconfig and fonts-liberation."}};
    const Fonts sorted = facesForArial(config.get());
    std::vector<FcPattern*> fonts;
    for (int i = 0; sorted && i < sorted->nfont; ++i)
        if (usable(sorted->fonts[i])) fonts.push_back(sorted->fonts[i]);
    std::vector<Finding> findings = {arial(fonts.empty() ? nullptr : fonts.front()), measured()};
    for (const auto& script : kScripts) findings.push_back(scriptFinding(script, fonts));
    return findings;
}

}  // namespace qvr::tool

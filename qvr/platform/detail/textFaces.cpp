// Finding faces. A face that fontconfig lists may be missing or broken by now, so the next best is always tried.
#include "qvr/platform/detail/textFaces.h"

#include <algorithm>
#include <list>

namespace qvr {

namespace {

constexpr std::size_t kRememberedCharacters = 4096;

const FcChar8* fcString(const char* text) {
    return reinterpret_cast<const FcChar8*>(text);
}

bool isTrue(FcPattern* pattern, const char* property) {
    FcBool value = FcFalse;
    return FcPatternGetBool(pattern, property, 0, &value) == FcResultMatch && value == FcTrue;
}

// Outlines in one colour only; a variable face is also listed instance by instance.
bool isUsable(FcPattern* pattern) {
    return isTrue(pattern, FC_OUTLINE) && !isTrue(pattern, FC_COLOR) && !isTrue(pattern, FC_VARIABLE);
}

bool equalsIgnoringCase(const std::string& a, const char* b) {
    return FcStrCmpIgnoreCase(fcString(a.c_str()), fcString(b)) == 0;
}

FcFontSet* sortedFonts(FcConfig* config, const std::string& name, int weight) {
    const std::unique_ptr<FcPattern, decltype(&FcPatternDestroy)> pattern(FcPatternCreate(),
                                                                          FcPatternDestroy);
    if (!pattern) return nullptr;
    if (!name.empty()) FcPatternAddString(pattern.get(), FC_FAMILY, fcString(name.c_str()));
    // The same widths as Arial, also where no configuration says so.
    if (equalsIgnoringCase(name, "Arial"))
        FcPatternAddString(pattern.get(), FC_FAMILY, fcString("Liberation Sans"));
    const int openTypeWeight = weight == 0 ? 400 : std::clamp(weight, 1, 1000);
    FcPatternAddDouble(pattern.get(), FC_WEIGHT, FcWeightFromOpenTypeDouble(openTypeWeight));
    FcPatternAddInteger(pattern.get(), FC_SLANT, FC_SLANT_ROMAN);
    FcConfigSubstitute(config, pattern.get(), FcMatchPattern);
    FcDefaultSubstitute(pattern.get());
    FcResult result = FcResultNoMatch;
    return FcFontSort(config, pattern.get(), FcFalse, nullptr, &result);
}

// At most `limit` values, the one used last in front.
template <class Key, class Value>
class RecentlyUsed {
public:
    explicit RecentlyUsed(std::size_t limit) : m_limit(limit) {}

    template <class Make>
    std::shared_ptr<Value> get(const Key& key, Make&& make) {
        const auto found =
            std::find_if(m_kept.begin(), m_kept.end(), [&](const auto& kept) { return kept.first == key; });
        if (found != m_kept.end()) {
            m_kept.splice(m_kept.begin(), m_kept, found);
            return found->second;
        }
        std::shared_ptr<Value> value = make();
        if (!value) return nullptr;
        m_kept.emplace_front(key, value);
        if (m_kept.size() > m_limit) m_kept.pop_back();
        return value;
    }

private:
    std::size_t m_limit;
    std::list<std::pair<Key, std::shared_ptr<Value>>> m_kept;
};

// What the process keeps.
struct Kept {
    ~Kept();
    std::mutex mutex;
    std::unique_ptr<FcConfig, decltype(&FcConfigDestroy)> config{FcInitLoadConfigAndFonts(), FcConfigDestroy};
    RecentlyUsed<std::pair<std::string, int>, FaceSearch> searches{kKeptFonts};
    std::mutex facesMutex;
    RecentlyUsed<std::pair<std::string, int>, TextFace> faces{kKeptFaces};
};

// A surface with static lifetime may ask for text after the end of Kept.
bool g_ended = false;

Kept::~Kept() {
    g_ended = true;
}

Kept& kept() {
    static Kept kept;
    return kept;
}

std::shared_ptr<TextFace> sharedFace(const std::string& file, int index) {
    const std::lock_guard lock(kept().facesMutex);
    return kept().faces.get({file, index}, [&] { return TextFace::open(file, index); });
}

}  // namespace

FaceSearch::FaceSearch(FcConfig* config, const std::string& name, int weight)
    : m_set(sortedFonts(config, name, weight)) {
    if (!m_set) return;
    for (FcPattern* pattern : std::span(m_set->fonts, static_cast<std::size_t>(m_set->nfont))) {
        if (isUsable(pattern)) m_candidates.push_back({pattern, {}});
    }
    for (auto candidate = m_candidates.begin(); candidate != m_candidates.end() && !m_primary; ++candidate) {
        m_primary = opened(*candidate);
    }
}

std::shared_ptr<TextFace> FaceSearch::opened(Candidate& candidate) {
    if (auto face = candidate.face.lock()) return face;
    FcChar8* file = nullptr;
    int index = 0;
    if (!candidate.pattern) return nullptr;
    if (FcPatternGetString(candidate.pattern, FC_FILE, 0, &file) != FcResultMatch) return nullptr;
    FcPatternGetInteger(candidate.pattern, FC_INDEX, 0, &index);
    std::shared_ptr<TextFace> face = sharedFace(reinterpret_cast<const char*>(file), index);
    if (!face) candidate.pattern = nullptr;
    candidate.face = face;
    return face;
}

std::shared_ptr<TextFace> FaceSearch::covering(std::span<const char32_t> characters) {
    if (characters.empty()) return m_primary;
    const std::lock_guard lock(m_mutex);
    if (m_found.size() >= kRememberedCharacters) m_found.clear();
    const auto remembered = characters.size() == 1 ? m_found.find(characters[0]) : m_found.end();
    for (std::size_t i = remembered == m_found.end() ? 0 : remembered->second; i < m_candidates.size(); ++i) {
        FcPattern* const pattern = m_candidates[i].pattern;
        FcCharSet* set = nullptr;
        if (!pattern || FcPatternGetCharSet(pattern, FC_CHARSET, 0, &set) != FcResultMatch) continue;
        const auto has = [set](char32_t c) { return FcCharSetHasChar(set, c) == FcTrue; };
        if (!std::all_of(characters.begin(), characters.end(), has)) continue;
        std::shared_ptr<TextFace> face = opened(m_candidates[i]);
        if (!face) continue;
        if (characters.size() == 1) m_found[characters[0]] = i;
        return face;
    }
    if (characters.size() == 1) m_found[characters[0]] = m_candidates.size();
    return nullptr;
}

std::shared_ptr<FaceSearch> facesFor(const std::string& name, int weight) {
    if (g_ended) return nullptr;
    Kept& all = kept();
    if (!all.config) return nullptr;
    const std::lock_guard lock(all.mutex);
    return all.searches.get({name, weight},
                            [&] { return std::make_shared<FaceSearch>(all.config.get(), name, weight); });
}

}  // namespace qvr

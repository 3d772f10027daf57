// Laying out a line. A cluster (a character with its marks) is never split between faces unless no face has all of
// it; runs are cut at kLongestRun characters, which bounds the time that shaping takes.
#include "qvr/platform/detail/textLayout.h"

#include <fribidi.h>
#include <hb.h>

#include <algorithm>
#include <optional>

namespace qvr {

namespace {

constexpr std::size_t kLongestCluster = 32;
constexpr std::size_t kLongestRun = 1024;
// FriBidi's time grows with the square of the number of brackets: 26 ms for so many, six seconds for 100000.
constexpr std::size_t kLongestMixedLine = 4096;

struct Run {
    std::size_t first, end;  // characters
    FriBidiLevel level;
    hb_script_t script;
    std::uint32_t face;

    bool continuesAs(const Run& next) const {
        return level == next.level && script == next.script && face == next.face &&
               next.end - first <= kLongestRun;
    }
};

hb_unicode_general_category_t categoryOf(char32_t character) {
    return hb_unicode_general_category(hb_unicode_funcs_get_default(), character);
}

bool isMark(char32_t character) {
    const auto category = categoryOf(character);
    return category == HB_UNICODE_GENERAL_CATEGORY_NON_SPACING_MARK ||
           category == HB_UNICODE_GENERAL_CATEGORY_SPACING_MARK ||
           category == HB_UNICODE_GENERAL_CATEGORY_ENCLOSING_MARK;
}

// Directional marks, joiners and variation selectors are not seen, so no face need have them.
bool isInvisible(char32_t character) {
    return categoryOf(character) == HB_UNICODE_GENERAL_CATEGORY_FORMAT ||
           (character >= 0xFE00 && character <= 0xFE0F) || (character >= 0xE0100 && character <= 0xE01EF);
}

// Right-to-left nesting of every character; the first strong character decides the direction of the line. A longer line
// is in typing order from left to right.
std::vector<FriBidiLevel> directions(std::span<const char32_t> line) {
    const auto count = static_cast<FriBidiStrIndex>(line.size());
    std::vector<FriBidiLevel> levels(line.size(), 0);
    if (line.empty() || line.size() > kLongestMixedLine) return levels;
    const std::vector<FriBidiChar> characters(line.begin(), line.end());
    std::vector<FriBidiCharType> types(line.size());
    std::vector<FriBidiBracketType> brackets(line.size());
    fribidi_get_bidi_types(characters.data(), count, types.data());
    fribidi_get_bracket_types(characters.data(), count, types.data(), brackets.data());
    FriBidiParType direction = FRIBIDI_PAR_ON;
    if (fribidi_get_par_embedding_levels_ex(types.data(), brackets.data(), count, &direction,
                                            levels.data()) == 0) {
        std::fill(levels.begin(), levels.end(), FriBidiLevel{0});  // no memory: in typing order
    }
    return levels;
}

// The one character that a letter and its marks make together, which shaping prefers; nothing when there is none.
std::optional<char32_t> composed(std::span<const char32_t> cluster) {
    hb_codepoint_t letter = cluster[0];
    for (const char32_t mark : cluster.subspan(1)) {
        if (!hb_unicode_compose(hb_unicode_funcs_get_default(), letter, mark, &letter)) return std::nullopt;
    }
    return letter;
}

// Chooses the face of each cluster and remembers the faces that are in use.
class FaceChooser {
public:
    FaceChooser(FaceSearch& search, std::vector<std::shared_ptr<TextFace>>& faces)
        : m_search(search), m_faces(faces) {
        m_faces.push_back(search.primary());
    }

    // Index of the face that has all of `cluster`; nothing when there is none.
    std::optional<std::uint32_t> faceOf(std::span<const char32_t> cluster) {
        m_visible.clear();
        for (const char32_t character : cluster) {
            if (!isInvisible(character)) m_visible.push_back(character);
        }
        const auto covered = [this](const TextFace& face) {
            return std::all_of(m_visible.begin(), m_visible.end(),
                               [&](char32_t c) { return face.covers(c); });
        };
        if (m_visible.empty()) return m_last;
        if (covered(*m_faces[0])) return m_last = 0;
        if (const auto letter = composed(m_visible); letter && m_faces[0]->covers(*letter)) return m_last = 0;
        if (covered(*m_faces[m_last])) return m_last;
        const std::shared_ptr<TextFace> face = m_search.covering(m_visible);
        if (!face) return std::nullopt;
        const auto known = std::find(m_faces.begin(), m_faces.end(), face);
        m_last = static_cast<std::uint32_t>(known - m_faces.begin());
        if (known == m_faces.end()) m_faces.push_back(face);
        return m_last;
    }

private:
    FaceSearch& m_search;
    std::vector<std::shared_ptr<TextFace>>& m_faces;
    std::vector<char32_t> m_visible;
    std::uint32_t m_last = 0;
};

std::size_t clusterEnd(std::span<const char32_t> line, std::size_t first) {
    const std::size_t limit = std::min(line.size(), first + kLongestCluster);
    std::size_t end = first + 1;
    while (end < limit && (isMark(line[end]) || isInvisible(line[end]))) ++end;
    return end;
}

// The script of every character; those of no script of their own take it from what stands before them.
std::vector<hb_script_t> scripts(std::span<const char32_t> line) {
    std::vector<hb_script_t> scripts(line.size(), HB_SCRIPT_COMMON);
    hb_script_t last = HB_SCRIPT_COMMON;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const hb_script_t own = hb_unicode_script(hb_unicode_funcs_get_default(), line[i]);
        const bool neutral =
            own == HB_SCRIPT_COMMON || own == HB_SCRIPT_INHERITED || own == HB_SCRIPT_UNKNOWN;
        if (!neutral && last == HB_SCRIPT_COMMON) std::fill_n(scripts.begin(), i, own);
        if (!neutral) last = own;
        scripts[i] = last;
    }
    return scripts;
}

std::vector<Run> runsOf(std::span<const char32_t> line, FaceChooser& chooser) {
    const std::vector<FriBidiLevel> levels = directions(line);
    const std::vector<hb_script_t> script = scripts(line);
    std::vector<Run> runs;
    const auto add = [&](std::size_t first, std::size_t end, std::uint32_t face) {
        const Run next{first, end, levels[first], script[first], face};
        if (!runs.empty() && runs.back().continuesAs(next)) {
            runs.back().end = end;
        } else {
            runs.push_back(next);
        }
    };
    for (std::size_t first = 0; first < line.size();) {
        const std::size_t end = clusterEnd(line, first);
        if (const auto face = chooser.faceOf(line.subspan(first, end - first))) {
            add(first, end, *face);
        } else {
            // No face has all of it. A character that none has at all is shown as the first face's empty box.
            for (std::size_t i = first; i < end; ++i)
                add(i, i + 1, chooser.faceOf(line.subspan(i, 1)).value_or(0));
        }
        first = end;
    }
    return runs;
}

// From the deepest level up to the lowest odd one, every stretch of that level or deeper is turned round.
void orderAsSeen(std::vector<Run>& runs) {
    FriBidiLevel deepest = 0;
    for (const Run& run : runs) deepest = std::max(deepest, run.level);
    for (FriBidiLevel level = deepest; level >= 1; --level) {
        const auto outside = [level](const Run& run) { return run.level < level; };
        const auto inside = [level](const Run& run) { return run.level >= level; };
        for (auto first = std::find_if(runs.begin(), runs.end(), inside); first != runs.end();) {
            const auto end = std::find_if(first, runs.end(), outside);
            std::reverse(first, end);
            first = std::find_if(end, runs.end(), inside);
        }
    }
}

struct ReleaseBuffer {
    void operator()(hb_buffer_t* buffer) const { hb_buffer_destroy(buffer); }
};

void shape(const Run& run, std::span<const char32_t> line, hb_buffer_t* buffer, LineLayout& layout) {
    hb_buffer_clear_contents(buffer);
    // The neighbours go along as context, so that letters join across a cut.
    const auto* characters = reinterpret_cast<const std::uint32_t*>(line.data());
    hb_buffer_add_utf32(buffer, characters, static_cast<int>(line.size()), static_cast<unsigned>(run.first),
                        static_cast<int>(run.end - run.first));
    hb_buffer_set_direction(buffer, run.level % 2 == 0 ? HB_DIRECTION_LTR : HB_DIRECTION_RTL);
    hb_buffer_set_script(buffer, run.script);
    hb_shape(layout.faces[run.face]->shaper(), buffer, nullptr, 0);

    unsigned count = 0;
    const hb_glyph_info_t* glyphs = hb_buffer_get_glyph_infos(buffer, &count);
    const hb_glyph_position_t* positions = hb_buffer_get_glyph_positions(buffer, &count);
    for (unsigned i = 0; i < count; ++i) {
        layout.glyphs.push_back(
            {run.face, glyphs[i].codepoint, layout.width + positions[i].x_offset, positions[i].y_offset});
        layout.width += positions[i].x_advance;
    }
}

}  // namespace

LineLayout layOutLine(std::span<const char32_t> line, FaceSearch& search) {
    LineLayout layout;
    FaceChooser chooser(search, layout.faces);
    std::vector<Run> runs = runsOf(line, chooser);
    orderAsSeen(runs);
    const std::unique_ptr<hb_buffer_t, ReleaseBuffer> buffer(hb_buffer_create());
    for (const Run& run : runs) shape(run, line, buffer.get(), layout);
    layout.width = std::max<std::int64_t>(layout.width, 0);
    return layout;
}

}  // namespace qvr

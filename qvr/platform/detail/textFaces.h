// textFaces: finds the installed faces for a font.
//
// The list of installed fonts is read once per process, in a configuration of our own, so that a host's use of
// fontconfig and ours do not touch each other. Open faces are shared and kept: at most kKeptFaces of them, and
// kKeptFonts search results, beyond those in use.
#pragma once

#include <fontconfig/fontconfig.h>

#include <cstddef>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "qvr/platform/detail/textFace.h"

namespace qvr {

inline constexpr std::size_t kKeptFaces = 16;
inline constexpr std::size_t kKeptFonts = 8;

/// The installed faces in the order in which they suit one font, best first.
class FaceSearch {
public:
    /// @param name    face name; empty for the default face
    /// @param weight  100 … 900, 0 counts as 400
    FaceSearch(FcConfig* config, const std::string& name, int weight);

    /// @return the best usable face; null when there is none
    const std::shared_ptr<TextFace>& primary() const { return m_primary; }
    /// @return the first face that has every one of the characters; null when there is none
    std::shared_ptr<TextFace> covering(std::span<const char32_t> characters);

private:
    struct ReleaseSet {
        void operator()(FcFontSet* set) const { FcFontSetDestroy(set); }
    };
    struct Candidate {
        FcPattern* pattern;  // owned by m_set; null for a file that could not be used
        std::weak_ptr<TextFace> face;
    };
    static std::shared_ptr<TextFace> opened(Candidate& candidate);

    std::unique_ptr<FcFontSet, ReleaseSet> m_set;
    std::vector<Candidate> m_candidates;
    std::shared_ptr<TextFace> m_primary;
    std::unordered_map<char32_t, std::size_t> m_found;  // index of a character's candidate, or their number
    std::mutex m_mutex;
};

/// @return the search for a font, or null when the list of installed fonts cannot be had or the process is ending
[[nodiscard]] std::shared_ptr<FaceSearch> facesFor(const std::string& name, int weight);

}  // namespace qvr

// Which display window a picture gets.
//
// Order when nothing is asked for: a preset for the view, the file's own window if it overlaps the values that occur,
// the automatic one. Where that one would leave most of the picture (without its dark border) black or white, and
// nobody asked for it, the 1st to 99th percentile stands instead.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "adoption.h"
#include "console.h"
#include "regions.h"
#include "sourceImage.h"

namespace qvr::tool {

struct Window {
    std::string
        source;  ///< "auto", "auto:collimation", "auto:percentile", "auto:roi=L,T,W,H", "given", "file", "file:2", "preset:NAME"
    int center = 0;
    int width = 0;
    int low =
        0;  ///< automatic: the bounds that were found; otherwise where the display's ramp begins and ends
    int high = 0;
};
nlohmann::ordered_json toJson(const Window& window);

/// --window as typed.
struct WindowRequest {
    enum class Kind { none, given, automatic, collimation, roi, file, preset };
    Kind kind = Kind::none;
    int center = 0;  ///< given
    int width = 0;
    Region roi;
    int number = 1;      ///< file: which of its windows, from 1
    std::string preset;  ///< a known name
};
/// @return nothing for a text that is none of the forms, or a preset that does not exist
std::optional<WindowRequest> parseWindow(std::string_view text);

/// A window of its own as a share of the values that the file's bits can hold.
struct Preset {
    const char* name;
    double center;
    double width;
    const char* purpose;
};
const std::vector<Preset>& presets();

/// --view-preset as typed: "BODYPART=NAME" or "BODYPART/VIEW=NAME".
struct ViewPreset {
    std::string bodyPart;
    std::string view;  ///< empty: every view of the body part
    std::string preset;
};
std::optional<ViewPreset> parseViewPreset(std::string_view text);

/// A file with everything that a window is chosen from.
struct WindowSubject {
    const SourceImage& source;
    const Adoption& adoption;
    const AdoptedImage& image;
};

/// @throws Failure when what was asked for cannot be had
Window chooseWindow(const WindowSubject& subject, const WindowRequest& request,
                    const std::vector<ViewPreset>& views, Console& console);

/// The automatic window of the whole picture or of a region. @throws Failure for a region that is too small
Window automaticWindow(const WindowSubject& subject, const std::string& source,
                       const std::optional<Region>& region);
/// A file's window in adopted values; nothing when there is none of that number, or it counts as none.
/// @param number  from 1
std::optional<Window> fileWindow(const WindowSubject& subject, int number);
/// Refuses a region that leaves the picture. @throws Failure
void checkRegion(const WindowSubject& subject, const Region& region);

}  // namespace qvr::tool

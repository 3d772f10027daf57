// Marks onto an image, as a host does it: added, moved to their place, looked at again.
#pragma once

#include <qvr/image/rawImage.h>
#include <qvr/platform/CRasterDC.h>

#include <memory>
#include <string>
#include <vector>

#include "adoption.h"
#include "console.h"
#include "display.h"
#include "markRequest.h"
#include "regions.h"

namespace qvr::tool {

/// A mark that is on an image.
struct PlacedMark {
    std::string text;
    Region box;  ///< of its text, in image pixels, y downward
};

struct MarkArea {
    RECT rectangle;  ///< that the image is displayed in
    Region area;     ///< part of the image, in its pixels, y downward, in which the marks must lie
};

/// The part of an image that its display bitmap shows.
Region shownArea(const rawImage& raw);

/// Adds marks in the view that the image has. Two that overlap are warned of.
/// @param raw      with a display bitmap
/// @param scratch  text is measured with its fonts; something is drawn on it
/// @throws Failure when a mark does not fit as it was asked for
std::vector<PlacedMark> placeMarks(rawImage& raw, const std::vector<MarkRequest>& requests,
                                   const MarkArea& where, CDC& scratch, const std::string& file,
                                   Console& console);

/// An image with marks that are to go into its pixels. The whole of it is in view, at the ratio at which the marks' 40
/// display pixels are the wanted height in the image: the burned size follows the view.
class MarkedImage {
public:
    /// @param fontHeight  in image pixels
    /// @throws Failure when there is no memory
    MarkedImage(const AdoptedImage& image, const Window& window, const Curve& curve, int fontHeight);

    /// @throws Failure, see placeMarks
    void place(const std::vector<MarkRequest>& requests, const Region& area, const std::string& file,
               Console& console);
    const std::vector<PlacedMark>& marks() const { return m_marks; }
    rawImage& raw() { return *m_raw; }
    CRasterDC& surface() { return m_surface; }

    /// Refuses pixels in which a mark left no trace. @throws Failure
    void checkBurned(const std::vector<std::uint16_t>& pixels, std::uint16_t burnedValue,
                     const std::string& file) const;

private:
    std::unique_ptr<rawImage> m_raw;
    RECT m_rectangle;
    CRasterDC m_surface{1, 1};  // its fonts and its depth matter, not its size
    std::vector<PlacedMark> m_marks;
};

}  // namespace qvr::tool

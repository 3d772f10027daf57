// The library's tools work on rows that grow upward; regions are turned into its rectangles by regions.h.
#include "editing.h"

#include <fmt/format.h>
#include <qvr/toolkit/QVR_DISP.h>

#include <algorithm>
#include <string_view>

#include "errors.h"

namespace qvr::tool {

namespace {

using Kind = EditStep::Kind;

constexpr std::uint16_t kWhite = (1 << kAdoptedBits) - 1;
constexpr int kSmallestMask = 11;

void must(int result) {
    if (!result) throw Failure(Exit::internal, "", "not edited", "the library refused it");
}

RECT toolkitRect(const Region& region, int pictureHeight) {
    const auto corners = toolkitCorners(region, pictureHeight);
    return {corners.first.x, corners.first.y, corners.second.x, corners.second.y};
}

void checkRegion(const char* what, const Region& region, const AdoptedImage& image) {
    if (fitsInside(region, image.width, image.height)) return;
    throw Failure(Exit::usage, "", "not edited",
                  fmt::format("the {} {},{},{},{} leaves the picture of {} x {} pixels", what, region.left,
                              region.top, region.width, region.height, image.width, image.height),
                  "Regions are L,T,W,H from the top left corner, after the edits in front of them.");
}

void rotate(AdoptedImage& image, int direction) {
    int width = 0;
    int height = 0;
    must(QVR_DISP_Rotate(image.width, image.height, image.pixels.data(), width, height, direction));
    image.width = width;
    image.height = height;
}

void crop(AdoptedImage& image, const Region& region) {
    checkRegion("crop", region, image);
    std::vector<std::uint16_t> out(static_cast<std::size_t>(region.width) *
                                   static_cast<std::size_t>(region.height));
    const RECT cut = toolkitRect(region, image.height);
    must(QVR_DISP_Cut(image.width, image.height, image.pixels.data(), &cut, region.width, region.height,
                      out.data()));
    image.pixels = std::move(out);
    image.width = region.width;
    image.height = region.height;
}

// The region stays where it is: a cut of the whole picture with something to keep.
void mask(AdoptedImage& image, const Region& region, bool white) {
    checkRegion("mask", region, image);
    if (std::min(region.width, region.height) < kSmallestMask)
        throw Failure(Exit::usage, "", "not edited",
                      fmt::format("the mask of {} x {} pixels is too small", region.width, region.height),
                      fmt::format("At least {} x {} are needed.", kSmallestMask, kSmallestMask));
    std::vector<std::uint16_t> out(image.pixels.size());
    const RECT whole = toolkitRect({0, 0, image.width, image.height}, image.height);
    const RECT keep = toolkitRect(region, image.height);
    must(QVR_DISP_Cut_Mask(image.width, image.height, image.pixels.data(), &whole, &keep, image.width,
                           image.height, out.data(), white ? 0 : 1));
    for (auto& pixel : out) pixel = std::min(pixel, kWhite);  // the library's white has 16 bits
    image.pixels = std::move(out);
}

void invert(EditedImage& edited) {
    auto& image = edited.image;
    int center = 0;
    must(QVR_DISP_Invert(image.width, image.height, image.pixels.data(), kAdoptedBits, edited.windowCenter,
                         center));
    edited.windowCenter = center == 0 ? 1 : center;  // 0 would count as none
    edited.negative = !edited.negative;
}

std::string inWords(const EditStep& step) {
    const auto& r = step.region;
    const auto region = fmt::format("{},{},{},{}", r.left, r.top, r.width, r.height);
    switch (step.kind) {
        case Kind::clockwise:
            return "rotated clockwise";
        case Kind::counterClockwise:
            return "rotated counter-clockwise";
        case Kind::halfTurn:
            return "rotated by 180 degrees";
        case Kind::mirror:
            return "mirrored left to right";
        case Kind::flip:
            return "flipped upside down";
        case Kind::crop:
            return "cropped to " + region;
        case Kind::mask:
            return fmt::format("{} outside {}", step.whiteMask ? "white" : "black", region);
        case Kind::invert:
            return "inverted";
    }
    return {};
}

// The other way along the body's axes; nothing for letters that are none of them.
std::optional<std::string> opposite(std::string_view direction) {
    constexpr std::string_view letters = "LRAPHF";
    std::string out;
    for (const char c : direction) {
        const auto at = letters.find(c);
        if (at == std::string_view::npos) return std::nullopt;
        out += letters[at ^ 1];
    }
    return out;
}

}  // namespace

std::string turnedOrientation(const std::string& orientation, Kind kind) {
    const auto middle = orientation.find('\\');
    if (middle == std::string::npos) return {};
    const auto row = orientation.substr(0, middle);
    const auto column = orientation.substr(middle + 1);
    const auto notRow = opposite(row);
    const auto notColumn = opposite(column);
    if (!notRow || !notColumn) return {};
    switch (kind) {
        case Kind::clockwise:
            return *notColumn + '\\' + row;
        case Kind::counterClockwise:
            return column + '\\' + *notRow;
        case Kind::halfTurn:
            return *notRow + '\\' + *notColumn;
        case Kind::mirror:
            return *notRow + '\\' + column;
        case Kind::flip:
            return row + '\\' + *notColumn;
        default:
            return orientation;
    }
}

void edit(EditedImage& edited, const EditStep& step) {
    auto& image = edited.image;
    switch (step.kind) {
        case Kind::clockwise:
        case Kind::counterClockwise:
            rotate(image, step.kind == Kind::clockwise ? 0 : 1);
            edited.quarterTurn = !edited.quarterTurn;
            if (edited.spacing) std::swap(edited.spacing->first, edited.spacing->second);
            break;
        case Kind::halfTurn:
            rotate(image, 0);
            rotate(image, 0);
            break;
        case Kind::mirror:
        case Kind::flip:
            must(QVR_DISP_Mirror(image.width, image.height, image.pixels.data(), step.kind == Kind::mirror));
            break;
        case Kind::crop:
            crop(image, step.region);
            break;
        case Kind::mask:
            mask(image, step.region, step.whiteMask);
            break;
        case Kind::invert:
            invert(edited);
            break;
    }
    edited.patientOrientation = turnedOrientation(edited.patientOrientation, step.kind);
    edited.derivation += (edited.derivation.empty() ? "" : "; ") + inWords(step);
}

}  // namespace qvr::tool

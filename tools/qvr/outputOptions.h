// Options of the verbs that write an image: where to, and through which curve; and the bytes of what they write.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <string>
#include <vector>

#include "console.h"
#include "display.h"
#include "picture.h"

namespace qvr::tool {

/// -o and --curve.
class OutputOptions {
public:
    /// @param files  what may be written, for the help
    void declare(CLI::App& app, const std::string& files);
    void declareCurve(CLI::App& app);
    /// @throws Failure for a curve that is not understood, and for --json when standard output holds the picture
    void check(const Common& common);

    const std::string& target() const { return m_target; }
    /// True for a name that ends in .dcm.
    bool isDicom() const;
    bool isStandardOutput() const { return m_target == "-"; }
    const Curve& curve() const { return m_curve; }

private:
    std::string m_target;
    std::string m_curveText;
    Curve m_curve;
};

/// The file of an image: .pgm and .raw keep its 14 bits; .png and .bmp show it, pixel for pixel.
/// @throws Failure
std::vector<std::uint8_t> encodeImage(const AdoptedImage& image, const Window& window, const Curve& curve,
                                      PictureFormat format);

}  // namespace qvr::tool

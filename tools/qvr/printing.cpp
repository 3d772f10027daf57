// Printing. The film is filled with the library's own stretching, colour on colour: burned letters stay letters.
#include "printing.h"

#include <algorithm>
#include <cmath>

#include "errors.h"
#include "parse.h"

namespace qvr::tool {

namespace {

constexpr int kLargestSide = 32767;

[[noreturn]] void noMemory(const std::string& file) {
    throw Failure(Exit::internal, file, "not printed", "there is not enough memory");
}

GreyPicture onFilm(CDib& bitmap, CSize film, const std::string& file) {
    const int width = bitmap.InfoHeader->biWidth;
    const int height = bitmap.InfoHeader->biHeight;
    const double scale =
        std::min(static_cast<double>(film.cx) / width, static_cast<double>(film.cy) / height);
    const auto side = [scale](int pixels, int limit) {
        return std::clamp(nearestInt(pixels * scale).value_or(limit), 1, limit);
    };
    const CSize size{side(width, film.cx), side(height, film.cy)};
    CRasterDC surface(film.cx, film.cy, 8);
    if (surface.GetWidth() != film.cx ||
        !bitmap.Draw(&surface, (film.cx - size.cx) / 2, (film.cy - size.cy) / 2, size.cx, size.cy, 0, 0,
                     width, height, SRCCOPY))
        noMemory(file);
    GreyPicture out{film.cx, film.cy, {}, {}};
    for (int y = 0; y < film.cy; ++y) {
        const auto* row = static_cast<const std::uint8_t*>(surface.GetRow(y));
        out.pixels.insert(out.pixels.end(), row, row + film.cx);
    }
    return out;
}

}  // namespace

std::optional<CSize> parseFilm(std::string_view text) {
    const auto at = text.find('@');
    if (at == std::string_view::npos || !text.ends_with("dpi")) return std::nullopt;
    auto size = text.substr(0, at);
    const auto dots = parseDouble(text.substr(at + 1, text.size() - at - 4));
    constexpr std::pair<std::string_view, double> units[] = {{"in", 1}, {"cm", 2.54}, {"mm", 25.4}};
    const auto* unit = std::find_if(std::begin(units), std::end(units),
                                    [&](const auto& entry) { return size.ends_with(entry.first); });
    if (!dots || unit == std::end(units)) return std::nullopt;
    size.remove_suffix(unit->first.size());
    const auto sides = split(size, 'x');
    if (sides.size() != 2) return std::nullopt;
    const auto pixels = [&](std::string_view side) -> int {
        const auto length = parseDouble(side);
        return length ? nearestInt(*length / unit->second * *dots).value_or(0) : 0;
    };
    const CSize film{pixels(sides[0]), pixels(sides[1])};
    if (std::min(film.cx, film.cy) < 1 || std::max(film.cx, film.cy) > kLargestSide) return std::nullopt;
    return film;
}

GreyPicture print(const AdoptedImage& image, int shift, const PrintJob& job, MarkedImage* marked,
                  const std::string& file) {
    auto pixels = image.pixels;
    for (auto& pixel : pixels) pixel = static_cast<std::uint16_t>(pixel >> shift);
    if (marked) {
        if (!marked->raw().WriteMark(image.width, image.height, pixels.data(), job.bits, &marked->surface()))
            throw Failure(Exit::refused, file, "not printed", "a mark cannot be burned into the print",
                          "Nothing was written.");
        marked->checkBurned(pixels, static_cast<std::uint16_t>((1 << job.bits) - 1), file);
    }
    const auto& region = job.region;
    CDib bitmap(region.width, region.height, 8);
    const std::vector<std::uint8_t> black(static_cast<std::size_t>(region.width) *
                                          static_cast<std::size_t>(region.height));
    const auto create = job.bits == 12 ? rawImage::CreatePrintImage12Bits : rawImage::CreatePrintImage14Bits;
    const int bottomRow = toolkitCorners(region, image.height).second.y;
    if (!bitmap.CreateFromPixels(region.width, region.height, black.data(), nullptr, nullptr) ||
        !create(image.width, image.height, pixels.data(), region.left, bottomRow, job.window.width,
                job.window.center, job.curve.type, job.curve.k, job.curve.c, &bitmap))
        noMemory(file);
    return job.film ? onFilm(bitmap, *job.film, file) : pictureOf(bitmap);
}

}  // namespace qvr::tool

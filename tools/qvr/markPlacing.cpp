// Positions are worked out in display pixels of the present view, since that is what the library takes.
#include "markPlacing.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "errors.h"
#include "parse.h"

namespace qvr::tool {

namespace {

constexpr int kFontHeight = 40;  // display pixels of a new mark
constexpr int kMargin = 10;      // from the edges of the area, in display pixels

struct Box {
    int left, top, right, bottom;
};

// The displayed image and the coordinates on it.
class View {
public:
    View(const rawImage& raw, const RECT& rectangle)
        : m_xRatio(static_cast<double>(raw.GetXRatio())), m_yRatio(static_cast<double>(raw.GetYRatio())) {
        const auto& header = *raw.GetDIB()->InfoHeader;
        m_left = rectangle.left + (rectangle.right - rectangle.left - header.biWidth) / 2;
        m_top = rectangle.top + (rectangle.bottom - rectangle.top - header.biHeight) / 2;
        m_firstColumn = raw.GetXOffset();
        m_firstRow = raw.GetHeight() - raw.GetYOffset() - header.biHeight / m_yRatio;
    }
    int x(double column) const { return m_left + rounded((column - m_firstColumn) * m_xRatio); }
    int y(double row) const { return m_top + rounded((row - m_firstRow) * m_yRatio); }

private:
    static int rounded(double value) { return truncatedInt(std::floor(value + 0.5)); }
    double m_xRatio, m_yRatio;
    int m_left, m_top;
    double m_firstColumn, m_firstRow;
};

CSize textSize(const CMark& mark, int height, CDC& surface) {
    CFont font(height, mark.GetFontWeight(), mark.GetFontName(), DEFAULT_CHARSET);
    auto* const previous = surface.SelectObject(&font);
    const CSize size = surface.GetTextExtent(mark.GetMarkText(), -1);
    surface.SelectObject(previous);
    return {std::max(size.cx, size.cy), size.cy};
}

[[noreturn]] void doesNotFit(const std::string& file, const std::string& text) {
    throw Failure(Exit::refused, file, fmt::format("mark \"{}\"", text),
                  "it does not fit into the picture at its place and height",
                  "Give another place, less text or a smaller height.");
}

CPoint wantedCorner(const MarkRequest& request, const View& view, const Region& area, CSize text) {
    if (request.corner) return {view.x(request.corner->x), view.y(request.corner->y)};
    const int left = view.x(area.left) + kMargin;
    const int right = view.x(area.left + area.width) - kMargin - text.cx;
    const int bottom = view.y(area.top + area.height) - kMargin - text.cy;
    const int x = request.column == MarkRequest::Column::left    ? left
                  : request.column == MarkRequest::Column::right ? right
                                                                 : (left + right) / 2;
    return {x, request.row == MarkRequest::Row::top ? view.y(area.top) + kMargin : bottom};
}

bool overlap(const Box& a, const Box& b) {
    return a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
}

// One mark; the library moves what would leave the picture, which is not what was asked for.
Box placeOne(rawImage& raw, const MarkRequest& request, const MarkArea& where, CDC& scratch,
             const std::string& file) {
    const int index = raw.GetMarkCount();
    if (!raw.AddMark(request.text.c_str(), &where.rectangle, &scratch)) doesNotFit(file, request.text);
    CMark mark;
    raw.GetMark(index, mark);
    const CSize text = textSize(mark, kFontHeight, scratch);
    const View view(raw, where.rectangle);
    const auto& area = where.area;
    const CPoint wanted = wantedCorner(request, view, area, text);
    raw.SetMarkDISPLeftTop(index, wanted, &where.rectangle, &scratch);

    const Box box{wanted.x, wanted.y, wanted.x + text.cx, wanted.y + text.cy};
    const bool inside = box.left >= view.x(area.left) && box.top >= view.y(area.top) &&
                        box.right <= view.x(area.left + area.width) &&
                        box.bottom <= view.y(area.top + area.height);
    if (!inside || !raw.GetMark(index, mark) || mark.GetDISPLeftTop() != wanted)
        doesNotFit(file, request.text);
    return box;
}

}  // namespace

Region shownArea(const rawImage& raw) {
    const auto& header = *raw.GetDIB()->InfoHeader;
    const auto shown = [](int bitmapSide, float ratio, int imageSide) {
        return std::clamp(truncatedInt(bitmapSide / static_cast<double>(ratio) + 0.5), 1, imageSide);
    };
    const int width = shown(header.biWidth, raw.GetXRatio(), raw.GetWidth());
    const int height = shown(header.biHeight, raw.GetYRatio(), raw.GetHeight());
    return {raw.GetXOffset(), std::max(0, raw.GetHeight() - raw.GetYOffset() - height), width, height};
}

std::vector<PlacedMark> placeMarks(rawImage& raw, const std::vector<MarkRequest>& requests,
                                   const MarkArea& where, CDC& scratch, const std::string& file,
                                   Console& console) {
    std::vector<Box> boxes;
    std::vector<PlacedMark> placed;
    const double ratio = static_cast<double>(raw.GetYRatio());
    for (const auto& request : requests) {
        const Box box = placeOne(raw, request, where, scratch, file);
        for (std::size_t i = 0; i < boxes.size(); ++i)
            if (overlap(box, boxes[i]))
                console.warning(file, fmt::format("the marks \"{}\" and \"{}\" overlap.", requests[i].text,
                                                  request.text));
        boxes.push_back(box);
        CMark mark;
        raw.GetMark(raw.GetMarkCount() - 1, mark);
        const auto corner = mark.GetPIXLeftTop();
        const int height = truncatedInt(mark.GetDISPFontHeight() / ratio + 0.5);
        const CSize size = textSize(mark, std::max(1, height), scratch);
        placed.push_back({request.text, {corner.x, corner.y, size.cx, size.cy}});
    }
    return placed;
}

MarkedImage::MarkedImage(const AdoptedImage& image, const Window& window, const Curve& curve, int fontHeight)
    : m_raw(makeRaw(image, window, curve)) {
    const float ratio = static_cast<float>(kFontHeight) / static_cast<float>(fontHeight);
    const auto side = [ratio](int pixels) {
        return std::max(1, truncatedInt(static_cast<double>(static_cast<float>(pixels) * ratio)));
    };
    m_rectangle = {0, 0, side(image.width), side(image.height)};
    m_raw->SetXRatio(ratio);
    m_raw->SetYRatio(ratio);
    if (!m_raw->BuildDisplayImage(&m_rectangle, &m_surface, 0))
        throw Failure(Exit::usage, "", "no mark", "the image is too small for marks of that height",
                      "Give another --mark-height.");
}

void MarkedImage::place(const std::vector<MarkRequest>& requests, const Region& area, const std::string& file,
                        Console& console) {
    m_marks = placeMarks(*m_raw, requests, {m_rectangle, area}, m_surface, file, console);
}

void MarkedImage::checkBurned(const std::vector<std::uint16_t>& pixels, std::uint16_t burnedValue,
                              const std::string& file) const {
    const int width = m_raw->GetWidth();
    const int height = m_raw->GetHeight();
    for (const auto& [text, box] : m_marks) {
        bool found = false;
        for (int y = std::max(0, box.top); y < std::min(height, box.top + box.height); ++y)
            for (int x = std::max(0, box.left); x < std::min(width, box.left + box.width); ++x)
                found |= pixels[static_cast<std::size_t>(height - 1 - y) * static_cast<std::size_t>(width) +
                                static_cast<std::size_t>(x)] == burnedValue;
        if (!found)
            throw Failure(Exit::refused, file, fmt::format("mark \"{}\"", text),
                          "it left no trace in the pixels", "Nothing was written.");
    }
}

}  // namespace qvr::tool

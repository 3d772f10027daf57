// CDC: selections and everything that a surface can do with nothing but filled rectangles.
//
// A selection is a raw pointer beside the lifetime of what it points to; it is looked at before every use.
#include "qvr/platform/CDC.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <utility>

#include "qvr/platform/CRasterDC.h"
#include "qvr/platform/detail/guard.h"
#include "qvr/platform/detail/numbers.h"
#include "qvr/platform/detail/textDrawing.h"

namespace {

// What is selected as long as nothing else is.
struct Stock {
    CFont font{16, FW_NORMAL, "Arial", DEFAULT_CHARSET};
    CPen pen{PS_SOLID, 1, 0};
    CPalette palette;
};

// Never destroyed: a surface with static lifetime may need it until the process ends.
Stock& stock() {
    alignas(Stock) static unsigned char storage[sizeof(Stock)];
    static Stock* const objects = new (storage) Stock;
    return *objects;
}

template <class Object>
class Slot {
public:
    Object& get(Object& stockObject) const noexcept {
        return m_object && !m_lifetime.expired() ? *m_object : stockObject;
    }
    void set(Object* object) noexcept {
        m_lifetime = object ? object->lifetime() : std::weak_ptr<const void>();
        m_object = object;
    }

private:
    Object* m_object = nullptr;
    std::weak_ptr<const void> m_lifetime;
};

template <class Object>
Object* exchanged(Slot<Object>* slot, Object* object, Object& stockObject) noexcept {
    if (!slot) return &stockObject;
    Object& previous = slot->get(stockObject);
    slot->set(object);
    return &previous;
}

// The pixel i steps from the start of a line with `steps` steps along its longer side and `rise` along the other.
// Both are below 2^32, so the product fits into 64 bits.
std::int64_t offsetAt(std::uint64_t i, std::uint64_t rise, std::uint64_t steps) {
    return static_cast<std::int64_t>((i * rise + steps / 2) / steps);
}

// Lines are drawn between these coordinates, so that even a line of 2^32 pixels takes a bounded time.
constexpr std::int64_t kLineLimit = std::int64_t{1} << 20;

// One direction of a line.
struct Course {
    std::int64_t start, end;
    std::int64_t length() const { return end < start ? start - end : end - start; }
    std::int64_t at(std::int64_t i) const { return end < start ? start - i : start + i; }
};

// Steps of the line, from first to before end, whose position along the course lies between the limits.
std::pair<std::int64_t, std::int64_t> visibleSteps(const Course& course) {
    const std::int64_t toLow =
        course.end < course.start ? course.start - kLineLimit : -kLineLimit - course.start;
    const std::int64_t toHigh = toLow + 2 * kLineLimit + 1;
    return {std::max<std::int64_t>(0, toLow), std::min(course.length(), toHigh)};
}

}  // namespace

CGdiObject::CGdiObject() {
    // Without memory the object counts as destroyed: a surface then keeps to its stock object.
    qvr::guarded([this] { m_lifetime = std::make_shared<char>(); });
}

CGdiObject::~CGdiObject() = default;

CFont::CFont(int height, int weight, const char* face, int charset)
    : m_height(height), m_weight(weight), m_charset(charset) {
    const bool named = qvr::guarded(false, [&] {
        m_face = face;
        return true;
    });
    // Rather no text at all, which a caller notices, than text in another face.
    if (!named) m_height = 0;
}

CFont::~CFont() = default;

CPen::CPen(int style, int width, COLORREF colour) : m_style(style), m_width(width), m_colour(colour) {}

CPen::~CPen() = default;

CPalette::CPalette() = default;

CPalette::CPalette(const RGBQUAD* entries, int count) : m_count(entries ? std::clamp(count, 0, 256) : 0) {
    std::copy_n(entries, m_count, m_entries);
}

CPalette::~CPalette() = default;

COLORREF CPalette::GetEntry(int index) const noexcept {
    if (index < 0 || index >= m_count) return 0;
    const RGBQUAD& entry = m_entries[index];
    return static_cast<COLORREF>(entry.rgbBlue << 16 | entry.rgbGreen << 8 | entry.rgbRed);
}

struct CDC::Selection {
    Slot<CFont> font;
    Slot<CPen> pen;
    Slot<CPalette> palette;
};

CDC::CDC() : m_selection(new (std::nothrow) Selection) {}

CDC::~CDC() = default;

int CDC::SetStretchBltMode(int mode) {
    return std::exchange(m_stretchMode, mode);
}

CFont* CDC::SelectObject(CFont* font) {
    return exchanged(m_selection ? &m_selection->font : nullptr, font, stock().font);
}

CPen* CDC::SelectObject(CPen* pen) {
    return exchanged(m_selection ? &m_selection->pen : nullptr, pen, stock().pen);
}

CPalette* CDC::SelectPalette(CPalette* palette, int /*background*/) {
    return exchanged(m_selection ? &m_selection->palette : nullptr, palette, stock().palette);
}

const CFont& CDC::selectedFont() const noexcept {
    return m_selection ? m_selection->font.get(stock().font) : stock().font;
}

const CPen& CDC::selectedPen() const noexcept {
    return m_selection ? m_selection->pen.get(stock().pen) : stock().pen;
}

const CPalette& CDC::selectedPalette() const noexcept {
    return m_selection ? m_selection->palette.get(stock().palette) : stock().palette;
}

unsigned CDC::RealizePalette() {
    return static_cast<unsigned>(selectedPalette().GetEntryCount());
}

int CDC::SetBkMode(int mode) {
    return std::exchange(m_backgroundMode, mode);
}

COLORREF CDC::SetTextColor(COLORREF colour) {
    return std::exchange(m_textColour, colour);
}

CSize CDC::GetTextExtent(const char* text, int length) {
    return qvr::guarded(CSize{}, [&] { return qvr::textExtent(selectedFont(), text, length); });
}

int CDC::DrawText(const char* text, int length, const RECT* rect, unsigned flags) {
    if (!rect) return 0;
    // The size of the surface is not known here, so the rectangle alone limits the drawing.
    const auto fillRuns = [this](const qvr::CoverageRow& row) {
        const std::uint8_t* const end = row.coverage + row.count;
        for (const std::uint8_t* from = row.coverage; (from = std::find(from, end, 255)) != end;) {
            const std::uint8_t* const to = std::find(from, end, 0);
            const RECT run{row.x + static_cast<std::int32_t>(from - row.coverage), row.y,
                           row.x + static_cast<std::int32_t>(to - row.coverage), row.y + 1};
            FillSolidRect(&run, textColour());
            from = to;
        }
    };
    return qvr::guarded(0, [&] {
        const qvr::TextPlacement placement{*rect, *rect, flags};
        return qvr::drawText(selectedFont(), text, length, placement, qvr::Edges::oneBit, fillRuns);
    });
}

void CDC::MoveTo(int x, int y) {
    m_position = {x, y};
}

void CDC::LineTo(int x, int y) {
    const CPoint from = std::exchange(m_position, CPoint{x, y});
    const Course across{from.x, x};
    const Course down{from.y, y};
    const bool wide = across.length() >= down.length();
    const Course& longer = wide ? across : down;
    const Course& other = wide ? down : across;
    const auto steps = static_cast<std::uint64_t>(longer.length());
    const auto rise = static_cast<std::uint64_t>(other.length());
    const COLORREF colour = selectedPen().GetColour();

    const auto [first, end] = visibleSteps(longer);
    for (std::int64_t i = first; i < end;) {
        // Neighbours on one row or column are filled at once.
        const std::int64_t offset = offsetAt(static_cast<std::uint64_t>(i), rise, steps);
        std::int64_t next = i + 1;
        while (next < end && offsetAt(static_cast<std::uint64_t>(next), rise, steps) == offset) ++next;
        const auto [low, high] = std::minmax({longer.at(i), longer.at(next - 1)});
        const std::int64_t level = other.at(offset);
        i = next;
        if (level < -kLineLimit || level > kLineLimit) continue;
        const auto narrow = [](std::int64_t value) { return static_cast<std::int32_t>(value); };
        const RECT run = wide ? RECT{narrow(low), narrow(level), narrow(high + 1), narrow(level + 1)}
                              : RECT{narrow(level), narrow(low), narrow(level + 1), narrow(high + 1)};
        qvr::guarded([&] { FillSolidRect(&run, colour); });
    }
}

int CDC::GetBitsPerPixel() const {
    return 32;
}

std::unique_ptr<CRasterDC> CDC::CreateCompatibleRaster(int width, int height) {
    return qvr::guarded(std::unique_ptr<CRasterDC>(), [&]() -> std::unique_ptr<CRasterDC> {
        const int bits = GetBitsPerPixel();
        auto raster = std::make_unique<CRasterDC>(width, height, bits == 8 || bits == 16 ? bits : 32);
        if (raster->GetWidth() == 0) return nullptr;
        raster->SetTextSmoothing(0);
        return raster;
    });
}

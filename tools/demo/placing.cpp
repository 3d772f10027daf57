// An unscaled picture lets every pixel of the window be foretold: the bitmap's, or what was there before.
#include <cstddef>
#include <string>

#include "qvr/qvr.h"
#include "tools/demo/bitmaps.h"
#include "tools/demo/check.h"
#include "tools/demo/pixelTools.h"

namespace qvr {
namespace {

constexpr int kWidth = 1200;
constexpr int kHeight = 1000;
constexpr int kGap = 10;
constexpr std::uint32_t kBackground = 0x404040;
constexpr CSize kSmall{400, 320};

/// A quarter of the window.
RECT pane(int index) {
    const int left = index % 2 * kWidth / 2 + kGap;
    const int top = index / 2 * kHeight / 2 + kGap;
    return {left, top, left + kWidth / 2 - 2 * kGap, top + kHeight / 2 - 2 * kGap};
}

bool holds(const RECT& area, int x, int y) {
    return x >= area.left && x < area.right && y >= area.top && y < area.bottom;
}

void load(CQVRImage& image, const Sample& radiograph, CSize display) {
    const QVR_ST_QVR_IMAGE record = displayRecord(radiograph);
    const RECT area{0, 0, display.cx, display.cy};
    require(image.Create(&record) && image.BuildDisplayImage(&area, nullptr, 1) && image.GetDIB(),
            "the image of its own could not be displayed");
}

/// Inside the pane the bitmap pixel for pixel where it reaches, elsewhere the background.
void requirePlaced(const Screen& screen, const RECT& area, CPoint offset, const CDib& bitmap) {
    const CSize size = sizeOf(bitmap);
    for (int y = area.top; y < area.bottom; ++y) {
        for (int x = area.left; x < area.right; ++x) {
            const int column = x - area.left - offset.x;
            const int fromTop = y - area.top - offset.y;
            const bool covered = column >= 0 && column < size.cx && fromTop >= 0 && fromTop < size.cy;
            const auto grey =
                static_cast<std::uint32_t>(covered ? greyAt(bitmap, column, size.cy - 1 - fromTop) : 0);
            require(screen.pixel(x, y) == (covered ? grey * 0x010101 : kBackground),
                    "free placement at (" + std::to_string(offset.x) + ", " + std::to_string(offset.y) +
                        "): window pixel (" + std::to_string(x) + ", " + std::to_string(y) + ") is wrong");
        }
    }
}

/// A bitmap higher than its pane is scaled: at the offset that centres it, it is the fitted drawing without the bands.
void requireSameAsFitted(CQVRImage& image, const RECT& area) {
    Screen fitted(kWidth, kHeight);
    Screen placed(kWidth, kHeight);
    const RECT all = placed.rectangle();
    placed.surface().FillSolidRect(&all, kBackground);
    const CSize size = sizeOf(*image.GetDIB());
    const int height = area.bottom - area.top;
    const int shown = height * size.cx / size.cy;
    const int x = (area.right - area.left - shown) / 2;
    require(x > 0, "the radiograph is not a high one");
    image.Draw(&area, &fitted.surface());
    image.FreeDraw({x, 0}, &area, &placed.surface());
    const RECT picture{area.left + x, area.top, area.left + x + shown, area.bottom};
    for (int y = 0; y < kHeight; ++y) {
        for (int column = 0; column < kWidth; ++column) {
            const std::uint32_t expected = holds(picture, column, y) ? fitted.pixel(column, y) : kBackground;
            require(placed.pixel(column, y) == expected,
                    "scaled free placement differs from the fitted drawing at (" + std::to_string(column) +
                        ", " + std::to_string(y) + ")");
        }
    }
}

void requireDeepCopy(CQVRImage& image) {
    const CQVRImage copy(image);
    const int before = greyAt(*copy.GetDIB(), kSmall.cx / 4, kSmall.cy / 4);
    const std::uint16_t pixel = copy.GetPixelData()[0];
    image.GetDIB()->Empty();
    image.GetPixelData()[0] = static_cast<std::uint16_t>(pixel + 1);
    require(greyAt(*copy.GetDIB(), kSmall.cx / 4, kSmall.cy / 4) == before && copy.GetPixelData()[0] == pixel,
            "a copy of an image changes with the original");
}

}  // namespace

void placeFreely(const Sample& radiograph, const std::filesystem::path& folder, ContactSheet& sheet) {
    Screen screen(kWidth, kHeight);
    const RECT all = screen.rectangle();
    screen.surface().FillSolidRect(&all, kBackground);
    CQVRImage small;
    CQVRImage large;
    load(small, radiograph, kSmall);
    load(large, radiograph, {kWidth, kHeight});

    const CPoint offsets[] = {{50, 30}, {-80, -60}, {420, 300}};
    for (int i = 0; i < 3; ++i) {
        const RECT area = pane(i);
        small.FreeDraw(offsets[i], &area, &screen.surface());
    }
    const RECT last = pane(3);
    large.FreeDraw({150, 120}, &last, &screen.surface());
    for (int i = 0; i < 3; ++i) requirePlaced(screen, pane(i), offsets[i], *small.GetDIB());
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            const bool between =
                !holds(pane(0), x, y) && !holds(pane(1), x, y) && !holds(pane(2), x, y) && !holds(last, x, y);
            require(!between || screen.pixel(x, y) == kBackground, "a free placement left its pane");
        }
    }
    requireSameAsFitted(large, last);
    requireDeepCopy(small);

    const auto path = folder / "placed.png";
    screen.save(path);
    sheet.add(screen, "placed");
    tell(path.string(), "three offsets pixel for pixel, one scaled; no pane left; copies are deep");
}

}  // namespace qvr

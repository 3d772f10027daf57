// Each tool's result is compared with one line that says where its pixels come from.
#include "tools/demo/pixelTools.h"

#include <cstddef>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "tools/demo/check.h"

namespace qvr {
namespace {

constexpr CSize kPicture{600, 500};
constexpr int kColumns = 5;

std::uint16_t at(const Sample& image, int column, int row) {
    return image.pixels[static_cast<std::size_t>(row) * static_cast<std::size_t>(image.width) +
                        static_cast<std::size_t>(column)];
}

bool inside(const RECT& region, int column, int row) {
    return column >= region.left && column < region.right && row >= region.bottom && row < region.top;
}

int widthOf(const RECT& region) {
    return region.right - region.left;
}
int heightOf(const RECT& region) {
    return region.top - region.bottom;
}

/// One radiograph and the sheet of what the tools make of it.
class ToolBench {
public:
    ToolBench(const Sample& original, ContactSheet& sheet) : m_original(original), m_sheet(sheet) {
        CQVRImage image;
        const QVR_ST_QVR_IMAGE record = displayRecord(original);
        require(image.Create(&record), "the image of its own could not be created");
        m_windowWidth = image.GetWindowWidth();
        m_windowCenter = image.GetWindowCenter();
        show("as acquired", original);
    }

    void turn(const std::string& name, int direction);
    void mirror(const std::string& name, int mode);
    void crop(const RECT& region);
    void mask(const RECT& region);
    void cropAndMask(const RECT& cut, const RECT& keep);
    void invert();

private:
    using Pixel = std::function<int(int column, int row)>;
    void finish(const std::string& name, const Sample& result, const Pixel& expected);
    void show(const std::string& name, const Sample& image);

    const Sample& m_original;
    ContactSheet& m_sheet;
    int m_windowWidth = 0;
    int m_windowCenter = 0;
};

void ToolBench::show(const std::string& name, const Sample& image) {
    Screen screen(kPicture.cx, kPicture.cy);
    showPixels(image, m_windowWidth, m_windowCenter, screen);
    m_sheet.add(screen, name);
}

void ToolBench::finish(const std::string& name, const Sample& result, const Pixel& expected) {
    for (int row = 0; row < result.height; ++row) {
        for (int column = 0; column < result.width; ++column) {
            if (at(result, column, row) == expected(column, row)) continue;
            throw DemoFailure(name + ": pixel (" + std::to_string(column) + ", " + std::to_string(row) +
                              ") is " + std::to_string(at(result, column, row)) + ", not " +
                              std::to_string(expected(column, row)));
        }
    }
    show(name, result);
    tell(name, std::to_string(result.width) + " x " + std::to_string(result.height) +
                   ", every pixel where it belongs");
}

void ToolBench::turn(const std::string& name, int direction) {
    Sample image = m_original;
    require(QVR_DISP_Rotate(m_original.width, m_original.height, image.pixels.data(), image.width,
                            image.height, direction),
            name + ": refused");
    finish(name, image, [&](int column, int row) {
        return direction == 0 ? at(m_original, m_original.width - 1 - row, column)
                              : at(m_original, row, m_original.height - 1 - column);
    });
}

void ToolBench::mirror(const std::string& name, int mode) {
    Sample image = m_original;
    require(QVR_DISP_Mirror(image.width, image.height, image.pixels.data(), mode), name + ": refused");
    finish(name, image, [&](int column, int row) {
        return mode == 0 ? at(m_original, column, image.height - 1 - row)
                         : at(m_original, image.width - 1 - column, row);
    });
}

void ToolBench::crop(const RECT& region) {
    Sample image = m_original;
    image.width = widthOf(region);
    image.height = heightOf(region);
    image.pixels.assign(static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height), 0);
    require(QVR_DISP_Cut(m_original.width, m_original.height, m_original.pixels.data(), &region, image.width,
                         image.height, image.pixels.data()),
            "crop: refused");
    finish("cropped", image,
           [&](int column, int row) { return at(m_original, region.left + column, region.bottom + row); });
}

void ToolBench::mask(const RECT& region) {
    Sample image = m_original;
    require(QVR_DISP_Mask(image.width, image.height, image.pixels.data(), &region, 1), "mask: refused");
    // What is kept moves to the middle.
    const int x = (image.width - widthOf(region)) / 2;
    const int y = (image.height - heightOf(region)) / 2;
    finish("masked", image, [&](int column, int row) -> int {
        const int fromColumn = column - x + region.left;
        const int fromRow = row - y + region.bottom;
        return inside(region, fromColumn, fromRow) ? at(m_original, fromColumn, fromRow) : 0;
    });
}

void ToolBench::cropAndMask(const RECT& cut, const RECT& keep) {
    Sample image = m_original;
    image.width = widthOf(cut);
    image.height = heightOf(cut);
    image.pixels.assign(static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height), 0);
    require(QVR_DISP_Cut_Mask(m_original.width, m_original.height, m_original.pixels.data(), &cut, &keep,
                              image.width, image.height, image.pixels.data(), 1),
            "crop and mask: refused");
    finish("cropped and masked", image, [&](int column, int row) -> int {
        const int fromColumn = cut.left + column;
        const int fromRow = cut.bottom + row;
        return inside(keep, fromColumn, fromRow) ? at(m_original, fromColumn, fromRow) : 0;
    });
}

void ToolBench::invert() {
    Sample image = m_original;
    const int before = m_windowCenter;
    require(QVR_DISP_Invert(image.width, image.height, image.pixels.data(), 14, before, m_windowCenter),
            "inversion: refused");
    require(m_windowCenter == 16383 - before, "inversion: the centre is not that of the negative");
    finish("inverted", image, [&](int column, int row) { return 16383 - at(m_original, column, row); });
    m_windowCenter = before;
}

}  // namespace

QVR_ST_QVR_IMAGE displayRecord(const Sample& radiograph, int width, int center) {
    return {.Height = radiograph.height,
            .Width = radiograph.width,
            .BitsStored = 14,
            .HighBit = 13,
            .WindowCenter = center,
            .WindowWidth = width,
            .PixelData = radiograph.pixels.data()};
}

void showPixels(const Sample& radiograph, int width, int center, Screen& screen) {
    const QVR_ST_QVR_IMAGE record = displayRecord(radiograph, width, center);
    const RECT all = screen.rectangle();
    CQVRImage image;
    require(image.Create(&record) && image.BuildDisplayImage(&all, &screen.surface(), 1),
            radiograph.name + ": could not be displayed");
    image.Draw(&all, &screen.surface());
}

void showPixelTools(const Sample& radiograph, const std::filesystem::path& folder) {
    const int width = radiograph.width;
    const int height = radiograph.height;
    const RECT cut{width / 8, height * 7 / 8, width * 7 / 8, height / 4};
    const RECT keep{width / 4, height * 3 / 4, width * 3 / 4, height / 3};

    ContactSheet sheet(kColumns, {kPicture.cx / 2, kPicture.cy / 2});
    ToolBench bench(radiograph, sheet);
    bench.turn("turned clockwise", 0);
    bench.turn("turned counter-clockwise", 1);
    bench.mirror("mirrored", 1);
    bench.mirror("upside down", 0);
    bench.crop(cut);
    bench.mask(keep);
    bench.cropAndMask(cut, keep);
    bench.invert();
    const auto path = folder / "tools.png";
    sheet.save(path);
    tell(path.string(), "the results of the pixel tools");
}

}  // namespace qvr

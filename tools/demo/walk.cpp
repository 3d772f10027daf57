// The order of the calls is the one of an acquisition: create, raw copy, check, display, write out, read back.
#include "tools/demo/walk.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include "qvr/qvr.h"
#include "tools/demo/check.h"
#include "tools/demo/screen.h"

namespace qvr {
namespace {

struct Curve {
    const char* name;
    int type, k, c;
};
constexpr Curve kCurves[] = {{"linear", 0, 1, 5},
                             {"power", 1, 2, 5},
                             {"exponential", 2, 3, 5},
                             {"logarithmic", 3, 6, 5},
                             {"sigmoid", 4, 8, 5}};

/// A console that has one image open.
class Console {
public:
    Console(const Sample& sample, const std::filesystem::path& folder, ContactSheet& sheet)
        : m_sample(sample), m_folder(folder), m_sheet(sheet) {}

    void acquire() {
        const QVR_ST_RAW_IMAGE record{.Height = m_sample.height,
                                      .Width = m_sample.width,
                                      .BAKWidth = m_sample.width,
                                      .BAKHeight = m_sample.height,
                                      .BitsStored = 14,
                                      .HighBit = 13,
                                      .PixelData = m_sample.pixels.data(),
                                      .FilePath = {},
                                      .BAKFilePath = {},
                                      .WorkFilePath = {}};
        require(m_image.Create(&record), "the image could not be created");
        require(m_image.CreateBAKFile(m_sample.name.c_str(), m_folder.c_str()),
                "the raw copy could not be written to " + (m_folder / "Cache").string() +
                    ": is that folder writable, and is there room?");
        require(m_image.ValidateFile(), "the raw copy is not where it was written");
        std::printf("%s  %d x %d, %s, automatic window %d/%d", m_sample.name.c_str(), m_sample.width,
                    m_sample.height, m_sample.origin.c_str(), m_image.GetWindowCenter(),
                    m_image.GetWindowWidth());
        windowOfTheMiddle();
        std::printf("\n");
    }

    void showFitted() {
        for (const Curve& curve : kCurves) {
            m_image.SetLUTType(curve.type);
            m_image.SetLUTParam(curve.k, curve.c);
            // The bitmap is built once; another curve only fills it anew.
            if (!m_image.GetDIB()) {
                show(curve.name, [this](CDC& surface, const RECT& window) {
                    return m_image.BuildDisplayImage(&window, &surface, 1);
                });
            } else {
                show(curve.name, [this](CDC&, const RECT&) { return m_image.UpdateDisplayImage(); });
            }
        }
        m_image.SetLUTType(0);
    }

    /// @param ratio  display pixels for one of the image's; above 1 pixels are repeated
    /// @param up     which part of what does not fit is below the window: 0.5 shows the middle
    void showEnlarged(const char* name, float ratio, double up) {
        const int columns = std::min(m_sample.width, static_cast<int>(kWindowWidth / ratio));
        const int rows = std::min(m_sample.height, static_cast<int>(kWindowHeight / ratio));
        m_image.SetXRatio(ratio);
        m_image.SetYRatio(ratio);
        m_image.SetXOffset((m_sample.width - columns) / 2);
        m_image.SetYOffset(static_cast<int>((m_sample.height - rows) * up));
        show(name, [this](CDC& surface, const RECT& window) {
            return m_image.BuildDisplayImage(&window, &surface, 0);
        });
    }

    void writeOutAndReadBack() {
        const Stopwatch stopwatch;
        require(m_image.WriteToHDD(), std::string(m_image.GetFilePath()) + " could not be written");
        require(!m_image.IsReadInRAM(), "the image is still in memory");
        require(m_image.ReadInRAM(), std::string(m_image.GetFilePath()) + " could not be read back");
        const double spent = stopwatch.milliseconds();
        const bool same = std::equal(m_sample.pixels.begin(), m_sample.pixels.end(), m_image.GetPixelData());
        require(same, "the pixels that were read back are not the ones that were written");
        std::printf("  %-44s %21s %6.1f ms\n", m_image.GetFilePath(), "read back, same pixels", spent);
    }

private:
    void windowOfTheMiddle() {
        const int white = m_image.GetWindowCenter() + m_image.GetWindowWidth() / 2;
        const auto middle = qvr::windowOfTheMiddle(m_sample, white);
        if (!middle) return;
        m_image.SetWindowWidth(middle->width);
        m_image.SetWindowCenter(middle->center);
        std::printf(" (%.0f %% white), of the middle %d/%d", 100 * middle->white, middle->center,
                    middle->width);
    }

    void require(int result, const std::string& otherwise) const {
        qvr::require(result != 0, m_sample.name + ": " + otherwise);
    }

    template <typename Prepare>
    void show(const char* name, Prepare prepare) {
        Screen screen(kWindowWidth, kWindowHeight);
        const RECT window = screen.rectangle();
        const Stopwatch stopwatch;
        require(prepare(screen.surface(), window), std::string(name) + " could not be displayed");
        m_image.Draw(&window, &screen.surface());
        const double spent = stopwatch.milliseconds();

        const auto path = m_folder / (m_sample.name + "-" + name + ".png");
        screen.save(path);
        m_sheet.add(screen, m_sample.name + ", " + name);
        std::printf("  %-44s window %4d/%-5d %8.1f ms\n", path.c_str(), m_image.GetWindowCenter(),
                    m_image.GetWindowWidth(), spent);
    }

    const Sample& m_sample;
    const std::filesystem::path& m_folder;
    ContactSheet& m_sheet;
    rawImage m_image;
};

}  // namespace

void walkThrough(const Sample& sample, const std::filesystem::path& folder, ContactSheet& sheet) {
    Console console(sample, folder, sheet);
    console.acquire();
    console.showFitted();
    console.showEnlarged("1to1", 1.0f, 0.5);
    console.showEnlarged("2to1", 2.0f, 0.5);
    const bool large = sample.width > kWindowWidth && sample.height > kWindowHeight;
    console.showEnlarged("moved", large ? 1.0f : 2.0f, 0.9);
    console.writeOutAndReadBack();
}

}  // namespace qvr

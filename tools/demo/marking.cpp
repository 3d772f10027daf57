// What is seen is what leaves the house: the text on screen, in the export and on the film are held against each other.
//
// The raw copy and the image file move to paths of the host's here, so this examination is not written out again: that
// would replace the export by pixels without marks.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "tools/demo/bitmaps.h"
#include "tools/demo/check.h"
#include "tools/demo/examRoad.h"
#include "tools/demo/pixelTools.h"

namespace qvr {
namespace {

constexpr std::uint32_t kGreen = 0x00FF00;
constexpr int kBrightest = 16383;
constexpr const char* kTexts[] = {"R", "PA standing", "09:00"};
constexpr int kMarks = 3;

struct Centroid {
    double x = 0.0;
    double y = 0.0;
    double weight = 0.0;

    void add(double atX, double atY, double part) {
        x += atX * part;
        y += atY * part;
        weight += part;
    }
    void finish() {
        require(weight > 0.0, "a mark's text is not there");
        x /= weight;
        y /= weight;
    }
};

class Marking {
public:
    explicit Marking(ExamHost& host)
        : m_host(host), m_image(host.raw(0)), m_acquired(host.sample(0).pixels) {}

    void edit();
    void exportFiles();
    void printFilm(ContactSheet& sheet);

private:
    [[nodiscard]] CMark mark(int index) const;
    [[nodiscard]] CSize textSize(const CMark& mark, int height);
    [[nodiscard]] RECT screenBox(int index);
    [[nodiscard]] RECT pixelBox(int index);
    void addAll();
    void moveTo(int index, CPoint point);
    void requireDrawn(int selected);
    void requireBurned(const Sample& exported);
    [[nodiscard]] Centroid seen(int index);
    [[nodiscard]] Centroid burned(int index, const Sample& exported);

    ExamHost& m_host;
    rawImage& m_image;
    const std::vector<std::uint16_t>& m_acquired;
    std::vector<std::uint32_t> m_without;  // the picture before there were marks
    Sample m_exported;
};

CMark Marking::mark(int index) const {
    CMark out;
    require(m_image.GetMark(index, out), "mark " + std::to_string(index + 1) + " is not there");
    return out;
}

CSize Marking::textSize(const CMark& mark, int height) {
    CFont font(height, mark.GetFontWeight(), mark.GetFontName(), DEFAULT_CHARSET);
    CFont* before = m_host.surface()->SelectObject(&font);
    const CSize extent = m_host.surface()->GetTextExtent(mark.GetMarkText(), -1);
    m_host.surface()->SelectObject(before);
    return {std::max(extent.cx, extent.cy), extent.cy};
}

RECT Marking::screenBox(int index) {
    const CMark it = mark(index);
    const CSize size = textSize(it, it.GetDISPFontHeight());
    const CPoint at = it.GetDISPLeftTop();
    return {at.x, at.y, at.x + size.cx, at.y + size.cy};
}

/// In image columns and in rows from the top.
RECT Marking::pixelBox(int index) {
    const CMark it = mark(index);
    const auto height =
        static_cast<int>(it.GetDISPFontHeight() / static_cast<double>(m_image.GetYRatio()) + 0.5);
    const CSize size = textSize(it, height);
    const CPoint at = it.GetPIXLeftTop();
    return {at.x, at.y, at.x + size.cx, at.y + size.cy};
}

void Marking::addAll() {
    for (const char* text : kTexts) {
        require(m_image.AddMark(text, m_host.window(), m_host.surface()),
                std::string("the mark \"") + text + "\" could not be added: is a font installed?");
    }
    require(!m_image.AddMark("one too many", m_host.window(), m_host.surface()) &&
                m_image.GetMarkCount() == kMarks,
            "a fourth mark was taken");
}

void Marking::moveTo(int index, CPoint point) {
    const CPoint from = mark(index).GetDISPLeftTop();
    m_image.MoveMark(index, point.x - from.x, point.y - from.y, m_host.window(), m_host.surface());
    require(mark(index).GetDISPLeftTop() == point,
            "mark " + std::to_string(index + 1) + " was not moved to where it was sent");
}

void Marking::edit() {
    m_without = m_host.show(0);
    addAll();
    const CSize display = sizeOf(*m_image.GetDIB());
    const int left = (kExamWindow.cx - display.cx) / 2;
    const int top = (kExamWindow.cy - display.cy) / 2;
    moveTo(0, {left + display.cx * 4 / 5, top + 120});
    moveTo(1, {left + 20, top + display.cy - 180});
    moveTo(2, {left + 20, top + display.cy - 110});

    m_image.InflateMark(0, m_host.window(), m_host.surface());
    m_image.InflateMark(0, m_host.window(), m_host.surface());
    m_image.DeflateMark(2);
    require(mark(0).GetDISPFontHeight() == 50 && mark(1).GetDISPFontHeight() == 40 &&
                mark(2).GetDISPFontHeight() == 30,
            "the marks do not have the three font heights");

    const RECT box = screenBox(0);
    const int hit =
        m_image.PtInMarkRect({(box.left + box.right) / 2, (box.top + box.bottom) / 2}, m_host.surface());
    require(hit == 0, "the mark under the pointer was not found");
    m_image.SetMarkSelected(hit);
    require(m_image.GetSelectedMarkIndex() == 0, "the mark was not selected");
    m_host.show(0);
    requireDrawn(0);
    m_host.keep("marks", "three marks moved, of 50, 40 and 30 pixels, the first selected");
    m_image.SetMarkNoSelected(0);
    m_host.show(0);
    requireDrawn(-1);
}

/// Each mark has its frame, and only the selected one its cross.
void Marking::requireDrawn(int selected) {
    const Screen& screen = m_host.screen();
    for (int i = 0; i < kMarks; ++i) {
        const RECT box = screenBox(i);
        const std::string name = "mark " + std::to_string(i + 1);
        // Letters may reach into the frame, but not into its corners.
        for (const int y : {box.top, box.bottom - 1}) {
            require(screen.pixel(box.left, y) == kGreen && screen.pixel(box.right - 1, y) == kGreen,
                    name + ": it has no frame");
        }
        const bool cross = screen.pixel((box.left + box.right) / 2, (box.top + box.bottom) / 2 + 4) == kGreen;
        require(cross == (i == selected), name + (cross ? ": has a cross" : ": lacks its cross"));
    }
}

/// Where the text is on screen, by how much brighter than before each pixel inside the frame is.
Centroid Marking::seen(int index) {
    const RECT box = screenBox(index);
    Centroid centre;
    for (int y = box.top + 1; y < box.bottom - 1; ++y) {
        for (int x = box.left + 1; x < box.right - 1; ++x) {
            const auto at = static_cast<std::size_t>(y) * kExamWindow.cx + static_cast<std::size_t>(x);
            const double was = m_without[at] & 255;
            const double now = m_host.screen().pixel(x, y) & 255;
            if (now > was) centre.add(x + 0.5, y + 0.5, (now - was) / (255 - was));
        }
    }
    centre.finish();
    return centre;
}

/// Where the text is in the pixels, mapped to the screen by the present view.
Centroid Marking::burned(int index, const Sample& exported) {
    const RECT box = pixelBox(index);
    const CSize display = sizeOf(*m_image.GetDIB());
    const int left = (kExamWindow.cx - display.cx) / 2;
    const int top = (kExamWindow.cy - display.cy) / 2;
    Centroid centre;
    for (int y = std::max(0, box.top); y < std::min(box.bottom, exported.height); ++y) {
        for (int x = std::max(0, box.left); x < std::min(box.right, exported.width); ++x) {
            const auto at =
                static_cast<std::size_t>(exported.height - 1 - y) * static_cast<std::size_t>(exported.width) +
                static_cast<std::size_t>(x);
            if (exported.pixels[at] == m_acquired[at]) continue;
            centre.add(left + (x + 0.5) * static_cast<double>(m_image.GetXRatio()),
                       top + (y + 0.5) * static_cast<double>(m_image.GetYRatio()), 1.0);
        }
    }
    centre.finish();
    return centre;
}

/// What was burned is brightest, lies inside the marks and where the text was seen; everything else is as acquired.
void Marking::requireBurned(const Sample& exported) {
    double changed = 0.0;
    double inMarks = 0.0;
    for (std::size_t i = 0; i < m_acquired.size(); ++i) {
        if (exported.pixels[i] == m_acquired[i]) continue;
        require(exported.pixels[i] == kBrightest, "a burned pixel is not of the brightest value");
        changed += 1.0;
    }
    double farthest = 0.0;
    for (int i = 0; i < kMarks; ++i) {
        const Centroid onScreen = seen(i);
        const Centroid inPixels = burned(i, exported);
        farthest = std::max(farthest, std::hypot(onScreen.x - inPixels.x, onScreen.y - inPixels.y));
        inMarks += inPixels.weight;
    }
    require(changed == inMarks, "pixels outside the marks were changed by the export");
    require(farthest <= 1.0,
            "a mark was burned " + std::to_string(farthest) + " display pixels away from where it was seen");
    char offset[32];
    std::snprintf(offset, sizeof offset, "%.2f", farthest);
    tell("marks as seen and as burned",
         "at most " + std::string(offset) + " display pixels apart, nothing else changed");
}

void Marking::exportFiles() {
    const Sample& original = m_host.sample(0);
    m_exported = original;
    m_exported.name = "export";
    const std::string rawCopy = m_image.GetBAKFilePath();
    const auto acquiredPath = m_host.folder() / (original.name + "-acquired.raw");
    require(m_image.WriteFileForPROC(acquiredPath.c_str()), acquiredPath.string() + ": not exported");
    require(QVR_COMP_ReadRAWFile(acquiredPath.c_str(), original.width, original.height,
                                 m_exported.pixels.data()) &&
                m_exported.pixels == m_acquired && !std::filesystem::exists(rawCopy),
            acquiredPath.string() + ": is not the raw copy, moved");
    tell(acquiredPath.string(), "the raw copy, moved, pixels as acquired");

    const auto markedPath = m_host.folder() / (original.name + "-marked.raw");
    require(m_image.WriteFileForPRES(markedPath.c_str(), m_host.surface()),
            markedPath.string() + ": not exported");
    require(
        QVR_COMP_ReadRAWFile(markedPath.c_str(), original.width, original.height, m_exported.pixels.data()),
        markedPath.string() + ": cannot be read back");
    require(std::equal(m_acquired.begin(), m_acquired.end(), m_image.GetPixelData()),
            "the export changed the image itself");
    tell(markedPath.string(), "marks burned in, the image itself unchanged");
    requireBurned(m_exported);
    showPixels(m_exported, m_image.GetWindowWidth(), m_image.GetWindowCenter(), m_host.screen());
    m_host.keep("burned", "the exported pixels");
}

void Marking::printFilm(ContactSheet& sheet) {
    const int width = m_image.GetWidth();
    const int height = m_image.GetHeight();
    std::vector<std::uint16_t> copy(m_acquired.size());
    require(m_image.CopyPixelData(copy.data()) &&
                m_image.WriteMark(width, height, copy.data(), m_image.GetBitsStored(), m_host.surface()),
            "the marks could not be burned into a copy for the film");
    require(copy == m_exported.pixels, "the film's pixels are not those of the export");

    CDib film(width, height, 8);
    const std::vector<std::uint8_t> blank(m_acquired.size());
    require(film.CreateFromPixels(width, height, blank.data(), nullptr, nullptr) &&
                rawImage::CreatePrintImage14Bits(width, height, copy.data(), 0, 0, m_image.GetWindowWidth(),
                                                 m_image.GetWindowCenter(), 0, 1, 5, &film),
            "the film could not be made");
    CQVRImage display;
    const QVR_ST_QVR_IMAGE record =
        displayRecord(m_exported, m_image.GetWindowWidth(), m_image.GetWindowCenter());
    const RECT whole{0, 0, width, height};
    require(display.Create(&record) && display.BuildDisplayImage(&whole, nullptr, 1) &&
                sameBitmap(*display.GetDIB(), film),
            "the film is not what a 1:1 display of the same pixels shows");
    writeBitmap(film, m_host.folder() / "film.bmp");

    Screen full(width, height);
    showBitmap(film, full);
    Screen half(width / 2, height / 2);
    half.showSmall(full, 0, 0, 2);
    const auto path = m_host.folder() / "film.png";
    half.save(path);
    sheet.add(half, "film");
    tell((m_host.folder() / "film.bmp").string(),
         std::to_string(width) + " x " + std::to_string(height) + ", same bytes as a 1:1 display");
    tell(path.string(), "the film at half its size");
}

}  // namespace

void markExportAndPrint(ExamHost& host, ContactSheet& sheet) {
    host.plan();
    host.acquire(0);
    Marking marking(host);
    marking.edit();
    marking.exportFiles();
    marking.printFilm(sheet);
}

}  // namespace qvr

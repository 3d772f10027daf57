// The picture around the anatomy: exposure, wedge, letter, noise and collimation, from the top row to the bottom.
#include "tools/phantom/phantom.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "tools/phantom/anatomy.h"
#include "tools/phantom/randomNumbers.h"

namespace qvr {
namespace {

constexpr double kDirectExposure = 620;
constexpr double kLead = 11800;
constexpr double kLetterSize = 9;      // plane units per unit of a letter's box
constexpr double kLetterStroke = 8.5;  // half the width of a stroke, in plane units
constexpr int kWedgeSteps = 8;

class PictureMaker {
public:
    explicit PictureMaker(const PhantomOptions& options)
        : m_options(options),
          m_anatomy(options.kind == PhantomKind::hand ? makeHand(options.seed) : makeChest(options.seed)),
          m_plane(m_anatomy->planeSize()),
          m_step(std::max(m_plane.x / options.width, m_plane.y / options.height)),
          m_border(0.035 * std::min(m_step * options.width, m_step * options.height)) {
        const Point place = m_anatomy->letterPlace();
        for (const Stroke& stroke : m_anatomy->letter()) {
            const auto placed = [&](Point p) {
                return Point{place.x + p.x * kLetterSize, place.y + p.y * kLetterSize};
            };
            m_letter.push_back({placed(stroke.from), placed(stroke.to), kLetterStroke, kLetterStroke, kLead});
        }
    }

    std::vector<std::uint16_t> make() const {
        const auto width = static_cast<std::size_t>(m_options.width);
        const auto height = static_cast<std::size_t>(m_options.height);
        std::vector<std::uint16_t> pixels(width * height);
        std::vector<double> values(width);
        std::vector<double> lead(width);
        for (std::size_t y = 0; y < height; ++y) {
            fillRow(y, values, lead);
            std::uint16_t* row = pixels.data() + (height - 1 - y) * width;
            finishRow(y, values, lead, row);
        }
        return pixels;
    }

private:
    /// The middle of the picture shows the middle of the plane.
    [[nodiscard]] Row rowAt(std::size_t y, std::span<double> values) const {
        const double top = 0.5 * (m_plane.y - m_step * m_options.height);
        const double left = 0.5 * (m_plane.x - m_step * m_options.width);
        return {top + m_step * (static_cast<double>(y) + 0.5), left + 0.5 * m_step, m_step, values};
    }

    void fillRow(std::size_t y, std::span<double> values, std::span<double> lead) const {
        std::fill(values.begin(), values.end(), 0.0);
        std::fill(lead.begin(), lead.end(), 0.0);
        const Row row = rowAt(y, values);
        m_anatomy->addTo(row);
        addWedge(row);
        for (const Rod& stroke : m_letter) joinRod(rowAt(y, lead), stroke, 1);
    }

    /// Steps downward beside a tall body part, and from left to right above a wide one.
    void addWedge(const Row& row) const {
        const Point place = m_anatomy->wedgePlace();
        const bool upright = m_plane.x < m_plane.y;
        const double stepX = upright ? 44 : 16;
        const double stepY = upright ? 30 : 46;
        if (row.y < place.y || row.y >= place.y + stepY * (upright ? kWedgeSteps : 1)) return;
        const Columns columns =
            columnsBetween(row, place.x, place.x + stepX * (upright ? 1 : kWedgeSteps) - 1e-6);
        for (int i = columns.first; i <= columns.last; ++i) {
            const double along = upright ? (row.y - place.y) / stepY : (row.x(i) - place.x) / stepX;
            row.values[static_cast<std::size_t>(i)] += 560 * (std::floor(along) + 1);
        }
    }

    /// 1 in the exposed field, 0 under the collimator, which stands a little askew and casts a soft edge.
    [[nodiscard]] double exposed(double column, double y) const {
        const double x = m_step * (column + 0.5);
        const double fromTop = m_step * (y + 0.5);
        const double width = m_step * m_options.width;
        const double height = m_step * m_options.height;
        const double left = x - m_border * 0.8 - 0.006 * fromTop;
        const double right = width - x - m_border * 1.1 + 0.006 * (fromTop - height);
        const double top = fromTop - m_border * 1.2 - 0.006 * x;
        const double bottom = height - fromTop - m_border * 0.9 + 0.006 * (x - width);
        return smoothStep(std::min({left, right, top, bottom}) / 5 + 0.5);
    }

    void finishRow(std::size_t y, std::span<const double> values, std::span<const double> lead,
                   std::uint16_t* row) const {
        // The tube's heel makes one end of the field a little weaker.
        const double heel = 1 + 0.12 * (static_cast<double>(y) / m_options.height - 0.5);
        const std::uint64_t rowSeed = scrambled(m_options.seed ^ (0x51ed27ULL + y));
        for (std::size_t x = 0; x < values.size(); ++x) {
            const double noise = bellCurve(scrambled(rowSeed + x));
            const double behindLead = lead[x] > 0 ? kLead + 0.2 * values[x] : 0.0;
            const double held = std::max(kDirectExposure * heel + values[x], behindLead);
            // Fewer quanta behind dense parts: more noise there.
            const double seen = held + noise * (14 + 0.0055 * held);
            const double share = exposed(static_cast<double>(x), static_cast<double>(y));
            const double border = std::clamp(14 + 7 * noise, 0.0, 40.0);
            const double rounded = border + share * (seen - border) + 0.5;
            row[x] = static_cast<std::uint16_t>(std::clamp(rounded, 0.0, 16383.0));
        }
    }

    PhantomOptions m_options;
    std::unique_ptr<Anatomy> m_anatomy;
    Point m_plane;
    double m_step;    // plane units from a pixel to the next
    double m_border;  // width of the collimated border in plane units
    std::vector<Rod> m_letter;
};

}  // namespace

std::vector<std::uint16_t> makePhantom(const PhantomOptions& options) {
    if (options.width < 1 || options.height < 1) return {};
    return PictureMaker(options).make();
}

}  // namespace qvr

// A chest seen from behind (postero-anterior), so the patient's left, with the heart, is on the right.
#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "tools/phantom/anatomy.h"
#include "tools/phantom/randomNumbers.h"

namespace qvr {
namespace {

constexpr double kMiddle = 500;
constexpr double kBody = 6600;
constexpr int kRibs = 10;
constexpr std::array<Stroke, 2> kLetter{{{{0, 0}, {0, 10}}, {{0, 10}, {5.5, 10}}}};

struct Lung {
    Point centre;
    double radiusX, radiusY;
    Point dome;  // top of the diaphragm below it
    double domeRadius;
};
constexpr Lung kRightLung{{318, 520}, 172, 400, {308, 770}, 205};
constexpr Lung kLeftLung{{688, 520}, 166, 400, {704, 796}, 200};

/// Half the width of the body at a height: neck, shoulders, then the trunk.
double bodyHalfWidth(double y) {
    const double shoulders = smoothStep((y - 20) / 190);
    const double trunk = smoothStep((y - 260) / 360);
    return 105 + 375 * shoulders - 70 * trunk;
}

/// How far out the ribs reach at a height: they follow the lungs and then hang straight.
double wallHalfWidth(double y) {
    return 186 + 182 * ellipseDepth({0, std::min(y, 540.0)}, {0, 520}, 1, 416);
}

/// Half of one rib, behind or in front, as a band across a side of the chest.
struct Rib {
    double y, drop, lift, halfHeight, density;
    double from, to;  // share of the way from the spine to the side wall
};

class Chest : public Anatomy {
public:
    explicit Chest(std::uint64_t seed) : m_seed(seed), m_random(seed) {
        m_shift = m_random.between(-6, 6);
        for (int i = 0; i < kRibs; ++i) {
            const double y = 150 + 62 * i + m_random.between(-4, 4);
            m_ribs.push_back({y, 30 + 9.0 * i, 44, 14.5, 640, 0.0, 1.0});
            // In front a rib runs down towards the middle and ends in cartilage, which does not show.
            if (i < 7) m_ribs.push_back({y + 128, -95, 0, 15.5, 420, 0.42, 1.0});
        }
        makeVessels({kMiddle - 72, 520}, -1);
        makeVessels({kMiddle + 78, 500}, 1);
        m_bones.push_back({{kMiddle - 34, 176}, {kMiddle - 310, 118}, 22, 13, 19, 900});
        m_bones.push_back({{kMiddle + 34, 176}, {kMiddle + 310, 118}, 22, 13, 19, 900});
        for (const int side : {-1, 1}) {
            m_arms.push_back({{kMiddle + side * 392, 214}, {kMiddle + side * 486, 1100}, 108, 70, 3400});
            m_bones.push_back({{kMiddle + side * 398, 204}, {kMiddle + side * 480, 900}, 46, 27, 36, 1300});
        }
    }

    void addTo(const Row& row) const override {
        const double y = row.y;
        const double halfWidth = bodyHalfWidth(y);
        const Columns body = columnsBetween(row, kMiddle - halfWidth, kMiddle + halfWidth);
        for (int i = body.first; i <= body.last; ++i) {
            row.values[static_cast<std::size_t>(i)] += softTissue({row.x(i), y}, halfWidth);
        }
        for (const Rod& arm : m_arms) joinRod(row, arm, 900);
        addVessels(row);
        for (const Rib& rib : m_ribs) addRib(row, rib);
        for (const Bone& bone : m_bones) addBone(row, bone);
        addSpine(row);
    }

    [[nodiscard]] Point planeSize() const override { return {1000, 1000}; }
    [[nodiscard]] std::span<const Stroke> letter() const override { return kLetter; }
    [[nodiscard]] Point letterPlace() const override { return {858, 60}; }
    [[nodiscard]] Point wedgePlace() const override { return {44, 50}; }

private:
    /// The share of a ray that runs through air instead of tissue.
    [[nodiscard]] double air(Point p, const Lung& lung) const {
        const Point centre{lung.centre.x + m_shift, lung.centre.y};
        const double depth = ellipseDepth(p, centre, lung.radiusX, lung.radiusY);
        if (depth <= 0) return 0;
        const double across = (p.x - lung.dome.x) / lung.domeRadius;
        const double diaphragm = lung.dome.y + 230 * across * across * across * across + 90 * across * across;
        return std::sqrt(depth) * smoothStep((diaphragm - p.y) / 16 + 0.5);
    }

    [[nodiscard]] double softTissue(Point p, double halfWidth) const {
        const double side = std::abs(p.x - kMiddle) / halfWidth;
        const double flank = std::sqrt(std::max(1 - side * side * side * side, 0.0));
        const double thickness = (0.62 + 0.38 * smoothStep((p.y - 60) / 500)) * kBody * flank;

        const double lungs = p.x < kMiddle ? air(p, kRightLung) : air(p, kLeftLung);
        const double heart = std::max(ellipseDepth(p, {kMiddle + 58, 668}, 136, 128),
                                      ellipseDepth(p, {kMiddle - 22, 640}, 78, 130));
        const double vesselsOfHeart =
            std::max(ellipseDepth(p, {kMiddle + 44, 410}, 46, 60), ellipseDepth(p, {kMiddle, 470}, 70, 300));
        const double filled = std::max(heart, 0.9 * vesselsOfHeart);
        const double texture = 1 + 0.05 * cloud(p.x, p.y, 17, m_seed) + 0.04 * cloud(p.x, p.y, 7, m_seed + 1);
        double value = thickness * (1 - 0.66 * lungs * (1 - 0.82 * filled) * texture);
        value += 500 * heart;

        const double windpipe = ellipseDepth(p, {kMiddle + 4, 190}, 21, 190);
        const double stomach = ellipseDepth(p, {kMiddle + 190, 868}, 76, 40);
        return value - 900 * windpipe - 700 * stomach;
    }

    void addVessels(const Row& row) const {
        std::vector<double> vessels(row.values.size(), 0.0);
        const Row vesselRow{row.y, row.left, row.step, vessels};
        for (const Rod& vessel : m_vessels) joinRod(vesselRow, vessel, 60);
        for (std::size_t i = 0; i < vessels.size(); ++i) row.values[i] += vessels[i];
    }

    void addRib(const Row& row, const Rib& rib) const {
        const double lowest = rib.y + std::max({rib.drop, -rib.drop, 0.0}) + rib.lift + rib.halfHeight;
        if (row.y < rib.y - std::abs(rib.drop) - rib.lift - rib.halfHeight || row.y > lowest) return;
        const double wall = wallHalfWidth(row.y);
        const Columns columns = columnsBetween(row, kMiddle - wall, kMiddle + wall);
        for (int i = columns.first; i <= columns.last; ++i) {
            const double out = (std::abs(row.x(i) - kMiddle) - 22) / (wall - 22);
            if (out < rib.from || out > rib.to) continue;
            const double middle = rib.y + rib.drop * out * out * out - rib.lift * out * (1 - out);
            const double off = (row.y - middle) / rib.halfHeight;
            const double rest = 1 - off * off;
            if (rest <= 0) continue;
            const double hollow = 0.6 - off * off;
            const double tube = std::sqrt(rest) - 0.45 * (hollow > 0 ? std::sqrt(hollow) : 0.0);
            // Towards the wall the rib turns along the ray and grows denser.
            const double fade = rib.from > 0 ? smoothStep((out - rib.from) / 0.2) : 1.0;
            row.values[static_cast<std::size_t>(i)] +=
                rib.density * tube * fade * (1 + 0.8 * out * out * out);
        }
    }

    static void addSpine(const Row& row) {
        constexpr double kHeight = 47;
        const double inBone =
            std::abs((row.y + 1000) / kHeight - std::floor((row.y + 1000) / kHeight) - 0.5) * 2;
        const double disc = 1 - 0.45 * smoothStep((inBone - 0.72) / 0.2);
        const double waist = 35 + 5 * inBone * inBone;
        const Columns columns = columnsBetween(row, kMiddle - 46, kMiddle + 46);
        for (int i = columns.first; i <= columns.last; ++i) {
            const double off = std::abs(row.x(i) - kMiddle);
            const double side = off / waist;
            if (side >= 1) continue;
            const double body = std::sqrt(1 - side * side * side * side);
            const double pedicle = ellipseDepth({off, inBone}, {22, 0.1}, 8, 0.45);
            const double spinous = ellipseDepth({off, inBone}, {0, 0.2}, 7, 0.7);
            row.values[static_cast<std::size_t>(i)] += 850 * body * disc + 330 * pedicle + 380 * spinous;
        }
    }

    /// Vessels fan out from the root of a lung, thinner with every branch.
    void makeVessels(Point root, int side) {
        for (int i = 0; i < 11; ++i) {
            const double slope = -1.3 + 0.27 * i + m_random.between(-0.1, 0.1);
            const double reach = m_random.between(55, 80);
            const Point fork{root.x + side * reach, root.y + slope * reach};
            m_vessels.push_back({root, fork, 10, 5.5, 520});
            for (int branch = 0; branch < 2; ++branch) {
                const double bend = slope + (branch == 0 ? -0.28 : 0.3) + m_random.between(-0.1, 0.1);
                const double length = m_random.between(35, 75);
                m_vessels.push_back({fork, {fork.x + side * length, fork.y + bend * length}, 5, 2, 340});
            }
        }
    }

    std::uint64_t m_seed;
    RandomNumbers m_random;
    double m_shift = 0;  // of the lungs
    std::vector<Rib> m_ribs;
    std::vector<Rod> m_vessels;
    std::vector<Rod> m_arms;
    std::vector<Bone> m_bones;
};

}  // namespace

std::unique_ptr<Anatomy> makeChest(std::uint64_t seed) {
    return std::make_unique<Chest>(seed);
}

}  // namespace qvr

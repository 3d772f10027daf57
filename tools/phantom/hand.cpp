// A right hand, back of the hand towards the tube, so the thumb is on the left of the picture.
#include <array>
#include <cmath>
#include <vector>

#include "tools/phantom/anatomy.h"
#include "tools/phantom/randomNumbers.h"

namespace qvr {
namespace {

constexpr Point kWrist{410, 770};
constexpr double kSoftTissue = 3100;
constexpr double kWall = 3700;

/// A finger's joints from the wrist to the tip; the thumb has one bone less, so its last two joints are equal.
struct Finger {
    std::array<Point, 5> joints;
    int bones;
    double thickness;
};
constexpr std::array<Finger, 5> kFingers{{
    {{{{322, 722}, {236, 606}, {182, 505}, {146, 428}, {146, 428}}}, 3, 1.12},
    {{{{368, 692}, {322, 512}, {290, 352}, {274, 262}, {264, 196}}}, 4, 1.0},
    {{{{408, 684}, {396, 494}, {388, 320}, {384, 218}, {381, 146}}}, 4, 1.04},
    {{{{446, 692}, {466, 514}, {486, 352}, {497, 254}, {505, 186}}}, 4, 0.98},
    {{{{480, 706}, {530, 552}, {568, 436}, {586, 366}, {598, 308}}}, 4, 0.86},
}};
/// Radii of the bones of a finger: at the near end, the waist and the far end.
constexpr std::array<std::array<double, 3>, 4> kRadii{
    {{23, 14.5, 24}, {21.5, 13, 17.5}, {17, 10.5, 14}, {13, 7, 9.5}}};

constexpr std::array<Pebble, 8> kWristBones{{
    {{336, 742}, 26, 22, 0.2, 2500},   // trapezium
    {{372, 724}, 19, 19, 0.1, 2300},   // trapezoid
    {{406, 734}, 22, 33, 0.02, 3250},  // capitate
    {{446, 736}, 25, 29, -0.2, 3120},  // hamate
    {{352, 779}, 22, 34, 0.35, 3250},  // scaphoid
    {{396, 791}, 25, 22, 0.1, 2600},   // lunate
    {{440, 783}, 20, 21, -0.2, 2990},  // triquetrum
    {{456, 775}, 12, 14, 0.1, 1700},   // pisiform
}};
constexpr std::array<Stroke, 7> kLetter{{{{0, 0}, {0, 10}},
                                         {{0, 0}, {3.5, 0}},
                                         {{3.5, 0}, {5.5, 1.3}},
                                         {{5.5, 1.3}, {5.5, 3.7}},
                                         {{5.5, 3.7}, {3.5, 5}},
                                         {{3.5, 5}, {0, 5}},
                                         {{2.6, 5}, {6, 10}}}};

/// Turns and moves the model about the wrist.
struct Pose {
    double turn, dx, dy;  // turn: the tangent of half the angle

    [[nodiscard]] Point operator()(Point p) const {
        const double scale = 1 / (1 + turn * turn);
        const double cosine = (1 - turn * turn) * scale;
        const double sine = 2 * turn * scale;
        const double x = p.x - kWrist.x;
        const double y = p.y - kWrist.y;
        return {kWrist.x + dx + x * cosine - y * sine, kWrist.y + dy + x * sine + y * cosine};
    }
};

Point between(Point a, Point b, double t) {
    return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t};
}

class Hand : public Anatomy {
public:
    explicit Hand(std::uint64_t seed) : m_seed(seed) {
        RandomNumbers random(seed);
        const Pose pose{random.between(-0.025, 0.025), random.between(-12, 12), random.between(-10, 10)};
        addSkin(pose);
        for (const Finger& finger : kFingers) addFinger(finger, pose, random.between(0.95, 1.05));
        for (Pebble pebble : kWristBones) {
            pebble.centre = pose(pebble.centre);
            pebble.density *= random.between(0.93, 1.07);
            m_pebbles.push_back(pebble);
        }
        m_bones.push_back({pose({368, 1500}), pose({366, 846}), 40, 37, 45, kWall * 1.05});
        m_bones.push_back({pose({468, 1500}), pose({462, 838}), 30, 23, 25, kWall * 0.95});
    }

    void addTo(const Row& row) const override {
        for (const Rod& rod : m_skin) joinRod(row, rod, 500);
        std::vector<double> bones(row.values.size(), 0.0);
        const Row boneRow{row.y, row.left, row.step, bones};
        for (const Bone& bone : m_bones) addBone(boneRow, bone);
        for (const Pebble& pebble : m_pebbles) addPebble(boneRow, pebble);
        for (int i = 0; i < row.columns(); ++i) {
            const double bone = bones[static_cast<std::size_t>(i)];
            if (bone <= 0) continue;
            const double grain =
                0.07 * cloud(row.x(i), row.y, 4.5, m_seed) + 0.05 * cloud(row.x(i), row.y, 11, m_seed + 1);
            row.values[static_cast<std::size_t>(i)] += bone * (1 + grain);
        }
    }

    [[nodiscard]] Point planeSize() const override { return {800, 1000}; }
    [[nodiscard]] std::span<const Stroke> letter() const override { return kLetter; }
    [[nodiscard]] Point letterPlace() const override { return {90, 180}; }
    [[nodiscard]] Point wedgePlace() const override { return {640, 560}; }

private:
    void addSkin(const Pose& pose) {
        m_skin.push_back({pose({416, 1500}), pose({410, 800}), 128, 98, kSoftTissue * 1.15});
        m_skin.push_back({pose({410, 850}), pose({400, 640}), 98, 92, kSoftTissue * 1.2});
        m_skin.push_back({pose({362, 740}), pose({352, 560}), 78, 62, kSoftTissue * 1.1});
        m_skin.push_back({pose({450, 740}), pose({488, 570}), 82, 62, kSoftTissue * 1.1});
        m_skin.push_back({pose({408, 680}), pose({420, 540}), 90, 66, kSoftTissue * 1.1});
        m_skin.push_back({pose({350, 730}), pose({268, 622}), 74, 52, kSoftTissue * 1.15});
    }

    void addFinger(const Finger& finger, const Pose& pose, double variation) {
        const double size = finger.thickness * variation;
        const auto& joints = finger.joints;
        const std::size_t tip = static_cast<std::size_t>(finger.bones);
        const std::size_t lastRadii = kRadii.size() - 1;
        for (std::size_t i = 0; i < tip; ++i) {
            // The tip of the thumb is a tip too: its bone in the middle is the one that is left out.
            const auto& radii = kRadii[i + 1 == tip ? lastRadii : i];
            const double near = radii[0] * size;
            const double far = radii[2] * size;
            // A thinner bone is a thinner layer.
            const double wall = kWall * (0.3 + 0.7 * radii[1] / kRadii[0][1]);
            const double length = lengthOf(joints[i], joints[i + 1]);
            m_bones.push_back({pose(between(joints[i], joints[i + 1], (0.8 * near + 2) / length)),
                               pose(between(joints[i], joints[i + 1], 1 - (0.8 * far + 2) / length)), near,
                               radii[1] * size, far, wall});
            if (i == 0) continue;  // the palm is the skin of the first bone
            const bool last = i + 1 == tip;
            const double start = (44 - 4.2 * static_cast<double>(i)) * size;
            m_skin.push_back({pose(joints[i]), pose(between(joints[i], joints[i + 1], last ? 0.95 : 1.0)),
                              start, start - (last ? 7 : 4.2) * size, kSoftTissue * 0.8});
        }
    }

    static double lengthOf(Point a, Point b) {
        const double dx = b.x - a.x;
        const double dy = b.y - a.y;
        return dx * dx + dy * dy > 1 ? std::sqrt(dx * dx + dy * dy) : 1.0;
    }

    std::uint64_t m_seed;
    std::vector<Rod> m_skin;  // joined, in this order
    std::vector<Bone> m_bones;
    std::vector<Pebble> m_pebbles;
};

}  // namespace

std::unique_ptr<Anatomy> makeHand(std::uint64_t seed) {
    return std::make_unique<Hand>(seed);
}

}  // namespace qvr

// Tables computed in vectors against tables computed entry by entry: every curve, over its parameters and windows.
#include <array>
#include <cmath>

#include "kernels/kernelTest.h"
#include "qvr/image/detail/curveValues.h"
#include "qvr/image/detail/displayTable.h"

namespace {

using kernels::Random;
using kernels::same;

template <std::size_t Entries>
testing::AssertionResult agree(const qvr::DisplayWindow& window, const qvr::Curve& curve) {
    std::array<std::uint8_t, Entries> expected;
    std::array<std::uint8_t, Entries> actual;
    qvr::fillDisplayTable(window, curve, expected, qvr::CodePath::plain);
    qvr::fillDisplayTable(window, curve, actual);
    const auto result = same(std::span<const std::uint8_t>(expected), std::span<const std::uint8_t>(actual));
    if (result) return result;
    return testing::AssertionFailure()
           << result.message() << "; window " << window.width << '/' << window.center << ", type "
           << curve.type << ", k " << curve.k << ", c " << curve.c;
}

constexpr std::array<qvr::DisplayWindow, 9> kWindows{{{16384, 8192},
                                                      {16383, 8191},
                                                      {1000, 2000},
                                                      {4001, 1500},
                                                      {2, 5},
                                                      {65, 16380},
                                                      {300, -100},
                                                      {100000, 9000},
                                                      {6000, 15000}}};

class EveryCurve : public testing::TestWithParam<int> {};

TEST_P(EveryCurve, OverItsParameters) {
    for (int k = -20; k <= 70; ++k)
        for (const int c : {-10, -1, 0, 2, 5, 7, 10, 30})
            for (const auto& window : kWindows) {
                if (GetParam() != 4 && c != 5) continue;  // only the sigmoid has a centre
                ASSERT_TRUE(agree<qvr::kTable14Bits>(window, {GetParam(), k, c}));
                ASSERT_TRUE(agree<qvr::kTable12Bits>(window, {GetParam(), k, c}));
            }
}

TEST_P(EveryCurve, OverRandomWindowsAndFarParameters) {
    Random random(static_cast<unsigned>(GetParam()));
    for (int round = 0; round < 300; ++round) {
        const int far = round % 3 == 0 ? 3000 : 12;
        ASSERT_TRUE(
            agree<qvr::kTable14Bits>({random.between(1, 33000), random.between(-2000, 18000)},
                                     {GetParam(), random.between(-far, far), random.between(-far, far)}));
    }
}

TEST_P(EveryCurve, AsATableWithBounds) {
    Random random(50U + static_cast<unsigned>(GetParam()));
    for (int round = 0; round < 300; ++round) {
        const auto size = static_cast<std::size_t>(random.between(1, 20000));
        const int low = random.between(-500, 12000);
        const int high = low + random.between(-5, 9000);
        const qvr::Curve curve{GetParam(), random.between(-6, 20), random.between(-5, 15)};
        std::vector<std::uint8_t> expected(size, 77);
        std::vector<std::uint8_t> actual(size, 77);
        qvr::fillBoundsTable(low, high, curve, expected, qvr::CodePath::plain);
        qvr::fillBoundsTable(low, high, curve, actual);
        ASSERT_TRUE(same(expected, actual)) << "low " << low << ", high " << high << ", k " << curve.k;
    }
}

INSTANTIATE_TEST_SUITE_P(Types, EveryCurve, testing::Values(0, 1, 2, 3, 4));

// The error that the tables rely on, against the C library.
TEST(CurveValues, AreAsCloseAsTheySay) {
    std::array<double, qvr::kCurvePart> values;
    const auto at = [](int first, double inverse) {
        return qvr::CurvePositions{static_cast<double>(first), inverse, qvr::kCurvePart};
    };
    double worst = 0;
    for (const double inverse : {1.0 / 16384, 1.0 / 4000})
        for (int first = 0; first < 3500; first += static_cast<int>(qvr::kCurvePart)) {
            const auto t = [&](std::size_t i) { return (first + static_cast<double>(i)) * inverse; };
            for (const double k : {-600.0, -20.0, -1.0, 1.0, 7.0, 600.0}) {
                qvr::exponentialValues(at(first, inverse), k, values.data());
                for (std::size_t i = 0; i < values.size(); ++i)
                    worst = std::max(worst, std::abs(values[i] / std::exp(k * t(i)) - 1.0));
                qvr::sigmoidValues(at(first, inverse), k, 0.5, values.data());
                for (std::size_t i = 0; i < values.size(); ++i)
                    worst = std::max(worst, std::abs(values[i] - 1.0 / (1.0 + std::exp(-k * (t(i) - 0.5)))));
            }
            qvr::logarithmicValues(at(first, inverse), values.data());
            for (std::size_t i = 0; i < values.size(); ++i)
                worst = std::max(worst, std::abs(values[i] - std::log(1.0 + t(i))));
            for (const int k : {1, 3, 64}) {
                qvr::powerValues(at(first, inverse), k, values.data());
                for (std::size_t i = 0; i < values.size(); ++i)
                    worst = std::max(worst, std::abs(values[i] - std::pow(t(i), k)));
            }
        }
    EXPECT_LT(worst, qvr::kCurveError);
}

}  // namespace

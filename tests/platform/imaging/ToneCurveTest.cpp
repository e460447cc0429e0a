#include "ToneCurve.h"

#include <gtest/gtest.h>

TEST(ToneCurveTest, equalSlopesAreAStraightLine)
{
    const ToneCurve curve({0.8, 0.8, 0.8, 0.8, 0.8, 0.8});
    for (int i = 0; i <= 100; ++i) {
        EXPECT_NEAR(curve.at(i / 100.0), 0.8 * i / 100.0, 1e-9);
    }
}

TEST(ToneCurveTest, itIsAsSteepBetweenItsKnotsAsItWasTold)
{
    const ToneCurve::Slopes slopes{0.3, 2.0, 1.5, 1.1, 0.5, 0.2};
    const ToneCurve curve(slopes);
    for (std::size_t piece = 0; piece < slopes.size(); ++piece) {
        const double from = ToneCurve::kKnots.at(piece);
        const double end = ToneCurve::kKnots.at(piece + 1);
        EXPECT_NEAR((curve.at(end) - curve.at(from)) / (end - from), slopes.at(piece), 1e-9);
    }
    EXPECT_EQ(curve.at(0.0), 0.0);
}

TEST(ToneCurveTest, itNeverFallsHoweverUnevenItsSlopes)
{
    for (const ToneCurve::Slopes& slopes :
         {ToneCurve::Slopes{10.0, 0.001, 8.0, 0.001, 9.0, 0.001},
          ToneCurve::Slopes{0.001, 20.0, 0.01, 5.0, 0.001, 7.0}}) {
        const ToneCurve curve(slopes);
        for (int i = 1; i <= 4096; ++i) {
            EXPECT_GE(curve.at(i / 4096.0), curve.at((i - 1) / 4096.0)) << i;
        }
    }
}

TEST(ToneCurveTest, itHasNoCornerAtItsKnots)
{
    constexpr double kStep = 1e-6;
    const ToneCurve curve({0.3, 2.0, 1.5, 1.1, 0.5, 0.2});
    for (std::size_t knot = 1; knot < ToneCurve::kPieces; ++knot) {
        const double x = ToneCurve::kKnots.at(knot);
        EXPECT_NEAR((curve.at(x + kStep) - curve.at(x)) / kStep,
                    (curve.at(x) - curve.at(x - kStep)) / kStep,
                    1e-3);
    }
}

TEST(ToneCurveTest, beyondItsEndsItStaysAsItIsThere)
{
    const ToneCurve curve({0.5, 1.0, 1.0, 1.0, 1.0, 1.0});
    EXPECT_EQ(curve.at(-1.0), 0.0);
    EXPECT_EQ(curve.at(2.0), curve.at(1.0));
}

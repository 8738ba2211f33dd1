#include <Velor.Base/VelorMath.h>

#include <gtest/gtest.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace {

using Vec2 = TVec2d<float>;
using Vec3 = TVec3d<float>;

constexpr float Infinity = std::numeric_limits<float>::infinity();
constexpr float NaN = std::numeric_limits<float>::quiet_NaN();

/// The bits of `x`, with one pattern for every NaN: which operand hands its NaN on is the compiler's choice.
std::uint32_t bitsOf(float x) { return std::bit_cast<std::uint32_t>(std::isnan(x) ? NaN : x); }

// Of the curves below, which have these control points. Every operation was worked out in exact fractions and
// rounded to a float, or to a double where the header says so, without any floating-point unit.
constexpr Vec3 P0{0.1F, -1.3F, 0.7F}, P1{1.9F, 0.4F, -0.6F}, P2{-0.8F, 1.7F, 1.1F}, P3{0.3F, -0.2F, -1.4F};

struct CurveRow
{
    float t;
    Vec3 bezier;
    Vec2 bezierTangent;
    Vec3 spline;
    Vec3 splineDerivative;
};

TEST(VelorMath, CurvesHaveTheBitsOfExactArithmeticRoundedStepByStep)
{
    const CurveRow rows[] = {
        {.t = 0.3F,
         .bezier = {0.7291F, 0.04640007F, 0.1456F},
         .bezierTangent = {-0.12565185F, 0.9920745F},
         .spline = {1.30105F, 0.92020005F, -0.1782F},
         .splineDerivative = {-3.1694999F, 1.8420002F, 2.288F}},
        {.t = 0.55F,
         .bezier = {0.36716244F, 0.67615F, 0.07959996F},
         .bezierTangent = {-0.83994895F, 0.54266536F},
         .spline = {0.40695614F, 1.355075F, 0.4537999F},
         .splineDerivative = {-3.7238748F, 1.5494999F, 2.5429995F}},
        {.t = 1.3F,
         .bezier = {2.5400996F, -2.8495996F, -4.9783993F},
         .bezierTangent = {0.71183413F, -0.7023477F},
         .spline = {-0.3834505F, 1.3022001F, 0.36979866F},
         .splineDerivative = {3.9504986F, -2.4780002F, -4.792F}},
    };
    constexpr Vec2 Q0{P0.x, P0.y}, Q1{P1.x, P1.y}, Q2{P2.x, P2.y}, Q3{P3.x, P3.y};
    for (const auto& [t, bezier, bezierTangent, spline, splineDerivative] : rows) {
        EXPECT_EQ(VelorMath::bezierCubic3D(P0, P1, P2, P3, t), bezier) << t;
        EXPECT_EQ(VelorMath::bezierCubic2D(Q0, Q1, Q2, Q3, t), Vec2(bezier.x, bezier.y)) << t;
        EXPECT_EQ(VelorMath::bezierCubicTangent2D(Q0, Q1, Q2, Q3, t), bezierTangent) << t;
        EXPECT_EQ(VelorMath::catmullRom3D(P0, P1, P2, P3, t), spline) << t;
        EXPECT_EQ(VelorMath::derivCatmullRom3D(P0, P1, P2, P3, t), splineDerivative) << t;
    }
    EXPECT_EQ(VelorMath::bezierCubicTangent2D(Q0, Q0, Q0, Q0, 0.5F), Vec2()) << "the curve stands still";
}

TEST(VelorMath, AnInfinitePointOfASplineGivesNaNWhereItIsInfinite)
{
    for (int infinite = 0; infinite < 4; ++infinite) {
        Vec3 p[] = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12}};
        p[infinite].y = Infinity;
        const Vec3 point = VelorMath::catmullRom3D(p[0], p[1], p[2], p[3], 0.25F);
        const Vec3 speed = VelorMath::derivCatmullRom3D(p[0], p[1], p[2], p[3], 0.25F);
        EXPECT_TRUE(std::isnan(point.y) && std::isnan(speed.y)) << infinite;
    }
}

TEST(VelorMath, ScalarsAreThoseOfTheirFormulas)
{
    // Worked out in 60 digits.
    EXPECT_FLOAT_EQ(VelorMath::easeInEaseOut(0.9F, 0.5F), 0.749999975165F);
    EXPECT_FLOAT_EQ(VelorMath::easeInEaseOut(1.5F, 2), 0.9F) << "it goes on beyond the end";
    EXPECT_FLOAT_EQ(VelorMath::cardioid2D({1, -2}, 1.5F, 0.5F).x, 2.82229422687F);
    EXPECT_FLOAT_EQ(VelorMath::cardioid2D({1, -2}, 1.5F, 0.5F).y, -1.8239298614F);
    EXPECT_FLOAT_EQ(VelorMath::normal(10, 30, 4), 0.0333224602892F);
    EXPECT_FLOAT_EQ(VelorMath::signedAngle({0.6F, 0.8F, 0}, {0, 0.6F, 0.8F}, {1, 0, 0}), 1.0701415845F);
}

struct ScalarRow
{
    const char* name;
    float value;
    float expected;
};

TEST(VelorMath, ScalarsHaveTheBitsOfTheirFormulasAtTheEdgesAsWell)
{
    const Vec2 zero{-0.0F, -0.0F};
    const Vec3 x{1, 0, 0}, z{0, 0, 1};
    const ScalarRow rows[] = {
        {"a Bezier sum begins at +0", VelorMath::bezierCubic2D(zero, zero, zero, zero, 0.5F).x, 0},
        {"smootherStep goes on beyond 1", VelorMath::smootherStep(1.7F), 9.039926F},
        {"map goes on beyond its range", VelorMath::map(1.7F, -0.2F, 1.1F, 3, 0.4F), -0.7999997F},
        {"map from an empty range divides by 0", VelorMath::map(1, 0, 0, 0, 1), Infinity},
        {"opposite vectors have angle -pi", VelorMath::signedAngle(x, {-1.5F, 0, 0}, z), -3.1415927F},
        {"long vectors are not made units", VelorMath::signedAngle({5, 0, 0}, {5, 5, 0}, z), 0},
        {"no angle from a zero vector", VelorMath::signedAngle({}, x, z), 0},
        {"no angle to a zero vector", VelorMath::signedAngle(x, {}, z), 0},
        {"the angle of NaN is NaN", VelorMath::signedAngle({NaN, 0, 0}, x, z), NaN},
        {"NaN has sign 0", VelorMath::sgn(NaN), 0},
        {"the smallest negative number has sign -1", VelorMath::sgn(-1e-45F), -1},
        {"a range runs backwards where min is above max", DoubleMinMax{3, 1}.range(), -2},
        {"a range has its average in the middle", DoubleMinMax{1, 4}.average(), 2.5F},
    };
    for (const auto& [name, value, expected] : rows) {
        EXPECT_EQ(bitsOf(value), bitsOf(expected)) << name << ": " << value;
    }
}

TEST(VelorMath, NextPowerOfTwoWrapsToZero)
{
    const std::uint32_t rows[][2] = {
        {0, 0}, {1, 1}, {3, 4}, {0x10001, 0x20000}, {0x80000000, 0x80000000}, {0x80000001, 0}};
    for (const auto& [value, power] : rows) {
        EXPECT_EQ(VelorMath::nextPowerOfTwo(value), power) << value;
    }
}

TEST(VelorMath, TurningCurveGivesTheWorkedCase)
{
    const float expected[][4] = {{0, 0, 0.83184F, -0.55501F},
                                 {6.77530F, -2.43449F, 0.99848F, -0.05503F},
                                 {10, -1, 0, 1},
                                 {10, 0, 0, 1}};
    const auto knots = VelorMath::turningCurve({0, 0}, {10, 0}, {0, 1}, 0.5F, 2, 1, 2);
    ASSERT_EQ(knots.size(), 4);
    for (qsizetype i = 0; i < 4; ++i) {
        const auto& [x, y, tangentX, tangentY] = expected[i];
        EXPECT_NEAR(length(knots[i].position - Vec2{x, y}), 0, 8e-6F) << i;
        EXPECT_NEAR(length(knots[i].tangent - Vec2{tangentX, tangentY}), 0, 8e-6F) << i;
    }
}

struct TurningRow
{
    const char* name;
    Vec2 target = {8, 0}; ///< as seen from the start, like `middle` and `last`
    Vec2 heading = {1, 0};
    float handle = 0;
    float runIn = 0;
    Vec2 middle;
    Vec2 last = {8, 0};
};

TEST(VelorMath, TurningCurveKeepsItsEdges)
{
    const TurningRow rows[] = {
        {.name = "an exact half turn has no bow", .heading = {-1, 0}, .handle = 2, .middle = {6.25F, 0}},
        {.name = "almost a half turn bows out fully", .heading = {-1, 1e-4F}, .middle = {5.5F, -3}},
        {.name = "a right turn bows to the left", .heading = {0, -1}, .middle = {5.5F, 1.5F}},
        {.name = "the run-in is not longer than the way", .runIn = 99, .middle = {0, 0}},
        {.name = "a negative run-in makes no knot", .runIn = -2, .middle = {6.875F, 0}, .last = {10, 0}},
        {.name = "no control lies behind the start", .handle = 20, .middle = {2.5F, 0}},
        {.name = "no way to go", .target = {}, .handle = 2, .runIn = 5, .middle = {-0.75F, 0}, .last = {}},
        {.name = "a heading keeps its length", .heading = {2, 0}, .runIn = 2, .middle = {2.75F, 0}},
    };
    const Vec2 start{1, 2};
    for (const TurningRow& row : rows) {
        const auto knots =
            VelorMath::turningCurve(start, start + row.target, row.heading, 1, row.handle, row.runIn, 2);
        const bool hasRunIn = row.runIn > 0 && row.target != Vec2();
        ASSERT_EQ(knots.size(), hasRunIn ? 4 : 3) << row.name;
        EXPECT_NEAR(length(knots[1].position - start - row.middle), 0, 1e-6F) << row.name;
        EXPECT_EQ(knots.last().position, start + row.last) << row.name;
        EXPECT_TRUE(!hasRunIn || knots.last().tangent == row.heading) << row.name;
    }
}

TEST(VelorMath, TurningCurveOfNoSegmentsHasOneUndefinedKnotAndOfFewerTheRunInAlone)
{
    const auto undefined = VelorMath::turningCurve({}, {8, 0}, {1, 0}, 1, 2, 0, 0);
    ASSERT_EQ(undefined.size(), 1);
    EXPECT_TRUE(std::isnan(undefined[0].position.x) && std::isnan(undefined[0].tangent.y));
    EXPECT_TRUE(VelorMath::turningCurve({}, {8, 0}, {1, 0}, 1, 2, 0, -1).isEmpty());
    const QList<VelorCurveKnot> runInAlone{{{8, 0}, {1, 0}}};
    EXPECT_EQ(VelorMath::turningCurve({}, {8, 0}, {1, 0}, 1, 2, 3, std::numeric_limits<int>::min()),
              runInAlone);
}

TEST(VelorMath, PlotHasALineForEachStepOfTheFloatSum)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("plot.txt"));
    VelorMath::plotCurve(path);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
    const QByteArray text = file.readAll();
    EXPECT_EQ(text.count('\n'), 101);
    EXPECT_TRUE(text.startsWith("0 0\n0.01 0.00010202\n0.02 0.00041632\n")) << text.left(80).constData();
    EXPECT_TRUE(text.endsWith("\n0.989999 0.999898\n0.999999 1\n")) << text.right(80).constData();
}

} // namespace

#include <Velor.Base/VelorMath.h>

#include <gtest/gtest.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <new>

#if __has_include(<sys/resource.h>)
#include <sys/resource.h>
#endif

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

struct BezierRow
{
    float t;
    Vec3 point;
    Vec2 tangent;
};

TEST(VelorMath, BezierCurvesHaveTheBitsOfExactArithmeticRoundedStepByStep)
{
    const BezierRow rows[] = {
        {0.1F, {0.51329994F, -0.80479985F, 0.39279994F}, {0.5253791F, 0.8508683F}},
        {0.3F, {0.7291F, 0.04640007F, 0.1456F}, {-0.12565185F, 0.9920745F}},
        {0.55F, {0.36716244F, 0.67615F, 0.07959996F}, {-0.83994895F, 0.54266536F}},
        {0.9F, {0.075699955F, 0.2768001F, -0.7687998F}, {0.3120203F, -0.95007545F}},
        {1.3F, {2.5400996F, -2.8495996F, -4.9783993F}, {0.71183413F, -0.7023477F}},
        {-0.6F, {-9.792801F, -4.1872F, 7.835201F}, {0.9934482F, 0.11428357F}},
    };
    constexpr Vec2 Q0{P0.x, P0.y}, Q1{P1.x, P1.y}, Q2{P2.x, P2.y}, Q3{P3.x, P3.y};
    for (const auto& [t, point, tangent] : rows) {
        EXPECT_EQ(VelorMath::bezierCubic3D(P0, P1, P2, P3, t), point) << t;
        EXPECT_EQ(VelorMath::bezierCubic2D(Q0, Q1, Q2, Q3, t), Vec2(point.x, point.y)) << t;
        EXPECT_EQ(VelorMath::bezierCubicTangent2D(Q0, Q1, Q2, Q3, t), tangent) << t;
    }
    EXPECT_EQ(VelorMath::bezierCubicTangent2D(Q0, Q0, Q0, Q0, 0.5F), Vec2()) << "the curve stands still";
}

struct SplineRow
{
    float t;
    Vec3 point;
    Vec3 derivative;
};

TEST(VelorMath, SplinesHaveTheBitsOfExactArithmeticRoundedStepByStep)
{
    const SplineRow rows[] = {
        {0.1F, {1.79515F, 0.56060004F, -0.53260005F}, {-1.6055001F, 1.698F, 1.112F}},
        {0.3F, {1.30105F, 0.92020005F, -0.1782F}, {-3.1694999F, 1.8420002F, 2.288F}},
        {0.55F, {0.40695614F, 1.355075F, 0.4537999F}, {-3.7238748F, 1.5494999F, 2.5429995F}},
        {0.9F, {-0.66365004F, 1.7013998F, 1.0865996F}, {-1.8855F, 0.25800014F, 0.631999F}},
        {1.3F, {-0.3834505F, 1.3022001F, 0.36979866F}, {3.9504986F, -2.4780002F, -4.792F}},
        {-0.6F, {-1.0304002F, 0.23440015F, 1.8936002F}, {11.712001F, -1.4520006F, -9.808001F}},
    };
    for (const auto& [t, point, derivative] : rows) {
        EXPECT_EQ(VelorMath::catmullRom3D(P0, P1, P2, P3, t), point) << t;
        EXPECT_EQ(VelorMath::derivCatmullRom3D(P0, P1, P2, P3, t), derivative) << t;
    }
}

TEST(VelorMath, AnInfinitePointOfASplineGivesNaNWhereItIsInfinite)
{
    for (int infinite = 0; infinite < 4; ++infinite) {
        Vec3 p[] = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12}};
        p[infinite].y = Infinity;
        const Vec3 point = VelorMath::catmullRom3D(p[0], p[1], p[2], p[3], 0.25F);
        const Vec3 speed = VelorMath::derivCatmullRom3D(p[0], p[1], p[2], p[3], 0.25F);
        EXPECT_TRUE(std::isnan(point.y) && std::isnan(speed.y)) << infinite;
        EXPECT_EQ(Vec2(point.x, point.z), Vec2(4.75F, 6.75F)) << infinite;
        EXPECT_EQ(Vec2(speed.x, speed.z), Vec2(3, 3)) << infinite;
    }
}

struct ScalarRow
{
    const char* name;
    float value;
    float expected;
};

TEST(VelorMath, ScalarsAreThoseOfTheirFormulas)
{
    const auto cardioid = [](float angle) { return VelorMath::cardioid2D({1, -2}, 1.5F, angle); };
    // Worked out in 60 digits.
    const ScalarRow rows[] = {
        {"easing with a whole exponent", VelorMath::easeInEaseOut(0.25F, 2), 0.1F},
        {"easing with an exponent below 1", VelorMath::easeInEaseOut(0.9F, 0.5F), 0.749999975165F},
        {"easing near the start", VelorMath::easeInEaseOut(0.01F, 2.5F), 1.02543358079e-5F},
        {"easing beyond the end", VelorMath::easeInEaseOut(1.5F, 2), 0.9F},
        {"x of the cardioid at 0.5", cardioid(0.5F).x, 2.82229422687F},
        {"y of the cardioid at 0.5", cardioid(0.5F).y, -1.8239298614F},
        {"x of the cardioid at 3.1", cardioid(3.1F).x, -3.49221856069F},
        {"y of the cardioid at 3.1", cardioid(3.1F).y, -1.75062333751F},
        {"standard normal density", VelorMath::normal(0.5F, 3, 0), 0.352065326764F},
        {"density with a mean", VelorMath::normal(-2, 6, 1), 0.0647587978329F},
        {"density with a width and a mean", VelorMath::normal(10, 30, 4), 0.0333224602892F},
        {"angle of oblique vectors", VelorMath::signedAngle({0.6F, 0.8F, 0}, {0, 0.6F, 0.8F}, {1, 0, 0}),
         1.0701415845F},
    };
    for (const auto& [name, value, expected] : rows) {
        EXPECT_FLOAT_EQ(value, expected) << name;
    }
}

TEST(VelorMath, ScalarsKeepTheirEdges)
{
    const Vec2 zero{-0.0F, -0.0F};
    const ScalarRow rows[] = {
        {"a Bezier sum begins at +0", VelorMath::bezierCubic2D(zero, zero, zero, zero, 0.5F).x, 0},
        {"a spline keeps -0 among negative terms",
         VelorMath::catmullRom3D({-1, 0, 0}, {-0.0F, 0, 0}, {-2, 0, 0}, {-8, 0, 0}, 0).x, -0.0F},
        {"the cusp of a cardioid is right of its centre", VelorMath::cardioid2D({1, -2}, 1.5F, 0).x, 2.5F},
        {"a density without a width is NaN", VelorMath::normal(0, 0, 1), NaN},
        {"easing below 0 with a fractional exponent is NaN", VelorMath::easeInEaseOut(-0.5F, 0.5F), NaN},
        {"easing begins at 0", VelorMath::easeInEaseOut(0, 2.5F), 0},
        {"easing ends at 1", VelorMath::easeInEaseOut(1, 2.5F), 1},
        {"smootherStep is 0.5 in the middle", VelorMath::smootherStep(0.5F), 0.5F},
        {"smootherStep ends at 1", VelorMath::smootherStep(1), 1},
        {"smootherStep goes on beyond 1", VelorMath::smootherStep(2), 32},
        {"map goes on beyond its range", VelorMath::map(15, 0, 10, 100, 50), 25},
        {"map from an empty range divides by 0", VelorMath::map(1, 0, 0, 0, 1), Infinity},
        {"equal vectors have angle -0", VelorMath::signedAngle({1, 0, 0}, {1, 0, 0}, {0, 0, 1}), -0.0F},
        {"opposite vectors have angle -pi", VelorMath::signedAngle({1, 0, 0}, {-1.5F, 0, 0}, {0, 0, 1}),
         -3.1415927F},
        {"a left turn is positive", VelorMath::signedAngle({1, 0, 0}, {0, 1, 0}, {0, 0, 1}), 1.5707964F},
        {"a left turn seen from below is negative", VelorMath::signedAngle({1, 0, 0}, {0, 1, 0}, {0, 0, -1}),
         -1.5707964F},
        {"long vectors are not made units", VelorMath::signedAngle({5, 0, 0}, {5, 5, 0}, {0, 0, 1}), 0},
        {"no angle from a zero vector", VelorMath::signedAngle({}, {1, 0, 0}, {0, 0, 1}), 0},
        {"no angle to a zero vector", VelorMath::signedAngle({1, 0, 0}, {}, {0, 0, 1}), 0},
        {"the angle of NaN is NaN", VelorMath::signedAngle({NaN, 0, 0}, {1, 0, 0}, {0, 0, 1}), NaN},
        {"NaN has sign 0", VelorMath::sgn(NaN), 0},
        {"the smallest negative number has sign -1", VelorMath::sgn(-1e-45F), -1},
        {"infinity has sign 1", VelorMath::sgn(Infinity), 1},
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
        {0, 0},          {1, 1},         {2, 2}, {3, 4}, {0x10001, 0x20000}, {0x80000000, 0x80000000},
        {0x80000001, 0}, {0xFFFFFFFF, 0}};
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
    Vec2 target = {8, 0};
    Vec2 heading = {1, 0};
    float bulge = 1;
    float handle = 0;
    float runIn = 0;
    Vec2 middle;
    Vec2 last = {8, 0};
};

TEST(VelorMath, TurningCurveKeepsItsEdges)
{
    const TurningRow rows[] = {
        {.name = "no bow for a heading along the chord", .handle = 2, .middle = {4.75F, 0}},
        {.name = "no bow for a heading against the chord",
         .heading = {-1, 0},
         .handle = 2,
         .middle = {6.25F, 0}},
        {.name = "a left turn bows to the right", .heading = {0, 1}, .middle = {5.5F, -1.5F}},
        {.name = "a right turn bows to the left", .heading = {0, -1}, .middle = {5.5F, 1.5F}},
        {.name = "a half turn bows out fully", .heading = {-1, 1e-4F}, .middle = {5.5F, -3}},
        {.name = "a run-in is no longer than the way", .runIn = 99, .middle = {0, 0}},
        {.name = "a negative run-in makes no knot",
         .bulge = 0,
         .runIn = -2,
         .middle = {6.875F, 0},
         .last = {10, 0}},
        {.name = "no control lies behind the start", .bulge = 0, .handle = 20, .middle = {2.5F, 0}},
        {.name = "a curve from a point to itself has no run-in",
         .target = {0, 0},
         .heading = {0, 1},
         .handle = 2,
         .runIn = 5,
         .middle = {0, -0.75F},
         .last = {0, 0}},
        {.name = "a heading keeps its length",
         .heading = {2, 0},
         .bulge = 0,
         .runIn = 2,
         .middle = {2.75F, 0}},
    };
    for (const TurningRow& row : rows) {
        const auto knots =
            VelorMath::turningCurve({}, row.target, row.heading, row.bulge, row.handle, row.runIn, 2);
        const bool hasRunIn = row.runIn > 0 && row.target != Vec2();
        ASSERT_EQ(knots.size(), hasRunIn ? 4 : 3) << row.name;
        EXPECT_NEAR(length(knots[1].position - row.middle), 0, 1e-6F) << row.name;
        EXPECT_EQ(knots.last().position, row.last) << row.name;
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

#if __has_include(<sys/resource.h>) && !defined(VELOR_SANITIZED)
TEST(VelorMath, TwoBillionSegmentsFailAsMemoryFails)
{
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_AS, &before), 0);
    const rlimit eightGigabytes{rlim_t(8) << 30, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_AS, &eightGigabytes), 0);
    EXPECT_THROW(VelorMath::turningCurve({}, {8, 0}, {1, 0}, 1, 2, 3, std::numeric_limits<int>::max()),
                 std::bad_alloc);
    EXPECT_EQ(setrlimit(RLIMIT_AS, &before), 0);
}
#endif

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

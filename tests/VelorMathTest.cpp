#include "../benchmarks/LiteralMaths.h"

#include <gtest/gtest.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <cmath>
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

struct CurveRow
{
    float t;
    float values[11];
};

// Both tables are the output of VelorMathTables.py. The values are bezierCubic2D, bezierCubicTangent2D, z of
// bezierCubic3D, catmullRom3D and derivCatmullRom3D.
const CurveRow CurveRows[] = {
    {0x0.0p+0F,
     {0x1.99999ap-4F, -0x1.99999ap-3F, 0x1.878738p-2F, 0x1.d918bcp-1F, 0x1.333334p-2F, 0x1.4cccccp+0F,
      0x1.59999ap+1F, -0x1.19999ap+0F, -0x1.400000p+1F, 0x1.c00000p+0F, 0x1.e66668p-1F}},
    {0x1.000000p+0F,
     {0x1.666666p+2F, -0x1.c66666p+2F, 0x1.6bc44ap-1F, -0x1.684d64p-1F, 0x1.ccccccp-1F, -0x1.39999cp+2F,
      0x1.a66668p+1F, 0x1.199994p+1F, 0x1.133340p+1F, -0x1.399994p+2F, 0x1.ffffc0p-1F}},
    {0x1.666666p-1F,
     {0x1.0ff800p-7F, -0x1.e68090p-2F, 0x1.0037c8p-1F, -0x1.bb4778p-1F, 0x1.143fe6p+0F, -0x1.0232ccp+2F,
      0x1.000f92p+2F, 0x1.6669a8p+0F, -0x1.b58940p+2F, -0x1.50e4c0p-3F, 0x1.f50e54p+1F}},
    {0x1.b33334p+0F,
     {0x1.e3b8f2p+5F, -0x1.80c0bcp+5F, 0x1.abb6e6p-1F, -0x1.196ec6p-1F, -0x1.790556p+3F, 0x1.577e20p+3F,
      -0x1.9cb500p+2F, -0x1.0cdba0p+1F, 0x1.836358p+5F, -0x1.915a1cp+4F, -0x1.f218a4p+3F}},
    {0x1.d4c2ccp+14F,
     {0x1.27ea6cp+49F, -0x1.ab525ep+47F, 0x1.e1944ap-1F, -0x1.5bb59ep-2F, -0x1.c8c1d0p+47F, 0x1.27e974p+48F,
      -0x1.ab4cccp+46F, -0x1.c8c1e0p+46F, 0x1.e4d15ap+34F, -0x1.5e09eep+33F, -0x1.762c50p+33F}},
};

TEST(VelorMath, CurvesHaveTheBitsOfExactArithmeticRoundedStepByStep)
{
    const Vec3 p[] = {{0.1F, -0.2F, 0.3F}, {1.3F, 2.7F, -1.1F}, {-4.9F, 3.3F, 2.2F}, {5.6F, -7.1F, 0.9F}};
    const Vec2 q[] = {{p[0].x, p[0].y}, {p[1].x, p[1].y}, {p[2].x, p[2].y}, {p[3].x, p[3].y}};
    for (const auto& [t, values] : CurveRows) {
        const Vec2 point = VelorMath::bezierCubic2D(q[0], q[1], q[2], q[3], t);
        const Vec2 tangent = VelorMath::bezierCubicTangent2D(q[0], q[1], q[2], q[3], t);
        const Vec3 space = VelorMath::bezierCubic3D(p[0], p[1], p[2], p[3], t);
        const Vec3 rom = VelorMath::catmullRom3D(p[0], p[1], p[2], p[3], t);
        const Vec3 speed = VelorMath::derivCatmullRom3D(p[0], p[1], p[2], p[3], t);
        const float got[] = {point.x, point.y, tangent.x, tangent.y, space.z, rom.x,
                             rom.y,   rom.z,   speed.x,   speed.y,   speed.z};
        for (std::size_t i = 0; i < std::size(got); ++i) {
            EXPECT_EQ(got[i], values[i]) << "value " << i << " at t " << t;
        }
        EXPECT_EQ(Vec2(space.x, space.y), point) << t;
    }
}

struct ScalarRow
{
    const char* fault;
    float got;
    float expected;
};

TEST(VelorMath, ScalarsMeetTheHighPrecisionTable)
{
    const auto cardioid = [](float angle) { return VelorMath::cardioid2D({1, -2}, 1.5F, angle); };
    const ScalarRow rows[] = {
        {"easing", VelorMath::easeInEaseOut(0.25F, 2), 0.1F},
        {"easing", VelorMath::easeInEaseOut(0.9F, 0.5F), 0.749999975165F},
        {"easing", VelorMath::easeInEaseOut(0.01F, 2.5F), 1.02543358079e-5F},
        {"easing", VelorMath::easeInEaseOut(1.5F, 2), 0.9F},
        {"x of the cardioid", cardioid(0.5F).x, 2.82229422687F},
        {"y of the cardioid", cardioid(0.5F).y, -1.8239298614F},
        {"x of the cardioid", cardioid(3.1F).x, -3.49221856069F},
        {"y of the cardioid", cardioid(3.1F).y, -1.75062333751F},
        {"density", VelorMath::normal(0.5F, 3, 0), 0.352065326764F},
        {"density", VelorMath::normal(-2, 6, 1), 0.0647587978329F},
        {"density", VelorMath::normal(10, 30, 4), 0.0333224602892F},
        {"oblique vectors", VelorMath::signedAngle({0.6F, 0.8F, 0}, {0, 0.6F, 0.8F}, {1, 0, 0}),
         1.0701415845F},
    };
    for (const auto& [fault, got, expected] : rows) {
        EXPECT_FLOAT_EQ(got, expected) << fault;
    }
}

TEST(VelorMath, ScalarsKeepTheirEdges)
{
    const Vec2 zero{-0.0F, -0.0F};
    const ScalarRow rows[] = {
        {"weighted sum not begun at 0", VelorMath::bezierCubic2D(zero, zero, zero, zero, 0.5F).x, 0},
        {"cusp of the cardioid", VelorMath::cardioid2D({1, -2}, 1.5F, 0).x, 2.5F},
        {"no width at the mean", VelorMath::normal(1, 0, 1), NaN},
        {"no width elsewhere", VelorMath::normal(0, 0, 1), NaN},
        {"fractional power below 0", VelorMath::easeInEaseOut(-0.5F, 0.5F), NaN},
        {"whole power above 1", VelorMath::easeInEaseOut(2, 3), 8.0F / 7},
        {"ends of the easing", VelorMath::easeInEaseOut(0, 2.5F) + VelorMath::easeInEaseOut(1, 2.5F), 1},
        {"middle of the easing", VelorMath::easeInEaseOut(0.5F, 7.3F), 0.5F},
        {"both powers vanish", VelorMath::easeInEaseOut(0.5F, 1000), NaN},
        {"start of smootherStep", VelorMath::smootherStep(0), 0},
        {"middle of smootherStep", VelorMath::smootherStep(0.5F), 0.5F},
        {"end of smootherStep", VelorMath::smootherStep(1), 1},
        {"smootherStep limited", VelorMath::smootherStep(2), 32},
        {"map limited", VelorMath::map(15, 0, 10, 100, 50), 25},
        {"empty range guarded", VelorMath::map(1, 0, 0, 0, 1), Infinity},
        {"empty range at its value", VelorMath::map(0, 0, 0, 0, 1), NaN},
        {"sign of equal vectors", VelorMath::signedAngle({1, 0, 0}, {1, 0, 0}, {0, 0, 1}), -0.0F},
        {"sign of opposite vectors", VelorMath::signedAngle({1, 0, 0}, {-1, 0, 0}, {0, 0, 1}), -3.1415927F},
        {"left turn", VelorMath::signedAngle({1, 0, 0}, {0, 1, 0}, {0, 0, 1}), 1.5707964F},
        {"right turn", VelorMath::signedAngle({1, 0, 0}, {0, 1, 0}, {0, 0, -1}), -1.5707964F},
        {"long vectors divided", VelorMath::signedAngle({5, 0, 0}, {5, 5, 0}, {0, 0, 1}), 0},
        {"first vector zero", VelorMath::signedAngle({}, {1, 0, 0}, {0, 0, 1}), 0},
        {"second vector zero", VelorMath::signedAngle({1, 0, 0}, {}, {0, 0, 1}), 0},
        {"NaN hidden by the limit", VelorMath::signedAngle({NaN, 0, 0}, {1, 0, 0}, {0, 0, 1}), NaN},
        {"sign of negative zero", VelorMath::sgn(-0.0F), 0},
        {"sign of NaN", VelorMath::sgn(NaN), 0},
        {"sign of the smallest", VelorMath::sgn(-1e-45F), -1},
        {"sign of infinity", VelorMath::sgn(Infinity), 1},
        {"ends of a range ordered", DoubleMinMax{3, 1}.range(), -2},
        {"middle of a range", DoubleMinMax{1, 4}.average(), 2.5F},
    };
    for (const auto& [fault, got, expected] : rows) {
        EXPECT_EQ(literal::bitsOf(got), literal::bitsOf(expected)) << fault << ": " << got;
    }
    const std::uint32_t powers[][2] = {
        {0, 0},          {1, 1},         {2, 2}, {3, 4}, {0x10001, 0x20000}, {0x80000000, 0x80000000},
        {0x80000001, 0}, {0xFFFFFFFF, 0}};
    for (const auto& [value, power] : powers) {
        EXPECT_EQ(VelorMath::nextPowerOfTwo(value), power) << value;
    }
    for (const float t : {0.0F, 0.5F, 1.0F}) {
        const Vec2 same{3.7F, -1.9F};
        EXPECT_EQ(VelorMath::bezierCubicTangent2D(same, same, same, same, t), Vec2()) << t;
    }
}

TEST(VelorMath, CurvesHaveTheBitsOfTheLiteralFormulas)
{
    literal::Inputs in(20);
    for (int i = 0; i < 20000; ++i) {
        ASSERT_EQ(literal::differences(in, i % 9 - 1), "") << "input " << i;
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
        const auto& [position, tangent] = knots[i];
        const float got[] = {position.x, position.y, tangent.x, tangent.y};
        for (std::size_t k = 0; k < 4; ++k) {
            EXPECT_NEAR(got[k], expected[i][k], 5e-6F) << "knot " << i << ", value " << k;
        }
    }
}

TEST(VelorMath, TurningCurveKeepsItsEdges)
{
    const struct
    {
        const char* fault;
        Vec2 target, heading;
        float bulge, handle, runIn;
        Vec2 middle, last;
    } rows[] = {
        {"heading along the chord bows", {8, 0}, {1, 0}, 1, 2, 0, {4.75F, 0}, {8, 0}},
        {"heading against the chord bows", {8, 0}, {-1, 0}, 1, 2, 0, {6.25F, 0}, {8, 0}},
        {"left turn bows left", {8, 0}, {0, 1}, 1, 0, 0, {5.5F, -1.5F}, {8, 0}},
        {"right turn bows right", {8, 0}, {0, -1}, 1, 0, 0, {5.5F, 1.5F}, {8, 0}},
        {"run-in longer than the way", {8, 0}, {1, 0}, 1, 0, 99, {0, 0}, {8, 0}},
        {"negative run-in makes a knot", {8, 0}, {1, 0}, 0, 0, -2, {6.875F, 0}, {10, 0}},
        {"control behind the start", {8, 0}, {1, 0}, 0, 20, 0, {2.5F, 0}, {8, 0}},
        {"start on the target", {0, 0}, {0, 1}, 1, 2, 5, {0, -0.75F}, {0, 0}},
        {"heading made a unit", {8, 0}, {2, 0}, 0, 0, 2, {2.75F, 0}, {8, 0}},
    };
    for (const auto& row : rows) {
        const auto knots =
            VelorMath::turningCurve({}, row.target, row.heading, row.bulge, row.handle, row.runIn, 2);
        const bool hasRunIn = row.runIn > 0 && row.target != Vec2();
        ASSERT_EQ(knots.size(), hasRunIn ? 4 : 3) << row.fault;
        EXPECT_NEAR(length(knots[1].position - row.middle), 0, 1e-6F) << row.fault;
        EXPECT_EQ(knots.last().position, row.last) << row.fault;
        EXPECT_TRUE(!hasRunIn || knots.last().tangent == row.heading) << row.fault;
    }
    EXPECT_TRUE(VelorMath::turningCurve({}, {8, 0}, {1, 0}, 1, 2, 0, -1).isEmpty());
    const QList<VelorCurveKnot> runInAlone{{{8, 0}, {1, 0}}};
    EXPECT_EQ(VelorMath::turningCurve({}, {8, 0}, {1, 0}, 1, 2, 3, std::numeric_limits<int>::min()),
              runInAlone);
    const auto undefined = VelorMath::turningCurve({}, {8, 0}, {1, 0}, 1, 2, 0, 0);
    ASSERT_EQ(undefined.size(), 1);
    EXPECT_TRUE(std::isnan(undefined[0].position.x) && std::isnan(undefined[0].tangent.y));
}

#if __has_include(<sys/resource.h>) && !defined(VELOR_SANITIZED)
TEST(VelorMath, TwoBillionSegmentsFailAsMemoryFails)
{
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_AS, &before), 0);
    const rlimit eightGigabytes{rlim_t(8) << 30, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_AS, &eightGigabytes), 0);
    for (const int segments : {2000000000, std::numeric_limits<int>::max()}) {
        EXPECT_THROW(VelorMath::turningCurve({}, {8, 0}, {1, 0}, 1, 2, 3, segments), std::bad_alloc);
    }
    EXPECT_EQ(setrlimit(RLIMIT_AS, &before), 0);
}
#endif

TEST(VelorMath, PlotHasItsLines)
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

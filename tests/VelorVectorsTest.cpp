#include <Velor.Base/VelorVectors.h>

#include <QtCore/QString>
#include <gtest/gtest.h>

#include <limits>
#include <type_traits>

namespace {

// Arrays of these are read and written as arrays of floats.
static_assert(sizeof(TVec2d<float>) == 8 && std::is_trivially_copyable_v<TVec2d<float>>);
static_assert(sizeof(TVec3d<float>) == 12 && std::is_trivially_copyable_v<TVec3d<float>>);
static_assert(sizeof(quat) == 16 && std::is_trivially_copyable_v<quat>);
static_assert(sizeof(TMat4d<float>) == 64 && std::is_trivially_copyable_v<TMat4d<float>>);
static_assert(offsetof(quat, x) == 0 && offsetof(quat, w) == 12);

using Vec2 = TVec2d<float>;
using Vec3 = TVec3d<float>;
using Mat4 = TMat4d<float>;

constexpr Mat4 counting()
{
    Mat4 m;
    for (std::size_t i = 0; i < Mat4::Size; ++i) {
        m[i] = static_cast<float>(i);
    }
    return m;
}

// Each component has a value of its own, so that two that are mixed up show.
static_assert(Vec2{1, 2} + Vec2{10, 20} == Vec2{11, 22} && Vec2{1, 2} - Vec2{10, 5} == Vec2{-9, -3});
static_assert(Vec2{2, 3} * Vec2{5, 7} == Vec2{10, 21} && Vec2{8, 9} / Vec2{2, 3} == Vec2{4, 3});
static_assert(Vec2{2, 3} * 2 == Vec2{4, 6} && 2 * Vec2{2, 3} == Vec2{4, 6} && Vec2{2, 4} / 2 == Vec2{1, 2});
static_assert(-Vec2{1, 2} == Vec2{-1, -2} && dot(Vec2{2, 3}, Vec2{5, 7}) == 31);
static_assert(Vec3{1, 2, 3} + Vec3{10, 20, 30} == Vec3{11, 22, 33});
static_assert(Vec3{1, 2, 3} - Vec3{10, 5, 1} == Vec3{-9, -3, 2});
static_assert(Vec3{2, 3, 4} * Vec3{5, 7, 9} == Vec3{10, 21, 36});
static_assert(Vec3{8, 9, 10} / Vec3{2, 3, 5} == Vec3{4, 3, 2} && Vec3{2, 4, 6} / 2 == Vec3{1, 2, 3});
static_assert(Vec3{2, 3, 4} * 2 == Vec3{4, 6, 8} && 2 * Vec3{2, 3, 4} == Vec3{4, 6, 8});
static_assert(-Vec3{1, 2, 3} == Vec3{-1, -2, -3} && dot(Vec3{2, 3, 4}, Vec3{5, 7, 9}) == 67);
static_assert(cross(Vec3{1, 0, 0}, Vec3{0, 1, 0}) == Vec3{0, 0, 1}, "the cross product is left-handed");
static_assert(cross(Vec3{2, 3, 4}, Vec3{5, 7, 9}) == Vec3{-1, 2, -1});
static_assert(quat{1, 2, 3, 4} + quat{10, 20, 30, 40} == quat{11, 22, 33, 44});
static_assert(quat{1, 2, 3, 4} - quat{10, 5, 1, 4} == quat{-9, -3, 2, 0} &&
              -quat{1, 2, 3, 4} == quat{-1, -2, -3, -4});
static_assert(quat{1, 2, 3, 4} * 2 == quat{2, 4, 6, 8} && 2 * quat{1, 2, 3, 4} == quat{2, 4, 6, 8});
static_assert(quat{2, 4, 6, 8} / 2 == quat{1, 2, 3, 4});
static_assert((counting() + counting())[9] == 18 && (counting() - counting() * 3)[9] == -18);
static_assert((2 * counting())[15] == 30 && (counting() / 2)[15] == 7.5f && (-counting())[15] == -15);

TEST(VelorVectors, ADefaultOneIsNeutral)
{
    EXPECT_EQ(Vec3(), (Vec3{0, 0, 0}));
    EXPECT_EQ(quat(), (quat{0, 0, 0, 1}));
    for (std::size_t i = 0; i < Mat4::Size; ++i) {
        EXPECT_EQ(Mat4()[i], i % 5 == 0 ? 1.0f : 0.0f) << i;
    }
}

TEST(VelorVectors, AssigningOperatorsWorkOnTheObjectItself)
{
    Vec3 v{2, 3, 4};
    v += v;
    v *= v;
    EXPECT_EQ(v, (Vec3{16, 36, 64}));
    v /= Vec3(v);
    v -= Vec3{1, 2, 3};
    v *= 3;
    v /= 2;
    EXPECT_EQ(v, (Vec3{0, -1.5f, -3}));
    Mat4 m = counting();
    m += m;
    m /= 4;
    m -= counting();
    m *= -2;
    EXPECT_EQ(m, counting());
    quat q{1, 2, 3, 4};
    q += q;
    q -= quat{1, 1, 1, 1};
    q *= 4;
    q /= 2;
    EXPECT_EQ(q, (quat{2, 6, 10, 14}));
}

TEST(VelorVectors, ComparisonIsExact)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_NE((Vec3{1, 2, nan}), (Vec3{1, 2, nan}));
    EXPECT_EQ((Vec2{0.0f, 0.0f}), (Vec2{-0.0f, -0.0f}));
    EXPECT_NE((Vec2{0.0f, 1.0f}), (Vec2{0.0f, std::nextafter(1.0f, 2.0f)}));
    Mat4 last = counting();
    last[15] += 1;
    EXPECT_NE(last, counting());
}

TEST(VelorVectors, LengthIsEuclidean)
{
    EXPECT_EQ(length(Vec2{3, -4}), 5.0f);
    EXPECT_EQ(length(TVec3d<double>{2, 3, -6}), 7.0);
}

TEST(VelorVectors, DebugOutputNamesTheComponents)
{
    QString text;
    QDebug(&text) << Vec2{1.5f, -2} << Vec3{1, 2, 3.25f} << quat{1, 2, 3, 4} << "next";
    EXPECT_EQ(text.trimmed().toStdString(),
              "TVec2d(1.5, -2) TVec3d(1, 2, 3.25) quat(x 1, y 2, z 3, w 4) next");
    QString matrix;
    QDebug(&matrix) << counting();
    EXPECT_EQ(matrix.trimmed().toStdString(), "TMat4d(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15)");
}

} // namespace

#include <Velor.Base/VelorVectors.h>

#include <QtCore/QDebug>
#include <QtCore/QString>
#include <gtest/gtest.h>

#include <limits>

namespace {

using Vec2 = TVec2d<float>;
using Vec3 = TVec3d<float>;
using Mat4 = TMat4d<float>;

// Arrays of these are read and written as arrays of floats.
static_assert(sizeof(Vec2) == 8 && std::is_trivially_copyable_v<Vec2>);
static_assert(sizeof(Vec3) == 12 && std::is_trivially_copyable_v<Vec3>);
static_assert(sizeof(quat) == 16 && std::is_trivially_copyable_v<quat> && offsetof(quat, w) == 12);
static_assert(sizeof(Mat4) == 64 && std::is_trivially_copyable_v<Mat4>);

// Each component has a value of its own, so that two that are mixed up show.
static_assert((Vec2{1, 2} + Vec2{10, 20}) * Vec2{2, 3} - Vec2{2, 6} / Vec2{1, 2} == Vec2{20, 63});
static_assert(2 * -Vec2{1, 2} / 4 * 2 == Vec2{-1, -2} && dot(Vec2{2, 3}, Vec2{5, 7}) == 31);
static_assert((Vec3{1, 2, 3} + Vec3{10, 20, 30}) * Vec3{2, 3, 4} - Vec3{2, 6, 8} / Vec3{1, 2, 4} ==
              Vec3{20, 63, 130});
static_assert(2 * -Vec3{1, 2, 3} / 4 * 2 == Vec3{-1, -2, -3} && dot(Vec3{2, 3, 4}, Vec3{5, 7, 9}) == 67);
static_assert(cross(Vec3{2, 3, 4}, Vec3{5, 7, 9}) == Vec3{-1, 2, -1});
static_assert(2 * -(quat{1, 2, 3, 4} + quat{10, 20, 30, 40} - quat{9, 7, 5, 2}) / 4 * 2 ==
              quat{-2, -15, -28, -42});

TEST(VelorVectors, AssigningOperatorsWorkOnTheObjectItself)
{
    Vec3 v{2, 3, 4};
    v += v;
    v *= v;
    v -= Vec3{1, 2, 3};
    v /= Vec3{3, 2, 1};
    v *= 3;
    v /= 2;
    EXPECT_EQ(v, (Vec3{7.5f, 25.5f, 91.5f}));
    Mat4 m;
    EXPECT_EQ(m[0] + m[5] + m[10] + m[15], 4);
    m[1] = 3;
    m += m;
    m /= 4;
    m -= Mat4() * 2;
    m *= -2;
    EXPECT_EQ(m[1], -3);
    EXPECT_EQ((2 * -m)[15], -6);
    EXPECT_NE(m, Mat4());
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_NE((Vec2{1, nan}), (Vec2{1, nan})) << "comparison is exact";
    EXPECT_EQ(length(TVec3d<double>{2, 3, -6}) - length(Vec2{3, -4}), 2);
}

TEST(VelorVectors, DebugOutputNamesTheComponents)
{
    QString text;
    QDebug(&text) << Vec2{1.5f, -2} << Vec3() << quat() << Mat4();
    EXPECT_EQ(text.trimmed().toStdString(), "TVec2d(1.5, -2) TVec3d(0, 0, 0) quat(x 0, y 0, z 0, w 1) "
                                            "TMat4d(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1)");
}

} // namespace

#include <Velor.Base/VelorVectors.h>

#include <QtCore/QDebug>
#include <QtCore/QString>
#include <gtest/gtest.h>

#include <cmath>

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

/// The elements 1 to 16.
constexpr Mat4 counting()
{
    Mat4 matrix;
    for (std::size_t i = 0; i < 16; ++i) {
        matrix[i] = float(i + 1);
    }
    return matrix;
}
static_assert(counting() + counting() == 2 * counting() && counting() * 4 / 2 - counting() == counting());
static_assert(-counting() == -1 * counting() && (3 * counting())[10] == 33);

/// `v` after each assigning operator. A vector has those with a vector as well.
template <typename V>
constexpr V assigned(V v, const V& other)
{
    v += other;
    v *= 6;
    v -= other;
    v /= 4;
    if constexpr (requires { v *= other; }) {
        v *= other;
        v /= other + other;
    }
    return v;
}
static_assert(assigned(Vec2{2, 4}, Vec2{4, 8}) == Vec2{4, 8});
static_assert(assigned(Vec3{2, 4, 6}, Vec3{4, 8, 12}) == Vec3{4, 8, 12});
static_assert(assigned(quat{2, 4, 6, 8}, quat{4, 8, 12, 16}) == quat{8, 16, 24, 32});
static_assert(assigned(counting(), 2 * counting()) == 4 * counting());

TEST(VelorVectors, LengthHasTheTypeOfTheComponents)
{
    EXPECT_EQ(length(TVec3d<double>{1, -1, 0}), std::sqrt(2.0));
    EXPECT_EQ(length(Vec2{3, -4}), 5);
}

TEST(VelorVectors, DebugOutputNamesTheComponents)
{
    QString text;
    QDebug(&text) << Vec2{1.5f, -2} << Vec3() << quat() << Mat4();
    EXPECT_EQ(text.trimmed().toStdString(), "TVec2d(1.5, -2) TVec3d(0, 0, 0) quat(x 0, y 0, z 0, w 1) "
                                            "TMat4d(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1)");
}

} // namespace

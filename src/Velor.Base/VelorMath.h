#pragma once

#include "VelorBaseExport.h"
#include "VelorVectors.h"

#include <QtCore/QList>
#include <QtCore/QString>

#include <cstdint>

class QDebug;

/// \file
/// Motion maths: easing, cubic Bézier and Catmull-Rom curves, the turning curve of a path, and scalars.
///
/// Everything here is computation in single precision, with the order of the operations fixed, so that one
/// input has the same result, to the bit, with every compiler, at every level of optimisation and on every
/// processor. Where a function of the C library takes part (`pow`, `exp`, `sin`, `cos` or `acos` in
/// `easeInEaseOut`, `normal`, `cardioid2D`, `signedAngle` and `turningCurve`), that holds with one version of
/// that library; and a NaN is any NaN. No argument is checked and no parameter `t` is limited to 0..1:
/// infinities, NaN and values outside go through the same arithmetic. Any thread may call this at
/// any time.

/// One sample of a 2D curve.
struct VELOR_BASE_EXPORT VelorCurveKnot
{
    /// A point of the curve.
    ::TVec2d<float> position;
    /// The direction of travel there.
    ::TVec2d<float> tangent;

    /// Exact comparison, field by field, and debug output of the fields.
    /// @{
    friend constexpr bool operator==(const VelorCurveKnot&, const VelorCurveKnot&) = default;
    friend VELOR_BASE_EXPORT QDebug operator<<(QDebug debug, const VelorCurveKnot& knot);
    /// @}
};

/// A range of values, held in floats in spite of its name. Nothing keeps `min` at or below `max`.
struct VELOR_BASE_EXPORT DoubleMinMax
{
    /// An end of the range.
    /// @{
    float min = 0;
    float max = 0;
    /// @}

    /// Sets both ends.
    constexpr void init(float newMin, float newMax)
    {
        min = newMin;
        max = newMax;
    }
    /// The middle of the range.
    constexpr float average() const { return (max + min) * 0.5F; }
    /// Negative when `min` is above `max`.
    constexpr float range() const { return max - min; }

    /// Exact comparison, field by field, and debug output of the fields.
    /// @{
    friend constexpr bool operator==(const DoubleMinMax&, const DoubleMinMax&) = default;
    friend VELOR_BASE_EXPORT QDebug operator<<(QDebug debug, const DoubleMinMax& range);
    /// @}
};

/// The functions of motion maths.
class VELOR_BASE_EXPORT VelorMath
{
public:
    /// The smallest power of two at or above `value`; 0 for 0 and for anything above 2^31.
    static std::uint32_t nextPowerOfTwo(std::uint32_t value);

    /// Eases from 0 to 1 by t^e / ((1 - t)^e + t^e). An exponent of 1 is the straight line; larger ones are
    /// flatter at both ends. NaN for a `t` outside 0..1 when `exponent` is no whole number.
    static float easeInEaseOut(float t, float exponent);

    /// Eases from 0 to 1 by 6t^5 - 15t^4 + 10t^3 (Perlin), with no speed and no acceleration at either end.
    static float smootherStep(float t);

    /// The point at `t` of the cubic Bézier curve from `p0` at 0 to `p3` at 1, by its Bernstein form. The
    /// weights are worked out in double and rounded to float once; the sum is in float, from `p0` on.
    static ::TVec2d<float> bezierCubic2D(::TVec2d<float> p0, ::TVec2d<float> p1, ::TVec2d<float> p2,
                                         ::TVec2d<float> p3, float t);

    /// The direction of that curve at `t`, of unit length; zero where the sum of the weighted points is zero.
    /// Where the curve has no direction, the rounding of the weights may leave one all the same.
    static ::TVec2d<float> bezierCubicTangent2D(::TVec2d<float> p0, ::TVec2d<float> p1, ::TVec2d<float> p2,
                                                ::TVec2d<float> p3, float t);

    /// As `bezierCubic2D`, in space.
    static ::TVec3d<float> bezierCubic3D(::TVec3d<float> p0, ::TVec3d<float> p1, ::TVec3d<float> p2,
                                         ::TVec3d<float> p3, float t);

    /// The point at `t` of the uniform Catmull-Rom curve, which runs from `p1` at 0 to `p2` at 1; `p0` and
    /// `p3` shape its ends. All four points enter each coefficient, so that one infinite point results in
    /// NaN.
    static ::TVec3d<float> catmullRom3D(::TVec3d<float> p0, ::TVec3d<float> p1, ::TVec3d<float> p2,
                                        ::TVec3d<float> p3, float t);

    /// The derivative by `t` of `catmullRom3D`, not normalised.
    static ::TVec3d<float> derivCatmullRom3D(::TVec3d<float> p0, ::TVec3d<float> p1, ::TVec3d<float> p2,
                                             ::TVec3d<float> p3, float t);

    /// The point of a cardioid at `angle` in radians. Its cusp is at `center` + (`scale`, 0), for angle 0.
    static ::TVec2d<float> cardioid2D(::TVec2d<float> center, float scale, float angle);

    /// Carries `x` from the range `inMin`..`inMax` over to `outMin`..`outMax`, and beyond both ends. An empty
    /// input range divides by zero.
    static float map(float x, float inMin, float inMax, float outMin, float outMax);

    /// The angle in radians from `a` to `b`, both of unit length: positive when `a`, `b` and `axis` are
    /// right-handed, negative otherwise, also when they lie in one plane (-0 for equal vectors, opposite
    /// ones -pi). 0 when `a` or `b` is zero.
    static float signedAngle(const ::TVec3d<float>& a, const ::TVec3d<float>& b, const ::TVec3d<float>& axis);

    /// 1, -1 or 0 by the sign of `x`; 0 for NaN.
    static float sgn(float x);

    /// The density at `x` of the normal distribution around `mean` whose standard deviation is a third of
    /// `width`. A `width` of 0 divides by zero.
    static float normal(float x, float width, float mean);

    /// The path from `start` to `target` that arrives along `heading`: one cubic Bézier curve, then a
    /// straight run-in that ends on `target`.
    ///
    /// The curve bows out to the side of the straight line that lies away from the heading: to the right for
    /// a heading that turns to the left. It does so the more, the larger the angle between the two is.
    ///
    /// \param start where the path begins
    /// \param target where it ends
    /// \param heading the direction of travel at `target`, expected to be of unit length, not normalised
    /// \param bulge how far the first control point leaves the middle of the chord, as a fraction of the
    ///        chord's length at a half turn; for smaller turns in proportion, and not at all at an exact half
    ///        turn, which has no side
    /// \param handleLength how far the second control point lies behind the end of the curve along `heading`;
    ///        it is kept from lying behind `start` as seen along the chord
    /// \param runIn the wanted length of the run-in, at most the distance from `start` to `target`; there is
    ///        none for 0 or less, and a negative one lets the curve end beyond `target`
    /// \param segments the number of segments of the curve; 0 makes one knot of NaN, less makes none
    /// \return `segments` + 1 knots in order of travel at even steps of the parameter, their tangents of unit
    ///         length or zero; then, where there is a run-in, one knot of `target` and `heading`
    ///         unchanged. The last knot of the curve may miss its end by the rounding of the steps.
    /// \throws std::bad_alloc when there is no memory for the knots
    static QList<VelorCurveKnot> turningCurve(::TVec2d<float> start, ::TVec2d<float> target,
                                              ::TVec2d<float> heading, float bulge, float handleLength,
                                              float runIn, int segments);

    /// Writes `easeInEaseOut` with exponent 2 into a text file for plotting: 101 lines of `t` and the value,
    /// a blank between them, as decimal numbers of up to 6 digits. Does nothing, and reports nothing, when
    /// the file cannot be opened for writing.
    static void plotCurve(const QString& path);
};

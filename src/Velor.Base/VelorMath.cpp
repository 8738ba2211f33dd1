#include "VelorMath.h"

#include <QtCore/QDebug>
#include <QtCore/QFile>
#include <QtCore/QTextStream>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

// The build compiles this file with the contraction of a * b + c switched off. The functions of
// VelorVectors.h that are used here are inline, and so compiled here under the same rule.

namespace {

constexpr float PiFloat = 3.1415927F;
constexpr double Pi = 3.141592653589793;
constexpr float TwoPiFloat = 6.2831855F;

/// The four factors of the points of a cubic curve.
struct Weights
{
    float p0;
    float p1;
    float p2;
    float p3;
};

/// The Bernstein polynomials at `t`. Powers are products here: of a float, the square is exact in double and
/// the cube is rounded once, so that both, rounded to float, are what pow returns.
/// benchmarks/MathsComparison.cpp compares them for every float.
Weights bernstein(float t)
{
    const float u = 1 - t;
    const double squareT = double(t) * t;
    const double squareU = double(u) * u;
    return {float(squareU * u), float(squareU * 3.0 * t), float(squareT * (3 * u)), float(squareT * t)};
}

/// The derivatives of the Bernstein polynomials at `t`.
Weights bernsteinDerivative(float t)
{
    const float u = 1 - t;
    const double squareT = double(t) * t;
    const double squareU = double(u) * u;
    return {float(squareU * -3.0), float(9.0 * squareT - (12 * t) + 3.0), float((6 * t) - 9.0 * squareT),
            float(squareT * 3.0)};
}

/// The sum starts at zero, which turns a sum of negative zeros into a positive one.
template <typename Vector>
Vector weightedSum(const Weights& weights, const Vector& p0, const Vector& p1, const Vector& p2,
                   const Vector& p3)
{
    return Vector{} + weights.p0 * p0 + weights.p1 * p1 + weights.p2 * p2 + weights.p3 * p3;
}

/// `v` at unit length; a vector without a length is returned as it is.
TVec2d<float> normalized(const TVec2d<float>& v)
{
    const float size = length(v);
    return size > 0 ? v * (1 / size) : v;
}

/// `x` within -1..1; NaN stays NaN.
float clampToUnit(float x)
{
    if (x < -1) {
        return -1;
    }
    return x > 1 ? 1.0F : x;
}

#if defined(VELOR_BASE_GNU)
/// The components of a point side by side, for operations on all at once; each is the scalar operation, bit
/// for bit. The fourth lane is idle.
using Lanes [[gnu::vector_size(16)]] = float;

/// Joins two halves of 64 bits, as which a point arrives in registers: g++ takes four floats through memory.
Lanes toLanes(const TVec3d<float>& v)
{
    using Half [[gnu::vector_size(8)]] = float;
    using Halves [[gnu::vector_size(16)]] = std::int64_t;
    return std::bit_cast<Lanes>(
        Halves{std::bit_cast<std::int64_t>(Half{v.x, v.y}), std::bit_cast<std::int64_t>(Half{v.z, 0})});
}

TVec3d<float> fromLanes(const Lanes& lanes) { return {lanes[0], lanes[1], lanes[2]}; }

/// A factor of each component; g++ loads such a constant in one step only if its lanes are not all equal.
constexpr Lanes factor(float x) { return Lanes{x, x, x, 0}; }
#else
/// The same one component at a time, which takes g++ four times as long.
using Lanes = TVec3d<float>;

const Lanes& toLanes(const TVec3d<float>& v) { return v; }
const TVec3d<float>& fromLanes(const Lanes& lanes) { return lanes; }
constexpr float factor(float x) { return x; }
#endif

/// A cubic polynomial with the coefficients of 1, t, t^2 and t^3.
struct Cubic
{
    Lanes c0;
    Lanes c1;
    Lanes c2;
    Lanes c3;
};

/// The products of the basis matrix and the points:
///
///      0     1     0     0
///     -0.5   0     0.5   0
///      1    -2.5   2    -0.5
///     -0.5   1.5  -1.5   0.5
///
/// The products with 0 stay: they carry an infinity or NaN of any point into every coefficient. Each product
/// that two rows share is formed once, and each row is added from left to right.
Cubic catmullRom(const TVec3d<float>& p0, const TVec3d<float>& p1, const TVec3d<float>& p2,
                 const TVec3d<float>& p3)
{
    constexpr auto Zero = factor(0);
    constexpr auto Half = factor(0.5F);
    const Lanes q0 = toLanes(p0);
    const Lanes q1 = toLanes(p1);
    const Lanes q2 = toLanes(p2);
    const Lanes q3 = toLanes(p3);
    const Lanes half0 = Half * q0;
    const Lanes zero3 = Zero * q3;
    const Lanes half3 = Half * q3;
    return {Zero * q0 + q1 + Zero * q2 + zero3, Zero * q1 - half0 + Half * q2 + zero3,
            q0 - factor(2.5F) * q1 + factor(2) * q2 - half3,
            factor(1.5F) * q1 - half0 - factor(1.5F) * q2 + half3};
}

float angleOfCosine(float cosine)
{
    if (cosine <= -1) {
        return PiFloat;
    }
    return cosine >= 1 ? 0.0F : std::acos(cosine);
}

/// The angle between `heading` and the unit or zero vector `direction`, as a fraction of a half turn.
float turnFraction(const TVec2d<float>& heading, const TVec2d<float>& direction)
{
    constexpr float SmallestDivisor = 0.000001F;
    const float divisor = std::max(SmallestDivisor, length(heading) * length(direction));
    const float cosine = clampToUnit(dot(heading, direction) / divisor);
    return float(double(angleOfCosine(cosine)) / Pi);
}

/// The control points of the Bézier curve from `start` to `end` that arrives along `heading`.
struct Controls
{
    TVec2d<float> first;
    TVec2d<float> second;
};

Controls turningControls(const TVec2d<float>& start, const TVec2d<float>& end, const TVec2d<float>& heading,
                         float bulge, float handleLength)
{
    const TVec2d<float> middle = (start + end) * 0.5F;
    const TVec2d<float> chord = end - start;
    const TVec2d<float> direction = normalized(chord);

    TVec2d<float> second = end - heading * handleLength;
    const float behind = dot(second - start, direction);
    if (behind < 0) {
        second += -behind * direction;
    }

    const float turn = turnFraction(heading, direction);
    const float side = VelorMath::sgn(heading.y * direction.x - heading.x * direction.y);
    const TVec2d<float> leftOfChord{-chord.y, chord.x};
    return {middle - leftOfChord * bulge * turn * side, second};
}

/// An empty list with room for `count` knots. A list that finds no memory fails here, before the knots that
/// do find some have filled the machine.
QList<VelorCurveKnot> emptyList(qsizetype count)
{
    QList<VelorCurveKnot> knots;
    knots.reserve(count);
    if (knots.capacity() < count) { // reserve reports no failure
        qBadAlloc();
    }
    return knots;
}

} // namespace

QDebug operator<<(QDebug debug, const VelorCurveKnot& knot)
{
    const QDebugStateSaver saver(debug);
    return debug.nospace() << "VelorCurveKnot(" << knot.position << ", " << knot.tangent << ')';
}

QDebug operator<<(QDebug debug, const DoubleMinMax& range)
{
    const QDebugStateSaver saver(debug);
    return debug.nospace() << "DoubleMinMax(" << range.min << ", " << range.max << ')';
}

std::uint32_t VelorMath::nextPowerOfTwo(std::uint32_t value)
{
    --value;
    for (const int shift : {1, 2, 4, 8, 16}) {
        value |= value >> shift;
    }
    return value + 1;
}

float VelorMath::easeInEaseOut(float t, float exponent)
{
    const float a = std::pow(t, exponent);
    const float b = std::pow(1 - t, exponent);
    return a / (b + a);
}

float VelorMath::smootherStep(float t) { return ((t * 6 - 15) * t + 10) * (t * t * t); }

TVec2d<float> VelorMath::bezierCubic2D(TVec2d<float> p0, TVec2d<float> p1, TVec2d<float> p2, TVec2d<float> p3,
                                       float t)
{
    return weightedSum(bernstein(t), p0, p1, p2, p3);
}

TVec2d<float> VelorMath::bezierCubicTangent2D(TVec2d<float> p0, TVec2d<float> p1, TVec2d<float> p2,
                                              TVec2d<float> p3, float t)
{
    return normalized(weightedSum(bernsteinDerivative(t), p0, p1, p2, p3));
}

TVec3d<float> VelorMath::bezierCubic3D(TVec3d<float> p0, TVec3d<float> p1, TVec3d<float> p2, TVec3d<float> p3,
                                       float t)
{
    return weightedSum(bernstein(t), p0, p1, p2, p3);
}

TVec3d<float> VelorMath::catmullRom3D(TVec3d<float> p0, TVec3d<float> p1, TVec3d<float> p2, TVec3d<float> p3,
                                      float t)
{
    const Cubic curve = catmullRom(p0, p1, p2, p3);
    const float squareT = t * t;
    return fromLanes(curve.c0 + t * curve.c1 + squareT * curve.c2 + (squareT * t) * curve.c3);
}

TVec3d<float> VelorMath::derivCatmullRom3D(TVec3d<float> p0, TVec3d<float> p1, TVec3d<float> p2,
                                           TVec3d<float> p3, float t)
{
    const Cubic curve = catmullRom(p0, p1, p2, p3);
    return fromLanes(curve.c1 + (t + t) * curve.c2 + ((3 * t) * t) * curve.c3);
}

TVec2d<float> VelorMath::cardioid2D(TVec2d<float> center, float scale, float angle)
{
    const float twice = angle + angle;
    return {(2 * std::cos(angle) - std::cos(twice)) * scale + center.x,
            (2 * std::sin(angle) - std::sin(twice)) * scale + center.y};
}

float VelorMath::map(float x, float inMin, float inMax, float outMin, float outMax)
{
    return (x - inMin) / (inMax - inMin) * (outMax - outMin) + outMin;
}

float VelorMath::signedAngle(const TVec3d<float>& a, const TVec3d<float>& b, const TVec3d<float>& axis)
{
    if (length(a) == 0 || length(b) == 0) {
        return 0;
    }
    const float angle = std::acos(clampToUnit(dot(a, b)));
    return angle * (dot(cross(a, b), axis) > 0 ? 1.0F : -1.0F);
}

float VelorMath::sgn(float x)
{
    if (x > 0) {
        return 1;
    }
    return x < 0 ? -1.0F : 0.0F;
}

float VelorMath::normal(float x, float width, float mean)
{
    const float sigma = width / 3;
    const float z = (x - mean) / sigma;
    return std::exp(z * z * -0.5F) * (1 / (std::sqrt(TwoPiFloat) * sigma));
}

QList<VelorCurveKnot> VelorMath::turningCurve(TVec2d<float> start, TVec2d<float> target,
                                              TVec2d<float> heading, float bulge, float handleLength,
                                              float runIn, int segments)
{
    const float run = std::min(runIn, length(target - start));
    const TVec2d<float> end = target - heading * run;
    const Controls controls = turningControls(start, end, heading, bulge, handleLength);

    QList<VelorCurveKnot> knots = emptyList(std::max<qsizetype>(segments, -1) + 2);
    const float step = 1 / float(segments);
    // Wider than segments, so that it can step past the largest of them.
    for (qsizetype i = 0; i <= segments; ++i) {
        const float t = float(i) * step;
        knots.append({bezierCubic2D(start, controls.first, controls.second, end, t),
                      bezierCubicTangent2D(start, controls.first, controls.second, end, t)});
    }
    if (run > 0) {
        knots.append({target, heading});
    }
    return knots;
}

void VelorMath::plotCurve(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text)) {
        return;
    }
    constexpr float PlotStep = 0.01F;
    QTextStream text(&file);
    // Added up rather than multiplied: the 100th sum is just below 1 and makes the last line.
    for (float t = 0; t < 1; t += PlotStep) {
        text << QStringLiteral("%1 %2\n").arg(double(t)).arg(double(easeInEaseOut(t, 2)));
    }
}

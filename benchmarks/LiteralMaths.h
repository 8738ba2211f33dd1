#pragma once

#include <Velor.Base/VelorMath.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>

/// \file
/// The formulas of motion maths as they are written down, one operation after the other on plain floats, with
/// `pow` for every power: what the library's own forms must equal bit for bit. Compile what includes this
/// with -ffp-contract=off. Tests and benchmarks share it.
namespace literal {

using Vec2 = TVec2d<float>;
using Vec3 = TVec3d<float>;

/// The bits of `x`, with one pattern for all that are NaN: which operand hands its NaN on is the compiler's
/// choice.
inline std::uint32_t bitsOf(float x)
{
    return std::bit_cast<std::uint32_t>(std::isnan(x) ? std::numeric_limits<float>::quiet_NaN() : x);
}
inline bool sameBits(float a, float b) { return bitsOf(a) == bitsOf(b); }
inline bool sameBits(const Vec2& a, const Vec2& b) { return sameBits(a.x, b.x) && sameBits(a.y, b.y); }
inline bool sameBits(const Vec3& a, const Vec3& b)
{
    return sameBits(a.x, b.x) && sameBits(a.y, b.y) && sameBits(a.z, b.z);
}

/// Mostly numbers of a scene; now and then any 32 bits, infinities, NaN and denormals among them.
class Inputs
{
public:
    explicit Inputs(std::uint32_t seed)
        : mEngine(seed)
    {}

    float number() { return mEngine() % 16 == 0 ? std::bit_cast<float>(mBits(mEngine)) : mNumbers(mEngine); }
    Vec2 vec2() { return {number(), number()}; }
    Vec3 vec3() { return {number(), number(), number()}; }

private:
    std::mt19937 mEngine;
    std::uniform_int_distribution<std::uint32_t> mBits;
    std::uniform_real_distribution<float> mNumbers{-3, 3};
};

inline void bezierWeights(float t, float (&weights)[4])
{
    const float u = 1.0F - t;
    const float threeU = 3.0F * u;
    weights[0] = float(std::pow(double(u), 3.0));
    weights[1] = float(std::pow(double(u), 2.0) * 3.0 * double(t));
    weights[2] = float(std::pow(double(t), 2.0) * double(threeU));
    weights[3] = float(std::pow(double(t), 3.0));
}

inline void bezierTangentWeights(float t, float (&weights)[4])
{
    const float u = 1.0F - t;
    const float twelveT = 12.0F * t;
    const float sixT = 6.0F * t;
    weights[0] = float(std::pow(double(u), 2.0) * -3.0);
    weights[1] = float(9.0 * std::pow(double(t), 2.0) - double(twelveT) + 3.0);
    weights[2] = float(double(sixT) - 9.0 * std::pow(double(t), 2.0));
    weights[3] = float(std::pow(double(t), 2.0) * 3.0);
}

inline float weightedSum(const float (&weights)[4], float a, float b, float c, float d)
{
    float sum = 0.0F;
    sum += weights[0] * a;
    sum += weights[1] * b;
    sum += weights[2] * c;
    sum += weights[3] * d;
    return sum;
}

inline Vec2 bezierCubic2D(Vec2 p0, Vec2 p1, Vec2 p2, Vec2 p3, float t)
{
    float weights[4];
    bezierWeights(t, weights);
    return {weightedSum(weights, p0.x, p1.x, p2.x, p3.x), weightedSum(weights, p0.y, p1.y, p2.y, p3.y)};
}

inline Vec3 bezierCubic3D(Vec3 p0, Vec3 p1, Vec3 p2, Vec3 p3, float t)
{
    float weights[4];
    bezierWeights(t, weights);
    return {weightedSum(weights, p0.x, p1.x, p2.x, p3.x), weightedSum(weights, p0.y, p1.y, p2.y, p3.y),
            weightedSum(weights, p0.z, p1.z, p2.z, p3.z)};
}

inline Vec2 bezierCubicTangent2D(Vec2 p0, Vec2 p1, Vec2 p2, Vec2 p3, float t)
{
    float weights[4];
    bezierTangentWeights(t, weights);
    const float x = weightedSum(weights, p0.x, p1.x, p2.x, p3.x);
    const float y = weightedSum(weights, p0.y, p1.y, p2.y, p3.y);
    const float length = std::sqrt(x * x + y * y);
    if (length > 0.0F) {
        const float factor = 1.0F / length;
        return {x * factor, y * factor};
    }
    return {x, y};
}

constexpr float Basis[4][4] = {
    {0.0F, 1.0F, 0.0F, 0.0F},
    {-0.5F, 0.0F, 0.5F, 0.0F},
    {1.0F, -2.5F, 2.0F, -0.5F},
    {-0.5F, 1.5F, -1.5F, 0.5F},
};

inline float catmullRomPower(int row, float p0, float p1, float p2, float p3)
{
    return Basis[row][0] * p0 + Basis[row][1] * p1 + Basis[row][2] * p2 + Basis[row][3] * p3;
}

inline float catmullRom(float p0, float p1, float p2, float p3, float t)
{
    const float t2 = t * t;
    const float t3 = t2 * t;
    return catmullRomPower(0, p0, p1, p2, p3) + t * catmullRomPower(1, p0, p1, p2, p3) +
           t2 * catmullRomPower(2, p0, p1, p2, p3) + t3 * catmullRomPower(3, p0, p1, p2, p3);
}

inline float derivCatmullRom(float p0, float p1, float p2, float p3, float t)
{
    return catmullRomPower(1, p0, p1, p2, p3) + (t + t) * catmullRomPower(2, p0, p1, p2, p3) +
           ((3.0F * t) * t) * catmullRomPower(3, p0, p1, p2, p3);
}

inline Vec3 catmullRom3D(Vec3 p0, Vec3 p1, Vec3 p2, Vec3 p3, float t)
{
    return {catmullRom(p0.x, p1.x, p2.x, p3.x, t), catmullRom(p0.y, p1.y, p2.y, p3.y, t),
            catmullRom(p0.z, p1.z, p2.z, p3.z, t)};
}

inline Vec3 derivCatmullRom3D(Vec3 p0, Vec3 p1, Vec3 p2, Vec3 p3, float t)
{
    return {derivCatmullRom(p0.x, p1.x, p2.x, p3.x, t), derivCatmullRom(p0.y, p1.y, p2.y, p3.y, t),
            derivCatmullRom(p0.z, p1.z, p2.z, p3.z, t)};
}

inline float lengthOf(float x, float y) { return std::sqrt(x * x + y * y); }

inline QList<VelorCurveKnot> turningCurve(Vec2 start, Vec2 target, Vec2 heading, float bulge,
                                          float handleLength, float runIn, int segments)
{
    const float distance = lengthOf(target.x - start.x, target.y - start.y);
    const float run = distance < runIn ? distance : runIn;
    const Vec2 end{target.x - heading.x * run, target.y - heading.y * run};
    const Vec2 middle{(start.x + end.x) * 0.5F, (start.y + end.y) * 0.5F};
    Vec2 second{end.x - heading.x * handleLength, end.y - heading.y * handleLength};
    const Vec2 chord{end.x - start.x, end.y - start.y};
    const float chordLength = lengthOf(chord.x, chord.y);
    Vec2 direction = chord;
    if (chordLength > 0.0F) {
        const float factor = 1.0F / chordLength;
        direction = {chord.x * factor, chord.y * factor};
    }
    const float behind = (second.x - start.x) * direction.x + (second.y - start.y) * direction.y;
    if (behind < 0.0F) {
        second = {second.x + -behind * direction.x, second.y + -behind * direction.y};
    }
    const float lengths = lengthOf(heading.x, heading.y) * lengthOf(direction.x, direction.y);
    float cosine =
        (heading.x * direction.x + heading.y * direction.y) / (lengths > 0.000001F ? lengths : 0.000001F);
    cosine = cosine < -1.0F ? -1.0F : cosine;
    cosine = cosine > 1.0F ? 1.0F : cosine;
    const float turnAngle = cosine <= -1.0F ? 3.1415927F : cosine >= 1.0F ? 0.0F : std::acos(cosine);
    const float turnFraction = float(double(turnAngle) / 3.141592653589793);
    const float crossed = heading.y * direction.x - heading.x * direction.y;
    const float side = crossed > 0.0F ? 1.0F : crossed < 0.0F ? -1.0F : 0.0F;
    const Vec2 first{middle.x - (-chord.y * bulge * turnFraction * side),
                     middle.y - (chord.x * bulge * turnFraction * side)};
    QList<VelorCurveKnot> knots;
    const float step = 1.0F / float(segments);
    for (int i = 0; i <= segments; ++i) {
        const float t = float(i) * step;
        knots.append({bezierCubic2D(start, first, second, end, t),
                      bezierCubicTangent2D(start, first, second, end, t)});
    }
    if (run > 0.0F) {
        knots.append({target, heading});
    }
    return knots;
}

/// Takes the next inputs, and names the curves of VelorMath that are not what the formulas above give for
/// them. `segments` is the number for the turning curve.
inline std::string differences(Inputs& in, int segments)
{
    const Vec2 p[] = {in.vec2(), in.vec2(), in.vec2(), in.vec2()};
    const Vec3 q[] = {in.vec3(), in.vec3(), in.vec3(), in.vec3()};
    const float t = in.number();
    std::string names;
    const auto compare = [&](const char* name, const auto& points, auto ours, auto steps) {
        if (!sameBits(ours(points[0], points[1], points[2], points[3], t),
                      steps(points[0], points[1], points[2], points[3], t))) {
            names += name;
        }
    };
    compare(" bezierCubic2D", p, VelorMath::bezierCubic2D, bezierCubic2D);
    compare(" bezierCubicTangent2D", p, VelorMath::bezierCubicTangent2D, bezierCubicTangent2D);
    compare(" bezierCubic3D", q, VelorMath::bezierCubic3D, bezierCubic3D);
    compare(" catmullRom3D", q, VelorMath::catmullRom3D, catmullRom3D);
    compare(" derivCatmullRom3D", q, VelorMath::derivCatmullRom3D, derivCatmullRom3D);

    const float bulge = in.number(), handle = in.number(), runIn = in.number();
    const auto knots = VelorMath::turningCurve(p[0], p[1], p[2], bulge, handle, runIn, segments);
    const auto expected = turningCurve(p[0], p[1], p[2], bulge, handle, runIn, segments);
    const auto sameKnots = [](const VelorCurveKnot& a, const VelorCurveKnot& b) {
        return sameBits(a.position, b.position) && sameBits(a.tangent, b.tangent);
    };
    if (!std::equal(knots.begin(), knots.end(), expected.begin(), expected.end(), sameKnots)) {
        names += " turningCurve";
    }
    return names;
}

} // namespace literal

#include "TurningPath.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int SmoothSegments = 200;

QList<VelorCurveKnot> sample(const Options& options, float heading, int segments)
{
    return VelorMath::turningCurve(options.start, options.target, Options::direction(heading), options.bulge,
                                   options.handle, options.runIn, segments);
}

} // namespace

TurningPath::TurningPath(const Options& options, float heading)
    : knots(sample(options, heading, options.segments))
    , curve(knots.first(options.segments + 1))
{
    for (const auto& knot : sample(options, heading, SmoothSegments).first(SmoothSegments + 1)) {
        smooth.append(knot.position);
    }
    // Four points of a cubic, a third apart, tell its control points.
    const auto thirds = sample(options, heading, 3);
    const auto q = [&](qsizetype i) { return thirds[i].position; };
    firstControl = (q(1) * 18 - q(0) * 5 - q(2) * 9 + q(3) * 2) / 6;
    secondControl = (q(0) * 2 - q(1) * 9 + q(2) * 18 - q(3) * 5) / 6;
}

bool TurningPath::isFinite() const
{
    const auto points = positions();
    return std::all_of(points.begin(), points.end(),
                       [](const TVec2d<float>& p) { return std::isfinite(p.x) && std::isfinite(p.y); });
}

float TurningPath::bow() const
{
    const auto chord = smooth.last() - smooth.first();
    float largest = 0;
    for (const auto& point : smooth) {
        const auto way = point - smooth.first();
        const float right = (way.x * chord.y - way.y * chord.x) / std::max(length(chord), 1e-6F);
        largest = std::abs(right) > std::abs(largest) ? right : largest;
    }
    return largest;
}

QList<TVec2d<float>> TurningPath::positions() const
{
    QList<TVec2d<float>> points = smooth;
    points << firstControl << secondControl << knots.last().position;
    return points;
}

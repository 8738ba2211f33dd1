#include "TurningPath.h"

#include <QtCore/QLineF>
#include <QtGui/QTransform>

#include <cmath>
#include <numbers>

namespace {

constexpr int SmoothSegments = 200;

/// The unit vector of an angle in degrees, exact for quarter turns.
TVec2d<float> direction(float degrees)
{
    constexpr double Noise = 1e-12;
    const double radians = std::remainder(double(degrees), 360) * std::numbers::pi / 180;
    const auto clean = [](double value) { return std::abs(value) < Noise ? 0.0F : float(value); };
    return {clean(std::cos(radians)), clean(std::sin(radians))};
}

QList<VelorCurveKnot> sample(const PathOptions& options, int segments)
{
    return VelorMath::turningCurve(options.start, options.target, direction(options.heading), options.bulge,
                                   options.handle, options.runIn, segments);
}

} // namespace

TurningPath::TurningPath(const PathOptions& options)
    : knots(sample(options, options.segments))
    , target(toPoint(options.target))
    , hasRunIn(knots.size() > options.segments + 1)
{
    knots.resize(options.segments + 1);
    for (const VelorCurveKnot& knot : sample(options, SmoothSegments).first(SmoothSegments + 1)) {
        curve.append(toPoint(knot.position));
    }
    // Four points of a cubic curve, a third apart, determine its control points.
    const QList<VelorCurveKnot> thirds = sample(options, 3);
    const auto q = [&thirds](qsizetype i) { return toPoint(thirds[i].position); };
    controlPoints = {q(0), (q(1) * 18 - q(0) * 5 - q(2) * 9 + q(3) * 2) / 6,
                     (q(0) * 2 - q(1) * 9 + q(2) * 18 - q(3) * 5) / 6, q(3)};
}

double TurningPath::bow() const
{
    const QLineF chord(curve.first(), curve.last());
    if (chord.isNull()) {
        return 0; // It has no sides.
    }
    const QTransform alongChord = QTransform().rotate(chord.angle()).translate(-chord.x1(), -chord.y1());
    const QRectF bounds = alongChord.map(curve).boundingRect();
    return std::abs(bounds.top()) > std::abs(bounds.bottom()) ? -bounds.top() : -bounds.bottom();
}

QPointF toPoint(const TVec2d<float>& vector) { return {double(vector.x), double(vector.y)}; }

#pragma once

#include <Velor.Base/VelorMath.h>

#include <QtGui/QPolygonF>

/// The arguments of a turning curve.
struct PathOptions
{
    TVec2d<float> start;
    TVec2d<float> target;
    float heading = 0; ///< Degrees, counter-clockwise from the x axis.
    float bulge = 0;
    float handle = 0;
    float runIn = 0;
    int segments = 1;
};

/// A turning curve, and what can be derived from its knots.
struct TurningPath
{
    explicit TurningPath(const PathOptions& options);

    /// The largest distance of the curve from its chord, positive to the right of it.
    double bow() const;

    QList<VelorCurveKnot> knots; ///< Without the one of the run-in.
    QPolygonF curve;             ///< In steps too small to be seen.
    QPolygonF controlPoints;     ///< Of the cubic Bézier curve: its start, two beside it, and its end.
    QPointF target;
    bool hasRunIn;
};

QPointF toPoint(const TVec2d<float>& vector);

#pragma once

#include "Options.h"

#include <Velor.Base/VelorMath.h>

#include <QtCore/QList>

/// A turning curve, and what can be told from its knots.
struct TurningPath
{
    /// The path of `options` with `heading` in degrees.
    TurningPath(const Options& options, float heading);

    /// Whether all of the path is made of numbers that can be drawn.
    bool isFinite() const;
    bool hasRunIn() const { return knots.size() > curve.size(); }
    /// The largest distance of the curve from its chord, positive to the right of it.
    float bow() const;
    QList<TVec2d<float>> positions() const;

    QList<VelorCurveKnot> knots;
    /// The knots without the one of the run-in.
    QList<VelorCurveKnot> curve;
    /// The same curve in steps too small to be seen.
    QList<TVec2d<float>> smooth;
    TVec2d<float> firstControl;
    TVec2d<float> secondControl;
};

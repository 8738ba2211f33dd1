#pragma once

#include "TurningPath.h"

#include <QtGui/QPainter>
#include <QtGui/QTransform>

#include <functional>

/// The colours of a picture.
struct Theme
{
    QColor ground;
    QColor panel;
    QColor grid;
    QColor muted;
    QColor ink;
    QColor curve;
    QColor otherSide;
    QColor control;

    static Theme light();
    static Theme dark();
};

/// A picture with its title in the top left corner and a smaller line below it.
struct Picture
{
    QString title;
    QString description;
    QSize size;
    std::function<void(QPainter&, const Theme&)> draw; ///< Draws what stands below the title.

    static constexpr double Margin = 36;
    static constexpr double TitleHeight = 68; ///< Of title and description, margins included.
};

/// One path with its knots, tangents, control points and run-in.
Picture pathPicture(const PathOptions& options);
/// Twelve paths that differ from `options` in their heading, at one scale.
Picture sheetPicture(PathOptions options);

/// Writes `picture` into the file `name`: as PNG with two dots for each unit if the name ends in .png in any
/// case, as SVG otherwise. Returns the reason for which it cannot be written, empty if it was: an older file
/// is kept then.
QString savePicture(const QString& name, const Picture& picture, const Theme& theme);

/// The transform that shows all of `points` as large as possible in the centre of `place`, y upwards, with
/// one scale for both axes.
QTransform fit(const QRectF& place, const QPolygonF& points);
QFont textFont(int pixels, bool bold = false);
/// `number` as a label, with a real minus sign.
QString numberText(double number);
/// Draws the even lines of `frame` in `plot`, with their numbers beside it.
void drawGrid(QPainter& painter, const Theme& theme, const QTransform& frame, const QRectF& plot);
void drawArrow(QPainter& painter, const QPointF& from, const QPointF& tip, double headSize);

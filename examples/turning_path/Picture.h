#pragma once

#include "TurningPath.h"

#include <QtGui/QPainter>
#include <QtGui/QTransform>

#include <functional>

/// The colours of a picture.
struct Theme
{
    bool isDark = false;
    QColor background = isDark ? 0x12161CU : 0xFFFFFFU;
    QColor panel = isDark ? 0x1A2028U : 0xF5F6F8U;
    QColor grid = isDark ? 0x2A323DU : 0xE3E6EBU;
    QColor text = isDark ? 0xE8ECF1U : 0x1D2530U;
    QColor secondaryText = isDark ? 0x97A3B3U : 0x667085U;
    QColor blue = isDark ? 0x74A9FFU : 0x1F5FD6U;
    QColor orange = isDark ? 0xF2994AU : 0xC2560CU;
    QColor violet = isDark ? 0xC39BF0U : 0x7A3EB1U;
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

/// The transform that shows `bounds` as large as possible in the centre of `place`, y upwards, with one
/// scale for both axes.
QTransform fit(const QRectF& place, const QRectF& bounds);
QFont textFont(int pixels, bool isBold = false);
/// `number` as a label, with a real minus sign.
QString numberText(double number);
void drawArrow(QPainter& painter, const QColor& color, double width, const QLineF& arrow, double headSize);

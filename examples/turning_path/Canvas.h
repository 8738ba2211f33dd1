#pragma once

#include <Velor.Base/VelorVectors.h>

#include <QtCore/QList>
#include <QtCore/QRectF>
#include <QtCore/QString>
#include <QtGui/QColor>
#include <QtGui/QPainter>
#include <QtGui/QPolygonF>

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

/// A part of the plane, and the rectangle of the picture that shows it: one scale for both axes, y upwards.
class Frame
{
public:
    /// The largest frame that shows all of `points` centred within `place`.
    Frame(const QRectF& place, const QList<TVec2d<float>>& points);

    QPointF toPicture(const TVec2d<float>& point) const;
    TVec2d<float> toPlane(const QPointF& point) const;
    /// Picture units for one unit of the plane.
    double scale() const { return mScale; }

private:
    QPointF mPlaceCenter;
    QPointF mPlaneCenter;
    double mScale;
};

/// Finds room for labels beside what they name, clear of lines and of each other.
class LabelPlacer
{
public:
    explicit LabelPlacer(const QRectF& room)
        : mRoom(room)
    {}

    /// Labels keep off this line.
    void avoid(const QPolygonF& line);
    /// Writes `text` near `anchor` with the painter's font and pen.
    void place(QPainter& painter, const QPointF& anchor, const QString& text);

private:
    double cost(const QRectF& label) const;

    QRectF mRoom;
    QList<QPointF> mPoints;
    QList<QRectF> mLabels;
};

using Drawing = std::function<void(QPainter&, const Theme&)>;

/// Paints a picture of `size` into the file `name`, .svg or .png by the name's end, the latter with two dots
/// for each unit. False when the file cannot be written whole: an older one is kept then.
bool savePicture(const QString& name, const QSize& size, const Theme& theme, const Drawing& draw);

/// `number` as a label, with a real minus sign.
QString numberText(double number);
QFont textFont(int pixels, bool bold = false);
void drawArrow(QPainter& painter, const QPointF& from, const QPointF& tip, double headSize);
/// A title with a smaller line below it, from the top left corner on.
void drawTitle(QPainter& painter, const Theme& theme, const QPointF& corner, const QString& title,
               const QString& line);

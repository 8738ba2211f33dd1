#include "Picture.h"

#include <QtCore/QLineF>
#include <QtCore/QtMath>

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize PathSize(960, 640);
constexpr double LegendTop = Picture::Margin + Picture::TitleHeight;
constexpr QRectF Plot(92, LegendTop + 26, 816, 458);
constexpr double CurveWidth = 2.6;

/// The parts of the picture, as they stand in it and in the legend.
struct Parts
{
    QPainter& painter;
    const Theme& theme;

    void dot(const QPointF& at, double radius, const QBrush& brush, const QPen& pen) const
    {
        painter.setBrush(brush);
        painter.setPen(pen);
        painter.drawEllipse(at, radius, radius);
    }
    void start(const QPointF& at) const { dot(at, 6, theme.text, Qt::NoPen); }
    void target(const QPointF& at) const
    {
        dot(at, 9, Qt::NoBrush, QPen(theme.text, 1.8));
        dot(at, 2, theme.text, Qt::NoPen);
    }
    void knot(const QPointF& at) const { dot(at, 3.6, theme.background, QPen(theme.blue, 1.8)); }
    void control(const QPointF& at) const
    {
        painter.setBrush(theme.background);
        painter.setPen(QPen(theme.violet, 1.8));
        painter.drawRect(QRectF(at - QPointF(4.5, 4.5), QSizeF(9, 9)));
    }
    void tangent(const QLineF& line) const { drawArrow(painter, theme.text, 1.3, line, 7); }
    void runIn(const QLineF& line) const { drawArrow(painter, theme.orange, CurveWidth, line, 13); }
    void chord(const QLineF& line) const
    {
        painter.setPen(QPen(theme.secondaryText, 1.2, Qt::DashLine));
        painter.drawLine(line);
    }
};

/// The names of the parts stand apart from them, where they cross nothing however the path runs.
void drawLegend(const Parts& parts)
{
    constexpr QLineF Line(0, 0, 26, 0);
    constexpr QPointF Middle(13, 0);
    const std::pair<QString, std::function<void()>> entries[] = {
        {u"start"_s, [&] { parts.start(Middle); }},
        {u"target"_s, [&] { parts.target(Middle); }},
        {u"knot"_s, [&] { parts.knot(Middle); }},
        {u"tangent"_s, [&] { parts.tangent(Line); }},
        {u"control point"_s, [&] { parts.control(Middle); }},
        {u"run-in"_s, [&] { parts.runIn(Line); }},
        {u"chord"_s, [&] { parts.chord(Line); }},
    };
    parts.painter.save();
    parts.painter.translate(Picture::Margin, LegendTop - 6);
    parts.painter.setFont(textFont(13));
    for (const auto& [name, draw] : entries) {
        draw();
        parts.painter.setPen(parts.theme.text);
        parts.painter.drawText(Line.p2() + QPointF(7, 5), name);
        parts.painter.translate(55 + parts.painter.fontMetrics().horizontalAdvance(name), 0);
    }
    parts.painter.restore();
}

/// The smallest of 1, 2 and 5 times a power of ten that is at least `wanted`.
double niceStep(double wanted)
{
    const double power = std::pow(10.0, std::ceil(std::log10(wanted)));
    return power / 5 >= wanted ? power / 5 : power / 2 >= wanted ? power / 2 : power;
}

/// Draws lines at round coordinates, with their numbers below and beside the plot.
void drawGrid(QPainter& painter, const Theme& theme, const QTransform& frame)
{
    constexpr QSizeF Label(70, 16); // A long label of the x axis, and a gap.
    const QRectF shown = frame.inverted().mapRect(Plot);
    const double step = niceStep(Label.width() / frame.m11());
    painter.setFont(textFont(11));
    const auto draw = [&](const QLineF& line, const QPointF& label, int alignment, double value) {
        painter.setPen(theme.grid);
        painter.drawLine(line);
        painter.setPen(theme.secondaryText);
        painter.drawText(QRectF(label, Label), alignment, numberText(value));
    };
    for (int i = qCeil(shown.left() / step); i * step <= shown.right(); ++i) {
        const double x = frame.map(QPointF(i * step, 0)).x();
        draw({x, Plot.top(), x, Plot.bottom()}, {x - Label.width() / 2, Plot.bottom() + 6}, Qt::AlignHCenter,
             i * step);
    }
    for (int i = qCeil(shown.top() / step); i * step <= shown.bottom(); ++i) {
        const double y = frame.map(QPointF(0, i * step)).y();
        draw({Plot.left(), y, Plot.right(), y}, {Plot.left() - 8 - Label.width(), y - Label.height() / 2},
             Qt::AlignRight | Qt::AlignVCenter, i * step);
    }
}

/// The tangents, `distance` long, of those knots from the first on that lie at least as far apart in the
/// picture.
QList<QLineF> tangentsApart(double distance, const QTransform& frame, const QList<VelorCurveKnot>& knots)
{
    QList<QLineF> tangents;
    for (const VelorCurveKnot& knot : knots) {
        const QPointF at = frame.map(toPoint(knot.position));
        if (tangents.isEmpty() || QLineF(tangents.last().p1(), at).length() >= distance) {
            tangents.append({at, at + QPointF(knot.tangent.x, -knot.tangent.y) * distance});
        }
    }
    return tangents;
}

void drawPath(const Parts& parts, const QTransform& frame, const TurningPath& path)
{
    constexpr double TangentLength = 42;
    constexpr double LeastDistance = 9;
    const QPolygonF curve = frame.map(path.curve);
    const QPolygonF controls = frame.map(path.controlPoints);
    const QPointF target = frame.map(path.target);
    parts.chord({curve.first(), curve.last()});
    parts.painter.setPen(QPen(parts.theme.violet, 1.2));
    parts.painter.drawPolyline(controls);
    parts.painter.setPen(QPen(parts.theme.blue, CurveWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    parts.painter.drawPolyline(curve);
    if (path.hasRunIn) {
        parts.runIn({curve.last(), target});
    }
    // The run-in shows the last tangent where there is one.
    const qsizetype withTangent = path.knots.size() - (path.hasRunIn ? 1 : 0);
    for (const QLineF& tangent : tangentsApart(TangentLength, frame, path.knots.first(withTangent))) {
        parts.tangent(tangent);
    }
    for (const QLineF& tangent : tangentsApart(LeastDistance, frame, path.knots)) {
        parts.knot(tangent.p1());
    }
    parts.control(controls[1]);
    parts.control(controls[2]);
    parts.start(curve.first());
    parts.target(target);
}

} // namespace

Picture pathPicture(const PathOptions& options)
{
    const QString description = u"heading %1°   bulge %2   handle %3   run-in %4   %5 segment%6"_s.arg(
        numberText(options.heading), numberText(options.bulge), numberText(options.handle),
        numberText(options.runIn), numberText(options.segments), options.segments == 1 ? QString() : u"s"_s);
    return {u"Turning path"_s, description, PathSize, [options](QPainter& painter, const Theme& theme) {
                const TurningPath path(options);
                QPolygonF points = path.controlPoints;
                points.append(path.target);
                const QTransform frame = fit(Plot.adjusted(48, 36, -48, -36), points.boundingRect());
                const Parts parts{painter, theme};
                drawLegend(parts);
                drawGrid(painter, theme, frame);
                drawPath(parts, frame, path);
            }};
}

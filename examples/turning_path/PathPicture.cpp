#include "Picture.h"

#include <QtCore/QLineF>

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

    void dot(const QBrush& brush, const QPen& pen, const QPointF& at, double radius) const
    {
        painter.setBrush(brush);
        painter.setPen(pen);
        painter.drawEllipse(at, radius, radius);
    }
    void start(const QPointF& at) const { dot(theme.ink, Qt::NoPen, at, 6); }
    void target(const QPointF& at) const
    {
        dot(Qt::NoBrush, QPen(theme.ink, 1.8), at, 9);
        dot(theme.ink, Qt::NoPen, at, 2);
    }
    void knot(const QPointF& at) const { dot(theme.ground, QPen(theme.curve, 1.8), at, 3.6); }
    void control(const QPointF& at) const
    {
        painter.setBrush(theme.ground);
        painter.setPen(QPen(theme.control, 1.8));
        painter.drawRect(QRectF(at - QPointF(4.5, 4.5), QSizeF(9, 9)));
    }
    void tangent(const QPointF& from, const QPointF& tip) const
    {
        painter.setPen(QPen(theme.ink, 1.3));
        drawArrow(painter, from, tip, 7);
    }
    void runIn(const QPointF& from, const QPointF& tip) const
    {
        painter.setPen(QPen(theme.otherSide, CurveWidth, Qt::SolidLine, Qt::FlatCap));
        drawArrow(painter, from, tip, 13);
    }
    void chord(const QPointF& from, const QPointF& to) const
    {
        painter.setPen(QPen(theme.muted, 1.2, Qt::DashLine));
        painter.drawLine(from, to);
    }
};

/// The names of the parts stand apart from them, where they cross nothing however the path runs.
void drawLegend(const Parts& parts)
{
    QPointF left(Picture::Margin, LegendTop - 6);
    QPointF right = left + QPointF(26, 0);
    const std::pair<const char*, std::function<void()>> entries[] = {
        {"start", [&] { parts.start((left + right) / 2); }},
        {"target", [&] { parts.target((left + right) / 2); }},
        {"knot", [&] { parts.knot((left + right) / 2); }},
        {"tangent", [&] { parts.tangent(left, right); }},
        {"control point", [&] { parts.control((left + right) / 2); }},
        {"run-in", [&] { parts.runIn(left, right); }},
        {"chord", [&] { parts.chord(left, right); }},
    };
    parts.painter.setFont(textFont(13));
    for (const auto& [name, draw] : entries) {
        const QString text = QString::fromLatin1(name);
        draw();
        parts.painter.setPen(parts.theme.ink);
        parts.painter.drawText(right + QPointF(7, 5), text);
        left.rx() += 55 + parts.painter.fontMetrics().horizontalAdvance(text);
        right.rx() = left.x() + 26;
    }
}

/// Calls `draw` with those knots, from the first on, that lie at least `distance` apart in the picture.
void drawKnots(const QTransform& frame, const QList<VelorCurveKnot>& knots, double distance,
               const std::function<void(const QPointF& at, const QPointF& tangent)>& draw)
{
    QPointF last(qInf(), qInf());
    for (const VelorCurveKnot& knot : knots) {
        const QPointF at = frame.map(toPoint(knot.position));
        if (QLineF(last, at).length() >= distance) {
            draw(at, {double(knot.tangent.x), -double(knot.tangent.y)});
            last = at;
        }
    }
}

void drawPath(const Parts& parts, const QTransform& frame, const TurningPath& path)
{
    constexpr double TangentLength = 42;
    constexpr double LeastDistance = 9;
    const QPolygonF curve = frame.map(path.smooth);
    const QPointF first = frame.map(path.firstControl);
    const QPointF second = frame.map(path.secondControl);
    const QPointF target = frame.map(path.target);
    parts.chord(curve.first(), curve.last());
    parts.painter.setPen(QPen(parts.theme.control, 1.2));
    parts.painter.drawPolyline(QPolygonF{curve.first(), first, second, curve.last()});
    parts.painter.setPen(QPen(parts.theme.curve, CurveWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    parts.painter.drawPolyline(curve);
    if (path.hasRunIn) {
        parts.runIn(curve.last(), target);
    }
    // The run-in shows the last tangent where there is one.
    drawKnots(
        frame, path.knots.first(path.knots.size() - (path.hasRunIn ? 1 : 0)), TangentLength,
        [&](const QPointF& at, const QPointF& tangent) { parts.tangent(at, at + tangent * TangentLength); });
    drawKnots(frame, path.knots, LeastDistance, [&](const QPointF& at, const QPointF&) { parts.knot(at); });
    parts.control(first);
    parts.control(second);
    parts.start(curve.first());
    parts.target(target);
}

} // namespace

Picture pathPicture(const PathOptions& options)
{
    const QString description = u"heading %1°   bulge %2   handle %3   run-in %4   %5 segment%6"_s.arg(
        numberText(double(options.heading)), numberText(double(options.bulge)),
        numberText(double(options.handle)), numberText(double(options.runIn)), numberText(options.segments),
        options.segments == 1 ? QString() : u"s"_s);
    return {u"Turning path"_s, description, PathSize, [options](QPainter& painter, const Theme& theme) {
                const TurningPath path(options);
                const QTransform frame = fit(Plot.adjusted(48, 36, -48, -36), path.allPoints());
                const Parts parts{painter, theme};
                drawLegend(parts);
                drawGrid(painter, theme, frame, Plot);
                drawPath(parts, frame, path);
            }};
}

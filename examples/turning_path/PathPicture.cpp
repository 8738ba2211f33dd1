#include "Picture.h"

#include <QtCore/QLineF>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize PathSize(960, 640);
constexpr double AxisRoom = 56;
constexpr double LegendHeight = 26;
constexpr double CurveWidth = 2.6;

/// The smallest of 1, 2 and 5 times a power of ten that is at least `wanted`.
double niceStep(double wanted)
{
    const double power = std::pow(10.0, std::floor(std::log10(wanted)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= wanted) {
            return factor * power;
        }
    }
    return 10 * power;
}

/// The multiples of `step` from `low` to `high`, and no negative zero.
QList<double> ticks(double low, double high, double step)
{
    QList<double> values;
    for (double k = std::ceil(low / step); k * step <= high; ++k) {
        values.append(k * step + 0.0);
    }
    return values;
}

void drawGrid(QPainter& painter, const Theme& theme, const QTransform& frame, const QRectF& plot)
{
    constexpr double LeastDistance = 70; // The width of a long label of the x axis, and a gap.
    constexpr QSizeF Label(LeastDistance, 16);
    const QRectF shown = frame.inverted().mapRect(plot);
    const double step = niceStep(LeastDistance / frame.m11());
    painter.setFont(textFont(11));
    const auto draw = [&](const QLineF& line, const QRectF& place, int alignment, double value) {
        painter.setPen(QPen(theme.grid, 1));
        painter.drawLine(line);
        painter.setPen(theme.muted);
        painter.drawText(place, alignment, numberText(value));
    };
    for (const double x : ticks(shown.left(), shown.right(), step)) {
        const double at = frame.map(QPointF(x, 0)).x();
        draw({at, plot.top(), at, plot.bottom()}, {QPointF(at - Label.width() / 2, plot.bottom() + 6), Label},
             Qt::AlignHCenter, x);
    }
    for (const double y : ticks(shown.top(), shown.bottom(), step)) {
        const double at = frame.map(QPointF(0, y)).y();
        draw({plot.left(), at, plot.right(), at},
             {QPointF(plot.left() - 8 - Label.width(), at - Label.height() / 2), Label},
             Qt::AlignRight | Qt::AlignVCenter, y);
    }
}

void drawDot(QPainter& painter, const QBrush& brush, const QPen& pen, const QPointF& at, double radius)
{
    painter.setBrush(brush);
    painter.setPen(pen);
    painter.drawEllipse(at, radius, radius);
}

void drawStart(QPainter& painter, const Theme& theme, const QPointF& at)
{
    drawDot(painter, theme.ink, Qt::NoPen, at, 6);
}

void drawTarget(QPainter& painter, const Theme& theme, const QPointF& at)
{
    drawDot(painter, Qt::NoBrush, QPen(theme.ink, 1.8), at, 9);
    drawDot(painter, theme.ink, Qt::NoPen, at, 2);
}

void drawKnot(QPainter& painter, const Theme& theme, const QPointF& at)
{
    drawDot(painter, theme.ground, QPen(theme.curve, 1.8), at, 3.6);
}

void drawControl(QPainter& painter, const Theme& theme, const QPointF& at)
{
    painter.setBrush(theme.ground);
    painter.setPen(QPen(theme.control, 1.8));
    painter.drawRect(QRectF(at - QPointF(4.5, 4.5), QSizeF(9, 9)));
}

void drawTangent(QPainter& painter, const Theme& theme, const QPointF& from, const QPointF& tip)
{
    painter.setPen(QPen(theme.ink, 1.3));
    drawArrow(painter, from, tip, 7);
}

void drawRunIn(QPainter& painter, const Theme& theme, const QPointF& from, const QPointF& tip)
{
    painter.setPen(QPen(theme.otherSide, CurveWidth, Qt::SolidLine, Qt::FlatCap));
    drawArrow(painter, from, tip, 13);
}

void drawChord(QPainter& painter, const Theme& theme, const QPointF& from, const QPointF& to)
{
    painter.setPen(QPen(theme.muted, 1.2, Qt::DashLine));
    painter.drawLine(from, to);
}

/// The names of the parts stand apart from them, where they cross nothing however the path runs.
void drawLegend(QPainter& painter, const Theme& theme, QPointF at)
{
    const QPointF middle(13, 0);
    const QPointF right(26, 0);
    const std::pair<const char*, std::function<void()>> parts[] = {
        {"start", [&] { drawStart(painter, theme, at + middle); }},
        {"target", [&] { drawTarget(painter, theme, at + middle); }},
        {"knot", [&] { drawKnot(painter, theme, at + middle); }},
        {"tangent", [&] { drawTangent(painter, theme, at, at + right); }},
        {"control point", [&] { drawControl(painter, theme, at + middle); }},
        {"run-in", [&] { drawRunIn(painter, theme, at, at + right); }},
        {"chord", [&] { drawChord(painter, theme, at, at + right); }},
    };
    painter.setFont(textFont(13));
    for (const auto& [name, draw] : parts) {
        draw();
        painter.setPen(theme.ink);
        painter.drawText(at + QPointF(33, 5), QString::fromLatin1(name));
        at.rx() += 55 + painter.fontMetrics().horizontalAdvance(QString::fromLatin1(name));
    }
}

/// The knots from the first on that lie at least `distance` apart in the picture.
QList<VelorCurveKnot> spread(const QTransform& frame, const QList<VelorCurveKnot>& knots, double distance)
{
    QList<VelorCurveKnot> kept;
    for (const VelorCurveKnot& knot : knots) {
        const auto at = [&](const VelorCurveKnot& k) { return frame.map(toPoint(k.position)); };
        if (kept.isEmpty() || QLineF(at(kept.last()), at(knot)).length() >= distance) {
            kept.append(knot);
        }
    }
    return kept;
}

void drawKnots(QPainter& painter, const Theme& theme, const QTransform& frame, const TurningPath& path)
{
    constexpr double TangentLength = 42;
    constexpr double LeastDistance = 9;
    // The run-in shows the last tangent where there is one.
    const qsizetype tangents = path.knots.size() - (path.hasRunIn ? 1 : 0);
    for (const VelorCurveKnot& knot : spread(frame, path.knots.first(tangents), TangentLength)) {
        const QPointF at = frame.map(toPoint(knot.position));
        const QPointF tangent = toPoint(knot.tangent) * TangentLength;
        drawTangent(painter, theme, at, at + QPointF(tangent.x(), -tangent.y()));
    }
    for (const VelorCurveKnot& knot : spread(frame, path.knots, LeastDistance)) {
        drawKnot(painter, theme, frame.map(toPoint(knot.position)));
    }
}

void drawPath(QPainter& painter, const Theme& theme, const QTransform& frame, const TurningPath& path)
{
    const QPolygonF curve = frame.map(path.smooth);
    const QPointF first = frame.map(path.firstControl);
    const QPointF second = frame.map(path.secondControl);
    const QPointF target = frame.map(path.target);
    drawChord(painter, theme, curve.first(), curve.last());
    painter.setPen(QPen(theme.control, 1.2));
    painter.drawPolyline(QPolygonF{curve.first(), first, second, curve.last()});
    painter.setPen(QPen(theme.curve, CurveWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(curve);
    if (path.hasRunIn) {
        drawRunIn(painter, theme, curve.last(), target);
    }
    drawKnots(painter, theme, frame, path);
    drawControl(painter, theme, first);
    drawControl(painter, theme, second);
    drawStart(painter, theme, curve.first());
    drawTarget(painter, theme, target);
}

} // namespace

Picture pathPicture(const PathOptions& options)
{
    const QString description = u"heading %1°   bulge %2   handle %3   run-in %4   %5 segment%6"_s.arg(
        numberText(double(options.heading)), numberText(double(options.bulge)),
        numberText(double(options.handle)), numberText(double(options.runIn)), numberText(options.segments),
        options.segments == 1 ? QString() : u"s"_s);
    return {u"Turning path"_s, description, PathSize, [options](QPainter& painter, const Theme& theme) {
                const double top = Picture::Margin + Picture::TitleHeight;
                const QRectF plot(QPointF(Picture::Margin + AxisRoom, top + LegendHeight),
                                  QPointF(PathSize.width() - 52, PathSize.height() - 52));
                const TurningPath path(options, options.heading);
                const QTransform frame = fit(plot.adjusted(48, 36, -48, -36), path.allPoints());
                drawLegend(painter, theme, QPointF(Picture::Margin, top - 6));
                drawGrid(painter, theme, frame, plot);
                drawPath(painter, theme, frame, path);
            }};
}

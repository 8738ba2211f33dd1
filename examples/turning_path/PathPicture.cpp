#include "Pictures.h"
#include "TurningPath.h"

#include <QtCore/QLineF>

#include <algorithm>
#include <cmath>

namespace {

constexpr double Margin = 40;
constexpr double TitleHeight = 72;
constexpr double AxisRoom = 34;
constexpr double CurveWidth = 2.6;
constexpr double TangentLength = 42;
constexpr double LeastKnotDistance = 9;

QPolygonF toPicture(const Frame& frame, const QList<TVec2d<float>>& points)
{
    QPolygonF line;
    for (const auto& point : points) {
        line.append(frame.toPicture(point));
    }
    return line;
}

QString describe(const Options& options)
{
    return QStringLiteral("heading %1°   bulge %2   handle %3   run-in %4   %5 segment%6")
        .arg(numberText(double(options.heading)), numberText(double(options.bulge)),
             numberText(double(options.handle)), numberText(double(options.runIn)),
             numberText(options.segments), options.segments == 1 ? QString() : QStringLiteral("s"));
}

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

/// The multiples of `step` from `low` to `high`.
QList<double> ticks(double low, double high, double step)
{
    QList<double> values;
    for (double k = std::ceil(low / step); k * step <= high; ++k) {
        values.append(k * step);
    }
    return values;
}

void drawGrid(QPainter& painter, const Theme& theme, const Frame& frame, const QRectF& plot)
{
    constexpr double LeastTickDistance = 64;
    const double step = niceStep(LeastTickDistance / frame.scale());
    const auto low = frame.toPlane(plot.bottomLeft());
    const auto high = frame.toPlane(plot.topRight());
    painter.setFont(textFont(11));
    for (const double x : ticks(double(low.x), double(high.x), step)) {
        const double at = frame.toPicture({float(x), 0}).x();
        painter.setPen(QPen(theme.grid, 1));
        painter.drawLine(QPointF(at, plot.top()), QPointF(at, plot.bottom()));
        painter.setPen(theme.muted);
        painter.drawText(QRectF(at - 30, plot.bottom() + 6, 60, 16), Qt::AlignHCenter, numberText(x));
    }
    for (const double y : ticks(double(low.y), double(high.y), step)) {
        const double at = frame.toPicture({0, float(y)}).y();
        painter.setPen(QPen(theme.grid, 1));
        painter.drawLine(QPointF(plot.left(), at), QPointF(plot.right(), at));
        painter.setPen(theme.muted);
        painter.drawText(QRectF(plot.left() - 48, at - 8, 40, 16), Qt::AlignRight | Qt::AlignVCenter,
                         numberText(y));
    }
}

void drawControls(QPainter& painter, const Theme& theme, const QPolygonF& controls)
{
    painter.setPen(QPen(theme.muted, 1.2, Qt::DashLine));
    painter.drawLine(controls.first(), controls.last());
    painter.setPen(QPen(theme.control, 1.2));
    painter.drawPolyline(controls);
    painter.setBrush(theme.ground);
    painter.setPen(QPen(theme.control, 1.8));
    for (qsizetype i = 1; i + 1 < controls.size(); ++i) {
        painter.drawRect(QRectF(controls[i] - QPointF(4.5, 4.5), QSizeF(9, 9)));
    }
}

/// The knots from the first on that lie at least `distance` apart in the picture: others cannot be told
/// apart.
QList<VelorCurveKnot> spread(const Frame& frame, const QList<VelorCurveKnot>& knots, double distance)
{
    QList<VelorCurveKnot> chosen;
    for (const auto& knot : knots) {
        if (chosen.isEmpty() ||
            QLineF(frame.toPicture(chosen.last().position), frame.toPicture(knot.position)).length() >=
                distance) {
            chosen.append(knot);
        }
    }
    return chosen;
}

void drawTangents(QPainter& painter, const Theme& theme, const Frame& frame,
                  const QList<VelorCurveKnot>& knots)
{
    painter.setPen(QPen(theme.ink, 1.3));
    for (const auto& [position, tangent] : spread(frame, knots, TangentLength)) {
        const QPointF at = frame.toPicture(position);
        drawArrow(painter, at, at + QPointF(double(tangent.x), -double(tangent.y)) * TangentLength, 7);
    }
}

void drawKnots(QPainter& painter, const Theme& theme, const Frame& frame, const QList<VelorCurveKnot>& knots)
{
    painter.setBrush(theme.ground);
    painter.setPen(QPen(theme.curve, 1.8));
    for (const auto& knot : spread(frame, knots, LeastKnotDistance)) {
        painter.drawEllipse(frame.toPicture(knot.position), 3.6, 3.6);
    }
}

void drawRunIn(QPainter& painter, const Theme& theme, const QPointF& from, const QPointF& to)
{
    painter.setPen(QPen(theme.otherSide, CurveWidth, Qt::SolidLine, Qt::FlatCap));
    drawArrow(painter, from, to, 13);
}

void drawLabels(QPainter& painter, const Theme& theme, const QRectF& plot, const QPolygonF& curve,
                const QPolygonF& controls, const QPointF& target, bool hasRunIn)
{
    LabelPlacer labels(plot);
    labels.avoid(curve);
    labels.avoid(controls);
    labels.avoid({controls.first(), controls.last(), target});
    painter.setFont(textFont(13, true));
    painter.setPen(theme.ink);
    labels.place(painter, controls.first(), QStringLiteral("start"));
    labels.place(painter, target, QStringLiteral("target"));
    painter.setFont(textFont(13));
    if (hasRunIn) {
        painter.setPen(theme.otherSide);
        labels.place(painter, (controls.last() + target) / 2, QStringLiteral("run-in"));
    }
    painter.setPen(theme.control);
    labels.place(painter, controls[1], QStringLiteral("first control point"));
    labels.place(painter, controls[2], QStringLiteral("second control point"));
}

} // namespace

void drawPathPicture(QPainter& painter, const Theme& theme, const Options& options)
{
    const TurningPath path(options, options.heading);
    const QRectF picture(QPointF(0, 0), PathPictureSize);
    const QRectF plot = picture.adjusted(Margin + AxisRoom, TitleHeight + Margin, -Margin, -Margin - 20);
    const Frame frame(plot.adjusted(80, 48, -80, -48), path.positions());

    drawTitle(painter, theme, {Margin, Margin - 8}, QStringLiteral("Turning path"), describe(options));
    drawGrid(painter, theme, frame, plot);

    const QPolygonF curve = toPicture(frame, path.smooth);
    const QPolygonF controls =
        toPicture(frame, {path.smooth.first(), path.firstControl, path.secondControl, path.smooth.last()});
    const QPointF target = frame.toPicture(path.knots.last().position);
    drawControls(painter, theme, controls);
    painter.setPen(QPen(theme.curve, CurveWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(curve);
    // The run-in shows the last tangent where there is one.
    drawTangents(painter, theme, frame, path.hasRunIn() ? path.curve.first(options.segments) : path.curve);
    if (path.hasRunIn()) {
        drawRunIn(painter, theme, curve.last(), target);
    }
    drawKnots(painter, theme, frame, path.curve);
    drawLabels(painter, theme, plot, curve, controls, target, path.hasRunIn());
}

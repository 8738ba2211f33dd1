#include "Pictures.h"

#include <Velor.Base/VelorMath.h>

#include <functional>

namespace {

constexpr double Margin = 40;
constexpr QRectF Plot{84, 120, 420, 420};
constexpr double LegendLeft = 556;
constexpr double LegendRow = 30;

using Easing = std::function<float(float)>;

struct Series
{
    QString name;
    Easing easing;
    QPen pen;
};

QPointF toPicture(double t, double value)
{
    return {Plot.left() + t * Plot.width(), Plot.bottom() - value * Plot.height()};
}

/// From a pale to the full colour of the curve as the exponent grows.
QColor shade(const Theme& theme, double share)
{
    const auto mix = [share](int from, int to) { return int(from + (to - from) * share); };
    return QColor(mix(theme.ground.red(), theme.curve.red()), mix(theme.ground.green(), theme.curve.green()),
                  mix(theme.ground.blue(), theme.curve.blue()));
}

QList<Series> allSeries(const Theme& theme)
{
    QList<Series> all;
    double share = 0.4;
    for (const float exponent : {1.0F, 1.5F, 2.0F, 3.0F, 5.0F}) {
        all.append({QStringLiteral("easeInEaseOut, exponent %1").arg(double(exponent)),
                    [exponent](float t) { return VelorMath::easeInEaseOut(t, exponent); },
                    QPen(shade(theme, share), 2.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin)});
        share += 0.15;
    }
    all.append({QStringLiteral("smootherStep"), VelorMath::smootherStep,
                QPen(theme.otherSide, 2.6, Qt::DashLine, Qt::FlatCap, Qt::RoundJoin)});
    return all;
}

void drawAxes(QPainter& painter, const Theme& theme)
{
    constexpr int Ticks = 4;
    painter.setFont(textFont(12));
    for (int i = 0; i <= Ticks; ++i) {
        const double value = double(i) / Ticks;
        painter.setPen(QPen(theme.grid, 1));
        painter.drawLine(toPicture(value, 0), toPicture(value, 1));
        painter.drawLine(toPicture(0, value), toPicture(1, value));
        painter.setPen(theme.muted);
        const QPointF below = toPicture(value, 0);
        painter.drawText(QRectF(below.x() - 30, below.y() + 8, 60, 18), Qt::AlignHCenter,
                         QString::number(value));
        const QPointF beside = toPicture(0, value);
        painter.drawText(QRectF(beside.x() - 50, beside.y() - 9, 40, 18), Qt::AlignRight | Qt::AlignVCenter,
                         QString::number(value));
    }
    const QPointF end = toPicture(1, 0);
    painter.drawText(QRectF(end.x() + 14, end.y() - 9, 20, 18), Qt::AlignLeft | Qt::AlignVCenter,
                     QStringLiteral("t"));
}

void drawSeries(QPainter& painter, const Series& series)
{
    constexpr int Steps = 200;
    QPolygonF line;
    for (int i = 0; i <= Steps; ++i) {
        const float t = float(i) / Steps;
        line.append(toPicture(double(t), double(series.easing(t))));
    }
    painter.setPen(series.pen);
    painter.drawPolyline(line);
}

} // namespace

void drawEasingPicture(QPainter& painter, const Theme& theme)
{
    drawTitle(painter, theme, {Margin, Margin - 8}, QStringLiteral("Easing curves"),
              QStringLiteral("all run from 0 to 1 and pass through the middle"));
    drawAxes(painter, theme);
    const auto all = allSeries(theme);
    double top = Plot.top() + LegendRow / 2;
    for (const Series& series : all) {
        drawSeries(painter, series);
        painter.drawLine(QPointF(LegendLeft, top), QPointF(LegendLeft + 34, top));
        painter.setPen(theme.ink);
        painter.setFont(textFont(14));
        painter.drawText(QRectF(LegendLeft + 46, top - 12, 240, 24), Qt::AlignLeft | Qt::AlignVCenter,
                         series.name);
        top += LegendRow;
    }
}

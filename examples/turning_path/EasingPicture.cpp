#include "Picture.h"

using namespace Qt::StringLiterals;

namespace {

constexpr QSize EasingSize(860, 600);
constexpr QRectF Plot(84, 120, 420, 420);
constexpr double LegendLeft = 556;
constexpr double LegendRow = 30;

/// Shows the unit square in the plot.
QTransform frame() { return fit(Plot, QRectF(0, 0, 1, 1)); }

/// Draws the curve of `easing`, and its row of the legend.
void drawCurve(QPainter& painter, const Theme& theme, const QPen& pen, int row, const QString& name,
               const std::function<float(float)>& easing)
{
    constexpr int Steps = 200;
    QPolygonF line;
    for (int i = 0; i <= Steps; ++i) {
        const float t = float(i) / Steps;
        line.append(frame().map(QPointF(double(t), double(easing(t)))));
    }
    const double height = Plot.top() + LegendRow * (row + 0.5);
    painter.setPen(pen);
    painter.drawPolyline(line);
    painter.drawLine(QPointF(LegendLeft, height), QPointF(LegendLeft + 34, height));
    painter.setPen(theme.ink);
    painter.setFont(textFont(14));
    painter.drawText(QPointF(LegendLeft + 46, height + 5), name);
}

void drawCurves(QPainter& painter, const Theme& theme)
{
    drawGrid(painter, theme, frame(), Plot);
    int row = 0;
    for (const float exponent : {1.0F, 1.5F, 2.0F, 3.0F, 5.0F}) {
        // From a pale to the full colour as the exponent grows.
        QColor color = theme.curve;
        color.setAlphaF(0.4F + 0.15F * float(row));
        drawCurve(painter, theme, QPen(color, 2.6, Qt::SolidLine, Qt::FlatCap, Qt::RoundJoin), row++,
                  u"easeInEaseOut, exponent %1"_s.arg(double(exponent)),
                  [exponent](float t) { return VelorMath::easeInEaseOut(t, exponent); });
    }
    drawCurve(painter, theme, QPen(theme.otherSide, 2.6, Qt::DashLine, Qt::FlatCap, Qt::RoundJoin), row,
              u"smootherStep"_s, VelorMath::smootherStep);
}

} // namespace

Picture easingPicture()
{
    return {u"Easing curves"_s, u"over t: all run from 0 to 1 and pass through the middle"_s, EasingSize,
            drawCurves};
}

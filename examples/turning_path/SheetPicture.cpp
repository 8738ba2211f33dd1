#include "Picture.h"

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize SheetSize(960, 664);
constexpr int Columns = 4;
constexpr int Rows = 3;
constexpr int DegreesApart = 360 / (Columns * Rows);
constexpr double Gap = 12;
constexpr double CaptionHeight = 30;

QRectF cellPlace(int index)
{
    const double top = Picture::Margin + Picture::TitleHeight;
    const double width = (SheetSize.width() - 2 * Picture::Margin - Gap * (Columns - 1)) / Columns;
    const double height = (SheetSize.height() - top - Picture::Margin - Gap * (Rows - 1)) / Rows;
    const int row = index / Columns;
    const int column = index % Columns;
    return {Picture::Margin + column * (width + Gap), top + row * (height + Gap), width, height};
}

void drawSmallPath(QPainter& painter, const Theme& theme, const QTransform& frame, const TurningPath& path,
                   const QColor& color)
{
    const QPolygonF curve = frame.map(path.smooth);
    QColor tint = color;
    tint.setAlphaF(0.16F);
    painter.setPen(Qt::NoPen);
    painter.setBrush(tint);
    painter.drawPolygon(curve);
    painter.setPen(QPen(theme.muted, 1, Qt::DashLine));
    painter.drawLine(curve.first(), curve.last());
    painter.setPen(QPen(color, 2.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(curve);
    if (path.hasRunIn) {
        painter.setPen(QPen(theme.ink, 2.4, Qt::SolidLine, Qt::FlatCap));
        drawArrow(painter, curve.last(), frame.map(path.target), 9);
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.ink);
    painter.drawEllipse(curve.first(), 3.6, 3.6);
}

/// Returns the colour of the path.
QColor drawCell(QPainter& painter, const Theme& theme, const QRectF& cell, int heading, double bow)
{
    const bool isStraight = std::abs(bow) < 0.005;
    const QColor color = isStraight ? theme.muted : bow > 0 ? theme.curve : theme.otherSide;
    const QString side = bow > 0 ? u"right"_s : u"left"_s;
    const QRectF line(cell.left() + 14, cell.top() + 10, cell.width() - 28, 20);
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.panel);
    painter.drawRoundedRect(cell, 8, 8);
    painter.setPen(theme.ink);
    painter.setFont(textFont(15, true));
    painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter, u"%1°"_s.arg(heading));
    painter.setPen(color);
    painter.setFont(textFont(12));
    painter.drawText(line, Qt::AlignRight | Qt::AlignVCenter,
                     isStraight ? u"no bow"_s : u"bows %1 %2"_s.arg(side).arg(std::abs(bow), 0, 'f', 2));
    return color;
}

} // namespace

Picture sheetPicture(PathOptions options)
{
    const QString description =
        u"bulge %1   handle %2   run-in %3   dashed: the chord   arrow: the run-in"_s.arg(
            numberText(double(options.bulge)), numberText(double(options.handle)),
            numberText(double(options.runIn)));
    QList<TurningPath> paths;
    QPolygonF all;
    for (int i = 0; i < Columns * Rows; ++i) {
        options.heading = float(i * DegreesApart);
        paths.append(TurningPath(options));
        all << paths.last().smooth << paths.last().target;
    }
    const auto draw = [paths, all](QPainter& painter, const Theme& theme) {
        for (int i = 0; i < paths.size(); ++i) {
            const QRectF cell = cellPlace(i);
            const QTransform frame = fit(cell.adjusted(18, CaptionHeight + 12, -18, -16), all);
            const QColor color = drawCell(painter, theme, cell, i * DegreesApart, paths[i].bow());
            drawSmallPath(painter, theme, frame, paths[i], color);
        }
    };
    return {u"Turning curves by heading"_s, description, SheetSize, draw};
}

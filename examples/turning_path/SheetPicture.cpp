#include "Picture.h"

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize SheetSize(960, 664);
constexpr int Columns = 4;
constexpr int Rows = 3;
constexpr int DegreesApart = 360 / (Columns * Rows);
constexpr double Gap = 12;
constexpr QSizeF CellSize(213, 500.0 / Rows);

QRectF cellPlace(int index)
{
    const int row = index / Columns;
    const int column = index % Columns;
    const QPointF offset(column * (CellSize.width() + Gap), row * (CellSize.height() + Gap));
    return {QPointF(Picture::Margin, Picture::Margin + Picture::TitleHeight) + offset, CellSize};
}

void drawSmallPath(QPainter& painter, const Theme& theme, const QTransform& frame, const TurningPath& path,
                   const QColor& color)
{
    constexpr double Width = 2.4;
    const QPolygonF curve = frame.map(path.curve);
    QColor tint = color;
    tint.setAlphaF(0.16F);
    painter.setPen(Qt::NoPen);
    painter.setBrush(tint);
    painter.drawPolygon(curve);
    painter.setPen(QPen(theme.secondaryText, 1, Qt::DashLine));
    painter.drawLine(curve.first(), curve.last());
    painter.setPen(QPen(color, Width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(curve);
    if (path.hasRunIn) {
        drawArrow(painter, theme.text, Width, {curve.last(), frame.map(path.target)}, 9);
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.text);
    painter.drawEllipse(curve.first(), 3.6, 3.6);
}

/// Draws a path in a cell that has room for all paths, whose bounds are `bounds`.
void drawCell(QPainter& painter, const Theme& theme, const QRectF& cell, int heading, const TurningPath& path,
              const QRectF& bounds)
{
    const double bow = path.bow();
    const bool isStraight = std::abs(bow) < 0.005;
    const QColor color = isStraight ? theme.secondaryText : bow > 0 ? theme.blue : theme.orange;
    const QString side = bow > 0 ? u"right"_s : u"left"_s;
    const QRectF caption(cell.left() + 14, cell.top() + 10, cell.width() - 28, 20);
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.panel);
    painter.drawRoundedRect(cell, 8, 8);
    painter.setPen(theme.text);
    painter.setFont(textFont(15, true));
    painter.drawText(caption, Qt::AlignLeft | Qt::AlignVCenter, u"%1°"_s.arg(heading));
    painter.setPen(color);
    painter.setFont(textFont(12));
    painter.drawText(caption, Qt::AlignRight | Qt::AlignVCenter,
                     isStraight ? u"no bow"_s : u"bows %1 %2"_s.arg(side).arg(std::abs(bow), 0, 'f', 2));
    drawSmallPath(painter, theme, fit(cell.adjusted(18, 42, -18, -16), bounds), path, color);
}

} // namespace

Picture sheetPicture(PathOptions options)
{
    const QString description =
        u"bulge %1   handle %2   run-in %3   dashed: the chord   arrow: the run-in"_s.arg(
            numberText(options.bulge), numberText(options.handle), numberText(options.runIn));
    QList<TurningPath> paths;
    QPolygonF all;
    for (int i = 0; i < Columns * Rows; ++i) {
        options.heading = float(i * DegreesApart);
        paths.append(TurningPath(options));
        all << paths.last().curve << paths.last().target;
    }
    const auto draw = [paths, bounds = all.boundingRect()](QPainter& painter, const Theme& theme) {
        for (int i = 0; i < paths.size(); ++i) {
            drawCell(painter, theme, cellPlace(i), i * DegreesApart, paths[i], bounds);
        }
    };
    return {u"Turning curves by heading"_s, description, SheetSize, draw};
}

#include "Pictures.h"
#include "TurningPath.h"

#include <cmath>

namespace {

constexpr int Columns = 4;
constexpr int Rows = 3;
constexpr int DegreesApart = 360 / (Columns * Rows);
constexpr double Margin = 32;
constexpr double TitleHeight = 68;
constexpr double Gap = 12;
constexpr double CaptionHeight = 30;

QRectF cellPlace(int index)
{
    const QSizeF all = QSizeF(SheetPictureSize) - QSizeF(2 * Margin, 2 * Margin + TitleHeight);
    const QSizeF cell((all.width() - Gap * (Columns - 1)) / Columns,
                      (all.height() - Gap * (Rows - 1)) / Rows);
    const int row = index / Columns;
    const int column = index % Columns;
    return {
        QPointF(Margin + column * (cell.width() + Gap), Margin + TitleHeight + row * (cell.height() + Gap)),
        cell};
}

/// The part of a cell that its path is drawn in.
QRectF pathPlace(const QRectF& cell) { return cell.adjusted(18, CaptionHeight + 12, -18, -16); }

QString bowText(float bow)
{
    if (std::abs(bow) < 0.005F) {
        return QStringLiteral("no bow");
    }
    return QStringLiteral("bows %1 %2")
        .arg(bow > 0 ? QStringLiteral("right") : QStringLiteral("left"))
        .arg(double(std::abs(bow)), 0, 'f', 2);
}

QColor bowColor(const Theme& theme, float bow)
{
    if (std::abs(bow) < 0.005F) {
        return theme.muted;
    }
    return bow > 0 ? theme.curve : theme.otherSide;
}

void drawCaption(QPainter& painter, const Theme& theme, const QRectF& cell, int heading, float bow)
{
    const QRectF line(cell.left() + 14, cell.top() + 10, cell.width() - 28, 20);
    painter.setPen(theme.ink);
    painter.setFont(textFont(15, true));
    painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("%1°").arg(heading));
    painter.setPen(bowColor(theme, bow));
    painter.setFont(textFont(12));
    painter.drawText(line, Qt::AlignRight | Qt::AlignVCenter, bowText(bow));
}

void drawPath(QPainter& painter, const Theme& theme, const Frame& frame, const TurningPath& path)
{
    QPolygonF curve;
    for (const auto& point : path.smooth) {
        curve.append(frame.toPicture(point));
    }
    const QColor color = bowColor(theme, path.bow());
    QColor tint = color;
    tint.setAlphaF(0.16F);
    painter.setPen(Qt::NoPen);
    painter.setBrush(tint);
    painter.drawPolygon(curve);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(theme.muted, 1, Qt::DashLine));
    painter.drawLine(curve.first(), curve.last());
    painter.setPen(QPen(color, 2.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(curve);

    const QPointF target = frame.toPicture(path.knots.last().position);
    painter.setPen(QPen(theme.ink, 2.4, Qt::SolidLine, Qt::FlatCap));
    if (path.hasRunIn()) {
        drawArrow(painter, curve.last(), target, 9);
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.ink);
    painter.drawEllipse(curve.first(), 3.6, 3.6);
}

} // namespace

void drawSheetPicture(QPainter& painter, const Theme& theme, const Options& options)
{
    QList<TurningPath> paths;
    QList<TVec2d<float>> all;
    for (int i = 0; i < Columns * Rows; ++i) {
        paths.append(TurningPath(options, float(i * DegreesApart)));
        all << paths.last().smooth << paths.last().knots.last().position;
    }
    drawTitle(painter, theme, {Margin, Margin - 6}, QStringLiteral("Turning curves by heading"),
              QStringLiteral("bulge %1   handle %2   run-in %3   dashed: the chord   arrow: the run-in")
                  .arg(numberText(double(options.bulge)), numberText(double(options.handle)),
                       numberText(double(options.runIn))));
    for (int i = 0; i < Columns * Rows; ++i) {
        const QRectF cell = cellPlace(i);
        painter.setPen(Qt::NoPen);
        painter.setBrush(theme.panel);
        painter.drawRoundedRect(cell, 8, 8);
        drawCaption(painter, theme, cell, i * DegreesApart, paths[i].bow());
        drawPath(painter, theme, Frame(pathPlace(cell), all), paths[i]);
    }
}

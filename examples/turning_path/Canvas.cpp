#include "Canvas.h"

#include <QtCore/QBuffer>
#include <QtCore/QLineF>
#include <QtCore/QSaveFile>
#include <QtGui/QFontMetricsF>
#include <QtGui/QImage>
#include <QtSvg/QSvgGenerator>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr int DotsPerUnit = 2;
constexpr int SmallestFile = 0;

QRectF boundsOf(const QList<TVec2d<float>>& points)
{
    QPolygonF polygon;
    for (const auto& point : points) {
        polygon.append(QPointF(double(point.x), double(point.y)));
    }
    return polygon.boundingRect();
}

bool paint(QPaintDevice& device, const Theme& theme, const QSize& size, const Drawing& draw)
{
    QPainter painter(&device);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    painter.fillRect(QRect(QPoint(0, 0), size), theme.ground);
    draw(painter, theme);
    return painter.end();
}

bool writeSvg(QIODevice& device, const QSize& size, const Theme& theme, const Drawing& draw)
{
    QSvgGenerator svg;
    svg.setOutputDevice(&device);
    svg.setSize(size);
    svg.setViewBox(QRect(QPoint(0, 0), size));
    return paint(svg, theme, size, draw);
}

bool writePng(QIODevice& device, const QSize& size, const Theme& theme, const Drawing& draw)
{
    QImage image(size * DotsPerUnit, QImage::Format_RGB32);
    image.setDevicePixelRatio(DotsPerUnit);
    return paint(image, theme, size, draw) && image.save(&device, "PNG", SmallestFile);
}

} // namespace

Theme Theme::light()
{
    return {0xFFFFFF, 0xF5F6F8, 0xE3E6EB, 0x667085, 0x1D2530, 0x1F5FD6, 0xC2560C, 0x7A3EB1};
}

Theme Theme::dark()
{
    return {0x12161C, 0x1A2028, 0x2A323D, 0x97A3B3, 0xE8ECF1, 0x74A9FF, 0xF2994A, 0xC39BF0};
}

Frame::Frame(const QRectF& place, const QList<TVec2d<float>>& points)
    : mPlaceCenter(place.center())
{
    const QRectF bounds = boundsOf(points);
    mPlaneCenter = bounds.center();
    // Points in one line, or all in one place, still need a scale, and one that floats can tell apart.
    const double farthest = std::max({std::abs(bounds.left()), std::abs(bounds.right()),
                                      std::abs(bounds.top()), std::abs(bounds.bottom())});
    const double least = std::max({bounds.width() * 1e-3, bounds.height() * 1e-3, farthest * 1e-4, 1e-6});
    mScale = std::min(place.width() / std::max(bounds.width(), least),
                      place.height() / std::max(bounds.height(), least));
}

QPointF Frame::toPicture(const TVec2d<float>& point) const
{
    return {mPlaceCenter.x() + (double(point.x) - mPlaneCenter.x()) * mScale,
            mPlaceCenter.y() - (double(point.y) - mPlaneCenter.y()) * mScale};
}

TVec2d<float> Frame::toPlane(const QPointF& point) const
{
    return {float(mPlaneCenter.x() + (point.x() - mPlaceCenter.x()) / mScale),
            float(mPlaneCenter.y() - (point.y() - mPlaceCenter.y()) / mScale)};
}

void LabelPlacer::avoid(const QPolygonF& line)
{
    constexpr double Spacing = 3;
    for (qsizetype i = 1; i < line.size(); ++i) {
        const QLineF piece(line[i - 1], line[i]);
        const int steps = 1 + int(piece.length() / Spacing);
        for (int k = 0; k <= steps; ++k) {
            mPoints.append(piece.pointAt(double(k) / steps));
        }
    }
}

double LabelPlacer::cost(const QRectF& label) const
{
    constexpr double Forbidden = 1000;
    double sum = mRoom.contains(label) ? 0 : Forbidden;
    for (const QRectF& other : mLabels) {
        sum += other.intersects(label) ? Forbidden : 0;
    }
    const QRectF clearance = label.adjusted(-3, -1, 3, 1);
    return sum + double(std::count_if(mPoints.begin(), mPoints.end(),
                                      [&](const QPointF& point) { return clearance.contains(point); }));
}

void LabelPlacer::place(QPainter& painter, const QPointF& anchor, const QString& text)
{
    constexpr int Directions = 16;
    const QSizeF size = QFontMetricsF(painter.font()).boundingRect(text).size() + QSizeF(2, 0);
    constexpr double MarkerSize = 14;
    QRectF marker(0, 0, MarkerSize, MarkerSize);
    marker.moveCenter(anchor);
    mLabels.append(marker);
    QRectF best;
    double lowest = 0;
    for (const double distance : {12.0, 18.0, 26.0, 36.0}) {
        for (int i = 0; i < Directions; ++i) {
            const double angle = std::numbers::pi * (2.0 * i / Directions - 0.5);
            const QPointF away(std::cos(angle), std::sin(angle));
            QRectF label(QPointF(), size);
            label.moveCenter(anchor + QPointF(away.x() * (distance + size.width() / 2),
                                              away.y() * (distance + size.height() / 4)));
            const double found = cost(label) + distance / 10;
            if (best.isNull() || found < lowest) {
                best = label;
                lowest = found;
            }
        }
    }
    mLabels.append(best);
    painter.drawText(best, Qt::AlignCenter, text);
}

bool savePicture(const QString& name, const QSize& size, const Theme& theme, const Drawing& draw)
{
    // The generator does not look at how much of its text a file took.
    QBuffer picture;
    picture.open(QIODevice::WriteOnly);
    const auto write = name.endsWith(QLatin1String(".svg")) ? writeSvg : writePng;
    QSaveFile file(name);
    return write(picture, size, theme, draw) && file.open(QIODevice::WriteOnly) &&
           file.write(picture.data()) == picture.size() && file.commit();
}

QString numberText(double number)
{
    constexpr int Digits = 7;
    constexpr QChar Minus(0x2212);
    return QString::number(number, 'g', Digits).replace(u'-', Minus);
}

QFont textFont(int pixels, bool bold)
{
    QFont font(QStringLiteral("sans-serif"));
    font.setStyleHint(QFont::SansSerif);
    font.setPixelSize(pixels);
    font.setBold(bold);
    return font;
}

void drawArrow(QPainter& painter, const QPointF& from, const QPointF& tip, double headSize)
{
    const QLineF shaft(from, tip);
    if (shaft.length() <= 0) {
        return;
    }
    headSize = std::min(headSize, shaft.length());
    const QPointF along = (tip - from) / shaft.length();
    const QPointF across(-along.y(), along.x());
    const QPointF base = tip - along * headSize;
    painter.drawLine(from, base);
    painter.save();
    painter.setBrush(painter.pen().color());
    painter.setPen(Qt::NoPen);
    painter.drawPolygon(QPolygonF{tip, base + across * headSize * 0.42, base - across * headSize * 0.42});
    painter.restore();
}

void drawTitle(QPainter& painter, const Theme& theme, const QPointF& corner, const QString& title,
               const QString& line)
{
    painter.setPen(theme.ink);
    painter.setFont(textFont(20, true));
    painter.drawText(corner + QPointF(0, 20), title);
    painter.setPen(theme.muted);
    painter.setFont(textFont(13));
    painter.drawText(corner + QPointF(0, 42), line);
}

#include "Picture.h"

#include <QtCore/QBuffer>
#include <QtCore/QFileInfo>
#include <QtCore/QLineF>
#include <QtCore/QSaveFile>
#include <QtGui/QImage>
#include <QtSvg/QSvgGenerator>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

bool paint(QPaintDevice& device, const Picture& picture, const Theme& theme)
{
    QPainter painter(&device);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    painter.fillRect(QRect(QPoint(0, 0), picture.size), theme.ground);
    painter.setPen(theme.ink);
    painter.setFont(textFont(20, true));
    painter.drawText(QPointF(Picture::Margin, Picture::Margin + 10), picture.title);
    painter.setPen(theme.muted);
    painter.setFont(textFont(13));
    painter.drawText(QPointF(Picture::Margin, Picture::Margin + 32), picture.description);
    picture.draw(painter, theme);
    return painter.end();
}

bool paintSvg(QIODevice& device, const Picture& picture, const Theme& theme)
{
    QSvgGenerator svg;
    svg.setOutputDevice(&device);
    svg.setTitle(picture.title);
    svg.setDescription(picture.description);
    svg.setSize(picture.size);
    svg.setViewBox(QRect(QPoint(0, 0), picture.size));
    return paint(svg, picture, theme);
}

bool paintPng(QIODevice& device, const Picture& picture, const Theme& theme)
{
    constexpr int DotsPerUnit = 2;
    constexpr int SmallestFile = 0;
    QImage image(picture.size * DotsPerUnit, QImage::Format_RGB32);
    image.setDevicePixelRatio(DotsPerUnit);
    return paint(image, picture, theme) && image.save(&device, "PNG", SmallestFile);
}

/// A write that a full disk cuts short has no reason yet: the next one has.
bool writeAll(QIODevice& device, QByteArrayView data)
{
    qint64 written = 1;
    while (!data.empty() && written > 0) {
        written = device.write(data.data(), data.size());
        data = data.sliced(std::max<qint64>(written, 0));
    }
    return data.empty();
}

/// The smallest of 1, 2 and 5 times a power of ten that is at least `wanted`.
double niceStep(double wanted)
{
    const double power = std::pow(10.0, std::floor(std::log10(wanted)));
    const double factor = wanted / power;
    return power * (factor <= 1 ? 1 : factor <= 2 ? 2 : factor <= 5 ? 5 : 10);
}

/// The multiples of `step` from `low` to `high`, and no negative zero.
QList<double> ticks(double low, double high, double step)
{
    constexpr double Noise = 1e-6; // Of the transforms, where a tick lies on an end.
    QList<double> values;
    for (double k = std::ceil(low / step - Noise); k <= high / step + Noise; ++k) {
        values.append(k * step + 0.0);
    }
    return values;
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

QString savePicture(const QString& name, const Picture& picture, const Theme& theme)
{
    // QSaveFile would put a file in the place of a device or a pipe.
    if (const QFileInfo older(name); older.exists() && !older.isFile()) {
        return u"It is no regular file"_s;
    }
    // QSvgGenerator does not check how much of its text a file takes.
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    const auto paintTo = name.endsWith(u".png"_s, Qt::CaseInsensitive) ? paintPng : paintSvg;
    if (!paintTo(buffer, picture, theme)) {
        return u"There is not enough memory for the picture"_s;
    }
    QSaveFile file(name);
    // Unbuffered, since commit() of Qt 6.4 does not report that its last flush failed.
    const bool isWritten = file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) &&
                           writeAll(file, buffer.data()) && file.commit();
    return isWritten ? QString() : file.errorString();
}

QTransform fit(const QRectF& place, const QPolygonF& points)
{
    const QRectF bounds = points.boundingRect();
    // Points in one line, or all in one place, still need a scale, and one at which floats differ.
    const double farthest = std::max({std::abs(bounds.left()), std::abs(bounds.right()),
                                      std::abs(bounds.top()), std::abs(bounds.bottom())});
    const double least = std::max({bounds.width() * 1e-3, bounds.height() * 1e-3, farthest * 1e-4, 1e-6});
    const double scale = std::min(place.width() / std::max(bounds.width(), least),
                                  place.height() / std::max(bounds.height(), least));
    const QPointF middle = bounds.center();
    return QTransform::fromTranslate(-middle.x(), -middle.y()) * QTransform::fromScale(scale, -scale) *
           QTransform::fromTranslate(place.center().x(), place.center().y());
}

QFont textFont(int pixels, bool bold)
{
    QFont font(u"sans-serif"_s);
    font.setStyleHint(QFont::SansSerif);
    font.setPixelSize(pixels);
    font.setBold(bold);
    return font;
}

QString numberText(double number)
{
    constexpr int Digits = 7;
    constexpr QChar Minus(0x2212);
    return QString::number(number, 'g', Digits).replace(u'-', Minus);
}

void drawGrid(QPainter& painter, const Theme& theme, const QTransform& frame, const QRectF& plot)
{
    constexpr double LeastDistance = 70; // The width of a long label of the x axis, and a gap.
    constexpr QSizeF Label(LeastDistance, 16);
    const QRectF shown = frame.inverted().mapRect(plot);
    const double step = niceStep(LeastDistance / frame.m11());
    painter.setFont(textFont(11));
    const auto draw = [&](const QLineF& line, const QPointF& label, int alignment, double value) {
        painter.setPen(QPen(theme.grid, 1));
        painter.drawLine(line);
        painter.setPen(theme.muted);
        painter.drawText(QRectF(label, Label), alignment, numberText(value));
    };
    for (const double x : ticks(shown.left(), shown.right(), step)) {
        const double at = frame.map(QPointF(x, 0)).x();
        draw({at, plot.top(), at, plot.bottom()}, {at - Label.width() / 2, plot.bottom() + 6},
             Qt::AlignHCenter, x);
    }
    for (const double y : ticks(shown.top(), shown.bottom(), step)) {
        const double at = frame.map(QPointF(0, y)).y();
        draw({plot.left(), at, plot.right(), at}, {plot.left() - 8 - Label.width(), at - Label.height() / 2},
             Qt::AlignRight | Qt::AlignVCenter, y);
    }
}

void drawArrow(QPainter& painter, const QPointF& from, const QPointF& tip, double headSize)
{
    const QLineF shaft(from, tip);
    if (shaft.isNull()) {
        return;
    }
    const double head = std::min(headSize, shaft.length());
    painter.save();
    painter.translate(tip);
    painter.rotate(-shaft.angle());
    painter.drawLine(QPointF(-shaft.length(), 0), QPointF(-head, 0));
    painter.setBrush(painter.pen().color());
    painter.setPen(Qt::NoPen);
    painter.drawPolygon(QPolygonF{QPointF(), QPointF(-head, head * 0.42), QPointF(-head, -head * 0.42)});
    painter.restore();
}

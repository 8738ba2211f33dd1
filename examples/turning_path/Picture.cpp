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

bool writeSvg(QIODevice& device, const Picture& picture, const Theme& theme)
{
    QSvgGenerator svg;
    svg.setOutputDevice(&device);
    svg.setTitle(picture.title);
    svg.setDescription(picture.description);
    svg.setSize(picture.size);
    svg.setViewBox(QRect(QPoint(0, 0), picture.size));
    return paint(svg, picture, theme);
}

bool writePng(QIODevice& device, const Picture& picture, const Theme& theme)
{
    constexpr int DotsPerUnit = 2;
    constexpr int SmallestFile = 0;
    QImage image(picture.size * DotsPerUnit, QImage::Format_RGB32);
    image.setDevicePixelRatio(DotsPerUnit);
    return paint(image, picture, theme) && image.save(&device, "PNG", SmallestFile);
}

/// A write that a full disk cuts short has no reason yet: the next one has.
bool writeAll(QIODevice& device, const QByteArray& data)
{
    qsizetype done = 0;
    while (done < data.size()) {
        const qint64 written = device.write(data.constData() + done, data.size() - done);
        if (written <= 0) {
            return false;
        }
        done += written;
    }
    return true;
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
    const auto write = name.endsWith(QLatin1String(".png"), Qt::CaseInsensitive) ? writePng : writeSvg;
    if (!write(buffer, picture, theme)) {
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
    QTransform transform;
    transform.translate(place.center().x(), place.center().y());
    transform.scale(scale, -scale);
    transform.translate(-bounds.center().x(), -bounds.center().y());
    return transform;
}

QString numberText(double number)
{
    constexpr int Digits = 7;
    constexpr QChar Minus(0x2212);
    return QString::number(number, 'g', Digits).replace(u'-', Minus);
}

QFont textFont(int pixels, bool bold)
{
    QFont font(u"sans-serif"_s);
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

#include "Picture.h"

#include <QtCore/QBuffer>
#include <QtCore/QFileInfo>
#include <QtCore/QLineF>
#include <QtCore/QSaveFile>
#include <QtGui/QImage>
#include <QtSvg/QSvgGenerator>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

bool paint(QPaintDevice& device, const Picture& picture, const Theme& theme)
{
    QPainter painter(&device);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    painter.fillRect(QRect(QPoint(0, 0), picture.size), theme.background);
    painter.setPen(theme.text);
    painter.setFont(textFont(20, true));
    painter.drawText(QPointF(Picture::Margin, Picture::Margin + 10), picture.title);
    painter.setPen(theme.secondaryText);
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

} // namespace

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
    const bool isOpen = file.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    if (isOpen && file.write(buffer.data()) < buffer.size()) {
        file.write(buffer.data()); // Has the reason, which a write that a full disk cuts short has not.
        return file.errorString();
    }
    return isOpen && file.commit() ? QString() : file.errorString();
}

QTransform fit(const QRectF& place, const QRectF& bounds)
{
    const QPointF middle = bounds.center();
    // A line or a point still needs a scale, and one at which floats differ.
    const double least = std::max(middle.manhattanLength() * 5e-5, 1e-6);
    const QSizeF size = bounds.size().expandedTo({least, least});
    const double scale = std::min(place.width() / size.width(), place.height() / size.height());
    const QPointF offset = place.center() - QPointF(middle.x(), -middle.y()) * scale;
    return {scale, 0, 0, -scale, offset.x(), offset.y()};
}

QFont textFont(int pixels, bool isBold)
{
    QFont font(u"sans-serif"_s);
    font.setStyleHint(QFont::SansSerif);
    font.setPixelSize(pixels);
    font.setBold(isBold);
    return font;
}

QString numberText(double number)
{
    constexpr int Digits = 7;
    constexpr QChar Minus(0x2212);
    return QString::number(number, 'g', Digits).replace(u'-', Minus);
}

void drawArrow(QPainter& painter, const QColor& color, double width, const QLineF& arrow, double headSize)
{
    if (arrow.isNull()) {
        return;
    }
    const QPointF tip = arrow.p2();
    const QPointF base = arrow.pointAt(1 - std::min(headSize / arrow.length(), 1.0));
    const QPointF side = QPointF(base.y() - tip.y(), tip.x() - base.x()) * 0.42;
    painter.setPen(QPen(color, width, Qt::SolidLine, Qt::FlatCap));
    painter.drawLine(arrow.p1(), base);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawPolygon(QPolygonF{tip, base + side, base - side});
}

#include "Pairs.h"

#include <Velor.Base/VelorDropData.h>

#include <QtCore/QDataStream>
#include <QtCore/QIODevice>
#include <QtCore/QVariant>
#include <QtGui/QPixmap>

namespace {

constexpr int Items = 10'000;

void pairImage()
{
    QPixmap image(2000, 2000);
    image.fill(QColor(10, 20, 30, 200));
    const QList<QPixmap> images(30, image);
    bench::pair(
        "a drag image of 30 pictures", "scaling them alone",
        [images] { bench::keep(VelorDropData::getDragMultiplePixmap(images, false, 1.0)); },
        [images] {
            const int side = VelorDropData::DragPixmapSize;
            for (const QPixmap& picture : images) {
                bench::keep(picture.scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation));
            }
        });
}

QByteArray largePayload()
{
    VelorDropData payload;
    for (int i = 0; i < Items; ++i) {
        payload.addItem({QStringLiteral("clip %1").arg(i), QByteArray(64, 'x')});
    }
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << payload;
    return bytes;
}

/// The same bytes read by Qt's variants, which trust every type and length.
void readTrustingly(const QByteArray& bytes)
{
    QDataStream stream(bytes);
    qint32 count = 0;
    qint32 type = 0;
    stream >> count >> type;
    QList<VelorDropData::Item> items;
    for (qint32 i = 0; i < count; ++i) {
        QVariant name;
        QVariant data;
        stream >> name >> data;
        items.append({name.toString(), data.toByteArray()});
    }
    bench::demand(items.size() == Items);
}

void pairs()
{
    pairImage();
    const QByteArray bytes = largePayload();
    bench::pair(
        "reading a drop of 10,000 items", "Qt's variants, which trust the bytes",
        [bytes] {
            QDataStream stream(bytes);
            VelorDropData payload;
            stream >> payload;
            bench::demand(payload.getItems().size() == Items);
        },
        [bytes] { readTrustingly(bytes); });
}

const bench::Family family("Drag", pairs);

} // namespace

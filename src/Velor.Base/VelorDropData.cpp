#include "VelorDropData.h"

#include <QtCore/QDataStream>
#include <QtCore/QIODevice>
#include <QtCore/QMimeData>
#include <QtCore/QVariant>
#include <QtCore/QtEndian>
#include <QtGui/QPainter>
#include <QtGui/QPixmap>

#include <array>
#include <cmath>

namespace {

constexpr quint32 LengthOfNull = 0xFFFFFFFF;

/// A variant begins with its type id and its null flag; a text or byte array continues with its length in
/// bytes.
constexpr qint64 LengthOffset = sizeof(quint32) + sizeof(qint8);
constexpr qint64 HeadSize = LengthOffset + sizeof(quint32);

bool announcesLength(quint32 typeId)
{
    return typeId == QMetaType::QString || typeId == QMetaType::QByteArray;
}

bool hasFixedSize(quint32 typeId)
{
    switch (typeId) {
    case QMetaType::UnknownType:
    case QMetaType::Bool:
    case QMetaType::QChar:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Float:
    case QMetaType::Double:
        return true;
    default:
        return false;
    }
}

quint32 numberAt(const char* bytes, QDataStream::ByteOrder order)
{
    return order == QDataStream::BigEndian ? qFromBigEndian<quint32>(bytes)
                                           : qFromLittleEndian<quint32>(bytes);
}

/// Whether `stream` can read its next variant safely, judged by the variant's first bytes, which stay in the
/// stream. Qt itself reserves what a container announces, and follows nested variants as deep as they go.
QDataStream::Status lookAhead(const QDataStream& stream)
{
    // Older forms have other type ids or no null flag.
    if (stream.version() < QDataStream::Qt_4_2) {
        return QDataStream::ReadCorruptData;
    }
    QIODevice& device = *stream.device();
    std::array<char, HeadSize> head;
    const qint64 size = device.peek(head.data(), HeadSize);
    if (size < LengthOffset) {
        return QDataStream::ReadPastEnd;
    }
    const quint32 typeId = numberAt(head.data(), stream.byteOrder());
    if (hasFixedSize(typeId)) {
        return QDataStream::Ok;
    }
    if (!announcesLength(typeId)) {
        return QDataStream::ReadCorruptData;
    }
    if (size < HeadSize) {
        return QDataStream::ReadPastEnd;
    }
    const quint32 length = numberAt(head.data() + LengthOffset, stream.byteOrder());
    // What a sequential device will still deliver is not known; there Qt reserves in steps of a mebibyte.
    const bool isTooLong =
        length != LengthOfNull && !device.isSequential() && length > device.bytesAvailable() - HeadSize;
    return isTooLong ? QDataStream::ReadPastEnd : QDataStream::Ok;
}

/// Sets the stream's status to the result of reading `value`, and returns whether that is `Ok`.
bool readPlainVariant(QDataStream& stream, QVariant& value)
{
    stream.setStatus(lookAhead(stream));
    if (stream.status() == QDataStream::Ok) {
        stream >> value;
    }
    return stream.status() == QDataStream::Ok;
}

/// Whether Qt reads nothing but zeros from `stream`: it does so once a transaction has met an error.
bool isSuspended(const QDataStream& stream)
{
    return stream.status() != QDataStream::Ok && stream.device() != nullptr &&
           stream.device()->isTransactionStarted();
}

int toDevicePixels(int size, double devicePixelRatio)
{
    return static_cast<int>(std::lround(devicePixelRatio * size));
}

/// `pixmap` in its slot, counted in device pixels. `QPixmap::scaled` would warn of a null pixmap.
QPixmap scaledToSlot(const QPixmap& pixmap, int slotSize)
{
    if (pixmap.isNull()) {
        return pixmap;
    }
    QPixmap card = pixmap.scaled(slotSize, slotSize, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    card.setDevicePixelRatio(1.0);
    return card;
}

} // namespace

VelorDropData::VelorDropData(const QMimeData* mimeData)
{
    QDataStream stream(mimeData->data(QLatin1String(MetaTypeName)));
    stream >> *this;
}

VelorDropData::VelorDropData(const QList<Item>& items, Type type)
    : mItems(items)
    , mType(type)
{}

void VelorDropData::addItem(const Item& item) { mItems.append(item); }

QList<QString> VelorDropData::getItemNames() const
{
    QList<QString> names;
    names.reserve(mItems.size());
    for (const Item& item : mItems) {
        names.append(item.name);
    }
    return names;
}

QMimeData* VelorDropData::getMimeData() const
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << *this;

    auto* mimeData = new QMimeData;
    mimeData->setData(QLatin1String(MetaTypeName), bytes);
    return mimeData;
}

void VelorDropData::registerMetaTypes()
{
    qRegisterNormalizedMetaType<VelorDropData>(QMetaObject::normalizedType(MetaTypeName));
}

QPixmap VelorDropData::getDragMultiplePixmap(QList<QPixmap> pixmaps, bool addPlus, double devicePixelRatio)
{
    if (addPlus) {
        pixmaps.append(QPixmap(QStringLiteral(":/Edit/Drag_Plus")));
    }
    if (pixmaps.isEmpty()) {
        return {};
    }
    const int slotSize = toDevicePixels(DragPixmapSize, devicePixelRatio);
    if (pixmaps.size() == 1) {
        QPixmap single = scaledToSlot(pixmaps.first(), slotSize);
        single.setDevicePixelRatio(devicePixelRatio);
        return single;
    }

    const int slotStep = toDevicePixels(DragPixmapExtraWidth, devicePixelRatio);
    const int last = static_cast<int>(pixmaps.size()) - 1;
    QPixmap canvas(last * slotStep + slotSize, slotSize);
    canvas.fill(Qt::transparent);
    QPainter painter(&canvas);
    for (int i = last; i >= 0; --i) {
        painter.drawPixmap(i * slotStep, 0, scaledToSlot(pixmaps.at(i), slotSize));
    }
    painter.end();
    canvas.setDevicePixelRatio(devicePixelRatio);
    return canvas;
}

QDataStream& operator<<(QDataStream& stream, const VelorDropData& payload)
{
    stream << static_cast<qint32>(payload.getItems().size()) << static_cast<qint32>(payload.getType());
    for (const VelorDropData::Item& item : payload.getItems()) {
        stream << QVariant(item.name) << QVariant(item.data);
    }
    return stream;
}

QDataStream& operator>>(QDataStream& stream, VelorDropData& payload)
{
    const QDataStream::Status earlier = stream.status();
    if (!isSuspended(stream)) {
        stream.resetStatus();
    }
    qint32 count = 0;
    qint32 type = 0;
    stream >> count >> type;
    payload.mType = static_cast<VelorDropData::Type>(type);

    QVariant name;
    QVariant data;
    for (qint32 i = 0; i < count; ++i) {
        if (!readPlainVariant(stream, name) || !readPlainVariant(stream, data)) {
            break;
        }
        payload.mItems.append({name.toString(), data.toByteArray()});
    }
    if (earlier != QDataStream::Ok) {
        stream.resetStatus();
        stream.setStatus(earlier);
    }
    return stream;
}
